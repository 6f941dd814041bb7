// ZQDecimal: boundaries of the whole-value text and arithmetic paths (layout
// of the digit run, text length, point position, carries and normalisation
// at the ends of the exponent range), checked against exact arithmetic.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "numbers/decimal_oracle.h"
#include "zq/decimal.h"

namespace {

using namespace decimal_oracle;

// "[-]digits[.digits]", ignoring a leading '+' and blanks.
Exact FromLooseText(std::string const& t) {
  Exact x;
  bool negative = false, fraction = false;
  for (char c : t) {
    if (c == '-') negative = true;
    if (c == '.') fraction = true;
    if (c < '0' || c > '9') continue;
    x.m = x.m * 10 + (c - '0');
    if (fraction) ++x.s;
  }
  if (negative) x.m = -x.m;
  return x;
}

std::string Printed(ZQDecimal const& d, int size, char* buf, int buf_size) {
  std::memset(buf, 0x7f, buf_size);
  d.Print(buf, size);
  return buf;
}

// Digits that differ from their neighbours, so that a character out of place
// shows; `first` and `last` are never 0.
std::string Digits(int n, int seed) {
  std::string s;
  for (int i = 0; i < n; ++i) s += static_cast<char>('1' + (seed + 7 * i) % 9);
  if (n > 2) s[n / 2] = '0';
  return s;
}

TEST(DecimalFastPaths, CanonicalTextsPrintBackWithinTheirBuffer) {
  // Every split of up to ten pairs between whole and fraction part, both
  // signs: the text is its own oracle.
  for (int whole = 1; whole <= 20; ++whole) {
    for (int frac = 0; (whole + 1) / 2 + (frac + 1) / 2 <= 10; ++frac) {
      for (const char* sign : {"", "-"}) {
        std::string text = sign + Digits(whole, whole + frac);
        if (frac > 0) text += "." + Digits(frac, frac);
        ZQDecimal d(text.c_str());
        int n = static_cast<int>(text.size());
        char buf[96];
        EXPECT_EQ(Printed(d, 64, buf, sizeof buf), text);
        EXPECT_EQ(Printed(d, 0, buf, sizeof buf), text);
        // Exactly enough room, then one byte less: nothing is written past
        // the terminator or the buffer, and a cut text is a prefix.
        EXPECT_EQ(Printed(d, n + 1, buf, sizeof buf), text);
        for (int i = n + 1; i < static_cast<int>(sizeof buf); ++i) {
          ASSERT_EQ(buf[i], 0x7f) << text;
        }
        std::string cut = Printed(d, n, buf, sizeof buf);
        EXPECT_LT(cut.size(), static_cast<size_t>(n)) << text;
        EXPECT_EQ(text.compare(0, cut.size(), cut), 0) << text;
        for (int i = n; i < static_cast<int>(sizeof buf); ++i) {
          ASSERT_EQ(buf[i], 0x7f) << text;
        }
        std::string spaced = std::string(" \t+") + text.substr(*sign ? 1 : 0);
        if (*sign) spaced = " \t-" + text.substr(1);
        EXPECT_TRUE(ZQDecimal(spaced.c_str()) == d) << spaced;
      }
    }
  }
}

TEST(DecimalFastPaths, DigitRunsOfEveryLengthAndPointPosition) {
  // Runs of 1 to 36 characters with the point anywhere (or twice), then an
  // end that may or may not be allowed after them.
  const char* ends[] = {"", " ", "\t\n", "x", "e1", "."};
  for (int length = 1; length <= 36; ++length) {
    for (int point = -1; point < length; ++point) {
      for (int second = -1; second < 1; ++second) {
        std::string run = Digits(length, length);
        if (point >= 0) run[point] = '.';
        if (second == 0 && point != 0) run[0] = '.';
        for (const char* end : ends) {
          std::string text = "-" + run + end;
          ZQDecimal d(text.c_str());
          if (!ZQDecimal::Validate(text.c_str())) {
            EXPECT_TRUE(d == ZQDecimal()) << text;
            continue;
          }
          // Whole digits in pairs (an odd count with a leading zero), ten
          // pairs kept in all: the rest of the value is cut off.
          int whole = static_cast<int>(std::min(run.find('.'), run.size()));
          int pairs = (whole + 1) / 2;
          Exact value = FromStore(d);
          EXPECT_EQ(StoredExponent(d), pairs) << text;
          EXPECT_TRUE(Equal(value, Trunc(FromLooseText(text), 20 - 2 * pairs)))
              << text;
        }
      }
    }
  }
}

TEST(DecimalFastPaths, CarriesAndNormalisationAtTheEdges) {
  struct Case {
    const char* a;
    const char* b;
    const char* sum;
    const char* difference;  // a - (-b)
  } cases[] = {
      // Carry out of digit 0: the sum moves right a digit.
      {"99999999999999999990", "10", "100000000000000000000",
       "100000000000000000000"},
      {"-99.99", "-0.01", "-100", "-100"},
      // Differences whose first digit is one of the last two stored.
      {"1.000000000000000001", "-1", "0.000000000000000001",
       "0.000000000000000001"},
      {"1.0000000000000001", "-1", "0.0000000000000001", "0.0000000000000001"},
      {"-1.00000000000001", "1", "-0.00000000000001", "-0.00000000000001"},
      {"0.5", "-1234567890.12345678", "-1234567889.62345678",
       "-1234567889.62345678"},
      // Zero differences: canonical zero, except that a subtraction from a
      // negative value keeps its sign.
      {"12345678901234567890", "-12345678901234567890", "0", "0"},
      {"-0.05", "0.05", "0", "-0"},
  };
  char buf[64];
  for (const Case& c : cases) {
    ZQDecimal a(c.a), b(c.b);
    EXPECT_STREQ((a + b).Print(buf), c.sum) << c.a << " + " << c.b;
    EXPECT_STREQ((a - -b).Print(buf), c.difference) << c.a << " - -" << c.b;
    ZQDecimal x = a;
    x += static_cast<ZQDecimal const&>(b);
    EXPECT_STREQ(x.Print(buf), c.sum) << c.a << " += " << c.b;
    x = a;
    x -= -b;
    EXPECT_STREQ(x.Print(buf), c.difference) << c.a << " -= -" << c.b;
  }

  // An operand nine digits below the other keeps its first digit; ten or
  // more below, it vanishes.
  EXPECT_STREQ((ZQDecimal(1L) + ZQDecimal(1L).Scale(-18)).Print(buf),
               "1.000000000000000001");
  EXPECT_STREQ((ZQDecimal(1L) + ZQDecimal(1L).Scale(-20)).Print(buf), "1");
  EXPECT_STREQ((ZQDecimal(-1L) + ZQDecimal(9L).Scale(-22)).Print(buf), "-1");

  // A carry from the largest exponent, or a normalisation below the
  // smallest, gives zero; one step less does not.
  ZQDecimal top = ZQDecimal(99L).Scale(252);
  EXPECT_TRUE(top + top == ZQDecimal());
  EXPECT_FALSE(top + ZQDecimal(1L).Scale(250) == ZQDecimal());
  ZQDecimal one = ZQDecimal(1L).Scale(-254);
  ZQDecimal low_value = ZQDecimal("1.0001").Scale(-254) - one;
  Exact low = FromStore(low_value);
  EXPECT_EQ(StoredExponent(low_value), -128);
  EXPECT_TRUE(Equal(low, FromStore(ZQDecimal("0.0001").Scale(-254))));
  EXPECT_TRUE(ZQDecimal("1.000001").Scale(-254) - one == ZQDecimal());

  // The argument of the non-const addition is aligned (here losing its
  // last digit) only when the magnitudes add.
  ZQDecimal sum("100"), arg("0.000000000000000001");
  sum += arg;
  EXPECT_STREQ(arg.Print(buf), "0");
  EXPECT_STREQ(sum.Print(buf), "100");
  ZQDecimal diff("100"), neg_arg("-0.000000000000000001");
  diff += neg_arg;
  EXPECT_STREQ(neg_arg.Print(buf), "-0.000000000000000001");
  // The difference still works on an aligned copy that lost the digit.
  EXPECT_STREQ(diff.Print(buf), "100");
}

}  // namespace
