// Inline access to a ZQDecimal's parts for the library's own codecs, which
// build and take apart millions of values and cannot afford a copy through
// the storage form each time.
#ifndef ZQ_NUMBERS_DECIMAL_ACCESS_H
#define ZQ_NUMBERS_DECIMAL_ACCESS_H

#include <cstdint>
#include <cstring>

#include "zq/decimal.h"

namespace zq {

struct DecimalAccess {
  // The ten base-100 digits, most significant first.
  static void Digits(const ZQDecimal& d, uint8_t out[10]) { std::memcpy(out, d.digits_, 10); }
  static bool Negative(const ZQDecimal& d) { return d.sign_ != 0; }
  static int Exponent(const ZQDecimal& d) { return d.exponent_; }

  // Sets every part of `d`; the caller keeps the digits below 100 and, for
  // zero, every part 0.
  static void Set(ZQDecimal* d, const uint8_t digits[10], bool neg, int exponent) {
    std::memcpy(d->digits_, digits, 10);
    d->sign_ = neg ? 1 : 0;
    d->exponent_ = static_cast<signed char>(exponent);
  }
};

}  // namespace zq

#endif  // ZQ_NUMBERS_DECIMAL_ACCESS_H
