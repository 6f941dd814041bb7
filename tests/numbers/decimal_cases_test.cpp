// ZQDecimal: documented particulars, case by case. Random values against
// exact arithmetic are in the property tests; these are the forms those do
// not reach (signs and blanks in texts, zero operands, stored-form quirks).
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <string>

#include "numbers/decimal_oracle.h"
#include "zq/decimal.h"

namespace {

using decimal_oracle::StoredExponent;

std::string Text(ZQDecimal const& d, int size = 64, bool exp = false) {
  char buf[128];
  std::memset(buf, 'X', sizeof buf);
  d.Print(buf, size, exp);
  return buf;
}

// Text, then the stored digits up to the last non-zero one and the exponent:
// "text|d0,d1,...|e".
std::string Layout(ZQDecimal const& d) {
  char b[12];
  d.Store(b);
  int last = 10;
  while (last > 1 && b[last] == 0) --last;
  std::string s = Text(d) + "|";
  for (int i = 1; i <= last; ++i) {
    s += std::to_string(static_cast<unsigned char>(b[i])) + (i < last ? "," : "|");
  }
  return s + std::to_string(StoredExponent(d));
}

TEST(DecimalValidate, Grammar) {
  struct Case { const char* text; bool valid; } cases[] = {
      {"0", true},     {"12.5", true},   {".", true},   {".5", true},  {"5.", true},
      {"-.", true},    {" \t+7.25 \n", true},           {"-0.05", true}, {"", false},
      {"-", false},    {"+", false},     {"   ", false}, {"5. ", false}, {"..5", false},
      {"1.2.3", false}, {"1 2", false},  {"--5", false}, {"0x10", false}, {"1,5", false},
      {"1e3", false},  {"-2.5E-1", false}, {"1e", false}, {".e1", false}, {"12a", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ZQDecimal::Validate(c.text), c.valid) << '"' << c.text << '"';
  }
  EXPECT_FALSE(ZQDecimal::Validate(nullptr));
}

TEST(DecimalText, ParseAndPrint) {
  struct Case { ZQDecimal value; const char* layout; } cases[] = {
      // 23 digits: twelve pairs counted, ten kept, the last four digits lost.
      {ZQDecimal("12345678901234567890123"),
       "12345678901234567890000|1,23,45,67,89,1,23,45,67,89|12"},
      {ZQDecimal("0.05"), "0.05|0,5|1"},  // not normalised
      {ZQDecimal("1234.5"), "1234.5|12,34,50|2"}, {ZQDecimal("  -12.5  "), "-12.5|12,50|1"},
      {ZQDecimal(".5"), "0.5|50|0"},     {ZQDecimal("5."), "5|5|1"},  {ZQDecimal("-0"), "-0|0|1"},
      {ZQDecimal("007"), "007|0,7|2"},  // the leading zero pair is kept as stored
      // Rejected texts, exponents included, yield zero.
      {ZQDecimal("1e3"), "0|0|0"},       {ZQDecimal("-2.5E-1"), "0|0|0"},
      {ZQDecimal("5. "), "0|0|0"},       {ZQDecimal(static_cast<const char*>(nullptr)), "0|0|0"},
      {ZQDecimal(0L), "0|0|0"},          {ZQDecimal(-99L), "-99|99|1"},
      {ZQDecimal(100L), "100|1|2"},      {ZQDecimal(10000L), "10000|1|3"},
      {ZQDecimal(static_cast<short>(-32768)), "-32768|3,27,68|3"},
      {ZQDecimal(long{INT_MIN}), "-2147483648|21,47,48,36,48|5"},
      // The documented long is 32-bit: only the low 32 bits count.
      {ZQDecimal((1L << 32) + 5), "5|5|1"},
      {ZQDecimal(1234.5), "1234.5|12,34,50|2"}, {ZQDecimal(0.05), "0.05|5|0"},
      {ZQDecimal(-2.5), "-2.5|2,50|1"},
      {ZQDecimal(1.0 / 3), "0.333333333333333|33,33,33,33,33,33,33,30|0"},
      {ZQDecimal(123456789012345678.0), "123456789012346000|12,34,56,78,90,12,34,60|9"},
      {ZQDecimal(std::nan("")), "0|0|0"}, {ZQDecimal(HUGE_VAL), "0|0|0"},
      // Exponents beyond the exponent byte.
      {ZQDecimal(1e300), "0|0|0"},       {ZQDecimal(1e-300), "0|0|0"},
  };
  for (const Case& c : cases) EXPECT_EQ(Layout(c.value), c.layout);
  // Assignment parses as the constructor does.
  for (const char* t : {"12345678901234567890123", "0.05", " -12.5 ", "-0", "1e3", ""}) {
    ZQDecimal assigned(99L);
    assigned = t;
    EXPECT_TRUE(assigned == ZQDecimal(t)) << t;
  }
}

TEST(DecimalConversion, ToIntegersAndDouble) {
  // Wrapping of random values is covered by the property tests.
  struct Case {
    const char* text;
    long as_long;
    unsigned long as_ulong;
    short as_short;
    double as_double;
  } cases[] = {
      {"0.05", 0, 0, 0, 0.05},
      {"-7.9", -7, 4294967289UL, -7, -7.9},
      {"0.001", 0, 0, 0, 0.001},
      // 10^22 wraps modulo 2^32.
      {"10000000000000000000000", -1304428544, 2990538752UL, 0, 1e22},
  };
  for (const Case& c : cases) {
    ZQDecimal d(c.text);
    EXPECT_EQ(static_cast<long>(d), c.as_long) << c.text;
    EXPECT_EQ(static_cast<int>(d), static_cast<int>(c.as_long)) << c.text;
    EXPECT_EQ(static_cast<unsigned long>(d), c.as_ulong) << c.text;
    EXPECT_EQ(static_cast<short>(d), c.as_short) << c.text;
    EXPECT_EQ(static_cast<double>(d), c.as_double) << c.text;
  }
}

TEST(DecimalArithmetic, SignsCarriesAndNegativeZero) {
  struct Case { const char* a; char op; const char* b; const char* result; } cases[] = {
      {"-5", '-', "-5", "-0"},  // the sign of a zero difference is kept
      {"5", '-', "5", "0"},         {"-5", '+', "5", "0"},
      {"0", '+', "12.5", "12.5"},   {"12.5", '-', "0", "12.5"},
      // Ten or more pairs apart, the smaller operand vanishes entirely.
      {"10000000000000000000000", '+', "5", "10000000000000000000000"},
      {"5", '-', "-10000000000000000000000", "10000000000000000000000"},
  };
  for (const Case& c : cases) {
    ZQDecimal a(c.a), b(c.b), in_place(c.a);
    ZQDecimal r = c.op == '+' ? a + b : a - b;
    c.op == '+' ? in_place += b : in_place -= b;
    EXPECT_EQ(Text(r), c.result) << c.a << c.op << c.b;
    EXPECT_TRUE(in_place == r) << c.a << c.op << c.b;
  }
  EXPECT_TRUE((ZQDecimal("-5") - ZQDecimal("-5")).IsNeg());
  EXPECT_EQ(Text(-ZQDecimal("12.5")), "-12.5");
  EXPECT_EQ(Text(-ZQDecimal("-12.5")), "12.5");
  EXPECT_FALSE((-ZQDecimal()).IsNeg());
  ZQDecimal sum("1.5");
  sum += 2.25;
  sum += -4L;
  sum += 1UL;
  EXPECT_EQ(Text(sum), "0.75");
}

TEST(DecimalArithmetic, NonConstAdditionShiftsItsArgument) {
  ZQDecimal a(100L), c(100L), b("0.05");  // b: exponent 1
  const ZQDecimal d("0.05");
  a += b;  // the non-const overload aligns b in place
  c += d;  // the const overload works on a copy
  EXPECT_EQ(Text(a), "100.05");
  EXPECT_EQ(Text(c), "100.05");
  EXPECT_EQ(Layout(b), "000.05|0,0,5|2");  // same value, printed as now stored
  EXPECT_EQ(Layout(d), "0.05|0,5|1");
  // Shifting drops digits of the argument for good.
  ZQDecimal big("10000000000000000000"), small("1.5");
  big += small;
  EXPECT_EQ(static_cast<double>(small), 1.0);
}

TEST(DecimalCompare, AsStored) {
  // Ordering of normalised values is covered by the property tests; these
  // are the stored-form particulars. The text 0.05 is stored as 0,5 with
  // exponent 1 and the double 0.05 as 5 with exponent 0, so the first is
  // the larger as stored.
  EXPECT_TRUE(ZQDecimal("0.05") > ZQDecimal(0.05));
  EXPECT_TRUE(ZQDecimal(0.05) < ZQDecimal("0.05"));
  EXPECT_FALSE(ZQDecimal("0.05") == ZQDecimal(0.05));
  EXPECT_TRUE(ZQDecimal("12.5") == ZQDecimal("12.50"));
  // "-0" is negative as stored.
  EXPECT_TRUE((ZQDecimal("-5") - ZQDecimal("-5")) < ZQDecimal());
}

TEST(DecimalScale, PowersOfTen) {
  struct Case { const char* text; int n; const char* result; } cases[] = {
      {"5", 1, "50"},       {"5", -1, "0.5"},        {"50", 1, "500"},
      {"50", -1, "5"},      {"5", 3, "5000"},        {"5", -3, "0.005"},
      {"5", 2, "500"},      {"1234.5", -2, "12.345"}, {"1234.5", 1, "12345"},
      {"-12.34", 1, "-123.4"}, {"0", 5, "0"},        {"7", -7, "0.0000007"},
      // Dividing by ten drops the last decimal digit of a full value;
      // multiplying a full value moves every digit up.
      {"12345678901234567891", -1, "1234567890123456789"},
      {"1.234567890123456789", 1, "12.34567890123456789"},
  };
  for (const Case& c : cases) {
    ZQDecimal d(c.text);
    EXPECT_EQ(&d.Scale(c.n), &d);
    EXPECT_EQ(Text(d), c.result) << c.text << " " << c.n;
  }
}

TEST(DecimalPrint, ExponentialForm) {
  struct Case { ZQDecimal value; int size; const char* text; } cases[] = {
      {ZQDecimal(5L), 0, "0.5e+01"},   {ZQDecimal(10L), 0, "1.0e+01"},
      {ZQDecimal(-5L), 0, "-0.5e+01"}, {ZQDecimal(0.05), 0, "0.5e-1"},
      // A leading pair above 10 is written as the single character '0' + 12.
      {ZQDecimal(1234.5), 0, "<.345e+02"},
      {ZQDecimal("1.0203040506070809"), 0, "0.10203040506070809e+01"},
      // Digits are cut so that the text fits.
      {ZQDecimal("1.0203040506070809"), 12, "0.10203e+01"},
      {ZQDecimal("-1.0203040506070809"), 12, "-0.102e+01"},
      // Sizes 1 to 6 fall back to the plain form.
      {ZQDecimal("1.5"), 6, "1.5"},    {ZQDecimal(), 0, "0"},
  };
  for (const Case& c : cases) {
    char buf[64];
    EXPECT_EQ(Text(c.value, c.size, true), c.text);
    EXPECT_STREQ(c.value.PrintExp(buf, c.size), c.text);
  }
}

TEST(DecimalPrint, NeverWritesPastTheBuffer) {
  const ZQDecimal values[] = {
      ZQDecimal("-12345678901234567890123"), ZQDecimal("-0.00000012345678901234567891"),
      ZQDecimal("-1234567890.1234567891"),   ZQDecimal("-5") - ZQDecimal("-5"),
      ZQDecimal(-1234.5),                    ZQDecimal(7L).Scale(200),
      ZQDecimal(7L).Scale(-250),
  };
  for (const ZQDecimal& v : values) {
    char full[512];
    v.Print(full, sizeof full);
    for (bool exp : {false, true}) {
      for (int size = 0; size <= 60; ++size) {
        int room = size == 0 ? ZQDecimal::kUnboundedPrintSize : size;
        char buf[128];
        std::memset(buf, 0x7f, sizeof buf);
        v.Print(buf, size, exp);
        size_t len = strnlen(buf, sizeof buf);
        ASSERT_LT(len, static_cast<size_t>(room)) << full << " size " << size;
        for (int i = room; i < static_cast<int>(sizeof buf); ++i) ASSERT_EQ(buf[i], 0x7f) << full;
        // A cut plain text is a prefix of the whole text.
        EXPECT_TRUE(exp || std::string(full).compare(0, len, buf) == 0) << buf;
      }
    }
    char untouched[4] = {1, 2, 3, 4};
    v.Print(untouched, -1);
    EXPECT_EQ(untouched[0], 1);
  }
}

TEST(DecimalStore, LayoutAndRoundTrip) {
  // Non-negative values are read through the storage form throughout the
  // property tests; here a negative value and zero.
  char b[12];
  ZQDecimal(-5L).Store(b);
  EXPECT_EQ(std::string(b, 12), std::string("\0\5\0\0\0\0\0\0\0\0\0\x81", 12));
  ZQDecimal().Store(b);
  EXPECT_EQ(std::string(b, 12), std::string("\1\0\0\0\0\0\0\0\0\0\0\x80", 12));
  for (const char* t : {"-0.05", "-12345678901234567890123"}) {
    ZQDecimal d(t), back(1L);
    d.Store(b);
    back.Load(b);
    EXPECT_TRUE(back == d) << t;
  }
  char bad[12] = {1, 5, 100, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  ZQDecimal loaded(3L);
  loaded.Load(bad);
  EXPECT_TRUE(loaded == ZQDecimal());
}

}  // namespace
