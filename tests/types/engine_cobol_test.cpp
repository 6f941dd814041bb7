// The engine against GnuCOBOL on fields with two implied decimal places:
// descriptors with a scale read what COBOL wrote (as doubles and as exact
// decimals) and write what COBOL reads back.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <random>
#include <sstream>
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
std::vector<ZQDType> Descriptors(const int* len) {
  std::vector<ZQDType> d;
  auto add = [&](DATATYPE t, int i, bool is_signed, long sign_pos) {
    ZQDType x(t);
    x.MaxLength(32);
    x.Length(len[i]);
    x.MinScale(-18);
    x.MaxScale(18);
    x.Scale(2);
    x.Signed(is_signed);
    if (sign_pos != 0) x.SignPos(sign_pos);
    x.SignStyle(2);
    d.push_back(x);
  };
  add(ZQDT_COMP3, 0, true, 8);
  add(ZQDT_COMP3, 1, false, 8);
  add(ZQDT_ZONED, 2, true, 2);
  add(ZQDT_DISPLAY_SIGN_LEADING, 3, true, 1);
  add(ZQDT_ZONED, 4, true, 8);
  add(ZQDT_DISPLAY_SIGN_LEADING_SEP, 5, true, 4);
  add(ZQDT_ZONED, 6, false, 2);
  add(ZQDT_COMP, 7, true, 0);
  add(ZQDT_COMP, 8, false, 0);
  add(ZQDT_COMP5, 9, true, 0);
  add(ZQDT_COMP5, 10, false, 0);
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
  std::istringstream layout(cob.Run("scaled", "layout"));
  int len[11];
  int rec_len = 0;
  for (int& l : len) {
    ASSERT_TRUE(layout >> l);
    rec_len += l;
  }
  const std::vector<ZQDType> types = Descriptors(len);

  std::mt19937_64 rng(99);
  std::vector<int64_t> cents = {0, 1, -1, 999999999, -999999999, 50, -50};
  for (int i = 0; i < 300; ++i) {
    const int64_t lim = 1 + static_cast<int64_t>(rng() % 999999999);
    const int64_t c = static_cast<int64_t>(rng() % static_cast<uint64_t>(lim));
    cents.push_back((rng() & 1) ? -c : c);
  }
  std::string lines;
  for (int64_t c : cents) {
    char buf[24];
    snprintf(buf, sizeof(buf), "%c%09" PRId64 "\n", c < 0 ? '-' : '+', c < 0 ? -c : c);
    lines += buf;
  }
  cob.Write("values.txt", lines);
  cob.Run("scaled", "encode");
  const std::string bin = cob.Read("fields.bin");
  ASSERT_EQ(bin.size(), cents.size() * rec_len);
  const ZQString rec(bin.data(), static_cast<int>(bin.size()));

  ZQString ours;
  long off = 0;
  for (int64_t c : cents) {
    for (size_t f = 0; f < types.size(); ++f) {
      const ZQDType& t = types[f];
      const int64_t want = t.Signed() || c >= 0 ? c : -c;
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
      off += len[f];
    }
  }

  cob.Write("fields.bin", std::string(ours.c_str(), ours.length()));
  cob.Run("scaled", "decode");
  std::istringstream decoded(cob.Read("decoded.txt"));
  for (int64_t c : cents) {
    for (const ZQDType& t : types) {
      const int64_t want = t.Signed() || c >= 0 ? c : -c;
      std::string word;
      ASSERT_TRUE(decoded >> word);
      EXPECT_EQ(strtoll(word.c_str(), nullptr, 10), want) << t.TypeName();
    }
  }
}

}  // namespace
