// Exact decimals for the digit codecs, through ZQDecimal's storage form.
#include "types/codec_exact.h"

#include <cstring>

#include "numbers/decimal_access.h"
#include "zq/decimal.h"

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "digit bytes assume LSB-first words");

namespace zq {
namespace codec {
namespace {

// The four base-100 digits of `m` (below 10^8) as the bytes of a word, the
// most significant digit in the lowest byte (first in memory).
uint64_t FourPairs(uint32_t m) {
  const uint32_t q = m / 10000;
  const uint32_t r = m - q * 10000;
  return (q / 100) | (q % 100) << 8 | (r / 100) << 16 | static_cast<uint64_t>(r % 100) << 24;
}

// True when every digit is 0.
bool DigitsZero(const uint8_t* d) {
  uint64_t a;
  uint16_t b;
  std::memcpy(&a, d, 8);
  std::memcpy(&b, d + 8, 2);
  return (a | b) == 0;
}

// The number whose base-100 digits are the first `e` (1 to 8) of `d`, most
// significant first: pairs, then quadruples, then octuples are combined in
// parallel lanes of one word.
uint64_t LeadingPairs(const uint8_t* d, int e) {
  uint64_t x;
  std::memcpy(&x, d, 8);
  x <<= 8 * (8 - e);
  x = (x & 0x00FF00FF00FF00FFull) * 100 + ((x >> 8) & 0x00FF00FF00FF00FFull);
  x = (x & 0x0000FFFF0000FFFFull) * 10000 + ((x >> 16) & 0x0000FFFF0000FFFFull);
  return (x & 0xFFFFFFFFull) * 100000000u + (x >> 32);
}

// The whole part of the digits with `e` (at most 10) digits before the
// point, modulo 2^64.
uint64_t WholePart(const uint8_t* d, int e) {
  if (e <= 0) return 0;
  if (e <= 8) return LeadingPairs(d, e);
  uint64_t whole = LeadingPairs(d, 8);
  for (int i = 8; i < e; ++i) whole = whole * 100 + d[i];
  return whole;
}

}  // namespace

void SplitDecimal(const ZQDecimal& d, DecimalParts* p) {
  DecimalAccess::Digits(d, p->digits);
  p->neg = DecimalAccess::Negative(d);
  p->exponent = DecimalAccess::Exponent(d);
}

bool DecimalOfScaledWhole(int64_t v, int scale, ZQDecimal* out) {
  if (v == 0) {
    *out = ZQDecimal();
    return true;
  }
  const bool neg = v < 0;
  uint64_t mag = neg ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
  // An odd scale is made even with one more decimal digit, so that the
  // decimal point falls between two base-100 digits.
  if (scale % 2 != 0) {
    if (mag >= 1000000000000000000ull) return false;
    mag *= 10;
    ++scale;
  }
  // The ten base-100 digits, split in independent steps, as the bytes of
  // one number in memory order; the leading zero digits are shifted out.
  const uint64_t high = mag / 100000000u;
  const uint32_t top = static_cast<uint32_t>(high / 100000000u);
  const uint64_t low = FourPairs(static_cast<uint32_t>(mag - high * 100000000u));
  const uint64_t head = (top / 100) | (top % 100) << 8 |
                        FourPairs(static_cast<uint32_t>(high % 100000000u)) << 16 | low << 48;
  const unsigned __int128 pairs = static_cast<unsigned __int128>(low >> 16) << 64 | head;
  // The count of base-100 digits, without a loop.
  const int n = 1 + (mag >= 100ull) + (mag >= 10000ull) + (mag >= 1000000ull) +
                (mag >= 100000000ull) + (mag >= 10000000000ull) + (mag >= 1000000000000ull) +
                (mag >= 100000000000000ull) + (mag >= 10000000000000000ull) +
                (mag >= 1000000000000000000ull);
  // The digits start with the first non-zero pair, so the exponent is the
  // count of pairs less the pairs the scale moves behind the point.
  const int exponent = n - scale / 2;
  if (exponent < -128 || exponent > 127) {
    *out = ZQDecimal();
    return true;
  }
  const unsigned __int128 digits = pairs >> (8 * (10 - n));
  const uint64_t first8 = static_cast<uint64_t>(digits);
  const uint16_t last2 = static_cast<uint16_t>(digits >> 64);
  uint8_t d[10];
  std::memcpy(d, &first8, 8);
  std::memcpy(d + 8, &last2, 2);
  DecimalAccess::Set(out, d, neg, exponent);
  return true;
}

void ScaleParts(DecimalParts* p, int n) {
  if (DigitsZero(p->digits)) return;
  int e = p->exponent + n / 2;
  if (n % 2 != 0) {
    uint8_t d[10];
    std::memcpy(d, p->digits, sizeof d);
    if (d[0] >= 10) {
      // Divide by ten: the low decimal digit of each pair moves down.
      for (int i = 0; i < 10; ++i) {
        p->digits[i] = static_cast<uint8_t>(d[i] / 10 + (i > 0 ? d[i - 1] % 10 * 10 : 0));
      }
      if (n > 0) ++e;
    } else {
      // Multiply by ten: the high decimal digit of each pair moves up.
      for (int i = 0; i < 10; ++i) {
        p->digits[i] = static_cast<uint8_t>(d[i] % 10 * 10 + (i < 9 ? d[i + 1] / 10 : 0));
      }
      if (n < 0) --e;
    }
  }
  if (e < -128 || e > 127) {
    std::memset(p->digits, 0, sizeof p->digits);
    p->neg = false;
    p->exponent = 0;
    return;
  }
  p->exponent = e;
}

bool RoundedMagnitude(const DecimalParts& p, uint64_t* mag) {
  const int e = p.exponent;
  if (e > 9) return false;
  if (DigitsZero(p.digits)) {
    if (p.neg) return false;
    *mag = 0;
    return true;
  }
  if (e < 0) {
    // Below 1/100: the first fraction digit is 0.
    *mag = 0;
    return true;
  }
  uint64_t whole = WholePart(p.digits, e);
  // Half to even on the first fraction digit and whether any digit follows.
  const unsigned first = p.digits[e] / 10u;
  uint64_t high;
  uint16_t low;
  std::memcpy(&high, p.digits, 8);
  std::memcpy(&low, p.digits + 8, 2);
  uint64_t after = 0;  // the digits after index e
  if (e < 7) {
    after = (high >> (8 * (e + 1))) | low;
  } else if (e == 7) {
    after = low;
  } else if (e == 8) {
    after = low >> 8;
  }
  const unsigned rest = (p.digits[e] % 10u != 0) | (after != 0);
  const unsigned tie_up = rest | static_cast<unsigned>(whole & 1);
  whole += (first > 5) | ((first == 5) & tie_up);
  *mag = whole;
  return true;
}

bool TruncatedMagnitude(const DecimalParts& p, uint64_t* mag) {
  if (p.exponent > 10) return false;
  *mag = WholePart(p.digits, p.exponent);
  return true;
}

void ScaledParts(const ZQDecimal& d, int scale, bool unsigned_field, DecimalParts* p) {
  SplitDecimal(d, p);
  if (unsigned_field) p->neg = false;
  ScaleParts(p, scale);
}

}  // namespace codec
}  // namespace zq
