// Exact decimals for the digit codecs, built and read through ZQDecimal's
// twelve-byte storage form instead of through text or doubles.
//
// The engine reads packed, zoned and binary fields into a ZQDecimal as the
// whole number the field holds, scaled by the descriptor; and writes a
// ZQDecimal as its scaled value rounded (packed, zoned) or truncated
// (binary). These helpers do both on the value's base-100 digits and give
// exactly the decimals and whole numbers that ZQDecimal's own integer
// constructor, Scale and Print would give. Where that cannot be done cheaply
// they return false and the caller takes its general path.
#ifndef ZQ_TYPES_CODEC_EXACT_H
#define ZQ_TYPES_CODEC_EXACT_H

#include <cstdint>

class ZQDecimal;

namespace zq {
namespace codec {

// A decimal taken apart: ten base-100 digits (most significant first), the
// sign byte and the base-100 exponent.
struct DecimalParts {
  uint8_t digits[10];
  bool neg;
  int exponent;
};

// The parts of `d`, from its storage form.
void SplitDecimal(const ZQDecimal& d, DecimalParts* p);

// The decimal ZQDecimal(v) gives, scaled by 10^-scale as ZQDecimal::Scale
// does: normalised digits, zero when the exponent leaves its byte. False
// (nothing written) for 19-digit magnitudes with an odd scale.
bool DecimalOfScaledWhole(int64_t v, int scale, ZQDecimal* out);

// ZQDecimal::Scale(n) on parts: the exponent moves by n / 2; an odd n shifts
// the digits one decimal place; an exponent outside a signed byte clears the
// value.
void ScaleParts(DecimalParts* p, int n);

// The magnitude rounded to a whole number, half to even, when it has at
// most 18 whole digits (exponent up to 9) and is not a zero with the sign
// set; false otherwise.
bool RoundedMagnitude(const DecimalParts& p, uint64_t* mag);

// The magnitude's whole part modulo 2^64 when the exponent is at most 10;
// false otherwise.
bool TruncatedMagnitude(const DecimalParts& p, uint64_t* mag);

// SplitDecimal, then ScaleParts by `scale`; `unsigned_field` first drops
// the sign, as negating a negative value would.
void ScaledParts(const ZQDecimal& d, int scale, bool unsigned_field, DecimalParts* p);

}  // namespace codec
}  // namespace zq

#endif  // ZQ_TYPES_CODEC_EXACT_H
