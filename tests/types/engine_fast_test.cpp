// The engine's direct paths between fields and exact decimals, against
// ZQDecimal's own constructors, Scale and text, and the codec's zoned writer.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "types/codec_decimal.h"
#include "types/codec_exact.h"
#include "types/datatype_helpers.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

std::string Form(const ZQDecimal& d) {
  char f[ZQDecimal::kStoreSize];
  d.Store(f);
  return zqtest::Hex(f, sizeof(f));
}

std::string Text(const ZQDecimal& d) {
  char buf[ZQDecimal::kUnboundedPrintSize + 8];
  return d.Print(buf, sizeof(buf), false);
}

// ZQDecimal's own decimal of a whole number.
ZQDecimal Reference(int64_t v) {
  if (v >= INT32_MIN && v <= INT32_MAX) return ZQDecimal(static_cast<long>(v));
  return ZQDecimal(std::to_string(v).c_str());
}

ZQDType Type(DATATYPE t, long len, short scale, bool is_signed = true) {
  ZQDType d = zqtest::Type(t, len, scale);
  d.Signed(is_signed);
  return d;
}

TEST(EngineFast, WholeNumbersBecomeTheDecimalsScaleGives) {
  // Whole numbers of every digit count, with their neighbours and signs.
  std::vector<int64_t> wholes = {0,         1,         -1, INT64_MAX, INT64_MIN, INT32_MAX, INT32_MIN,
                                 int64_t{INT32_MAX} + 1, int64_t{INT32_MIN} - 1};
  for (int64_t p = 10;; p *= 10) {
    for (int64_t w : {p - 1, p, p + 1, p / 2 + 7, p / 10 * 9}) wholes.insert(wholes.end(), {w, -w});
    if (p == 1000000000000000000) break;  // 10^19 does not fit
  }
  for (int64_t w : wholes) {
    for (int sc : {-260, -250, -236, -235, -21, -20, -3, -2, -1, 0, 1, 2, 3, 17, 18, 19, 20, 21, 233,
                   234, 235, 236, 254, 255, 256}) {
      ZQDecimal want = Reference(w);
      want.Scale(-sc);
      ZQDecimal got(123L);
      const uint64_t mag = w < 0 ? 0 - static_cast<uint64_t>(w) : static_cast<uint64_t>(w);
      if (zq::codec::DecimalOfScaledWhole(w, sc, &got)) {
        EXPECT_EQ(Form(got), Form(want)) << w << " scale " << sc;
      } else {  // only a 19-digit magnitude with an odd scale is left to the caller
        EXPECT_TRUE(mag >= 1000000000000000000ull && sc % 2 != 0) << w << " " << sc;
      }
    }
    // What that leaves to the caller, through the engine's 8-byte binary.
    for (short sc : {-3, -1, 1, 5}) {
      const uint64_t u = static_cast<uint64_t>(w);
      const ZQString rec(reinterpret_cast<const char*>(&u), 8);
      ZQDecimal got, want = Reference(w);
      ASSERT_EQ(Type(ZQDT_COMP5, 8, sc).Input(rec, 0, got), 8);
      EXPECT_EQ(Form(got), Form(want.Scale(-sc))) << w << " scale " << sc;
    }
  }
}

// Decimals of every shape, unnormalised, long, tiny, huge, signed zero.
std::vector<ZQDecimal> Decimals(std::mt19937_64& rng, int n) {
  std::vector<ZQDecimal> v = {ZQDecimal(), ZQDecimal("0.05"), ZQDecimal("-0.5"), ZQDecimal("2.5"),
                              ZQDecimal("3.5"), ZQDecimal("-12345678901234567890"),
                              ZQDecimal("99999999999999999999"), ZQDecimal("0.000000000000000000001"),
                              ZQDecimal(-5L) - ZQDecimal(-5L), ZQDecimal("000123.4500"),
                              ZQDecimal(1e30), ZQDecimal(-7.25e-30)};
  for (int i = 0; i < n; ++i) {
    std::string t = (rng() & 1) ? "-" : "";
    const int whole = static_cast<int>(rng() % 23), frac = static_cast<int>(rng() % 23);
    for (int k = 0; k < whole; ++k) t += static_cast<char>('0' + rng() % 10);
    if (frac > 0 || whole == 0) t += '.';
    for (int k = 0; k < frac; ++k) t += static_cast<char>('0' + (rng() % 3 == 0 ? 5 : rng() % 10));
    v.emplace_back(t.c_str());
  }
  return v;
}

// The whole digits of `d`'s text, rounded half to even or truncated.
std::string WholeOfText(const ZQDecimal& d, bool round) {
  std::string t = Text(d);
  const std::string sign = t[0] == '-' ? "-" : "";
  t.erase(0, sign.size());
  const size_t point = t.find('.');
  std::string whole = t.substr(0, point);
  const std::string frac = point == std::string::npos ? "" : t.substr(point + 1);
  if (round && !frac.empty() &&
      (frac[0] > '5' || (frac[0] == '5' && (frac.find_first_not_of('0', 1) != std::string::npos ||
                                            (whole.back() - '0') % 2 == 1)))) {
    size_t i = whole.size();
    while (i > 0 && whole[i - 1] == '9') whole[--i] = '0';
    if (i == 0) whole.insert(0, "1");
    if (i != 0) ++whole[i - 1];
  }
  return sign + whole;
}

TEST(EngineFast, DecimalsRoundAndTruncateAsTheirText) {
  std::mt19937_64 rng(9);
  const long lengths[] = {2, 3, 7, 8, 9, 16, 17, 19, 45, 60};
  for (const ZQDecimal& d : Decimals(rng, 3000)) {
    for (short sc : {-3, -1, 0, 1, 2, 5}) {
      ZQDecimal scaled = d;
      scaled.Scale(sc);
      // Zoned with a separate trailing sign: the last digits of the rounded
      // magnitude and the sign of the text, at lengths either side of the
      // word sizes the writer works in.
      const long len = lengths[rng() % 10];
      ZQDType zone = Type(ZQDT_DISPLAY_SIGN_TRAILING_SEP, len, sc);
      zone.SetPadChar('0');
      ZQString out;
      ASSERT_EQ(zone.Output(out, d), len);
      std::string want = WholeOfText(scaled, true);
      const bool neg = want[0] == '-';
      want = std::string(static_cast<size_t>(len), '0') + want.substr(neg ? 1 : 0);
      want = want.substr(want.size() - static_cast<size_t>(len - 1)) + (neg ? "-" : "+");
      EXPECT_EQ(std::string(out.c_str(), out.length()), want) << Text(d) << " scale " << sc;

      // 8-byte binary: the whole part modulo 2^64, negated for a sign; beyond
      // 26 digits the text is cut short, so such values are not compared.
      ZQString raw;
      ASSERT_EQ(Type(ZQDT_COMP5, 8, sc).Output(raw, d), 8);
      uint64_t got = 0, u = 0;
      std::memcpy(&got, raw.c_str(), 8);
      const std::string whole = WholeOfText(scaled, false);
      for (char c : whole) u = c == '-' ? u : u * 10 + static_cast<uint64_t>(c - '0');
      if (whole.size() > 26) continue;
      EXPECT_EQ(got, whole[0] == '-' ? 0 - u : u) << Text(d) << " scale " << sc;
    }
  }
}

// Zoned fields of every length, scale, convention and offset read as
// ZQDecimal's own decimal and write back as the codec's text path wrote them.
TEST(EngineFast, ZonedFieldsReadAndWriteTheirDigits) {
  const struct {
    DATATYPE type;
    bool is_signed;
    long pos, style;
  } conventions[] = {
      {ZQDT_ZONED, false, 2, 2},        {ZQDT_ZONED, true, 2, 1},
      {ZQDT_DISPLAY_SIGN_TRAILING, true, 2, 2}, {ZQDT_ZONED, true, 2, 4},
      {ZQDT_ZONED, true, 2, 1024},      {ZQDT_DISPLAY_SIGN_LEADING, true, 1, 1},
      {ZQDT_ZONED, true, 1, 2},         {ZQDT_ZONED, true, 1, 4},
      {ZQDT_DISPLAY_SIGN_LEADING_SEP, true, 4, 2}, {ZQDT_DISPLAY_SIGN_TRAILING_SEP, true, 8, 2},
  };
  const char noise[] = "x9 +-}0\xFF";
  std::mt19937_64 rng(11);
  int cases = 0;
  for (const auto& c : conventions) {
    const bool separate = c.pos == 4 || c.pos == 8;
    // At most 18 digit characters: the text path reads longer fields.
    for (long len = separate ? 2 : 1; len <= (c.pos == 8 ? 19 : 18); ++len) {
      for (short sc : {-3, -2, -1, 0, 1, 2, 3, 7, 17, 18, 19}) {
        ZQDType t = Type(c.type, len, sc, c.is_signed);
        t.SignPos(c.pos);
        t.SignStyle(c.style);
        t.SetPadChar('0');
        zq::codec::DecimalFormat fmt;
        fmt.length = static_cast<int>(len);
        fmt.is_signed = c.is_signed;
        fmt.sign_pos = c.pos;
        fmt.sign_style = c.style;
        fmt.pad = '0';
        for (long off : {0L, 1L, 5L, 23L, 24L, 31L}) {
          // None to all of the digits the field has room for.
          std::string digits;
          for (int i = static_cast<int>(rng() % (len - separate + 1)); i > 0; --i) {
            digits += static_cast<char>('0' + rng() % 10);
          }
          const int64_t whole = digits.empty() ? 0 : std::stoll(digits);
          const bool neg = c.is_signed && whole != 0 && (rng() & 1) != 0;
          uint8_t buf[32];
          zq::codec::PutZone(buf, fmt, digits.data(), digits.size(), neg);
          const std::string field(reinterpret_cast<char*>(buf), static_cast<size_t>(len));
          std::string bytes;
          for (long i = 0; i < off; ++i) bytes += noise[rng() % 8];
          bytes += field + std::string(rng() % 3, noise[rng() % 8]);
          SCOPED_TRACE(std::string(t.TypeName()) + " pos " + std::to_string(c.pos) + " style " +
                       std::to_string(c.style) + " scale " + std::to_string(sc) + " [" + field +
                       "] at " + std::to_string(off));
          ZQDecimal want = Reference(neg ? -whole : whole);
          want.Scale(-sc);
          ZQDecimal got(77L);
          ASSERT_EQ(t.Input(ZQString(bytes.data(), static_cast<int>(bytes.size())), off, got), len);
          EXPECT_EQ(Form(got), Form(want));
          ZQString out("ab", 2);
          ASSERT_EQ(t.Output(out, want), len);
          EXPECT_EQ(std::string(out.c_str() + 2, out.length() - 2), field);
          ++cases;
        }
      }
    }
  }
  EXPECT_GT(cases, 10000);
}

// Every writer appends its field to the record as it stands.
TEST(EngineFast, FieldsAppendInPlace) {
  std::mt19937_64 rng(10);
  const DATATYPE types[] = {ZQDT_COMP3, ZQDT_ZONED,   ZQDT_DISPLAY_SIGN_LEADING_SEP,
                            ZQDT_COMP,  ZQDT_INTEGER, ZQDT_BINARY24, ZQDT_TEC_BINARY};
  ZQString all("head", 4);
  std::string want = "head";
  for (int i = 0; i < 3000; ++i) {
    const DATATYPE ty = types[rng() % 7];
    long len = ty == ZQDT_BINARY24 ? 3 : ty == ZQDT_TEC_BINARY ? 4 : 1 + static_cast<long>(rng() % 12);
    if (ty == ZQDT_ZONED && rng() % 8 == 0) len = 60 + static_cast<long>(rng() % 20);
    const ZQDType t = Type(ty, len, static_cast<short>(rng() % 5) - 2, (rng() & 3) != 0);
    const double v = (static_cast<double>(rng() % 2000000) - 1000000) / 7.0;
    ZQString one;
    const int kind = static_cast<int>(rng() % 3);
    const long n = kind == 0   ? t.Output(all, v)
                   : kind == 1 ? t.Output(all, ZQDecimal(v))
                               : t.Output(all, static_cast<long>(v));
    EXPECT_EQ(kind == 0   ? t.Output(one, v)
              : kind == 1 ? t.Output(one, ZQDecimal(v))
                          : t.Output(one, static_cast<long>(v)),
              n);
    EXPECT_EQ(n, one.length()) << t.TypeName() << " " << len;
    want.append(one.c_str(), one.length());
    ASSERT_EQ(std::string(all.c_str(), all.length()), want) << i;
  }
}

}  // namespace
