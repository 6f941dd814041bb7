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
#include "types/datatype_helpers.h"

namespace {

using namespace zq::codec;  // NOLINT: the codecs are the subject here

using zqtest::Hex;

using zqtest::FromHex;

const uint8_t* U8(const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); }

DecimalFormat Fmt(int len, long pos, long style, bool is_signed = true) {
  DecimalFormat f;
  f.length = len;
  f.sign_pos = pos;
  f.sign_style = style;
  f.is_signed = is_signed;
  return f;
}

// The text forms of the overloaded decimal writers.
using PutText = void (*)(uint8_t*, const DecimalFormat&, const char*, size_t, bool);
const PutText kPack = PutPack, kZone = PutZone, kBCD = PutBCD;

// Writes `v` (a whole number) through a decimal writer.
std::string WriteWhole(PutText put, const DecimalFormat& f, long long v) {
  const std::string digits = std::to_string(v < 0 ? -v : v);
  uint8_t out[64] = {0};
  put(out, f, digits.data(), digits.size(), v < 0);
  return std::string(reinterpret_cast<char*>(out), f.length);
}

// Reads a packed ('P'), BCD ('B') or zoned field; -999999 when no value.
double ReadDecimal(char kind, const uint8_t* p, const DecimalFormat& f) {
  NumberText t;
  const bool ok = kind == 'P'   ? GetPack(p, f, &t)
                  : kind == 'B' ? GetBCD(p, f, &t)
                                : GetZone(p, f, &t, nullptr);
  return ok ? NumberTextToDouble(t) : -999999.0;
}

TEST(DecimalCodecs, DocumentedLayouts) {
  const struct {
    const char* what;
    PutText put;
    DecimalFormat fmt;
    long long value;
    std::string bytes;
  } cases[] = {
      {"packed trailing -123", kPack, Fmt(2, kSignTrailingSeparate, kStyleMfCobol), -123,
       "\x12\x3D"},
      {"packed rmcobol +123", kPack, Fmt(2, kSignTrailing, kStyleRmCobol), 123, "\x12\x3B"},
      {"packed acucobol +123", kPack, Fmt(2, kSignTrailing, kStyleAcuCobol), 123, "\x12\x3F"},
      {"packed ibm +123", kPack, Fmt(2, kSignTrailing, kStyleIbm), 123, "\x12\x3C"},
      {"packed unsigned 123", kPack, Fmt(2, kSignTrailing, kStyleIbm, false), 123, "\x12\x3F"},
      {"packed leading -45", kPack, Fmt(2, kSignLeading, kStyleMfCobol), -45, "\x50\x45"},
      {"packed leading +45", kPack, Fmt(2, kSignLeadingSeparate, kStyleMfCobol), 45, "\x30\x45"},
      {"packed none acucobol", kPack, Fmt(2, kSignNone, kStyleAcuCobol), 1234, "\x12\x34"},
      {"packed none other", kPack, Fmt(2, kSignNone, kStyleIbm), -234, "\x52\x34"},
      {"packed overflow drops left", kPack, Fmt(2, kSignTrailing, kStyleIbm), 98765, "\x76\x5C"},
      {"bcd -12", kBCD, Fmt(4, kSignTrailing, kStyleIbm), -12, std::string("\x00\x01\x02\x0D", 4)},
      {"bcd acucobol +12", kBCD, Fmt(4, kSignTrailing, kStyleAcuCobol), 12,
       std::string("\x00\x01\x02\x0B", 4)},
      {"bcd unsigned 12", kBCD, Fmt(3, kSignTrailing, kStyleIbm, false), 12,
       std::string("\x00\x01\x02", 3)},
      {"zoned ibm -120", kZone, Fmt(4, kSignTrailing, kStyleIbm), -120, "012}"},
      {"zoned ibm 125", kZone, Fmt(4, kSignTrailing, kStyleIbm), 125, "012E"},
      {"zoned wang -5", kZone, Fmt(2, kSignTrailing, kStyleWang), -5, "0\xD5"},
      {"zoned wang 5", kZone, Fmt(2, kSignTrailing, kStyleWang), 5, "0\xF5"},
      {"zoned acucobol trailing -5", kZone, Fmt(3, kSignTrailing, kStyleAcuCobol), -5, "00N"},
      {"zoned acucobol leading -5", kZone, Fmt(3, kSignLeading, kStyleAcuCobol), -5, "005"},
      {"zoned unisys trailing -5", kZone, Fmt(3, kSignTrailing, kStyleUnisys), -5, "005"},
      {"zoned trailing sep -12", kZone, Fmt(4, kSignTrailingSeparate, kStyleMfCobol), -12, "012-"},
      {"zoned leading sep -12", kZone, Fmt(4, kSignLeadingSeparate, kStyleMfCobol), -12, "-012"},
      {"zoned leading sep 12", kZone, Fmt(4, kSignLeadingSeparate, kStyleMfCobol), 12, "0012"},
      {"zoned unsigned drops sign", kZone, Fmt(3, kSignTrailing, kStyleIbm, false), -7, "007"},
  };
  for (const auto& c : cases) {
    const std::string got = WriteWhole(c.put, c.fmt, c.value);
    EXPECT_EQ(Hex(got.data(), got.size()), Hex(c.bytes.data(), c.bytes.size())) << c.what;
  }
  // Padding replaces leading zeros, not the sign.
  DecimalFormat f = Fmt(5, kSignTrailing, kStyleMfCobol);
  f.pad = ' ';
  EXPECT_EQ(WriteWhole(kZone, f, 12), "   12");
  EXPECT_EQ(WriteWhole(kZone, f, 0), "    0");
  EXPECT_EQ(WriteWhole(kZone, f, -12), "   1r");
  f.pad = '*';
  f.sign_pos = kSignTrailingSeparate;
  EXPECT_EQ(WriteWhole(kZone, f, -12), "**12-");
}

TEST(DecimalCodecs, ReadingRules) {
  const struct {
    const char* what;
    char kind;  // P packed, B BCD, Z zoned
    DecimalFormat fmt;
    std::string bytes;
    double value;  // -999999 when the reader yields no value
  } cases[] = {
      {"packed 0xB is positive", 'P', Fmt(2, kSignTrailing, kStyleIbm), "\x12\x3B", 123},
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
      {"zoned mf upper-case negative", 'Z', Fmt(3, kSignTrailing, kStyleMfCobol), "12Y", -129},
      {"zoned wang negative", 'Z', Fmt(2, kSignTrailing, kStyleWang), "1\xD7", -17},
      {"zoned wang plain digit reads negative", 'Z', Fmt(2, kSignTrailing, kStyleWang), "17", -1},
      {"zoned acucobol leading", 'Z', Fmt(3, kSignLeading, kStyleAcuCobol), "J23", -123},
      {"zoned unsigned skips a sign", 'Z', Fmt(4, kSignTrailing, kStyleIbm, false), "-123", 123},
      {"zoned comma stops atof", 'Z', Fmt(5, kSignTrailingSeparate, kStyleIbm), "1,5--", -1},
      {"zoned point", 'Z', Fmt(5, kSignTrailingSeparate, kStyleIbm), "1.25+", 1.25},
      {"zoned letters end the number", 'Z', Fmt(4, kSignTrailingSeparate, kStyleIbm), "1x2+", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(ReadDecimal(c.kind, U8(c.bytes), c.fmt), c.value) << c.what;
  // Leading overpunch is unknown to the Unisys style.
  NumberText t;
  bool unknown = false;
  GetZone(U8("123"), Fmt(3, kSignLeading, kStyleUnisys), &t, &unknown);
  EXPECT_TRUE(unknown);
  GetZone(U8("123"), Fmt(3, kSignTrailing, kStyleUnisys), &t, &unknown);
  EXPECT_FALSE(unknown);
}

// The whole-number writers and readers lay out and read the same values as
// the text paths, over random formats, magnitudes and bytes.
TEST(DecimalCodecs, WholeNumberPathsMatchTextPaths) {
  std::mt19937_64 rng(23);
  const long positions[] = {kSignLeading, kSignTrailing, kSignLeadingSeparate,
                            kSignTrailingSeparate, kSignNone};
  const long styles[] = {kStyleIbm, kStyleAcuCobol, kStyleMfCobol, kStyleWang};
  auto random_format = [&](int max_len, int n_styles) {
    return Fmt(1 + static_cast<int>(rng() % max_len), positions[rng() % 5],
               styles[rng() % n_styles], (rng() & 1) != 0);
  };
  for (int i = 0; i < 20000; ++i) {
    DecimalFormat f = random_format(22, 4);
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
  for (double v : {0.5, 1.5, 2.5, 4503599627370495.5}) {
    ASSERT_TRUE(WholeMagnitude(v, &m));
    char want[40];
    snprintf(want, sizeof(want), "%.0f", v);
    EXPECT_EQ(std::to_string(m), want);
  }
  EXPECT_FALSE(WholeMagnitude(std::nan(""), &m));
  EXPECT_FALSE(WholeMagnitude(1e20, &m));

  // Readers: mostly valid digits with stray signs, letters and blanks.
  const char alphabet[] = "0123456789{}ABJRpqyPY+- .,\xD5\xF3";
  int pack_shortcuts = 0, zone_shortcuts = 0;
  for (int i = 0; i < 50000; ++i) {
    uint8_t b[20];
    for (uint8_t& x : b) x = static_cast<uint8_t>(rng());
    int64_t whole;
    NumberText t;
    if (i % 2 == 0) {
      for (uint8_t& x : b)
        if (rng() % 4 != 0) x = static_cast<uint8_t>((x % 10) << 4 | (x / 10 % 10));
      if (rng() & 1) b[rng() % 12] = static_cast<uint8_t>(0x0D | (rng() % 10) << 4);
      const DecimalFormat f = random_format(12, 2);
      if (!GetPackWhole(b, f, &whole)) continue;
      ++pack_shortcuts;
      ASSERT_TRUE(GetPack(b, f, &t));
      EXPECT_EQ(static_cast<double>(whole), NumberTextToDouble(t)) << Hex(b, f.length);
    } else {
      for (uint8_t& x : b)
        x = (rng() % 3 != 0) ? static_cast<uint8_t>('0' + rng() % 10)
                             : static_cast<uint8_t>(alphabet[rng() % (sizeof(alphabet) - 1)]);
      const DecimalFormat f = random_format(19, 4);
      if (!GetZoneWhole(b, f, &whole)) continue;
      ++zone_shortcuts;
      ASSERT_TRUE(GetZone(b, f, &t, nullptr));
      EXPECT_EQ(static_cast<double>(whole), NumberTextToDouble(t)) << Hex(b, f.length);
    }
  }
  EXPECT_GT(pack_shortcuts, 1000);
  EXPECT_GT(zone_shortcuts, 1000);
}

// Number texts against the C library's strtod and "%.0f"; dBASE numeric text.
TEST(DecimalCodecs, NumberTextAndDBase) {
  std::mt19937_64 rng(3);
  for (int i = 0; i < 2000; ++i) {
    NumberText t;
    const int n = 1 + static_cast<int>(rng() % 22);
    for (int k = 0; k < n; ++k) t.text.push_back("0123456789.,x "[rng() % (k == 0 ? 10 : 14)]);
    t.neg = rng() & 1;
    const std::string s = std::string(t.neg ? "-" : "") + t.text.data();
    EXPECT_EQ(NumberTextToDouble(t), strtod(s.c_str(), nullptr)) << s;
  }
  TextBuf d;
  for (double h : {0.5, 1.5, 2.5, 1e15 + 0.5, 123.49, 1e25}) {
    FormatWhole(h, &d);
    char want[64];
    snprintf(want, sizeof(want), "%.0f", h);
    EXPECT_STREQ(d.data(), want);
  }

  uint8_t out[16];
  PutDBNumber(out, 8, 2, 3.14159);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 8), "    3.14");
  PutDBNumber(out, 4, 2, -123.456);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 4), "3.46");
  NumberText t;
  EXPECT_TRUE(GetDBNumber(U8("  -2.5e1 "), 9, &t));
  EXPECT_EQ(NumberTextToDouble(t), -25.0);
  EXPECT_FALSE(GetDBNumber(U8("    "), 4, &t));
}

TEST(BinaryCodecs, Layouts) {
  uint8_t b[8];
  PutBinary(b, 0x123456, 3, true);
  EXPECT_EQ(Hex(b, 3), "12 34 56");
  EXPECT_EQ(GetBinary(b, 3, true, true), 0x123456);
  const uint8_t neg3[] = {0x00, 0x00, 0x80};
  EXPECT_EQ(Get3Byte(neg3, false, true), -8388608);
  EXPECT_EQ(Get3Byte(neg3, false, false), 8388608);
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

// Writes `v` with codec `kind` (I IBM, V VAX, M and D the Microsoft BASIC
// single and double, P Pascal, C Cray, N Magic number) as `len` bytes;
// false when the writer declines.
bool PutFloat(char kind, uint8_t* out, int len, double v) {
  switch (kind) {
    case 'I': PutIBMmfflt(out, len, v); return true;
    case 'V': PutVaxFloat(out, len, v); return true;
    case 'M': return PutmscbFloat(out, static_cast<float>(v));
    case 'D': return PutmscbDouble(out, v);
    case 'P': PutPasReal(out, v); return true;
    case 'C': PutCray(out, v, true); return true;
    default: PutMAGNum(out, len, v); return true;
  }
}

double GetFloat(char kind, const uint8_t* b, int len) {
  switch (kind) {
    case 'I': return GetIBMmfflt(b, len);
    case 'V': return GetVaxFloat(b, len);
    case 'M': return GetmscbFloat(b);
    case 'D': return GetmscbDouble(b);
    case 'P': return GetPasReal(b, false);
    case 'C': return GetCray(b, true);
    default: return GetMAGNum(b, len);
  }
}

// Published encodings read and write both ways; out-of-range values clamp,
// ties round to even, and the Microsoft BASIC writers decline what they
// cannot encode (no bytes).
TEST(FloatCodecs, PublishedEncodingsAndClamps) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    char kind;
    const char* bytes;
    double value;
    bool reads_back;
  } cases[] = {
      {'I', "41 10 00 00 00 00 00 00", 1.0, true},
      {'I', "C1 10 00 00 00 00 00 00", -1.0, true},
      {'I', "C2 76 A0 00", -118.625, true},
      {'I', "42 64 00 00", 100.0, true},
      {'I', "40 19 99 99 99 99 99 9A", 0.1, true},  // truncated
      {'V', "80 40 00 00", 1.0, true},
      {'V', "80 C0 00 00", -1.0, true},
      {'V', "00 40 00 00", 0.5, true},
      {'V', "80 40 00 00 00 00 00 00", 1.0, true},
      {'V', "40 41 00 00 00 00 00 00", 3.0, true},
      {'M', "00 00 00 81", 1.0, true},
      {'M', "00 00 80 81", -1.0, true},
      {'M', "00 00 20 84", 10.0, true},
      {'D', "00 00 00 00 00 00 00 81", 1.0, true},
      {'D', "00 00 00 00 00 00 00 80", 0.5, true},
      {'P', "81 00 00 00 00 00", 1.0, true},
      {'P', "84 00 00 00 00 20", 10.0, true},
      {'P', "81 00 00 00 00 80", -1.0, true},
      {'C', "40 01 80 00 00 00 00 00", 1.0, true},
      {'C', "C0 02 C0 00 00 00 00 00", -3.0, true},
      {'I', "7F FF FF FF", 1e300, false},
      {'I', "FF FF FF FF", -inf, false},
      {'I', "00 00 00 00", std::nan(""), false},
      {'V', "FF 7F FF FF", 1e39, false},
      {'V', "FF FF FF FF FF FF FF FF", -1e300, false},
      {'V', "00 00 00 00", 1e-40, false},
      {'V', "80 40 00 00", 1.0 + std::ldexp(1.0, -24), false},
      {'V', "80 40 02 00", 1.0 + 3 * std::ldexp(1.0, -24), false},
      {'P', "FF FF FF FF FF 7F", 1e300, false},
      {'C', "5F FF FF FF FF FF FF FF", inf, false},
      {'N', "C3 12 34 50", -123.45, false},
      {'N', "46 10 00", 99999, false},  // rounds up to 0.10 x 10^6
      {'M', "", 2e38, false},
      {'M', "", std::nan(""), false},
      {'D', "", 0.0, false},
      {'D', "", 1e-40, false},
      {'D', "", 2e38, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(1, c.kind) + " " + c.bytes);
    const std::string bytes = FromHex(c.bytes);
    const int len = static_cast<int>(bytes.size());
    uint8_t out[16] = {0};
    EXPECT_EQ(PutFloat(c.kind, out, len, c.value), len > 0);
    EXPECT_EQ(Hex(out, len), c.bytes);
    if (c.reads_back) {
      EXPECT_NEAR(GetFloat(c.kind, U8(bytes), len), c.value, c.value == 0.1 ? 1e-16 : 0);
    }
  }
}

TEST(FloatCodecs, ZeroesAndDocumentedOddities) {
  // All-zero fields, and an IBM field with a sign but no fraction, are 0.
  const uint8_t zero[10] = {0};
  const uint8_t ibm_signed_zero[] = {0xC1, 0, 0, 0};
  EXPECT_EQ((std::vector<double>{GetIBMmfflt(zero, 8), GetVaxFloat(zero, 4), GetVaxFloat(zero, 8),
                                 GetmscbFloat(zero), GetmscbDouble(zero), GetPasReal(zero, false),
                                 GetCray(zero, false), GetTReal(zero, false), GetMAGNum(zero, 6),
                                 GetIBMmfflt(ibm_signed_zero, 4)}),
            std::vector<double>(10, 0.0));
  // A MBF exponent byte of 1 wraps to the IEEE exponent 255 (infinity here).
  const uint8_t mbf1[] = {0, 0, 0, 1};
  EXPECT_TRUE(std::isinf(GetmscbFloat(mbf1)));
  // An exponent byte of 0 keeps the fraction bits: a denormal, not zero.
  const uint8_t mbf0[] = {1, 0, 0, 0};
  EXPECT_GT(GetmscbFloat(mbf0), 0.0f);
  // The Pascal reader hands its result back reversed for MSB-first.
  const uint8_t one[] = {0x81, 0, 0, 0, 0, 0};
  const double rev = GetPasReal(one, true);
  EXPECT_EQ(Hex(&rev, 8), "3F F0 00 00 00 00 00 00");
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
}

// The hardware's 80-bit format is the oracle: every pattern reads as the
// hardware converts it, and every double writes as the hardware stores it.
TEST(FloatCodecs, IntelExtendedAgainstTheHardware) {
  std::mt19937_64 rng(80);
  for (int i = 0; i < 20000; ++i) {
    uint8_t b[10];
    const uint64_t sig = rng();
    std::memcpy(b, &sig, 8);
    // Any exponent, the double range, the double's denormal edge, or the ends.
    int exp = i % 4 == 0   ? static_cast<int>(rng() % 0x8000)
              : i % 4 == 1 ? 16383 - 1100 + static_cast<int>(rng() % 2200)
              : i % 4 == 2 ? 16383 - 1023 - 64 + static_cast<int>(rng() % 70)
              : (rng() & 1) ? 0
                            : 0x7FFF;
    if (exp != 0) b[7] |= 0x80;  // the hardware rejects unnormals
    exp |= (rng() & 1) ? 0x8000 : 0;
    b[8] = static_cast<uint8_t>(exp);
    b[9] = static_cast<uint8_t>(exp >> 8);
    long double ld;
    std::memset(&ld, 0, sizeof(ld));
    std::memcpy(&ld, b, 10);
    const double want = static_cast<double>(ld);
    const double got = GetTReal(b, false);
    uint8_t rev[10];
    for (int k = 0; k < 10; ++k) rev[k] = b[9 - k];
    if (std::isnan(want)) {
      EXPECT_TRUE(std::isnan(got)) << Hex(b, 10);
    } else {
      EXPECT_EQ(got, want) << Hex(b, 10);
      EXPECT_EQ(std::signbit(got), std::signbit(want)) << Hex(b, 10);
      EXPECT_EQ(GetTReal(rev, true), want);
    }

    uint64_t dbits = rng();
    double d;
    std::memcpy(&d, &dbits, 8);
    if (std::isnan(d)) continue;
    uint8_t out[10];
    PutTReal(out, d, false);
    const long double hw = d;
    EXPECT_EQ(Hex(out, 10), Hex(&hw, 10));
  }
}

TEST(PunchCodecs, HollerithCardCode) {
  // Published punches of the card code (the column's two bytes): letters,
  // digits and a few specials.
  const struct {
    char c;
    const char* bytes;
  } cases[] = {
      {'A', "24 00"}, {'I', "20 01"}, {'J', "14 00"}, {'S', "0A 00"},  // 12-1 12-9 11-1 0-2
      {'Z', "08 01"}, {'0', "08 00"}, {'1', "04 00"}, {'9', "00 01"},  // 0-9
      {'&', "20 00"}, {'-', "10 00"}, {'/', "0C 00"}, {'.', "21 02"},  // 12-8-3
      {'$', "11 02"}, {',', "09 02"}, {'#', "01 02"}, {' ', "00 00"},  // 11-8-3 0-8-3 8-3
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(1, c.c));
    uint8_t out[2];
    PutCBAlphaNumeric(out, 2, &c.c, 1);
    EXPECT_EQ(Hex(out, 2), c.bytes);
    TextBuf t;
    GetCBAlphaNumeric(U8(FromHex(c.bytes)), 2, &t);
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
    EXPECT_EQ((b[0] | b[1]) & 0xC0, 0);
  }
}

}  // namespace
