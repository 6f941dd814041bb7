// The engine against GnuCOBOL on fields with two implied decimal places:
// descriptors with a scale read what COBOL wrote (as doubles and as exact
// decimals) and write what COBOL reads back.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "types/cobol_oracle.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

using zq_test::CobolOracle;

// The descriptor of each field of fields.cbl, in record order, for PIC
// S9(7)V99 and 9(7)V99.
std::vector<ZQDType> Descriptors(const std::vector<int>& len) {
  const struct {
    DATATYPE type;
    bool is_signed;
    long sign_pos;
  } fields[] = {{ZQDT_COMP3, true, 8},   {ZQDT_COMP3, false, 8}, {ZQDT_ZONED, true, 2},
                {ZQDT_DISPLAY_SIGN_LEADING, true, 1},          {ZQDT_ZONED, true, 8},
                {ZQDT_DISPLAY_SIGN_LEADING_SEP, true, 4},      {ZQDT_ZONED, false, 2},
                {ZQDT_COMP, true, 0},    {ZQDT_COMP, false, 0},  {ZQDT_COMP5, true, 0},
                {ZQDT_COMP5, false, 0}};
  std::vector<ZQDType> d;
  for (size_t i = 0; i < len.size(); ++i) {
    ZQDType x(fields[i].type);
    x.MaxLength(32);
    x.Length(len[i]);
    x.MinScale(-18);
    x.MaxScale(18);
    x.Scale(2);
    x.Signed(fields[i].is_signed);
    if (fields[i].sign_pos != 0) x.SignPos(fields[i].sign_pos);
    x.SignStyle(2);
    d.push_back(x);
  }
  return d;
}

std::string CentsText(int64_t cents) {
  char buf[40];
  const int64_t a = cents < 0 ? -cents : cents;
  snprintf(buf, sizeof(buf), "%s%" PRId64 ".%02" PRId64, cents < 0 ? "-" : "", a / 100, a % 100);
  return buf;
}

TEST(EngineCobol, ScaledFieldsBothWays) {
  if (!CobolOracle::Available()) GTEST_SKIP() << "cobc not installed";
  CobolOracle cob;
  ASSERT_TRUE(cob.Compile("fields.cbl", "scaled", "-fbinary-size=1--8", "(ND)", "(7)V99"));
  const std::vector<int> len = cob.Layout("scaled");
  ASSERT_EQ(len.size(), 11u);
  const std::vector<ZQDType> types = Descriptors(len);

  std::mt19937_64 rng(99);
  std::vector<int64_t> cents = {0, 1, -1, 999999999, -999999999, 50, -50};
  for (int i = 0; i < 300; ++i) {
    const int64_t lim = 1 + static_cast<int64_t>(rng() % 999999999);
    const int64_t c = static_cast<int64_t>(rng() % static_cast<uint64_t>(lim));
    cents.push_back((rng() & 1) ? -c : c);
  }
  const std::string bin = cob.Encode("scaled", cents, 9, "fields.bin");
  const ZQString rec(bin.data(), static_cast<int>(bin.size()));

  ZQString ours;
  std::vector<int64_t> wants;
  long off = 0;
  for (int64_t c : cents) {
    for (size_t f = 0; f < types.size(); off += len[f], ++f) {
      const ZQDType& t = types[f];
      const int64_t want = t.Signed() || c >= 0 ? c : -c;
      wants.push_back(want);
      SCOPED_TRACE(std::string(t.TypeName()) + " field " + std::to_string(f) + " " +
                   CentsText(want));
      double d = 0;
      ASSERT_EQ(t.Input(rec, off, d), len[f]);
      EXPECT_NEAR(d, want / 100.0, 1e-9 * std::fabs(want / 100.0));
      ZQDecimal x;
      ASSERT_EQ(t.Input(rec, off, x), len[f]);
      EXPECT_TRUE(x == ZQDecimal(CentsText(want).c_str()) ||
                  std::fabs(static_cast<double>(x) - want / 100.0) < 1e-12)
          << static_cast<double>(x);
      // The decimal writer gives COBOL's bytes, except for the positive
      // leading-separate field, which carries no "+". The double writer
      // agrees on the decimal types; binary storage truncates the scaled
      // double, so it may land one unit toward zero.
      ZQString fromd, fromx;
      t.Output(fromd, want / 100.0);
      t.Output(fromx, ZQDecimal(CentsText(want).c_str()));
      if (t.Type() == ZQDT_COMP || t.Type() == ZQDT_COMP5) {
        double back = 0;
        t.Input(fromd, 0, back);
        const double units = std::round(back * 100);
        EXPECT_TRUE(units == want || units == want - (want > 0 ? 1 : -1)) << units;
      } else {
        EXPECT_EQ(std::string(fromd.c_str(), fromd.length()),
                  std::string(fromx.c_str(), fromx.length()));
      }
      if (!(t.Type() == ZQDT_DISPLAY_SIGN_LEADING_SEP && want >= 0)) {
        EXPECT_EQ(std::string(fromx.c_str(), fromx.length()),
                  std::string(rec.c_str() + off, len[f]));
      }
      ours += fromx;
    }
  }
  ASSERT_EQ(off, static_cast<long>(bin.size()));
  EXPECT_EQ(cob.Decode("scaled", "fields.bin", std::string(ours.c_str(), ours.length())), wants);
}

}  // namespace
