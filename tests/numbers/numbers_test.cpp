// ZQDecimal against exact arithmetic on scaled 128-bit integers (m * 10^-s),
// truncated where ZQDecimal truncates on purpose; its particulars case by
// case; binary and packed fields against GnuCOBOL's and the documented layouts.
// ZQQuadWord against __int128 arithmetic.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/quadword.h"
#include "zq/zqstring.h"

namespace {

using i128 = __int128;

struct Exact { i128 m = 0; int s = 0; };

i128 Pow10(int n) { return n <= 0 ? 1 : 10 * Pow10(n - 1); }

// Strips trailing zeros so that equal values have equal representations.
Exact Reduced(Exact x) {
  if (x.m == 0) return {0, 0};
  for (; x.m % 10 == 0; --x.s) x.m /= 10;
  return x;
}

// Compares two values whose scales differ by at most 18.
int Compare(Exact a, Exact b) {
  a = Reduced(a);
  b = Reduced(b);
  int s = a.s > b.s ? a.s : b.s;
  i128 x = a.m * Pow10(s - a.s), y = b.m * Pow10(s - b.s);
  return x < y ? -1 : x > y ? 1 : 0;
}

bool Equal(Exact a, Exact b) {
  return Reduced(a).m == Reduced(b).m && Reduced(a).s == Reduced(b).s;
}

// Truncates towards zero to scale `s`.
Exact Trunc(Exact x, int s) { return s >= x.s ? x : Exact{x.m / Pow10(x.s - s), s}; }

// Stored exponent (base-100 digits before the point).
int StoredExponent(ZQDecimal const& d) {
  char b[12];
  d.Store(b);
  return static_cast<signed char>(static_cast<unsigned char>(b[11]) ^ 0x80);
}

// Reads the value back from the storage form: sign, ten base-100 digits, exponent.
Exact FromStore(ZQDecimal const& d, bool* negative = nullptr) {
  char b[12];
  d.Store(b);
  i128 m = 0;
  for (int i = 1; i <= 10; ++i) m = m * 100 + static_cast<unsigned char>(b[i]);
  if (negative != nullptr) *negative = b[0] == 0;
  return {b[0] == 0 ? -m : m, 20 - 2 * StoredExponent(d)};
}

// Reads "[-]digits[.digits]", ignoring blanks and a '+'.
Exact FromText(std::string const& t) {
  Exact x;
  bool frac = false;
  for (char c : t) {
    frac |= c == '.';
    if (c < '0' || c > '9') continue;
    x.m = x.m * 10 + (c - '0');
    x.s += frac;
  }
  if (t.find('-') != std::string::npos) x.m = -x.m;
  return x;
}

// The shortest text of a value: no leading zeros, no trailing fraction zeros.
std::string ToText(Exact x) {
  x = Reduced(x);
  i128 m = x.m < 0 ? -x.m : x.m;
  std::string d;
  for (; m != 0 || d.empty(); m /= 10) d.insert(d.begin(), static_cast<char>('0' + int(m % 10)));
  if (x.s <= 0) d += std::string(-x.s, '0');
  if (x.s > 0 && static_cast<int>(d.size()) <= x.s) d.insert(0, x.s + 1 - d.size(), '0');
  if (x.s > 0) d.insert(d.size() - x.s, ".");
  return x.m < 0 ? "-" + d : d;
}

// A literal of `sig` random digits whose first (non-zero) one is worth 10^(int_digits - 1).
std::string RandomText(std::mt19937_64& rng, int sig, int int_digits, bool negative) {
  std::string d(1, static_cast<char>('1' + rng() % 9));
  for (int i = 1; i < sig; ++i) d += static_cast<char>('0' + rng() % 10);
  if (int_digits <= 0) d = "0." + std::string(-int_digits, '0') + d;
  if (int_digits >= sig) d += std::string(int_digits - sig, '0');
  if (int_digits > 0 && int_digits < sig) d.insert(int_digits, ".");
  return negative ? "-" + d : d;
}

std::string Text(ZQDecimal const& d, int size = 64, bool exp = false) {
  char buf[128];
  std::memset(buf, 'X', sizeof buf);
  d.Print(buf, size, exp);
  return buf;
}

// "text|d0,d1,...|e": text, stored pairs up to the last non-zero one, exponent.
std::string Layout(ZQDecimal const& d) {
  char b[12];
  d.Store(b);
  int last = 10;
  while (last > 1 && b[last] == 0) --last;
  std::string s = Text(d);
  for (int i = 1; i <= last; ++i) s += (i > 1 ? "," : "|") + std::to_string(uint8_t(b[i]));
  return s + "|" + std::to_string(StoredExponent(d));
}

TEST(DecimalText, ValidateParseAndPrint) {
  struct Valid { const char* text; bool valid; } valid[] = {
      {"0", true},     {"12.5", true},   {".", true},   {".5", true},  {"5.", true},
      {"-.", true},    {" \t+7.25 \n", true},           {"-0.05", true}, {"", false},
      {"-", false},    {"+", false},     {"   ", false}, {"5. ", false}, {"..5", false},
      {"1.2.3", false}, {"1 2", false},  {"--5", false}, {"0x10", false}, {"1,5", false},
      {"1e3", false},  {"-2.5E-1", false}, {"1e", false}, {".e1", false}, {"12a", false},
  };
  for (const Valid& c : valid) {
    EXPECT_EQ(ZQDecimal::Validate(c.text), c.valid) << '"' << c.text << '"';
  }
  EXPECT_FALSE(ZQDecimal::Validate(nullptr));
  struct Case { ZQDecimal value; const char* layout; } cases[] = {
      // 23 digits: twelve pairs counted, ten kept, the last four digits lost.
      {"12345678901234567890123", "12345678901234567890000|1,23,45,67,89,1,23,45,67,89|12"},
      {"0.05", "0.05|0,5|1"} /* not normalised */, {"  -12.5  ", "-12.5|12,50|1"},
      {".5", "0.5|50|0"}, {"5.", "5|5|1"}, {"-0", "-0|0|1"},
      {"007", "007|0,7|2"} /* the leading zero pair is kept */, {"1e3", "0|0|0"},
      {"-2.5E-1", "0|0|0"}, {"5. ", "0|0|0"}, {static_cast<const char*>(nullptr), "0|0|0"},
      {0L, "0|0|0"}, {-99L, "-99|99|1"}, {10000L, "10000|1|3"},
      {short{-32768}, "-32768|3,27,68|3"}, {long{INT_MIN}, "-2147483648|21,47,48,36,48|5"},
      {(1L << 32) + 5, "5|5|1"},  // the documented long is 32-bit
      {1234.5, "1234.5|12,34,50|2"}, {0.05, "0.05|5|0"}, {-2.5, "-2.5|2,50|1"},
      {1.0 / 3, "0.333333333333333|33,33,33,33,33,33,33,30|0"},
      {123456789012345678.0, "123456789012346000|12,34,56,78,90,12,34,60|9"},
      {std::nan(""), "0|0|0"}, {HUGE_VAL, "0|0|0"}, {1e300, "0|0|0"}, {1e-300, "0|0|0"},
  };
  for (const Case& c : cases) {
    char b[12];
    ZQDecimal back(1L);
    c.value.Store(b);
    back.Load(b);
    EXPECT_EQ(Layout(c.value), c.layout);
    EXPECT_TRUE(back == c.value) << c.layout;
  }
  char bad[12] = {1, 5, 100, 0, 0, 0, 0, 0, 0, 0, 0, 0};  // 100 is no base-100 digit
  ZQDecimal loaded(3L);
  loaded.Load(bad);
  EXPECT_TRUE(loaded == ZQDecimal());
  for (const char* t : {"12345678901234567890123", "0.05", " -12.5 ", "-0", "1e3", ""}) {
    ZQDecimal assigned(99L);
    EXPECT_TRUE((assigned = t) == ZQDecimal(t)) << t;  // assignment parses as construction does
  }
  for (const char* t : {"0.05", "-7.9", "0.001", "10000000000000000000000"}) {
    EXPECT_EQ(static_cast<double>(ZQDecimal(t)), std::strtod(t, nullptr)) << t;
  }
  // Values compare as stored: the text 0.05 (0,5 with exponent 1) is above the
  // double 0.05 (5 with exponent 0), and "-0" is negative.
  EXPECT_TRUE(ZQDecimal("0.05") > ZQDecimal(0.05) && ZQDecimal(0.05) < ZQDecimal("0.05") &&
              !(ZQDecimal("0.05") == ZQDecimal(0.05)));
  EXPECT_TRUE(ZQDecimal("12.5") == ZQDecimal("12.50") && ZQDecimal("-0") < ZQDecimal());
}

TEST(DecimalArithmetic, SignsCarriesAlignmentAndScale) {
  struct Case { ZQDecimal a; char op; ZQDecimal b; const char* result; } cases[] = {
      {"-5", '-', "-5", "-0"},  // only a difference of negatives keeps a sign on zero
      {"5", '-', "5", "0"}, {"0", '+', "12.5", "12.5"}, {"-99.99", '-', "0.01", "-100"},
      {"99999999999999999990", '+', "10", "100000000000000000000"},  // carry out of the top
      {"1.000000000000000001", '+', "-1", "0.000000000000000001"},  // only the last digit left
      // Nine digits below, an operand keeps its first digit; ten or more below, it vanishes.
      {1L, '+', ZQDecimal(1L).Scale(-18), "1.000000000000000001"},
      {1L, '+', ZQDecimal(1L).Scale(-20), "1"}, {-1L, '+', ZQDecimal(9L).Scale(-22), "-1"},
      {"5", '-', "-10000000000000000000000", "10000000000000000000000"},
      // A carry from the largest exponent, or a result below the smallest, is zero.
      {ZQDecimal(99L).Scale(252), '+', ZQDecimal(99L).Scale(252), "0"},
      {ZQDecimal("1.000001").Scale(-254), '-', ZQDecimal(1L).Scale(-254), "0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Text(c.a) + c.op + Text(c.b));
    ZQDecimal r = c.op == '+' ? c.a + c.b : c.a - c.b, x(c.a), y(c.a), b(c.b);
    c.op == '+' ? x += c.b : x -= c.b;
    c.op == '+' ? y += b : y -= b;
    EXPECT_EQ(Text(r), c.result);
    EXPECT_TRUE(x == r && y == r);
  }
  // One step short of the ends of the exponent range.
  EXPECT_FALSE(ZQDecimal(99L).Scale(252) + ZQDecimal(1L).Scale(250) == ZQDecimal());
  ZQDecimal low = ZQDecimal("1.0001").Scale(-254) - ZQDecimal(1L).Scale(-254);
  EXPECT_EQ(StoredExponent(low), -128);
  EXPECT_TRUE(Equal(FromStore(low), FromStore(ZQDecimal("0.0001").Scale(-254))));
  EXPECT_EQ(Text(-ZQDecimal(12.5)) + Text(-ZQDecimal(-12.5)) + Text(-ZQDecimal()), "-12.512.50");
  EXPECT_EQ(Text(((ZQDecimal("1.5") += 2.25) += -4L) += 1UL), "0.75");
  // The non-const += aligns its argument in place when the magnitudes add,
  // dropping digits for good; the const overload works on a copy.
  ZQDecimal a(100L), b("0.05"), big("10000000000000000000"), small("1.5");
  ZQDecimal tiny("0.000000000000000001"), neg_tiny("-0.000000000000000001");
  const ZQDecimal d("0.05");
  (a += b) += d;
  big += small;
  EXPECT_EQ(Text(a) + " " + Layout(b) + " " + Layout(d), "100.1 000.05|0,0,5|2 0.05|0,5|1");
  EXPECT_EQ(static_cast<double>(small), 1.0);
  a = 100L;
  a += neg_tiny;  // a difference works on an aligned copy that loses the digit
  EXPECT_EQ(Text(a) + " " + Text(neg_tiny), "100 -0.000000000000000001");
  a += tiny;
  EXPECT_EQ(Text(a) + " " + Text(tiny), "100 0");
  struct Scaled { const char* text; int n; const char* result; } scaled[] = {
      {"5", 1, "50"}, {"5", -1, "0.5"}, {"50", 1, "500"}, {"50", -1, "5"}, {"5", 3, "5000"},
      {"5", -3, "0.005"}, {"5", 2, "500"}, {"1234.5", -2, "12.345"}, {"1234.5", 1, "12345"},
      {"-12.34", 1, "-123.4"}, {"0", 5, "0"}, {"7", -7, "0.0000007"},
      // Dividing a full value by ten drops its last digit.
      {"12345678901234567891", -1, "1234567890123456789"},
      {"1.234567890123456789", 1, "12.34567890123456789"},
  };
  for (const Scaled& c : scaled) {
    ZQDecimal v(c.text);
    EXPECT_TRUE(&v.Scale(c.n) == &v && Text(v) == c.result) << c.text << " " << c.n << Text(v);
  }
}

TEST(DecimalPrint, ExponentialFormAndBufferLimits) {
  struct Case { ZQDecimal value; int size; const char* text; } cases[] = {
      {5L, 0, "0.5e+01"}, {10L, 0, "1.0e+01"}, {-5L, 0, "-0.5e+01"}, {0.05, 0, "0.5e-1"},
      {1234.5, 0, "<.345e+02"},  // a leading pair above 10 is the character '0' + 12
      {"1.0203040506070809", 0, "0.10203040506070809e+01"},
      {"1.0203040506070809", 12, "0.10203e+01"},  // digits are cut to fit
      {"-1.0203040506070809", 12, "-0.102e+01"},
      {"1.5", 6, "1.5"} /* sizes 1 to 6 print plain */, {ZQDecimal(), 0, "0"},
  };
  for (const Case& c : cases) {
    char buf[64];
    EXPECT_EQ(Text(c.value, c.size, true), c.text);
    EXPECT_STREQ(c.value.PrintExp(buf, c.size), c.text);
  }
  const ZQDecimal values[] = {
      "-12345678901234567890123", "-0.00000012345678901234567891", "-1234567890.1234567891",
      "12345678901234567890", "-0.000000000000000001", ZQDecimal("-5") - "-5", -1234.5,
      ZQDecimal(7L).Scale(200), ZQDecimal(7L).Scale(-250)};
  for (const ZQDecimal& v : values) {
    char full_buf[512];
    std::string full = v.Print(full_buf, sizeof full_buf);
    for (bool exp : {false, true}) {
      for (int size = 0; size <= 60; ++size) {
        int room = size == 0 ? ZQDecimal::kUnboundedPrintSize : size;
        char buf[128];
        std::memset(buf, 0x7f, sizeof buf);
        v.Print(buf, size, exp);
        size_t len = strnlen(buf, sizeof buf);
        ASSERT_LT(len, static_cast<size_t>(room)) << full << " size " << size;
        for (int i = room; i < static_cast<int>(sizeof buf); ++i) ASSERT_EQ(buf[i], 0x7f) << full;
        if (exp) continue;
        // A plain text that fits is whole; a cut one is a prefix.
        EXPECT_EQ(buf == full, full.size() < static_cast<size_t>(room)) << size;
        EXPECT_EQ(full.compare(0, len, buf), 0) << buf;
      }
    }
    char untouched = 1;
    EXPECT_EQ(*v.Print(&untouched, -1), 1);  // a negative size writes nothing
  }
}

int Pick(std::mt19937_64& rng, int lo, int hi) { return lo + int(rng() % uint64_t(hi - lo + 1)); }

TEST(DecimalProperty, ParsePrintAndConvertMatchExactValues) {
  std::mt19937_64 rng(20240501);
  for (int n = 0; n < 10000; ++n) {
    int int_digits = Pick(rng, -16, 23);  // runs of up to 38 characters, blanks after some
    std::string t = RandomText(rng, Pick(rng, 1, 20), int_digits, rng() % 2) + (n % 3 ? "" : " \t");
    ZQDecimal d(t.c_str());
    int e = int_digits <= 0 ? 1 : (int_digits + 1) / 2;
    ASSERT_EQ(StoredExponent(d), e) << t;
    Exact want = Trunc(FromText(t), 20 - 2 * e);
    ASSERT_TRUE(Equal(FromStore(d), want)) << t;
    ASSERT_EQ(Text(d), ToText(want)) << t;
    Exact whole = Trunc(want, 0);
    uint32_t low = static_cast<uint32_t>(static_cast<unsigned __int128>(whole.m * Pow10(-whole.s)));
    ASSERT_EQ(static_cast<unsigned long>(d), low) << t;
    ASSERT_TRUE(static_cast<long>(d) == int32_t(low) && static_cast<int>(d) == int32_t(low)) << t;
    ASSERT_EQ(static_cast<short>(d), static_cast<int16_t>(low)) << t;
    int32_t v = static_cast<int32_t>(rng()) >> (rng() % 32);  // integers are stored exactly
    ASSERT_EQ(Text(static_cast<long>(v)) + Text(static_cast<unsigned long>(uint32_t(v))),
              std::to_string(v) + std::to_string(uint32_t(v)));
  }
}

// The reference sum of a and b as ZQDecimal forms it (see the file comment).
Exact ModelAdd(Exact a, int ea, Exact b, int eb) {
  int grid = 20 - 2 * std::max(ea, eb);
  Exact sum{Trunc(a, grid).m + Trunc(b, grid).m, grid};
  if ((sum.m < 0 ? -sum.m : sum.m) >= Pow10(20)) sum = Trunc(sum, grid - 2);
  return sum;
}

TEST(DecimalProperty, ArithmeticAndOrderMatchExactValues) {
  std::mt19937_64 rng(7);
  int lossless = 0, ordered = 0;
  for (int n = 0; n < 20000; ++n) {
    int ia = Pick(rng, -1, 13), ib = Pick(rng, -1, 13);
    std::string ta = RandomText(rng, Pick(rng, 1, 20), ia, rng() % 2);
    std::string tb = RandomText(rng, Pick(rng, 1, 20), ib, rng() % 2);
    if (n % 10 == 0) tb = ta, ib = ia;  // equal magnitudes: zero results
    if (n % 20 == 0 && tb[0] != '-') tb = "-" + tb;
    if (n % 10 == 5) tb = ta + (ta.find('.') == std::string::npos ? ".00" : "00"), ib = ia;
    ZQDecimal a(ta.c_str()), b(tb.c_str());
    SCOPED_TRACE(ta + " and " + tb);
    Exact xa = FromStore(a), xb = FromStore(b);
    int ea = StoredExponent(a), eb = StoredExponent(b);
    Exact want_sum = ModelAdd(xa, ea, xb, eb);
    ZQDecimal sum = a + b, diff = a - b, c(a), d(a);
    ASSERT_TRUE(Equal(FromStore(sum), want_sum));
    int common = std::max(xa.s, xb.s);
    lossless += Equal(want_sum, {xa.m * Pow10(common - xa.s) + xb.m * Pow10(common - xb.s),
                                 common});
    Exact want_diff = ModelAdd(xa, ea, {-xb.m, xb.s}, eb);
    bool negative = false;
    ASSERT_TRUE(Equal(FromStore(diff, &negative), want_diff));
    // Only a difference of two negatives keeps a sign on zero.
    ASSERT_EQ(negative, want_diff.m != 0 ? want_diff.m < 0 : a.IsNeg() && b.IsNeg());
    c += b;
    d -= b;
    ASSERT_TRUE(c == sum && d == diff);
    // Values with an integer digit are normalised, so they compare by value;
    // the sign byte, the exponent byte, then the digits compared byte-wise
    // order the non-negative ones.
    if (ia < 1 || ib < 1) continue;
    int want = Compare(xa, xb);
    ASSERT_TRUE((a > b) == (want > 0) && (a < b) == (want < 0) && (a == b) == (want == 0));
    ordered += want == 0;
    ZQDecimal pa = a.IsNeg() ? -a : a, pb = b.IsNeg() ? -b : b;
    char sa[12], sb[12];
    pa.Store(sa);
    pb.Store(sb);
    auto key = [](const char* s) { return std::string(s, 1) + s[11] + std::string(s + 1, 10); };
    int bytes = key(sa).compare(key(sb));
    ASSERT_EQ(sa[0], 1);
    ASSERT_EQ((bytes > 0) - (bytes < 0), Compare(FromStore(pa), FromStore(pb)));
  }
  EXPECT_GT(lossless, 1000);
  EXPECT_GT(ordered, 1000);
}

TEST(DecimalProperty, DoublesKeepFifteenDigits) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  for (int n = 0; n < 10000; ++n) {  // the C library's reading of the same fifteen digits
    double x = mantissa(rng) * std::pow(10.0, Pick(rng, -6, 19)) * (rng() % 2 ? -1 : 1);
    char text[32];
    std::snprintf(text, sizeof text, "%.14e", x);
    ASSERT_EQ(static_cast<double>(ZQDecimal(x)), std::strtod(text, nullptr)) << text;
  }
}

std::string Hex(ZQString const& s, long from = 0, long n = -1) {
  std::string h;
  char b[4];
  for (long i = from; i < (n < 0 ? s.length() : from + n); ++i) {
    std::snprintf(b, sizeof b, " %02X", static_cast<unsigned char>(s.c_str()[i]));
    h += b;
  }
  return h.empty() ? h : h.substr(1);
}

// Bytes written as "12 3D", appended to `prefix`.
ZQString Unhex(const char* prefix, const std::string& hex) {
  ZQString s(prefix);
  for (size_t i = 0; i + 1 < hex.size(); i += 3) {
    s += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return s;
}

ZQDType Packed(long length, short scale, long sign_pos, long style, bool is_signed) {
  ZQDType t(ZQDT_PACKED);
  t.MinLength(0);
  t.MaxLength(64);
  t.MinPrecision(-1);
  t.MaxPrecision(128);
  t.Length(length);
  t.Scale(scale);
  t.SignPos(sign_pos);
  t.SignStyle(style);
  t.Signed(is_signed);
  return t;
}

TEST(DecimalFields, PackedAndBinaryLayouts) {
  // Each field is read back; a null value is a field that writing never produces.
  struct Case {  // sign_pos and style as in ZQDType
    const char* value; long length; short scale; long sign_pos, style; bool is_signed;
    const char *bytes, *read;
  } cases[] = {
      {"-123", 2, 0, 2, 1, true, "12 3D", "-123"},   {"3.5", 2, 0, 2, 1, true, "00 4C", "4"},
      {"123", 2, 0, 2, 16, true, "12 3B", "123"},    // rmcobol
      {"123", 2, 0, 8, 1024, true, "12 3F", "123"},  // acucobol
      {"123", 2, 0, 2, 1, true, "12 3C", "123"},     // ibm
      {"-123", 2, 0, 2, 1, false, "12 3F", "123"},   // unsigned: no sign kept
      {"-45", 2, 0, 1, 2, true, "50 45", "-45"},     // leading sign nibble
      {"45", 2, 0, 4, 2, false, "30 45", "45"},      // leading ignores signedness
      {"-45", 2, 0, 16, 2, true, "50 45", "-45"},    // "none" with another style
      {"1234", 2, 0, 16, 1024, true, "12 34", "1234"},  // "none" with acucobol
      {"123456", 2, 0, 2, 1, true, "45 6C", "456"},     // high digits dropped
      {"123.45", 4, 2, 2, 1, true, "00 12 34 5C", "123.45"},
      {"123.456", 4, 2, 2, 1, true, "00 12 34 6C", "123.46"},  // rounded
      {"2.5", 2, 0, 2, 1, true, "00 2C", "2"},  // ties to even, as "%.0f"
      {"2.50001", 2, 0, 2, 1, true, "00 3C", "3"},
      {"-0.4", 2, 0, 2, 1, true, "00 0D", "0"},   // the sign is taken first
      {"999.5", 2, 0, 2, 1, true, "00 0C", "0"},  // 1000 does not fit
      {"12", 3, -1, 2, 1, true, "00 00 1C", "10"},  // negative scale divides
      {"0.0000000001", 6, 10, 2, 1, true, "00 00 00 00 00 1C", "0.0000000001"},
      {"12345678901234567890123", 12, 0, 2, 1, true, "12 34 56 78 90 12 34 56 78 90 00 0C",
       "12345678901234567890000"},
      {nullptr, 2, 0, 2, 1, true, "12 3B", "123"},  // only 0xD is negative
      {nullptr, 2, 0, 8, 1, true, "12 3D", "-123"}, {nullptr, 2, 0, 2, 1, false, "12 34", "1234"},
      {nullptr, 2, 0, 1, 2, false, "50 45", "-45"},  // leading 5 or D
      {nullptr, 2, 0, 4, 2, true, "D0 45", "-45"},  {nullptr, 2, 0, 1, 2, true, "30 45", "45"},
      {nullptr, 3, 12, 2, 1, true, "00 00 1D", "-0.000000000001"},
      {nullptr, 2, 0, 2, 1, true, "1A 3C", "1"},  // 0xA ends the number
      {"5", 0, 0, 2, 1, true, "", "77"},  // an empty field writes nothing, reads nothing
  };
  for (const Case& c : cases) {
    ZQDType t = Packed(c.length, c.scale, c.sign_pos, c.style, c.is_signed);
    ASSERT_EQ(t.Length(), c.length);
    ZQString out("x");
    EXPECT_TRUE(c.value == nullptr || (ZQDecimal(c.value).PutPack(out, t) == c.length &&
                                       Hex(out, 1) == c.bytes)) << c.bytes << " " << Hex(out, 1);
    ZQDecimal d(77L);
    EXPECT_EQ(d.GetPack(Unhex("ab", c.bytes), 2, t), c.length) << c.bytes;
    EXPECT_EQ(Text(d), c.read) << c.bytes;
  }
  // A field beyond the record yields zero.
  ZQDecimal d(77L), e(77L);
  EXPECT_TRUE(d.GetPack(Unhex("", "12"), -1, Packed(1, 0, 2, 1, true)) == 0 && Text(d) == "0");
  EXPECT_TRUE(e.GetPack(Unhex("", "12"), 0, Packed(2, 0, 2, 1, true)) == 0 && Text(e) == "0");
  // A null value is read only, a null read value written only.
  struct Bin { const char* value; int length; bool msb, is_signed; const char *bytes, *read; };
  const Bin bins[] = {
      {"-2", 8, false, true, "FE FF FF FF FF FF FF FF", "-2"},
      {"258.9", 2, false, true, "02 01", "258"},  // the fraction is truncated
      {"-258.9", 2, true, true, "FE FE", "-258"},
      {"65536", 2, false, true, "00 00", "0"},  // only the low bytes are kept
      {"-1", 10, true, true, "FF FF FF FF FF FF FF FF FF FF", nullptr},
      {"1", 10, false, true, "01 00 00 00 00 00 00 00 00 00", nullptr},
      {"18446744073709551615", 8, true, false, "FF FF FF FF FF FF FF FF", "18446744073709551615"},
      {"18446744073709551617", 8, true, false, "00 00 00 00 00 00 00 01", "1"},  // wraps
      {nullptr, 1, false, false, "FF", "255"},    {nullptr, 2, false, true, "01 80", "-32767"},
      {nullptr, 2, true, true, "01 80", "384"},   {nullptr, 3, true, false, "12 34 56", "1193046"},
      {nullptr, 8, false, true, "00 00 00 00 00 00 00 80", "-9223372036854775808"},
      {"5", 0, false, true, "", nullptr},
  };
  for (const Bin& c : bins) {
    ZQString out;
    EXPECT_TRUE(c.value == nullptr || (ZQDecimal(c.value).PutBinary(out, c.length, c.msb) ==
                                       c.length && Hex(out) == c.bytes)) << c.bytes << Hex(out);
    ZQDecimal d;
    if (c.read == nullptr) continue;
    EXPECT_EQ(d.GetBinary(Unhex("z", c.bytes), 1, c.length, c.msb, c.is_signed), c.length);
    EXPECT_EQ(Text(d), c.read) << c.bytes;
  }
  // Fields beyond the record or wider than eight bytes are not read.
  ZQDecimal f(5L);
  EXPECT_TRUE(f.GetBinary(Unhex("", "01 02"), 1, 2, false, true) == 0 && f == ZQDecimal());
  EXPECT_EQ(f.GetBinary(Unhex("", "01 02 03 04 05 06 07 08 09"), 0, 9, false, true), 0);
}

TEST(DecimalCobol, PackedAndBinaryFieldsMatch) {
  if (std::system("command -v cobc >/dev/null 2>&1") != 0) GTEST_SKIP() << "no cobc";
  // The picture's digits and scale, signedness, the stored usage and size.
  struct Field { int digits, scale; bool is_signed; const char* usage; int length; };
  const Field fields[] = {
      {7, 0, true, "COMP-3", 4},   {7, 0, false, "COMP-3", 4},  {7, 2, true, "COMP-3", 4},
      {18, 0, true, "COMP-3", 10}, {18, 0, true, "BINARY", 8},  {4, 0, true, "COMP-5", 2},
      {9, 0, false, "BINARY", 4},
  };
  // A program that moves each line of display fields to the stored fields.
  std::string in_rec, out_rec;
  for (const Field& f : fields) {
    std::string name = "  05 F" + std::to_string(&f - fields) + " PIC " +
                       (f.is_signed ? "S9(" : "9(") + std::to_string(f.digits - f.scale) + ")" +
                       (f.scale > 0 ? "V9(" + std::to_string(f.scale) + ")" : "");
    in_rec += name + (f.is_signed ? " SIGN LEADING SEPARATE.\n" : ".\n");
    out_rec += name + " " + f.usage + ".\n";
  }
  char dir_template[] = "/tmp/zq_decimal_cobol_XXXXXX";
  ASSERT_NE(mkdtemp(dir_template), nullptr);
  std::string dir = dir_template;
  std::ofstream(dir + "/gen.cob")
      << "IDENTIFICATION DIVISION.\nPROGRAM-ID. GENNUM.\nENVIRONMENT DIVISION.\n"
         "INPUT-OUTPUT SECTION.\nFILE-CONTROL.\n"
         "  SELECT IN-FILE ASSIGN TO \"in.txt\" ORGANIZATION IS LINE SEQUENTIAL.\n"
         "  SELECT OUT-FILE ASSIGN TO \"out.bin\" ORGANIZATION IS SEQUENTIAL.\n"
         "DATA DIVISION.\nFILE SECTION.\nFD IN-FILE.\n01 IN-REC.\n"
      << in_rec << "FD OUT-FILE.\n01 OUT-REC.\n" << out_rec
      << "PROCEDURE DIVISION.\n  OPEN INPUT IN-FILE OUTPUT OUT-FILE\n  PERFORM UNTIL 1 = 0\n"
         "    READ IN-FILE AT END CLOSE IN-FILE OUT-FILE STOP RUN END-READ\n"
         "    MOVE CORRESPONDING IN-REC TO OUT-REC\n    WRITE OUT-REC\n  END-PERFORM.\n";
  // Random values as decimal texts, written as display pictures.
  std::mt19937_64 rng(42);
  const int kRecords = 500;
  std::vector<std::string> values;
  std::ofstream in(dir + "/in.txt");
  for (int r = 0; r < kRecords; ++r, in << '\n') {
    for (const Field& f : fields) {
      std::string digits(f.digits, '0');
      for (int i = static_cast<int>(rng() % f.digits); i < f.digits; ++i) digits[i] += rng() % 10;
      // No negative zeros: COBOL and ZQDecimal both store those as positive.
      bool negative = f.is_signed && rng() % 2 && digits != std::string(f.digits, '0');
      in << (f.is_signed ? (negative ? "-" : "+") : "") << digits;
      size_t point = f.digits - f.scale, zeros = std::min(digits.find_first_not_of('0'), point - 1);
      digits.insert(point, ".");
      values.push_back((negative ? "-" : "") + digits.substr(zeros));
    }
  }
  in.close();
  ASSERT_EQ(std::system(("cd " + dir + " && cobc -free -x -o gen gen.cob && ./gen").c_str()), 0);
  std::ifstream bin(dir + "/out.bin", std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(bin)), std::istreambuf_iterator<char>());
  std::system(("rm -rf " + dir).c_str());
  ASSERT_EQ(all.size(), kRecords * 36u);
  ZQString file(all.data(), static_cast<int>(all.size()));
  for (int offset = 0, i = 0; i < kRecords * 7; offset += fields[i++ % 7].length) {
    const Field& f = fields[i % 7];
    ZQDecimal want(values[i].c_str()), got;
    ZQString written;
    if (std::string(f.usage) == "COMP-3") {
      ZQDType t = Packed(f.length, static_cast<short>(f.scale), 2, 2, f.is_signed);
      ASSERT_EQ(got.GetPack(file, offset, t), f.length);
      want.PutPack(written, t);
    } else {
      // COMP-5 is stored in the machine's order, BINARY most significant first.
      bool msb = std::string(f.usage) != "COMP-5";
      ASSERT_EQ(got.GetBinary(file, offset, f.length, msb, f.is_signed), f.length);
      want.PutBinary(written, f.length, msb);
    }
    ASSERT_EQ(Text(got), Text(want)) << "field " << i << ": " << values[i];
    ASSERT_EQ(Hex(written), Hex(file, offset, f.length)) << values[i];
  }
}

TEST(QuadWord, ConstructionArithmeticAndText) {
  // The documented long is 32-bit: the low 32 bits, sign-extended.
  struct Case { ZQQuadWord q; long long value; long lo, hi; } cases[] = {
      {short{-1}, -1, -1, -1}, {-1, -1, -1, -1}, {-7L, -7, -7, -1},
      {4294967295UL, 4294967295LL, -1, 0}, {long{0x180000000LL}, INT32_MIN, INT32_MIN, -1},
      {0x1FFFFFFFFUL, 0xFFFFFFFFLL, -1, 0}, {-2.9, -2, -2, -1},
      {1e15 + 0.5, 1000000000000000LL, -1530494976, 232830}, {std::nan(""), 0, 0, 0},
      {1e30, INT64_MAX, -1, INT32_MAX}, {-1e19, INT64_MIN, 0, INT32_MIN},
      {ZQQuadWord(), 0, 0, 0}, {ZQQuadWord(-3), -3, -3, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.value);
    long long raw;
    std::memcpy(&raw, c.q.RawData(), 8);
    EXPECT_TRUE(raw == c.value && c.q.Value() == c.value);
    EXPECT_TRUE(c.q.LoVal() == c.lo && c.q.HiVal() == c.hi && static_cast<long>(c.q) == c.lo);
    EXPECT_TRUE(static_cast<int>(c.q) == int32_t(c.lo) && static_cast<short>(c.q) == short(c.lo) &&
                static_cast<unsigned long>(c.q) == uint32_t(c.lo));
    EXPECT_EQ(static_cast<double>(c.q), static_cast<double>(c.value));
  }
  ZQQuadWord assigned(99LL);
  EXPECT_EQ((assigned = -2.9).Value(), -2);
  EXPECT_EQ((assigned = 4294967295UL).Value(), 4294967295LL);
  auto low64 = [](unsigned __int128 x) { return static_cast<int64_t>(static_cast<uint64_t>(x)); };
  const long long fixed[] = {0, -1, 42, INT64_MIN, INT64_MAX, -4294967296LL};
  std::mt19937_64 rng(5);
  for (int n = 0; n < 20000; ++n) {
    int64_t a = n < 6 ? fixed[n] : static_cast<int64_t>(rng()) >> (rng() % 64);
    int64_t b = static_cast<int64_t>(rng());
    int32_t s = static_cast<int32_t>(rng());
    ZQQuadWord v{static_cast<long long>(a)}, q(v), r(v), p(v);
    q += ZQQuadWord(static_cast<long long>(b));
    r += static_cast<long>(s);
    p *= static_cast<long>(s);
    ASSERT_EQ(q.Value(), low64(static_cast<unsigned __int128>(a) + b));
    ASSERT_EQ(r.Value(), low64(static_cast<unsigned __int128>(a) + s));
    ASSERT_EQ(p.Value(), low64(static_cast<__int128>(a) * s));
    char narrow[ZQQuadWord::kPrintSize];
    unsigned short wide[ZQQuadWord::kPrintSize];
    std::string text = std::to_string(a);
    ASSERT_STREQ(v.Print(narrow), text.c_str());
    ASSERT_TRUE(std::basic_string<unsigned short>(v.Print(wide)) ==
                std::basic_string<unsigned short>(text.begin(), text.end())) << text;
  }
  // A 64-bit long argument counts with its low 32 bits only.
  ZQQuadWord q(10), p(10);
  q += static_cast<long>(0x100000001LL);
  p *= static_cast<long>(0x1FFFFFFFFLL);
  EXPECT_TRUE(q.Value() == 11 && p.Value() == -10) << q.Value() << " " << p.Value();
}

}  // namespace
