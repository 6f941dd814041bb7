// The engine's direct paths between fields and exact decimals: the decimals
// built from whole numbers and the scale, the scaling, rounding and
// truncation of decimals on their digits, and fields encoded in place. The
// references are ZQDecimal's own constructors, Scale and printed text, and
// zoned fields built by hand.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

#include "types/codec_exact.h"
#include "types/datatype_helpers.h"
#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace {

using zq::codec::DecimalParts;

std::string Form(const ZQDecimal& d) {
  char f[ZQDecimal::kStoreSize];
  d.Store(f);
  return zqtest::Hex(f, sizeof(f));
}

std::string Text(const ZQDecimal& d) {
  char buf[ZQDecimal::kUnboundedPrintSize + 8];
  d.Print(buf, sizeof(buf), false);
  return buf;
}

// ZQDecimal's own decimal of a whole number: the integer constructor where a
// 32-bit value holds it, the text constructor beyond.
ZQDecimal Reference(int64_t v) {
  if (v >= INT32_MIN && v <= INT32_MAX) return ZQDecimal(static_cast<long>(v));
  char buf[32];
  snprintf(buf, sizeof(buf), "%lld", static_cast<long long>(v));
  return ZQDecimal(buf);
}

ZQDType Type(DATATYPE t, long len, short scale, bool is_signed = true) {
  ZQDType d(t);
  d.MaxLength(len > d.MaxLength() ? len : d.MaxLength());
  d.MaxPrecision(len > d.MaxPrecision() ? len : d.MaxPrecision());
  d.Length(len);
  d.MinScale(-20);
  d.MaxScale(20);
  d.Scale(scale);
  d.Signed(is_signed);
  return d;
}

// Whole numbers of every digit count, with their neighbours and signs.
std::vector<int64_t> Wholes() {
  std::vector<int64_t> v = {0,
                            1,
                            -1,
                            INT64_MAX,
                            INT64_MIN,
                            INT32_MAX,
                            INT32_MIN,
                            int64_t{INT32_MAX} + 1,
                            int64_t{INT32_MIN} - 1};
  int64_t p = 1;
  for (int k = 1; k <= 18; ++k) {
    p *= 10;
    for (int64_t w : {p - 1, p, p + 1, p / 2 + 7, p * 9 / 10}) {
      v.push_back(w);
      v.push_back(-w);
    }
  }
  return v;
}

TEST(EngineFast, WholeNumbersBecomeTheDecimalsScaleGives) {
  const int scales[] = {-260, -250, -236, -235, -21, -20, -3,  -2,  -1,  0,   1,   2,  3,
                        17,   18,   19,   20,   21,  233, 234, 235, 236, 254, 255, 256};
  for (int64_t w : Wholes()) {
    for (int sc : scales) {
      ZQDecimal want = Reference(w);
      want.Scale(-sc);
      ZQDecimal got(123L);
      const uint64_t mag = w < 0 ? 0 - static_cast<uint64_t>(w) : static_cast<uint64_t>(w);
      if (!zq::codec::DecimalOfScaledWhole(w, sc, &got)) {
        // Only a 19-digit magnitude with an odd scale is left to the caller.
        EXPECT_TRUE(mag >= 1000000000000000000ull && sc % 2 != 0) << w << " " << sc;
        continue;
      }
      EXPECT_EQ(Form(got), Form(want)) << w << " scale " << sc;
    }
  }
  // Through the engine: 8-byte binary and packed fields into decimals.
  for (int64_t w : Wholes()) {
    for (short sc : {-3, -1, 0, 1, 2, 5, 20}) {
      const ZQDType bin = Type(ZQDT_COMP, 8, sc);
      ZQString rec;
      rec.Append("\x01", 1);
      uint64_t u = static_cast<uint64_t>(w);
      for (int i = 0; i < 8; ++i) {
        const char c = static_cast<char>(u >> (8 * (7 - i)));  // most significant first
        rec.Append(&c, 1);
      }
      ZQDType msb = bin;
      msb.MSBFirst(true);
      ZQDecimal got;
      ASSERT_EQ(msb.Input(rec, 1, got), 8);
      ZQDecimal want = Reference(w);
      want.Scale(-sc);
      EXPECT_EQ(Form(got), Form(want)) << w << " scale " << sc;
    }
  }
}

// Decimals of every shape: leading zero digits (not normalised), twenty
// digits, tiny and large exponents, a signed zero.
std::vector<ZQDecimal> Decimals(std::mt19937_64& rng, int n) {
  std::vector<ZQDecimal> v = {ZQDecimal(),
                              ZQDecimal("0.05"),
                              ZQDecimal("-0.5"),
                              ZQDecimal("2.5"),
                              ZQDecimal("3.5"),
                              ZQDecimal("-12345678901234567890"),
                              ZQDecimal("99999999999999999999"),
                              ZQDecimal("0.000000000000000000001"),
                              ZQDecimal(-5L) - ZQDecimal(-5L),
                              ZQDecimal("000123.4500"),
                              ZQDecimal(1e30),
                              ZQDecimal(-7.25e-30)};
  for (int i = 0; i < n; ++i) {
    std::string t = (rng() & 1) ? "-" : "";
    const int whole = static_cast<int>(rng() % 23);
    const int frac = static_cast<int>(rng() % 23);
    for (int k = 0; k < whole; ++k) t += static_cast<char>('0' + rng() % 10);
    if (frac > 0 || whole == 0) {
      t += '.';
      for (int k = 0; k < frac; ++k)
        t += static_cast<char>('0' + (rng() % 3 == 0 ? 5 : rng() % 10));
    }
    v.emplace_back(t.c_str());
  }
  return v;
}

TEST(EngineFast, DecimalScaleMatchesZQDecimal) {
  std::mt19937_64 rng(8);
  for (const ZQDecimal& d : Decimals(rng, 3000)) {
    for (int n : {-257, -256, -255, -40, -21, -20, -3, -2, -1, 0, 1, 2, 3, 20, 21, 40, 255, 256,
                  static_cast<int>(rng() % 61) - 30}) {
      DecimalParts p;
      zq::codec::SplitDecimal(d, &p);
      zq::codec::ScaleParts(&p, n);
      ZQDecimal want = d;
      want.Scale(n);
      DecimalParts w;
      zq::codec::SplitDecimal(want, &w);
      EXPECT_EQ(zqtest::Hex(p.digits, 10), zqtest::Hex(w.digits, 10)) << Text(d) << " " << n;
      EXPECT_EQ(p.neg, w.neg) << Text(d) << " " << n;
      EXPECT_EQ(p.exponent, w.exponent) << Text(d) << " " << n;
    }
  }
}

// The printed text of `d` rounded half to even (`round`) or truncated, as a
// string of whole digits; "-" first when the text has a sign.
std::string WholeOfText(const ZQDecimal& d, bool round) {
  std::string t = Text(d);
  std::string sign;
  if (t[0] == '-') {
    sign = "-";
    t.erase(0, 1);
  }
  const size_t point = t.find('.');
  std::string whole = t.substr(0, point);
  const std::string frac = point == std::string::npos ? "" : t.substr(point + 1);
  if (round && !frac.empty()) {
    const bool rest = frac.find_first_not_of('0', 1) != std::string::npos;
    if (frac[0] > '5' || (frac[0] == '5' && (rest || (whole.back() - '0') % 2 == 1))) {
      size_t i = whole.size();
      while (i > 0 && whole[i - 1] == '9') whole[--i] = '0';
      if (i == 0) {
        whole.insert(0, "1");
      } else {
        ++whole[i - 1];
      }
    }
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
      if (neg) want.erase(0, 1);
      const size_t room = static_cast<size_t>(len - 1);
      want = std::string(want.size() < room ? room - want.size() : 0, '0') + want;
      want = want.substr(want.size() - room) + (neg ? "-" : "+");
      EXPECT_EQ(std::string(out.c_str(), out.length()), want) << Text(d) << " scale " << sc;

      // 8-byte binary: the whole part modulo 2^64, negated for a sign.
      const ZQDType bin = Type(ZQDT_COMP5, 8, sc);
      ZQString raw;
      ASSERT_EQ(bin.Output(raw, d), 8);
      uint64_t got = 0;
      for (int i = 7; i >= 0; --i) got = got << 8 | static_cast<uint8_t>(raw.c_str()[i]);
      const std::string whole = WholeOfText(scaled, false);
      uint64_t u = 0;
      for (char c : whole) {
        if (c != '-') u = u * 10 + static_cast<uint64_t>(c - '0');
      }
      if (whole[0] == '-') u = 0 - u;
      // Beyond 26 digits the text is cut short; such values are not compared.
      if (whole.size() <= 26) {
        EXPECT_EQ(got, u) << Text(d) << " scale " << sc;
      }
    }
  }
}

// The character an overpunched digit is stored as, by style.
char Punched(long style, int digit, bool neg) {
  switch (style) {
    case 1:  // ibm
      if (neg) return digit == 0 ? '}' : static_cast<char>('J' + digit - 1);
      return digit == 0 ? '{' : static_cast<char>('A' + digit - 1);
    case 2:  // mfcobol
      return static_cast<char>('0' + digit + (neg ? 0x40 : 0));
    case 4:  // wang
      return static_cast<char>((neg ? 0xD0 : 0xF0) + digit);
    default:  // acucobol, trailing
      if (neg) return digit == 0 ? '}' : static_cast<char>('J' + digit - 1);
      return static_cast<char>('0' + digit);
  }
}

// Zoned fields of every length, scale and sign convention, built by hand
// and placed among other bytes at offsets on both sides of the writer's and
// reader's word sizes: each reads as ZQDecimal's own decimal of its whole
// number divided by 10^scale, and that decimal writes the field back.
TEST(EngineFast, ZonedFieldsReadAndWriteTheirDigits) {
  const struct {
    DATATYPE type;
    bool is_signed;
    long pos;
    long style;
  } conventions[] = {
      {ZQDT_ZONED, false, 2, 2},
      {ZQDT_ZONED, true, 2, 1},
      {ZQDT_DISPLAY_SIGN_TRAILING, true, 2, 2},
      {ZQDT_ZONED, true, 2, 4},
      {ZQDT_ZONED, true, 2, 1024},
      {ZQDT_DISPLAY_SIGN_LEADING, true, 1, 1},
      {ZQDT_ZONED, true, 1, 2},
      {ZQDT_ZONED, true, 1, 4},
      {ZQDT_DISPLAY_SIGN_LEADING_SEP, true, 4, 2},
      {ZQDT_DISPLAY_SIGN_TRAILING_SEP, true, 8, 2},
  };
  const short scales[] = {-3, -2, -1, 0, 1, 2, 3, 7, 17, 18, 19};
  const long offsets[] = {0, 1, 5, 23, 24, 31};
  const char noise[] = "x9 +-}0\xFF";
  std::mt19937_64 rng(11);
  int cases = 0;
  for (const auto& c : conventions) {
    for (long len = 1; len <= 19; ++len) {
      // At most 18 digit characters: the text path reads longer fields (a
      // positive leading-separate field holds only digits).
      const bool separate = c.pos == 4 || c.pos == 8;
      if ((separate && len == 1) || (c.pos != 8 && len == 19)) continue;
      for (short sc : scales) {
        ZQDType t = Type(c.type, len, sc, c.is_signed);
        t.SignPos(c.pos);
        t.SignStyle(c.style);
        t.SetPadChar('0');
        for (long off : offsets) {
          // The digits: none to all of the room, leading zeros kept; a
          // separate sign takes one character.
          const int room = static_cast<int>(len) - (separate ? 1 : 0);
          const int k = static_cast<int>(rng() % (room + 1));
          std::string digits(static_cast<size_t>(room - k), '0');
          int64_t whole = 0;
          for (int i = 0; i < k; ++i) {
            const int dgt = static_cast<int>(rng() % 10);
            digits += static_cast<char>('0' + dgt);
            whole = whole * 10 + dgt;
          }
          bool neg = c.is_signed && whole != 0 && (rng() & 1) != 0;
          std::string field = digits;
          if (c.is_signed && c.pos == 2) {
            field.back() = Punched(c.style, field.back() - '0', neg);
          } else if (c.is_signed && c.pos == 1) {
            field[0] = Punched(c.style, field[0] - '0', neg);
          } else if (c.pos == 4) {
            // The writer puts "-" over the first character of a field that
            // has room for every digit; a positive value keeps that digit.
            field = (neg ? "-" : "0") + digits;
          } else if (c.pos == 8) {
            field += neg ? '-' : '+';
          }
          std::string bytes;
          for (long i = 0; i < off; ++i) bytes += noise[rng() % 8];
          bytes += field;
          for (int i = static_cast<int>(rng() % 3); i > 0; --i) bytes += noise[rng() % 8];
          const ZQString rec(bytes.data(), static_cast<int>(bytes.size()));

          ZQDecimal want = Reference(neg ? -whole : whole);
          want.Scale(-sc);
          ZQDecimal got(77L);
          ASSERT_EQ(t.Input(rec, off, got), len);
          EXPECT_EQ(Form(got), Form(want))
              << t.TypeName() << " pos " << c.pos << " style " << c.style << " scale " << sc << " ["
              << field << "] at " << off;
          ZQString out("ab", 2);
          ASSERT_EQ(t.Output(out, want), len);
          EXPECT_EQ(std::string(out.c_str() + 2, out.length() - 2), field)
              << t.TypeName() << " pos " << c.pos << " style " << c.style << " scale " << sc << " "
              << Text(want);
          ++cases;
        }
      }
    }
  }
  EXPECT_GT(cases, 10000);
}

TEST(EngineFast, FieldsAppendInPlace) {
  std::mt19937_64 rng(10);
  const DATATYPE types[] = {ZQDT_COMP3,     ZQDT_ZONED,   ZQDT_DISPLAY_SIGN_LEADING_SEP,
                            ZQDT_COMP,      ZQDT_INTEGER, ZQDT_BINARY24,
                            ZQDT_TEC_BINARY};
  ZQString all("head", 4);
  std::string want = "head";
  for (int i = 0; i < 3000; ++i) {
    const DATATYPE ty = types[rng() % 7];
    long len = 1 + static_cast<long>(rng() % 12);
    if (ty == ZQDT_ZONED && rng() % 8 == 0) len = 60 + static_cast<long>(rng() % 20);
    if (ty == ZQDT_BINARY24) len = 3;
    if (ty == ZQDT_TEC_BINARY) len = 4;
    const ZQDType t = Type(ty, len, static_cast<short>(rng() % 5) - 2, (rng() & 3) != 0);
    const double v = (static_cast<double>(rng() % 2000000) - 1000000) / 7.0;
    ZQString one;
    long n;
    switch (rng() % 3) {
      case 0:
        n = t.Output(all, v);
        EXPECT_EQ(t.Output(one, v), n);
        break;
      case 1:
        n = t.Output(all, ZQDecimal(v));
        EXPECT_EQ(t.Output(one, ZQDecimal(v)), n);
        break;
      default:
        n = t.Output(all, static_cast<long>(v));
        EXPECT_EQ(t.Output(one, static_cast<long>(v)), n);
        break;
    }
    EXPECT_EQ(n, one.length()) << t.TypeName() << " " << len;
    want.append(one.c_str(), one.length());
    ASSERT_EQ(std::string(all.c_str(), all.length()), want) << i;
  }
}

}  // namespace
