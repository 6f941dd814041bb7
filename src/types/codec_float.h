// Floating-point codecs of foreign machines and products.
//
// Readers rebuild the stored number as an IEEE double by moving bits; writers
// are their inverses. Unless a codec says otherwise, writers round to the
// nearest representable value (ties to even), clamp values beyond the
// format's range to its largest finite value of the same sign, store values
// below its smallest magnitude as zero, and store NaN as zero. The caller
// guarantees that the field's bytes lie inside the record and that `out` has
// room for the field.
#ifndef ZQ_TYPES_CODEC_FLOAT_H
#define ZQ_TYPES_CODEC_FLOAT_H

#include <cstdint>

namespace zq {
namespace codec {

// IBM hexadecimal float of `len` (2 to 8) bytes, most significant byte first:
// sign bit, 7-bit exponent of 16 in excess 64, then a fraction of len-1 bytes;
// value = 0.F x 16^(exp-64). Reading truncates fraction bits beyond 52.
double GetIBMmfflt(const uint8_t* p, int len);
void PutIBMmfflt(uint8_t* out, int len, double v);

// VAX F (4 bytes) and D (8 bytes) floating point: 16-bit words stored least
// significant byte first, most significant word first; sign bit, 8-bit
// exponent in excess 128, fraction after a hidden bit; value = 0.1F x 2^(E-128).
// An exponent of 0 is the VAX zero, so values below 2^-128 store as zero.
double GetVaxFloat(const uint8_t* p, int len);
void PutVaxFloat(uint8_t* out, int len, double v);

// Microsoft BASIC single: exponent byte (excess 129, hidden bit), sign bit 23,
// 23 fraction bits; stored least significant byte first.
float GetmscbFloat(const uint8_t* p);
// Stores `v` when it is within the format's range; returns false (and
// stores nothing) otherwise.
bool PutmscbFloat(uint8_t* out, float v);

// Microsoft BASIC double: as the single with a 55-bit fraction.
double GetmscbDouble(const uint8_t* p);
bool PutmscbDouble(uint8_t* out, double v);

// Pascal 6-byte real, least significant byte first: byte 0 the exponent in
// excess 129 (0 is zero), bytes 1 to 5 the 39-bit fraction after a hidden bit
// with the sign in bit 7 of byte 5. With `result_msb_first` the reader's eight
// result bytes are handed back most significant first.
double GetPasReal(const uint8_t* p, bool result_msb_first);
void PutPasReal(uint8_t* out, double v);

// Cray 64-bit floating point: sign bit 63, 15-bit exponent biased 16384 in
// bits 62-48, 48-bit fraction with its leading bit explicit; value =
// 0.F x 2^(exp-16384). The 64-bit word is stored in the descriptor's order
// (the machine itself stores it most significant byte first). A zero fraction
// reads as 0.0. Infinity stores the largest finite Cray value (exponent
// 0x5FFF); reading a value beyond the double range gives infinity.
double GetCray(const uint8_t* p, bool msb_first);
void PutCray(uint8_t* out, double v, bool msb_first);

// Intel 80-bit extended: a 64-bit significand with an explicit integer bit,
// then sign and a 15-bit exponent biased 16383; least significant byte first
// (reversed when `msb_first`). Reading rounds to the nearest double;
// infinities and NaNs carry over; unnormal encodings are read by value.
// Writing is exact.
double GetTReal(const uint8_t* p, bool msb_first);
void PutTReal(uint8_t* out, double v, bool msb_first);

// Magic PC Number of `len` (2 to 10) bytes: byte 0 holds the sign (bit 7) and
// a decimal exponent in excess 64 (bits 6-0); bytes 1 to len-1 hold 2*(len-1)
// packed decimal digits d1 d2 ..., most significant first, so that value =
// 0.d1d2... x 10^(exp-64). A field whose digits are all zero reads as 0.0.
// Writing rounds to the digits that fit, as printf's "%e" does.
double GetMAGNum(const uint8_t* p, int len);
void PutMAGNum(uint8_t* out, int len, double v);

// Magic PC Real (4 bytes) and Extended (8 bytes): IEEE single and double,
// least significant byte first, as the product kept them on the PC.
double GetMAGReal(const uint8_t* p, int len);
void PutMAGReal(uint8_t* out, int len, double v);

}  // namespace codec
}  // namespace zq

#endif  // ZQ_TYPES_CODEC_FLOAT_H
