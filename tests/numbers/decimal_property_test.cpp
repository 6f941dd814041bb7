// ZQDecimal against exact 128-bit arithmetic on random twenty-digit values.
//
// Where ZQDecimal truncates on purpose, the reference applies the same
// truncation to the exact values:
// - parsing keeps ten base-100 pairs aligned on the point, so a text with an
//   odd count of integer digits keeps only nineteen significant digits, and
//   fraction digits beyond the tenth pair are dropped;
// - addition and subtraction first cut the operand with the smaller exponent
//   down to the last place of the larger exponent, and a carry out of the
//   top pair drops the lowest pair;
// - integer conversion truncates the fraction and wraps modulo 2^32.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "numbers/decimal_oracle.h"
#include "zq/decimal.h"

namespace {

using namespace decimal_oracle;

std::string Text(ZQDecimal const& d) {
  char buf[512];
  d.Print(buf, sizeof buf);
  return buf;
}

// A random number from `lo` to `hi`.
int Pick(std::mt19937_64& rng, int lo, int hi) {
  return lo + static_cast<int>(rng() % static_cast<uint64_t>(hi - lo + 1));
}

// Exponent that parsing gives a literal with `int_digits` integer digits.
int ParsedExponent(int int_digits) {
  return int_digits <= 0 ? 1 : (int_digits + 1) / 2;
}

TEST(DecimalProperty, ParseAndPrintMatchExactValues) {
  std::mt19937_64 rng(20240501);
  int exact = 0, truncated = 0;
  for (int n = 0; n < 5000; ++n) {
    int sig = Pick(rng, 1, 20);
    int int_digits = Pick(rng, -4, 23);
    std::string t = RandomText(rng, sig, int_digits, rng() % 2);
    ZQDecimal d(t.c_str());
    int e = ParsedExponent(int_digits);
    ASSERT_EQ(StoredExponent(d), e) << t;
    Exact want = Trunc(FromText(t), 20 - 2 * e);
    (Equal(want, FromText(t)) ? exact : truncated)++;
    ASSERT_TRUE(Equal(FromStore(d), want)) << t;
    ASSERT_EQ(Text(d), ToText(want)) << t;
  }
  // Both kinds of text occurred.
  EXPECT_GT(exact, 1000);
  EXPECT_GT(truncated, 200);
}

// The reference sum of a and b as ZQDecimal forms it (see the file comment).
Exact ModelAdd(Exact a, int ea, Exact b, int eb) {
  int e = ea > eb ? ea : eb;
  int grid = 20 - 2 * e;
  // Both scales are at least `grid`, so truncation lands exactly on it.
  Exact sum{Trunc(a, grid).m + Trunc(b, grid).m, grid};
  i128 mag = sum.m < 0 ? -sum.m : sum.m;
  if (mag >= Pow10(20)) sum = Trunc(sum, grid - 2);
  return sum;
}

TEST(DecimalProperty, AdditionAndSubtractionMatchTruncatedExactResults) {
  std::mt19937_64 rng(7);
  int lossless = 0;
  for (int n = 0; n < 20000; ++n) {
    std::string ta =
        RandomText(rng, Pick(rng, 1, 20), Pick(rng, -1, 13), rng() % 2);
    std::string tb =
        RandomText(rng, Pick(rng, 1, 20), Pick(rng, -1, 13), rng() % 2);
    if (n % 10 == 0) tb = ta;  // equal magnitudes: zero results
    if (n % 20 == 0 && tb[0] != '-') tb = "-" + tb;
    ZQDecimal a(ta.c_str()), b(tb.c_str());
    Exact xa = FromStore(a), xb = FromStore(b);
    int ea = StoredExponent(a), eb = StoredExponent(b);

    Exact want_sum = ModelAdd(xa, ea, xb, eb);
    ZQDecimal sum = a + b;
    ASSERT_TRUE(Equal(FromStore(sum), want_sum)) << ta << " + " << tb;
    int common = xa.s > xb.s ? xa.s : xb.s;
    Exact exact_sum{xa.m * Pow10(common - xa.s) + xb.m * Pow10(common - xb.s),
                    common};
    if (Equal(want_sum, exact_sum)) ++lossless;

    Exact neg_b{-xb.m, xb.s};
    Exact want_diff = ModelAdd(xa, ea, neg_b, eb);
    bool negative = false;
    ZQDecimal diff = a - b;
    ASSERT_TRUE(Equal(FromStore(diff, &negative), want_diff))
        << ta << " - " << tb;
    if (want_diff.m != 0) {
      ASSERT_EQ(negative, want_diff.m < 0) << ta << " - " << tb;
    } else {
      // Only a difference of two negatives keeps a sign on zero.
      ASSERT_EQ(negative, a.IsNeg() && b.IsNeg()) << ta << " - " << tb;
    }
    // The in-place forms agree with the operators.
    ZQDecimal c(a);
    c += b;
    ASSERT_TRUE(c == sum);
    c = a;
    c -= b;
    ASSERT_TRUE(c == diff);
  }
  EXPECT_GT(lossless, 1000);
}

TEST(DecimalProperty, ComparisonAndStoredOrderFollowValues) {
  std::mt19937_64 rng(99);
  for (int n = 0; n < 20000; ++n) {
    // Normalised values (a non-zero first pair): texts of at least one
    // integer digit, or doubles.
    std::string ta =
        RandomText(rng, Pick(rng, 1, 20), Pick(rng, 1, 12), rng() % 2);
    std::string tb =
        n % 7 == 0
            ? ta + (ta.find('.') == std::string::npos ? ".00" : "00")
            : RandomText(rng, Pick(rng, 1, 20), Pick(rng, 1, 12), rng() % 2);
    ZQDecimal a(ta.c_str()), b(tb.c_str());
    int want = Compare(FromStore(a), FromStore(b));
    ASSERT_EQ(a > b, want > 0) << ta << " " << tb;
    ASSERT_EQ(a < b, want < 0) << ta << " " << tb;
    ASSERT_EQ(a == b, want == 0) << ta << " " << tb;

    // In the storage form the sign byte (0), then the exponent byte (11),
    // then the digits (1 to 10) compared byte-wise order non-negative
    // normalised values. (Not negatives, whose digits are stored as they
    // are, nor zero against values below 0.01, whose exponent is below
    // zero's.)
    ZQDecimal pa = a.IsNeg() ? -a : a, pb = b.IsNeg() ? -b : b;
    char sa[12], sb[12];
    pa.Store(sa);
    pb.Store(sb);
    auto key = [](const char* s) {
      return std::string(s, 1) + std::string(s + 11, 1) +
             std::string(s + 1, 10);
    };
    int bytes = key(sa).compare(key(sb));
    ASSERT_EQ(sa[0], 1);
    int mag = Compare(FromStore(pa), FromStore(pb));
    ASSERT_EQ((bytes > 0) - (bytes < 0), mag) << ta << " " << tb;
    ZQDecimal back;
    back.Load(sa);
    ASSERT_TRUE(back == pa);
  }
}

TEST(DecimalProperty, IntegerConversionsWrapLikeExactArithmetic) {
  std::mt19937_64 rng(3);
  for (int n = 0; n < 10000; ++n) {
    std::string t =
        RandomText(rng, Pick(rng, 1, 20), Pick(rng, -2, 23), rng() % 2);
    ZQDecimal d(t.c_str());
    Exact whole = Trunc(FromStore(d), 0);
    i128 m = whole.m * Pow10(-whole.s);
    uint32_t low = static_cast<uint32_t>(static_cast<unsigned __int128>(m));
    ASSERT_EQ(static_cast<unsigned long>(d), low) << t;
    ASSERT_EQ(static_cast<long>(d), static_cast<int32_t>(low)) << t;
    ASSERT_EQ(static_cast<short>(d), static_cast<int16_t>(low)) << t;

    int32_t v = static_cast<int32_t>(rng());
    ZQDecimal from(static_cast<long>(v));
    ASSERT_EQ(Text(from), std::to_string(v));
    ASSERT_EQ(static_cast<long>(from), v);
    ZQDecimal from_u(static_cast<unsigned long>(static_cast<uint32_t>(v)));
    ASSERT_EQ(Text(from_u), std::to_string(static_cast<uint32_t>(v)));
  }
}

TEST(DecimalProperty, DoublesKeepFifteenDigits) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  for (int n = 0; n < 10000; ++n) {
    double x = mantissa(rng) * std::pow(10.0, Pick(rng, -6, 19));
    if (rng() % 2) x = -x;
    char text[32];
    std::snprintf(text, sizeof text, "%.14e", x);
    ZQDecimal d(x);
    // The C library's reading of the same fifteen digits is the reference.
    ASSERT_EQ(static_cast<double>(d), std::strtod(text, nullptr)) << text;
  }
}

}  // namespace
