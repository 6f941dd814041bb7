// Codec tables: published encodings of the foreign formats, the documented
// byte layouts, and round trips; the x86 long double is the oracle for the
// 80-bit format.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "types/codec_binary.h"
#include "types/codec_decimal.h"
#include "types/codec_float.h"
#include "types/codec_punch.h"

namespace {

using namespace zq::codec;  // NOLINT: the codecs are the subject here

std::string Hex(const uint8_t* p, size_t n) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    if (i) s += ' ';
    s += kDigits[p[i] >> 4];
    s += kDigits[p[i] & 15];
  }
  return s;
}

std::vector<uint8_t> Bytes(const char* hex) {
  std::vector<uint8_t> v;
  for (const char* s = hex; *s;) {
    if (*s == ' ') {
      ++s;
      continue;
    }
    v.push_back(static_cast<uint8_t>(std::stoi(std::string(s, 2), nullptr, 16)));
    s += 2;
  }
  return v;
}

DecimalFormat Fmt(int len, long pos, long style, bool is_signed = true) {
  DecimalFormat f;
  f.length = len;
  f.sign_pos = pos;
  f.sign_style = style;
  f.is_signed = is_signed;
  return f;
}

// Writes `v` (a whole number) through a decimal writer.
template <typename Put>
std::string WriteWhole(Put put, const DecimalFormat& f, long long v) {
  const std::string digits = std::to_string(v < 0 ? -v : v);
  uint8_t out[64] = {0};
  put(out, f, digits.data(), digits.size(), v < 0);
  return std::string(reinterpret_cast<char*>(out), f.length);
}

// The text forms of the overloaded decimal writers.
using PutText = void (*)(uint8_t*, const DecimalFormat&, const char*, size_t, bool);
const PutText kPutPack = PutPack;
const PutText kPutZone = PutZone;
const PutText kPutBCD = PutBCD;

double ReadNumber(bool ok, const NumberText& t) { return ok ? NumberTextToDouble(t) : -999999.0; }

TEST(DecimalCodecs, DocumentedLayouts) {
  struct Case {
    const char* what;
    char kind;  // P packed, B BCD, Z zoned
    DecimalFormat fmt;
    long long value;
    std::string bytes;
  };
  const Case cases[] = {
      {"packed trailing -123", 'P', Fmt(2, kSignTrailingSeparate, kStyleMfCobol), -123, "\x12\x3D"},
      {"packed rmcobol +123", 'P', Fmt(2, kSignTrailing, kStyleRmCobol), 123, "\x12\x3B"},
      {"packed acucobol +123", 'P', Fmt(2, kSignTrailing, kStyleAcuCobol), 123, "\x12\x3F"},
      {"packed ibm +123", 'P', Fmt(2, kSignTrailing, kStyleIbm), 123, "\x12\x3C"},
      {"packed unsigned 123", 'P', Fmt(2, kSignTrailing, kStyleIbm, false), 123, "\x12\x3F"},
      {"packed leading -45", 'P', Fmt(2, kSignLeading, kStyleMfCobol), -45, "\x50\x45"},
      {"packed leading +45", 'P', Fmt(2, kSignLeadingSeparate, kStyleMfCobol), 45, "\x30\x45"},
      {"packed none acucobol", 'P', Fmt(2, kSignNone, kStyleAcuCobol), 1234, "\x12\x34"},
      {"packed none other", 'P', Fmt(2, kSignNone, kStyleIbm), -234, "\x52\x34"},
      {"packed overflow drops left", 'P', Fmt(2, kSignTrailing, kStyleIbm), 98765, "\x76\x5C"},
      {"bcd -12", 'B', Fmt(4, kSignTrailing, kStyleIbm), -12, std::string("\x00\x01\x02\x0D", 4)},
      {"bcd acucobol +12", 'B', Fmt(4, kSignTrailing, kStyleAcuCobol), 12,
       std::string("\x00\x01\x02\x0B", 4)},
      {"bcd unsigned 12", 'B', Fmt(3, kSignTrailing, kStyleIbm, false), 12,
       std::string("\x00\x01\x02", 3)},
      {"zoned ibm -120", 'Z', Fmt(4, kSignTrailing, kStyleIbm), -120, "012}"},
      {"zoned ibm 125", 'Z', Fmt(4, kSignTrailing, kStyleIbm), 125, "012E"},
      {"zoned ibm leading -3", 'Z', Fmt(3, kSignLeading, kStyleIbm), -3, "}03"},
      {"zoned mf -125", 'Z', Fmt(4, kSignTrailing, kStyleMfCobol), -125, "012u"},
      {"zoned wang -5", 'Z', Fmt(2, kSignTrailing, kStyleWang), -5, "0\xD5"},
      {"zoned wang 5", 'Z', Fmt(2, kSignTrailing, kStyleWang), 5, "0\xF5"},
      {"zoned acucobol trailing -5", 'Z', Fmt(3, kSignTrailing, kStyleAcuCobol), -5, "00N"},
      {"zoned acucobol leading -5", 'Z', Fmt(3, kSignLeading, kStyleAcuCobol), -5, "005"},
      {"zoned unisys trailing -5", 'Z', Fmt(3, kSignTrailing, kStyleUnisys), -5, "005"},
      {"zoned trailing separate -12", 'Z', Fmt(4, kSignTrailingSeparate, kStyleMfCobol), -12,
       "012-"},
      {"zoned trailing separate 12", 'Z', Fmt(4, kSignTrailingSeparate, kStyleMfCobol), 12, "012+"},
      {"zoned leading separate -12", 'Z', Fmt(4, kSignLeadingSeparate, kStyleMfCobol), -12, "-012"},
      {"zoned leading separate 12", 'Z', Fmt(4, kSignLeadingSeparate, kStyleMfCobol), 12, "0012"},
      {"zoned unsigned drops sign", 'Z', Fmt(3, kSignTrailing, kStyleIbm, false), -7, "007"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string got;
    switch (c.kind) {
      case 'P':
        got = WriteWhole(kPutPack, c.fmt, c.value);
        break;
      case 'B':
        got = WriteWhole(kPutBCD, c.fmt, c.value);
        break;
      default:
        got = WriteWhole(kPutZone, c.fmt, c.value);
        break;
    }
    EXPECT_EQ(Hex(reinterpret_cast<const uint8_t*>(got.data()), got.size()),
              Hex(reinterpret_cast<const uint8_t*>(c.bytes.data()), c.bytes.size()));
  }
}

TEST(DecimalCodecs, ReadingRules) {
  struct Case {
    const char* what;
    char kind;
    DecimalFormat fmt;
    std::string bytes;
    double value;  // -999999 when the reader yields no value
  };
  const Case cases[] = {
      {"packed 0xB is positive", 'P', Fmt(2, kSignTrailing, kStyleIbm), "\x12\x3B", 123},
      {"packed 0xD is negative", 'P', Fmt(2, kSignTrailing, kStyleIbm), "\x12\x3D", -123},
      {"packed unsigned reads the sign nibble as a digit", 'P',
       Fmt(2, kSignTrailing, kStyleIbm, false), "\x12\x34", 1234},
      {"packed unsigned stops at 0xF", 'P', Fmt(2, kSignTrailing, kStyleIbm, false), "\x12\x3F",
       123},
      {"packed leading 0x5", 'P', Fmt(2, kSignLeading, kStyleIbm, false), "\x51\x23", -123},
      {"packed bad nibble ends the number", 'P', Fmt(3, kSignTrailing, kStyleIbm), "\x12\xA4\x5C",
       12},
      {"packed length 0", 'P', Fmt(0, kSignTrailing, kStyleIbm), "", -999999},
      {"bcd negative", 'B', Fmt(3, kSignTrailing, kStyleIbm), std::string("\x04\x02\x0D", 3), -42},
      {"zoned blanks trimmed", 'Z', Fmt(5, kSignTrailingSeparate, kStyleIbm), " 12- ", -12},
      {"zoned all blank", 'Z', Fmt(3, kSignTrailing, kStyleIbm), "   ", -999999},
      {"zoned ibm positive punch", 'Z', Fmt(3, kSignTrailing, kStyleIbm), "12{", 120},
      {"zoned ibm negative punch", 'Z', Fmt(3, kSignTrailing, kStyleIbm), "12R", -129},
      {"zoned mf upper-case negative", 'Z', Fmt(3, kSignTrailing, kStyleMfCobol), "12Y", -129},
      {"zoned wang negative", 'Z', Fmt(2, kSignTrailing, kStyleWang), "1\xD7", -17},
      {"zoned wang plain digit reads negative", 'Z', Fmt(2, kSignTrailing, kStyleWang), "17", -1},
      {"zoned acucobol leading", 'Z', Fmt(3, kSignLeading, kStyleAcuCobol), "J23", -123},
      {"zoned leading separate", 'Z', Fmt(4, kSignLeadingSeparate, kStyleIbm), "-012", -12},
      {"zoned leading separate plus", 'Z', Fmt(4, kSignLeadingSeparate, kStyleIbm), "+012", 12},
      {"zoned trailing separate plus", 'Z', Fmt(4, kSignTrailingSeparate, kStyleIbm), "012+", 12},
      {"zoned unsigned skips a sign", 'Z', Fmt(4, kSignTrailing, kStyleIbm, false), "-123", 123},
      {"zoned comma stops atof", 'Z', Fmt(5, kSignTrailingSeparate, kStyleIbm), "1,5--", -1},
      {"zoned point", 'Z', Fmt(5, kSignTrailingSeparate, kStyleIbm), "1.25+", 1.25},
      {"zoned letters end the number", 'Z', Fmt(4, kSignTrailingSeparate, kStyleIbm), "1x2+", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    NumberText t;
    const uint8_t* p = reinterpret_cast<const uint8_t*>(c.bytes.data());
    bool ok;
    switch (c.kind) {
      case 'P':
        ok = GetPack(p, c.fmt, &t);
        break;
      case 'B':
        ok = GetBCD(p, c.fmt, &t);
        break;
      default:
        ok = GetZone(p, c.fmt, &t, nullptr);
        break;
    }
    EXPECT_EQ(ReadNumber(ok, t), c.value);
  }
  NumberText t;
  bool unknown = false;
  GetZone(reinterpret_cast<const uint8_t*>("123"), Fmt(3, kSignLeading, kStyleUnisys), &t,
          &unknown);
  EXPECT_TRUE(unknown);
  GetZone(reinterpret_cast<const uint8_t*>("123"), Fmt(3, kSignTrailing, kStyleUnisys), &t,
          &unknown);
  EXPECT_FALSE(unknown);
}

// The writers from a whole magnitude lay out the same bytes as from text.
TEST(DecimalCodecs, WholeWritersMatchTextWriters) {
  std::mt19937_64 rng(23);
  const long positions[] = {kSignLeading, kSignTrailing, kSignLeadingSeparate,
                            kSignTrailingSeparate, kSignNone};
  const long styles[] = {kStyleIbm, kStyleMfCobol, kStyleWang, kStyleAcuCobol};
  for (int i = 0; i < 20000; ++i) {
    DecimalFormat f = Fmt(1 + static_cast<int>(rng() % 22), positions[rng() % 5], styles[rng() % 4],
                          (rng() & 1) != 0);
    f.pad = "\0 0*"[rng() % 4];
    const uint64_t mag = rng() >> (rng() % 64);
    const bool neg = rng() & 1;
    const std::string digits = std::to_string(mag);
    uint8_t a[32], b[32];
    PutPack(a, f, digits.data(), digits.size(), neg);
    PutPack(b, f, mag, neg);
    ASSERT_EQ(Hex(a, f.length), Hex(b, f.length)) << mag;
    PutZone(a, f, digits.data(), digits.size(), neg);
    PutZone(b, f, mag, neg);
    ASSERT_EQ(Hex(a, f.length), Hex(b, f.length)) << mag;
  }
  uint64_t m = 0;
  const double ties[] = {0.5, 1.5, 2.5, 4503599627370495.5};
  for (double v : ties) {
    ASSERT_TRUE(WholeMagnitude(v, &m));
    char want[40];
    snprintf(want, sizeof(want), "%.0f", v);
    EXPECT_EQ(std::to_string(m), want);
  }
  EXPECT_FALSE(WholeMagnitude(std::nan(""), &m));
  EXPECT_FALSE(WholeMagnitude(1e20, &m));
}

// The whole-number shortcut of the packed reader agrees with its text.
TEST(DecimalCodecs, PackedShortcutMatchesText) {
  std::mt19937_64 rng(17);
  const long positions[] = {kSignLeading, kSignTrailing, kSignLeadingSeparate,
                            kSignTrailingSeparate, kSignNone};
  const long styles[] = {kStyleIbm, kStyleAcuCobol};
  int shortcuts = 0;
  for (int i = 0; i < 20000; ++i) {
    uint8_t b[12];
    for (uint8_t& x : b) {
      x = static_cast<uint8_t>(rng());
      if (rng() % 4 != 0) x = static_cast<uint8_t>((x % 10) << 4 | (x / 10 % 10));
    }
    if (rng() & 1) b[rng() % 12] = static_cast<uint8_t>(0x0D | (rng() % 10) << 4);
    DecimalFormat f = Fmt(1 + static_cast<int>(rng() % 12), positions[rng() % 5], styles[rng() % 2],
                          (rng() & 1) != 0);
    int64_t whole;
    if (!GetPackWhole(b, f, &whole)) continue;
    ++shortcuts;
    NumberText t;
    ASSERT_TRUE(GetPack(b, f, &t));
    EXPECT_EQ(static_cast<double>(whole), NumberTextToDouble(t)) << Hex(b, f.length);
  }
  EXPECT_GT(shortcuts, 1000);
}

// The whole-number shortcut of the zoned reader agrees with its text.
TEST(DecimalCodecs, ZonedShortcutMatchesText) {
  std::mt19937_64 rng(19);
  const long positions[] = {kSignLeading, kSignTrailing, kSignLeadingSeparate,
                            kSignTrailingSeparate, kSignNone};
  const long styles[] = {kStyleIbm, kStyleMfCobol, kStyleWang, kStyleAcuCobol};
  const char alphabet[] = "0123456789{}ABJRpqyPY+- .,\xD5\xF3";
  int shortcuts = 0;
  for (int i = 0; i < 50000; ++i) {
    uint8_t b[20];
    for (uint8_t& x : b) {
      x = (rng() % 3 != 0) ? static_cast<uint8_t>('0' + rng() % 10)
                           : static_cast<uint8_t>(alphabet[rng() % (sizeof(alphabet) - 1)]);
    }
    DecimalFormat f = Fmt(1 + static_cast<int>(rng() % 19), positions[rng() % 5], styles[rng() % 4],
                          (rng() & 1) != 0);
    int64_t whole;
    if (!GetZoneWhole(b, f, &whole)) continue;
    ++shortcuts;
    NumberText t;
    ASSERT_TRUE(GetZone(b, f, &t, nullptr));
    EXPECT_EQ(static_cast<double>(whole), NumberTextToDouble(t))
        << std::string(reinterpret_cast<char*>(b), f.length);
  }
  EXPECT_GT(shortcuts, 1000);
}

TEST(DecimalCodecs, PadAndDBaseText) {
  DecimalFormat f = Fmt(5, kSignTrailing, kStyleMfCobol);
  f.pad = ' ';
  EXPECT_EQ(WriteWhole(kPutZone, f, 12), "   12");
  EXPECT_EQ(WriteWhole(kPutZone, f, 0), "    0");
  EXPECT_EQ(WriteWhole(kPutZone, f, -12), "   1r");
  f.pad = '*';
  f.sign_pos = kSignTrailingSeparate;
  EXPECT_EQ(WriteWhole(kPutZone, f, -12), "**12-");

  uint8_t out[16];
  PutDBNumber(out, 8, 2, 3.14159);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 8), "    3.14");
  PutDBNumber(out, 4, 2, -123.456);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 4), "3.46");
  NumberText t;
  EXPECT_TRUE(GetDBNumber(reinterpret_cast<const uint8_t*>("  -2.5e1 "), 9, &t));
  EXPECT_EQ(NumberTextToDouble(t), -25.0);
  EXPECT_FALSE(GetDBNumber(reinterpret_cast<const uint8_t*>("    "), 4, &t));
}

TEST(DecimalCodecs, NumberTextMatchesTheCLibrary) {
  std::mt19937_64 rng(3);
  for (int i = 0; i < 2000; ++i) {
    NumberText t;
    const int n = 1 + static_cast<int>(rng() % 22);
    for (int k = 0; k < n; ++k) {
      const char c = "0123456789.,x "[rng() % (k == 0 ? 10 : 14)];
      t.text.push_back(c);
    }
    t.neg = rng() & 1;
    const std::string s = std::string(t.neg ? "-" : "") + t.text.data();
    EXPECT_EQ(NumberTextToDouble(t), strtod(s.c_str(), nullptr)) << s;
  }
  TextBuf d;
  const double halves[] = {0.5, 1.5, 2.5, 1e15 + 0.5, 123.49, 1e25};
  for (double h : halves) {
    FormatWhole(h, &d);
    char want[64];
    snprintf(want, sizeof(want), "%.0f", h);
    EXPECT_STREQ(d.data(), want);
  }
}

TEST(BinaryCodecs, Layouts) {
  uint8_t b[8];
  PutBinary(b, -2, 8, false);
  EXPECT_EQ(Hex(b, 8), "FE FF FF FF FF FF FF FF");
  PutBinary(b, -2, 8, true);
  EXPECT_EQ(Hex(b, 8), "FF FF FF FF FF FF FF FE");
  PutBinary(b, 0x123456, 3, true);
  EXPECT_EQ(Hex(b, 3), "12 34 56");
  EXPECT_EQ(GetBinary(b, 3, true, true), 0x123456);
  const uint8_t neg3[] = {0x00, 0x00, 0x80};
  EXPECT_EQ(Get3Byte(neg3, false, true), -8388608);
  EXPECT_EQ(Get3Byte(neg3, false, false), 8388608);
  const uint8_t ff[] = {0xFF};
  EXPECT_EQ(GetBinary(ff, 1, false, true), -1);
  EXPECT_EQ(GetBinary(ff, 1, false, false), 255);
  Put4FuBin(b, -1, false);
  EXPECT_EQ(Hex(b, 4), "01 00 00 80");
  EXPECT_EQ(Get4FuBin(b, false), -1);
  Put4FuBin(b, -5, true);
  EXPECT_EQ(Hex(b, 4), "80 00 00 05");
  const uint8_t negzero[] = {0, 0, 0, 0x80};
  EXPECT_EQ(Get4FuBin(negzero, false), 0);
  PutAccPac(b, -300);
  EXPECT_EQ(Hex(b, 6), "82 2C 01 00 00 00");
  EXPECT_EQ(GetAccPac(b, 6), -300.0);
  PutAccPac(b, 1099511627776.0 + 7);  // 256^5 + 7 loses its high part
  EXPECT_EQ(Hex(b, 6), "05 07 00 00 00 00");
  const uint8_t wide[] = {0x07, 1, 0, 0, 0, 0, 0, 2};  // count 7 reads on
  EXPECT_EQ(GetAccPac(wide, 8), 1.0 + 2.0 * std::ldexp(1.0, 48));
  EXPECT_EQ(GetAccPac(wide, 6), 1.0);  // bytes beyond the record are absent
}

TEST(FloatCodecs, PublishedEncodings) {
  struct Case {
    const char* what;
    char kind;  // I IBM, V VAX, M MBF single, D MBF double, P Pascal, C Cray
    const char* bytes;
    double value;
  };
  const Case cases[] = {
      {"IBM 1.0", 'I', "41 10 00 00 00 00 00 00", 1.0},
      {"IBM -1.0", 'I', "C1 10 00 00 00 00 00 00", -1.0},
      {"IBM -118.625", 'I', "C2 76 A0 00", -118.625},
      {"IBM 100", 'I', "42 64 00 00", 100.0},
      {"IBM 0.1 (truncated)", 'I', "40 19 99 99 99 99 99 9A", 0.1},
      {"VAX F 1.0", 'V', "80 40 00 00", 1.0},
      {"VAX F -1.0", 'V', "80 C0 00 00", -1.0},
      {"VAX F 0.5", 'V', "00 40 00 00", 0.5},
      {"VAX D 1.0", 'V', "80 40 00 00 00 00 00 00", 1.0},
      {"VAX D 3.0", 'V', "40 41 00 00 00 00 00 00", 3.0},
      {"MBF 1.0", 'M', "00 00 00 81", 1.0},
      {"MBF -1.0", 'M', "00 00 80 81", -1.0},
      {"MBF 10.0", 'M', "00 00 20 84", 10.0},
      {"MBF double 1.0", 'D', "00 00 00 00 00 00 00 81", 1.0},
      {"MBF double 0.5", 'D', "00 00 00 00 00 00 00 80", 0.5},
      {"Pascal 1.0", 'P', "81 00 00 00 00 00", 1.0},
      {"Pascal 10.0", 'P', "84 00 00 00 00 20", 10.0},
      {"Pascal -1.0", 'P', "81 00 00 00 00 80", -1.0},
      {"Cray 1.0", 'C', "40 01 80 00 00 00 00 00", 1.0},
      {"Cray -3.0", 'C', "C0 02 C0 00 00 00 00 00", -3.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<uint8_t> b = Bytes(c.bytes);
    const int len = static_cast<int>(b.size());
    uint8_t out[16] = {0};
    double got = 0;
    switch (c.kind) {
      case 'I':
        got = GetIBMmfflt(b.data(), len);
        PutIBMmfflt(out, len, c.value);
        break;
      case 'V':
        got = GetVaxFloat(b.data(), len);
        PutVaxFloat(out, len, c.value);
        break;
      case 'M':
        got = GetmscbFloat(b.data());
        EXPECT_TRUE(PutmscbFloat(out, static_cast<float>(c.value)));
        break;
      case 'D':
        got = GetmscbDouble(b.data());
        EXPECT_TRUE(PutmscbDouble(out, c.value));
        break;
      case 'P':
        got = GetPasReal(b.data(), false);
        PutPasReal(out, c.value);
        break;
      default:
        got = GetCray(b.data(), true);
        PutCray(out, c.value, true);
        break;
    }
    if (c.kind == 'I' && len == 8 && c.value == 0.1) {
      EXPECT_NEAR(got, 0.1, 1e-16);
    } else {
      EXPECT_EQ(got, c.value);
    }
    EXPECT_EQ(Hex(out, len), Hex(b.data(), len));
  }
}

TEST(FloatCodecs, ZeroesAndDocumentedOddities) {
  const uint8_t zero[10] = {0};
  EXPECT_EQ(GetIBMmfflt(zero, 8), 0.0);
  EXPECT_EQ(GetVaxFloat(zero, 4), 0.0);
  EXPECT_EQ(GetVaxFloat(zero, 8), 0.0);
  EXPECT_EQ(GetmscbFloat(zero), 0.0f);
  EXPECT_EQ(GetmscbDouble(zero), 0.0);
  EXPECT_EQ(GetPasReal(zero, false), 0.0);
  EXPECT_EQ(GetCray(zero, false), 0.0);
  EXPECT_EQ(GetTReal(zero, false), 0.0);
  EXPECT_EQ(GetMAGNum(zero, 6), 0.0);
  const uint8_t ibm_signed_zero[] = {0xC1, 0, 0, 0};
  EXPECT_EQ(GetIBMmfflt(ibm_signed_zero, 4), 0.0);
  // A MBF exponent byte of 1 wraps to the IEEE exponent 255 (infinity here).
  const uint8_t mbf1[] = {0, 0, 0, 1};
  EXPECT_TRUE(std::isinf(GetmscbFloat(mbf1)));
  // An exponent byte of 0 keeps the fraction bits: a denormal, not zero.
  const uint8_t mbf0[] = {1, 0, 0, 0};
  EXPECT_GT(GetmscbFloat(mbf0), 0.0f);
  uint8_t out[8];
  EXPECT_FALSE(PutmscbFloat(out, 2e38f));
  EXPECT_FALSE(PutmscbFloat(out, std::numeric_limits<float>::quiet_NaN()));
  EXPECT_FALSE(PutmscbDouble(out, 0.0));
  EXPECT_FALSE(PutmscbDouble(out, 1e-40));
  EXPECT_FALSE(PutmscbDouble(out, 2e38));
  // The Pascal reader hands its result back reversed for MSB-first.
  const uint8_t one[] = {0x81, 0, 0, 0, 0, 0};
  const double rev = GetPasReal(one, true);
  uint8_t rb[8];
  std::memcpy(rb, &rev, 8);
  EXPECT_EQ(Hex(rb, 8), "3F F0 00 00 00 00 00 00");
}

TEST(FloatCodecs, WritersRoundClampAndInvert) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> mant(-1.0, 1.0);
  for (int i = 0; i < 5000; ++i) {
    const double v = std::ldexp(mant(rng), static_cast<int>(rng() % 200) - 100);
    uint8_t b[10];
    // Exact formats: 8-byte IBM, VAX D, 80-bit.
    PutIBMmfflt(b, 8, v);
    EXPECT_EQ(GetIBMmfflt(b, 8), v);
    PutVaxFloat(b, 8, v);
    EXPECT_EQ(GetVaxFloat(b, 8), v);
    PutTReal(b, v, i & 1);
    EXPECT_EQ(GetTReal(b, i & 1), v);
    // Narrower formats: within half a unit of their last place.
    PutIBMmfflt(b, 4, v);
    int e;
    std::frexp(v, &e);
    const int h = e > 0 ? (e + 3) / 4 : -((-e) / 4);
    EXPECT_LE(std::fabs(GetIBMmfflt(b, 4) - v), std::ldexp(1.0, 4 * h - 25));
    PutVaxFloat(b, 4, v);
    EXPECT_EQ(GetVaxFloat(b, 4), static_cast<double>(static_cast<float>(v)));
    PutPasReal(b, v);
    EXPECT_LE(std::fabs(GetPasReal(b, false) - v), std::ldexp(1.0, e - 41));
    PutCray(b, v, false);
    EXPECT_LE(std::fabs(GetCray(b, false) - v), std::ldexp(1.0, e - 49));
    PutMAGNum(b, 10, v);
    EXPECT_NEAR(GetMAGNum(b, 10), v, std::fabs(v) * 1e-17 * 10);
    PutMAGReal(b, 8, v);
    EXPECT_EQ(GetMAGReal(b, 8), v);
  }
  uint8_t b[8];
  PutIBMmfflt(b, 4, 1e300);
  EXPECT_EQ(Hex(b, 4), "7F FF FF FF");
  PutIBMmfflt(b, 4, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(Hex(b, 4), "FF FF FF FF");
  PutIBMmfflt(b, 4, std::nan(""));
  EXPECT_EQ(Hex(b, 4), "00 00 00 00");
  PutVaxFloat(b, 4, 1e39);
  EXPECT_EQ(Hex(b, 4), "FF 7F FF FF");
  PutVaxFloat(b, 8, -1e300);
  EXPECT_EQ(Hex(b, 8), "FF FF FF FF FF FF FF FF");
  PutVaxFloat(b, 4, 1e-40);
  EXPECT_EQ(Hex(b, 4), "00 00 00 00");
  PutPasReal(b, 1e300);
  EXPECT_EQ(Hex(b, 6), "FF FF FF FF FF 7F");
  PutCray(b, std::numeric_limits<double>::infinity(), true);
  EXPECT_EQ(Hex(b, 8), "5F FF FF FF FF FF FF FF");
  PutMAGNum(b, 4, -123.45);
  EXPECT_EQ(Hex(b, 4), "C3 12 34 50");
  PutMAGNum(b, 3, 99999);  // rounds up to 0.10 x 10^6
  EXPECT_EQ(Hex(b, 3), "46 10 00");
  // Ties round to even in the binary formats.
  PutVaxFloat(b, 4, 1.0 + std::ldexp(1.0, -24));
  EXPECT_EQ(GetVaxFloat(b, 4), 1.0);
  PutVaxFloat(b, 4, 1.0 + 3 * std::ldexp(1.0, -24));
  EXPECT_EQ(GetVaxFloat(b, 4), 1.0 + std::ldexp(1.0, -22));
}

// The hardware's 80-bit format is the oracle: every pattern reads as the
// hardware converts it, and every double writes as the hardware stores it.
TEST(FloatCodecs, IntelExtendedAgainstTheHardware) {
  std::mt19937_64 rng(80);
  for (int i = 0; i < 20000; ++i) {
    uint8_t b[10];
    const uint64_t sig = rng();
    std::memcpy(b, &sig, 8);
    int exp;
    switch (i % 4) {
      case 0:
        exp = static_cast<int>(rng() % 0x8000);
        break;
      case 1:
        exp = 16383 - 1100 + static_cast<int>(rng() % 2200);
        break;
      case 2:
        exp = 16383 - 1023 - 64 + static_cast<int>(rng() % 70);
        break;
      default:
        exp = (rng() & 1) ? 0 : 0x7FFF;
        break;
    }
    if (exp != 0) b[7] |= 0x80;  // the hardware rejects unnormals
    exp |= (rng() & 1) ? 0x8000 : 0;
    b[8] = static_cast<uint8_t>(exp);
    b[9] = static_cast<uint8_t>(exp >> 8);
    long double ld;
    std::memset(&ld, 0, sizeof(ld));
    std::memcpy(&ld, b, 10);
    const double want = static_cast<double>(ld);
    const double got = GetTReal(b, false);
    if (std::isnan(want)) {
      EXPECT_TRUE(std::isnan(got)) << Hex(b, 10);
    } else {
      EXPECT_EQ(got, want) << Hex(b, 10);
      EXPECT_EQ(std::signbit(got), std::signbit(want)) << Hex(b, 10);
    }
    uint8_t rev[10];
    for (int k = 0; k < 10; ++k) rev[k] = b[9 - k];
    if (!std::isnan(want)) {
      EXPECT_EQ(GetTReal(rev, true), want);
    }

    uint64_t dbits = rng();
    double d;
    std::memcpy(&d, &dbits, 8);
    if (std::isnan(d)) continue;
    uint8_t out[10];
    PutTReal(out, d, false);
    const long double hw = d;
    EXPECT_EQ(Hex(out, 10), Hex(reinterpret_cast<const uint8_t*>(&hw), 10));
  }
}

TEST(PunchCodecs, HollerithCardCode) {
  // Published punches of the card code: letters, digits and a few specials.
  struct Case {
    char c;
    const char* bytes;  // the column's two bytes
  };
  const Case cases[] = {
      {'A', "24 00"},  // 12-1
      {'I', "20 01"},  // 12-9
      {'J', "14 00"},  // 11-1
      {'S', "0A 00"},  // 0-2
      {'Z', "08 01"},  // 0-9
      {'0', "08 00"}, {'1', "04 00"}, {'9', "00 01"}, {'&', "20 00"},
      {'-', "10 00"}, {'/', "0C 00"}, {'.', "21 02"},  // 12-8-3
      {'$', "11 02"},                                  // 11-8-3
      {',', "09 02"},                                  // 0-8-3
      {'#', "01 02"},                                  // 8-3
      {' ', "00 00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(1, c.c));
    uint8_t out[2];
    PutCBAlphaNumeric(out, 2, &c.c, 1);
    EXPECT_EQ(Hex(out, 2), c.bytes);
    TextBuf t;
    GetCBAlphaNumeric(Bytes(c.bytes).data(), 2, &t);
    EXPECT_EQ(std::string(t.data()), std::string(1, c.c));
  }
  // Every character of the code round-trips; lower case is punched as upper.
  const std::string all = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ &-/.<(+|!$*);,%_>?:#@'=\"";
  std::vector<uint8_t> buf(2 * all.size() + 1);
  PutCBAlphaNumeric(buf.data(), static_cast<int>(buf.size()), all.data(),
                    static_cast<int>(all.size()));
  TextBuf t;
  GetCBAlphaNumeric(buf.data(), static_cast<int>(buf.size()), &t);
  EXPECT_EQ(std::string(t.data()), all);
  PutCBAlphaNumeric(buf.data(), 8, "ab~", 3);
  GetCBAlphaNumeric(buf.data(), 8, &t);
  EXPECT_EQ(std::string(t.data()), "AB  ");
  const uint8_t junk[] = {0x3F, 0x3F};  // every row punched
  GetCBAlphaNumeric(junk, 2, &t);
  EXPECT_EQ(std::string(t.data()), "~");
}

TEST(PunchCodecs, MultiPunchDigits) {
  uint8_t b[6];
  PutCBMultiPunch(b, 6, "40950001", -1);
  EXPECT_EQ(Hex(b, 6), "00 00 3F 3F 00 01");
  TextBuf t;
  GetCBMultiPunch(b, 6, &t);
  EXPECT_EQ(std::string(t.data()), "000040950001");
  PutCBMultiPunch(b, 4, "9999", -1);  // above 4095: the low 12 bits
  EXPECT_EQ(GetColumn(b + 2), 9999 & 0xFFF);
  std::mt19937 rng(5);
  for (int i = 0; i < 200; ++i) {
    const uint16_t rows = rng() & 0xFFF;
    PutColumn(b, rows);
    EXPECT_EQ(GetColumn(b), rows);
    EXPECT_EQ(b[0] & 0xC0, 0);
    EXPECT_EQ(b[1] & 0xC0, 0);
  }
}

}  // namespace
