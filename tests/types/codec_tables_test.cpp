// Codec layouts, published encodings and round trips; x86 long double for 80-bit.
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

using zqtest::FromHex;
using zqtest::Hex;

const uint8_t* U8(const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); }

DecimalFormat Fmt(int len, long pos, long style, bool is_signed = true, char pad = 0) {
  DecimalFormat f;
  f.length = len;
  f.sign_pos = pos;
  f.sign_style = style;
  f.is_signed = is_signed;
  f.pad = pad;
  return f;
}

// Layouts GnuCOBOL does not produce (its own are swept against it); padding
// replaces leading zeros, not the sign.
TEST(DecimalCodecs, DocumentedLayouts) {
  using PutText = void (*)(uint8_t*, const DecimalFormat&, const char*, size_t, bool);
  const PutText kPack = PutPack, kZone = PutZone, kBCD = PutBCD;
  const struct {
    PutText put;
    DecimalFormat fmt;
    long long value;
    std::string bytes;
  } cases[] = {
      {kPack, Fmt(2, kSignTrailing, kStyleRmCobol), 123, "\x12\x3B"},
      {kPack, Fmt(2, kSignTrailing, kStyleAcuCobol), 123, "\x12\x3F"},
      {kPack, Fmt(2, kSignLeading, kStyleMfCobol), -45, "\x50\x45"},
      {kPack, Fmt(2, kSignLeadingSeparate, kStyleMfCobol), 45, "\x30\x45"},
      {kPack, Fmt(2, kSignNone, kStyleAcuCobol), 1234, "\x12\x34"},
      {kPack, Fmt(2, kSignNone, kStyleIbm), -234, "\x52\x34"},
      {kPack, Fmt(2, kSignTrailing, kStyleIbm), 98765, "\x76\x5C"},  // overflow drops the left
      {kBCD, Fmt(4, kSignTrailing, kStyleIbm), -12, std::string("\x00\x01\x02\x0D", 4)},
      {kBCD, Fmt(4, kSignTrailing, kStyleAcuCobol), 12, std::string("\x00\x01\x02\x0B", 4)},
      {kBCD, Fmt(3, kSignTrailing, kStyleIbm, false), 12, std::string("\x00\x01\x02", 3)},
      {kZone, Fmt(2, kSignTrailing, kStyleWang), -5, "0\xD5"},
      {kZone, Fmt(2, kSignTrailing, kStyleWang), 5, "0\xF5"},
      {kZone, Fmt(3, kSignTrailing, kStyleAcuCobol), -5, "00N"},
      {kZone, Fmt(3, kSignLeading, kStyleAcuCobol), -5, "005"},
      {kZone, Fmt(3, kSignTrailing, kStyleUnisys), -5, "005"},
      {kZone, Fmt(3, kSignTrailing, kStyleIbm, false), -7, "007"},
      {kZone, Fmt(5, kSignTrailing, kStyleMfCobol, true, ' '), 12, "   12"},
      {kZone, Fmt(5, kSignTrailing, kStyleMfCobol, true, ' '), 0, "    0"},
      {kZone, Fmt(5, kSignTrailing, kStyleMfCobol, true, ' '), -12, "   1r"},
      {kZone, Fmt(5, kSignTrailingSeparate, kStyleMfCobol, true, '*'), -12, "**12-"},
  };
  for (const auto& c : cases) {
    const std::string digits = std::to_string(c.value < 0 ? -c.value : c.value);
    uint8_t out[16] = {0};
    c.put(out, c.fmt, digits.data(), digits.size(), c.value < 0);
    EXPECT_EQ(Hex(out, c.fmt.length), Hex(c.bytes.data(), c.bytes.size()))
        << c.value << " " << Hex(c.bytes.data(), c.bytes.size());
  }
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
  for (const auto& c : cases) {
    NumberText t;
    const uint8_t* p = U8(c.bytes);
    const bool ok = c.kind == 'P'   ? GetPack(p, c.fmt, &t)
                    : c.kind == 'B' ? GetBCD(p, c.fmt, &t)
                                    : GetZone(p, c.fmt, &t, nullptr);
    EXPECT_EQ(ok ? NumberTextToDouble(t) : -999999.0, c.value) << c.what;
  }
  // Leading overpunch is unknown to the Unisys style.
  NumberText t;
  bool unknown = false;
  GetZone(U8("123"), Fmt(3, kSignLeading, kStyleUnisys), &t, &unknown);
  EXPECT_TRUE(unknown);
  GetZone(U8("123"), Fmt(3, kSignTrailing, kStyleUnisys), &t, &unknown);
  EXPECT_FALSE(unknown);
}

// The whole-number writers and readers agree with the text paths.
TEST(DecimalCodecs, WholeNumberPathsMatchTextPaths) {
  std::mt19937_64 rng(23);
  const long positions[] = {kSignLeading, kSignTrailing, kSignLeadingSeparate,
                            kSignTrailingSeparate, kSignNone};
  const long styles[] = {kStyleIbm, kStyleAcuCobol, kStyleMfCobol, kStyleWang};
  auto random_format = [&](int max_len, int n_styles) {
    return Fmt(1 + static_cast<int>(rng() % max_len), positions[rng() % 5],
               styles[rng() % n_styles], (rng() & 1) != 0, "\0 0*"[rng() % 4]);
  };
  for (int i = 0; i < 20000; ++i) {
    const DecimalFormat f = random_format(22, 4);
    const uint64_t mag = rng() >> (rng() % 64);
    const bool neg = rng() & 1;
    const std::string digits = std::to_string(mag);
    uint8_t a[32], b[32], c[32], d[32];
    PutPack(a, f, digits.data(), digits.size(), neg);
    PutPack(b, f, mag, neg);
    PutZone(c, f, digits.data(), digits.size(), neg);
    PutZone(d, f, mag, neg);
    ASSERT_EQ(Hex(a, f.length) + " / " + Hex(c, f.length), Hex(b, f.length) + " / " + Hex(d, f.length))
        << mag;
  }

  // Readers: mostly valid digits with stray signs, letters and blanks.
  const char alphabet[] = "0123456789{}ABJRpqyPY+- .,\xD5\xF3";
  int shortcuts[2] = {0, 0};
  for (int i = 0; i < 50000; ++i) {
    uint8_t b[20];
    const bool pack = i % 2 == 0;
    for (uint8_t& x : b) {
      x = static_cast<uint8_t>(rng());
      if (pack && rng() % 4 != 0) x = static_cast<uint8_t>((x % 10) << 4 | (x / 10 % 10));
      if (!pack) x = rng() % 3 ? '0' + x % 10 : alphabet[x % (sizeof(alphabet) - 1)];
    }
    if (pack && (rng() & 1)) b[rng() % 12] = static_cast<uint8_t>(0x0D | (rng() % 10) << 4);
    const DecimalFormat f = pack ? random_format(12, 2) : random_format(19, 4);
    int64_t whole;
    NumberText t;
    if (!(pack ? GetPackWhole(b, f, &whole) : GetZoneWhole(b, f, &whole))) continue;
    ++shortcuts[pack];
    ASSERT_TRUE(pack ? GetPack(b, f, &t) : GetZone(b, f, &t, nullptr));
    EXPECT_EQ(static_cast<double>(whole), NumberTextToDouble(t)) << Hex(b, f.length);
  }
  EXPECT_GT(std::min(shortcuts[0], shortcuts[1]), 1000);
}

// Number texts against strtod and "%.0f"; dBASE numeric text.
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
  uint64_t m = 0;
  for (double h : {0.5, 1.5, 2.5, 4503599627370495.5, 1e15 + 0.5, 123.49, 1e25}) {
    FormatWhole(h, &d);
    char want[64];
    snprintf(want, sizeof(want), "%.0f", h);
    EXPECT_STREQ(d.data(), want);
    EXPECT_EQ(WholeMagnitude(h, &m) ? std::to_string(m) : "none", h < 1e20 ? want : "none");
  }
  EXPECT_FALSE(WholeMagnitude(std::nan(""), &m));
  uint8_t out[16];
  PutDBNumber(out, 8, 2, 3.14159);
  PutDBNumber(out + 8, 4, 2, -123.456);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 12), "    3.143.46");
  NumberText t;
  EXPECT_TRUE(GetDBNumber(U8("  -2.5e1 "), 9, &t));
  EXPECT_EQ(NumberTextToDouble(t), -25.0);
  EXPECT_FALSE(GetDBNumber(U8("    "), 4, &t));
}

TEST(BinaryCodecs, Layouts) {
  uint8_t b[8];
  const uint8_t neg3[] = {0x00, 0x00, 0x80}, negzero[] = {0, 0, 0, 0x80};
  EXPECT_EQ(Get3Byte(neg3, false, true), -8388608);
  EXPECT_EQ(Get3Byte(neg3, false, false), 8388608);
  EXPECT_EQ(Get4FuBin(negzero, false), 0);
  Put4FuBin(b, -1, false);
  EXPECT_EQ(Hex(b, 4), "01 00 00 80");
  EXPECT_EQ(Get4FuBin(b, false), -1);
  Put4FuBin(b, -5, true);
  EXPECT_EQ(Hex(b, 4), "80 00 00 05");
  PutAccPac(b, -300);
  EXPECT_EQ(Hex(b, 6), "82 2C 01 00 00 00");
  EXPECT_EQ(GetAccPac(b, 6), -300.0);
  PutAccPac(b, 1099511627776.0 + 7);  // 256^5 + 7 loses its high part
  EXPECT_EQ(Hex(b, 6), "05 07 00 00 00 00");
  const uint8_t wide[] = {0x07, 1, 0, 0, 0, 0, 0, 2};  // count 7 reads on
  EXPECT_EQ(GetAccPac(wide, 8), 1.0 + 2.0 * std::ldexp(1.0, 48));
  EXPECT_EQ(GetAccPac(wide, 6), 1.0);  // bytes beyond the record are absent
}

// Published encodings both ways, clamps, ties to even, declined writes (no bytes).
TEST(FloatCodecs, PublishedEncodingsAndClamps) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    char kind;
    const char* bytes;
    double value;
    bool reads_back;
  } cases[] = {
      {'I', "41 10 00 00 00 00 00 00", 1.0, true}, {'I', "C1 10 00 00 00 00 00 00", -1.0, true},
      {'I', "C2 76 A0 00", -118.625, true},        {'I', "40 19 99 99 99 99 99 9A", 0.1, true},
      {'V', "80 40 00 00", 1.0, true},             {'V', "80 C0 00 00", -1.0, true},
      {'V', "40 41 00 00 00 00 00 00", 3.0, true}, {'M', "00 00 00 81", 1.0, true},
      {'M', "00 00 80 81", -1.0, true},            {'D', "00 00 00 00 00 00 00 81", 1.0, true},
      {'P', "81 00 00 00 00 00", 1.0, true},       {'P', "81 00 00 00 00 80", -1.0, true},
      {'C', "40 01 80 00 00 00 00 00", 1.0, true}, {'C', "C0 02 C0 00 00 00 00 00", -3.0, true},
      {'I', "7F FF FF FF", 1e300, false},          {'I', "FF FF FF FF", -inf, false},
      {'I', "00 00 00 00", std::nan(""), false},   {'V', "FF 7F FF FF", 1e39, false},
      {'V', "FF FF FF FF FF FF FF FF", -1e300, false}, {'V', "00 00 00 00", 1e-40, false},
      {'V', "80 40 00 00", 1.0 + std::ldexp(1.0, -24), false},
      {'V', "80 40 02 00", 1.0 + 3 * std::ldexp(1.0, -24), false},
      {'P', "FF FF FF FF FF 7F", 1e300, false},    {'C', "5F FF FF FF FF FF FF FF", inf, false},
      {'N', "C3 12 34 50", -123.45, false},        {'N', "46 10 00", 99999, false},  // rounds up
      {'M', "", 2e38, false},   {'M', "", std::nan(""), false}, {'D', "", 0.0, false},
      {'D', "", 1e-40, false},  {'D', "", 2e38, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(1, c.kind) + " " + c.bytes);
    std::string bytes = FromHex(c.bytes);
    const int len = static_cast<int>(bytes.size());
    bytes.resize(16);  // the readers of the empty rows read zeros
    const uint8_t* in = U8(bytes);
    uint8_t out[16] = {0};
    bool wrote = true;
    double back = 0;
    switch (c.kind) {
      case 'I': PutIBMmfflt(out, len, c.value); back = GetIBMmfflt(in, len); break;
      case 'V': PutVaxFloat(out, len, c.value); back = GetVaxFloat(in, len); break;
      case 'M': wrote = PutmscbFloat(out, static_cast<float>(c.value)); back = GetmscbFloat(in); break;
      case 'D': wrote = PutmscbDouble(out, c.value); back = GetmscbDouble(in); break;
      case 'P': PutPasReal(out, c.value); back = GetPasReal(in, false); break;
      case 'C': PutCray(out, c.value, true); back = GetCray(in, true); break;
      default: PutMAGNum(out, len, c.value); break;
    }
    EXPECT_EQ(wrote, len > 0);
    EXPECT_EQ(Hex(out, len), c.bytes);
    if (c.reads_back) {
      EXPECT_NEAR(back, c.value, c.value == 0.1 ? 1e-16 : 0);
    }
  }
}

TEST(FloatCodecs, ZeroesAndDocumentedOddities) {
  // All-zero fields, and an IBM field with a sign but no fraction, are 0.
  const uint8_t zero[10] = {0}, ibm_signed_zero[] = {0xC1, 0, 0, 0};
  EXPECT_EQ((std::vector<double>{GetIBMmfflt(zero, 8), GetVaxFloat(zero, 4), GetVaxFloat(zero, 8),
                                 GetmscbFloat(zero), GetmscbDouble(zero), GetPasReal(zero, false),
                                 GetCray(zero, false), GetTReal(zero, false), GetMAGNum(zero, 6),
                                 GetIBMmfflt(ibm_signed_zero, 4)}),
            std::vector<double>(10, 0.0));
  // A MBF exponent byte of 1 wraps to the IEEE exponent 255 (infinity); an
  // exponent byte of 0 keeps the fraction bits (a denormal, not zero).
  const uint8_t mbf1[] = {0, 0, 0, 1}, mbf0[] = {1, 0, 0, 0};
  EXPECT_TRUE(std::isinf(GetmscbFloat(mbf1)));
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
    // Exact formats: 8-byte IBM, VAX D, 80-bit, Magic real.
    PutIBMmfflt(b, 8, v);
    EXPECT_EQ(GetIBMmfflt(b, 8), v);
    PutVaxFloat(b, 8, v);
    EXPECT_EQ(GetVaxFloat(b, 8), v);
    PutTReal(b, v, i & 1);
    EXPECT_EQ(GetTReal(b, i & 1), v);
    PutMAGReal(b, 8, v);
    EXPECT_EQ(GetMAGReal(b, 8), v);
    // Narrower formats: within half a unit of their last place.
    int e;
    std::frexp(v, &e);
    const int h = e > 0 ? (e + 3) / 4 : -((-e) / 4);
    PutIBMmfflt(b, 4, v);
    EXPECT_LE(std::fabs(GetIBMmfflt(b, 4) - v), std::ldexp(1.0, 4 * h - 25));
    PutVaxFloat(b, 4, v);
    EXPECT_EQ(GetVaxFloat(b, 4), static_cast<double>(static_cast<float>(v)));
    PutPasReal(b, v);
    EXPECT_LE(std::fabs(GetPasReal(b, false) - v), std::ldexp(1.0, e - 41));
    PutCray(b, v, false);
    EXPECT_LE(std::fabs(GetCray(b, false) - v), std::ldexp(1.0, e - 49));
    PutMAGNum(b, 10, v);
    EXPECT_NEAR(GetMAGNum(b, 10), v, std::fabs(v) * 1e-16);
  }
}

// Every 80-bit pattern reads, and every double writes, as the hardware does.
TEST(FloatCodecs, IntelExtendedAgainstTheHardware) {
  std::mt19937_64 rng(80);
  for (int i = 0; i < 20000; ++i) {
    uint8_t b[10], rev[10];
    const uint64_t sig = rng();
    std::memcpy(b, &sig, 8);
    // Any exponent, the double range, the double's denormal edge, or the ends.
    int exp = i % 4 == 0   ? static_cast<int>(rng() % 0x8000)
              : i % 4 == 1 ? 16383 - 1100 + static_cast<int>(rng() % 2200)
              : i % 4 == 2 ? 16383 - 1023 - 64 + static_cast<int>(rng() % 70)
                           : (rng() & 1) * 0x7FFF;
    if (exp != 0) b[7] |= 0x80;  // the hardware rejects unnormals
    exp |= (rng() & 1) ? 0x8000 : 0;
    b[8] = static_cast<uint8_t>(exp);
    b[9] = static_cast<uint8_t>(exp >> 8);
    long double ld = 0;
    std::memcpy(&ld, b, 10);
    const double want = static_cast<double>(ld);
    const double got = GetTReal(b, false);
    for (int k = 0; k < 10; ++k) rev[k] = b[9 - k];
    if (std::isnan(want)) {
      EXPECT_TRUE(std::isnan(got)) << Hex(b, 10);
    } else {
      EXPECT_EQ(got, want) << Hex(b, 10);
      EXPECT_EQ(std::signbit(got), std::signbit(want)) << Hex(b, 10);
      EXPECT_EQ(GetTReal(rev, true), want);
    }
    const uint64_t dbits = rng();
    double d;
    std::memcpy(&d, &dbits, 8);
    if (std::isnan(d)) continue;
    PutTReal(b, d, false);
    const long double hw = d;
    EXPECT_EQ(Hex(b, 10), Hex(&hw, 10));
  }
}

TEST(PunchCodecs, HollerithCardCode) {
  // Published punches of the card code (the column's two bytes).
  const struct {
    char c;
    const char* bytes;
  } cases[] = {
      {'A', "24 00"}, {'I', "20 01"}, {'J', "14 00"}, {'S', "0A 00"},  // 12-1 12-9 11-1 0-2
      {'Z', "08 01"}, {'0', "08 00"}, {'1', "04 00"}, {'9', "00 01"},  // 0-9
      {'&', "20 00"}, {'-', "10 00"}, {'/', "0C 00"}, {'.', "21 02"},  // 12-8-3
      {'$', "11 02"}, {',', "09 02"}, {'#', "01 02"}, {' ', "00 00"},  // 11-8-3 0-8-3 8-3
  };
  TextBuf t;
  for (const auto& c : cases) {
    uint8_t out[2];
    PutCBAlphaNumeric(out, 2, &c.c, 1);
    GetCBAlphaNumeric(U8(FromHex(c.bytes)), 2, &t);
    EXPECT_EQ(Hex(out, 2) + " " + t.data(), std::string(c.bytes) + " " + c.c);
  }
  // Every character of the code round-trips; lower case is punched as upper;
  // a column with every row punched reads as "~".
  const std::string all = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ &-/.<(+|!$*);,%_>?:#@'=\"";
  std::vector<uint8_t> buf(2 * all.size() + 1);
  PutCBAlphaNumeric(buf.data(), static_cast<int>(buf.size()), all.data(), static_cast<int>(all.size()));
  GetCBAlphaNumeric(buf.data(), static_cast<int>(buf.size()), &t);
  EXPECT_EQ(std::string(t.data()), all);
  PutCBAlphaNumeric(buf.data(), 8, "ab~", 3);
  buf[6] = buf[7] = 0x3F;
  GetCBAlphaNumeric(buf.data(), 8, &t);
  EXPECT_EQ(std::string(t.data()), "AB ~");
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
    EXPECT_EQ(GetColumn(b) | ((b[0] | b[1]) & 0xC0) << 8, rows);
  }
}

}  // namespace
