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

TEST(DecimalProperty, ParsePrintAndConvertMatchExactValues) {
  std::mt19937_64 rng(20240501);
  int exact = 0, truncated = 0;
  for (int n = 0; n < 10000; ++n) {
    int sig = Pick(rng, 1, 20);
    int int_digits = Pick(rng, -4, 23);
    std::string t = RandomText(rng, sig, int_digits, rng() % 2);
    ZQDecimal d(t.c_str());
    int e = int_digits <= 0 ? 1 : (int_digits + 1) / 2;
    ASSERT_EQ(StoredExponent(d), e) << t;
    Exact want = Trunc(FromText(t), 20 - 2 * e);
    (Equal(want, FromText(t)) ? exact : truncated)++;
    ASSERT_TRUE(Equal(FromStore(d), want)) << t;
    ASSERT_EQ(Text(d), ToText(want)) << t;
    // Integer conversions truncate the fraction and wrap modulo 2^32.
    Exact whole = Trunc(want, 0);
    uint32_t low = static_cast<uint32_t>(static_cast<unsigned __int128>(whole.m * Pow10(-whole.s)));
    ASSERT_EQ(static_cast<unsigned long>(d), low) << t;
    ASSERT_EQ(static_cast<long>(d), static_cast<int32_t>(low)) << t;
    ASSERT_EQ(static_cast<short>(d), static_cast<int16_t>(low)) << t;
    // Integers are stored exactly.
    int32_t v = static_cast<int32_t>(rng()) >> (rng() % 32);
    ZQDecimal from(static_cast<long>(v)), from_u(static_cast<unsigned long>(uint32_t(v)));
    ASSERT_EQ(Text(from), std::to_string(v));
    ASSERT_EQ(static_cast<long>(from), v);
    ASSERT_EQ(Text(from_u), std::to_string(uint32_t(v)));
  }
  // Both kinds of text occurred.
  EXPECT_GT(exact, 2000);
  EXPECT_GT(truncated, 400);
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
    std::string ta = RandomText(rng, Pick(rng, 1, 20), Pick(rng, -1, 13), rng() % 2);
    std::string tb = RandomText(rng, Pick(rng, 1, 20), Pick(rng, -1, 13), rng() % 2);
    if (n % 10 == 0) tb = ta;  // equal magnitudes: zero results
    if (n % 20 == 0 && tb[0] != '-') tb = "-" + tb;
    ZQDecimal a(ta.c_str()), b(tb.c_str());
    SCOPED_TRACE(ta + " and " + tb);
    Exact xa = FromStore(a), xb = FromStore(b);
    int ea = StoredExponent(a), eb = StoredExponent(b);
    Exact want_sum = ModelAdd(xa, ea, xb, eb);
    ZQDecimal sum = a + b, diff = a - b, c(a), d(a);
    ASSERT_TRUE(Equal(FromStore(sum), want_sum));
    int common = xa.s > xb.s ? xa.s : xb.s;
    i128 exact = xa.m * Pow10(common - xa.s) + xb.m * Pow10(common - xb.s);
    lossless += Equal(want_sum, {exact, common});
    Exact want_diff = ModelAdd(xa, ea, {-xb.m, xb.s}, eb);
    bool negative = false;
    ASSERT_TRUE(Equal(FromStore(diff, &negative), want_diff));
    // Only a difference of two negatives keeps a sign on zero.
    ASSERT_EQ(negative, want_diff.m != 0 ? want_diff.m < 0 : a.IsNeg() && b.IsNeg());
    // The in-place forms agree with the operators.
    c += b;
    d -= b;
    ASSERT_TRUE(c == sum && d == diff);
  }
  EXPECT_GT(lossless, 1000);
}

TEST(DecimalProperty, ComparisonAndStoredOrderFollowValues) {
  std::mt19937_64 rng(99);
  for (int n = 0; n < 20000; ++n) {
    // Normalised values (a non-zero first pair): texts of at least one
    // integer digit, or doubles.
    std::string ta = RandomText(rng, Pick(rng, 1, 20), Pick(rng, 1, 12), rng() % 2);
    std::string tb = n % 7 == 0 ? ta + (ta.find('.') == std::string::npos ? ".00" : "00")
                                : RandomText(rng, Pick(rng, 1, 20), Pick(rng, 1, 12), rng() % 2);
    SCOPED_TRACE(ta + " and " + tb);
    ZQDecimal a(ta.c_str()), b(tb.c_str());
    int want = Compare(FromStore(a), FromStore(b));
    ASSERT_EQ(a > b, want > 0);
    ASSERT_EQ(a < b, want < 0);
    ASSERT_EQ(a == b, want == 0);

    // In the storage form the sign byte (0), then the exponent byte (11),
    // then the digits (1 to 10) compared byte-wise order non-negative
    // normalised values. (Not negatives, whose digits are stored as they
    // are, nor zero against values below 0.01, whose exponent is below
    // zero's.)
    ZQDecimal pa = a.IsNeg() ? -a : a, pb = b.IsNeg() ? -b : b;
    char sa[12], sb[12];
    pa.Store(sa);
    pb.Store(sb);
    auto key = [](const char* s) { return std::string(s, 1) + s[11] + std::string(s + 1, 10); };
    int bytes = key(sa).compare(key(sb));
    ASSERT_EQ(sa[0], 1);
    ASSERT_EQ((bytes > 0) - (bytes < 0), Compare(FromStore(pa), FromStore(pb)));
    ZQDecimal back;
    back.Load(sa);
    ASSERT_TRUE(back == pa);
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
