// Binary integer codecs: two's complement of 1 to 8 bytes, 3-byte integers,
// 32-bit sign-magnitude and the 6-byte AccPac number.
//
// Every reader takes a pointer to the field's first byte; the caller has
// checked that the field lies inside the record. Every writer stores exactly
// the field's bytes at `out`, which has room for them.
#ifndef ZQ_TYPES_CODEC_BINARY_H
#define ZQ_TYPES_CODEC_BINARY_H

#include <cstddef>
#include <cstdint>

namespace zq {
namespace codec {

// Reads `n` (1 to 8) bytes as an integer; with `is_signed` the most
// significant stored byte's top bit is extended through the high bytes.
int64_t GetBinary(const uint8_t* p, int n, bool msb_first, bool is_signed);

// Stores the low `n` (1 to 8) bytes of `v`, most significant first when
// `msb_first`, otherwise least significant first.
void PutBinary(uint8_t* out, int64_t v, int n, bool msb_first);

// Copies `n` bytes from `p` to `dst`, reversing them when `msb_first` (so the
// result is in this machine's order); no sign extension.
void GetRaw(const uint8_t* p, int n, bool msb_first, void* dst);

// Copies `n` bytes of `src` (this machine's order) to `out` in field order.
void PutRaw(uint8_t* out, const void* src, int n, bool msb_first);

// Reads a 3-byte integer into 32 bits, sign-extending bit 23 when signed.
int32_t Get3Byte(const uint8_t* p, bool msb_first, bool is_signed);

// Stores the low 3 bytes of `v`.
void Put3Byte(uint8_t* out, int32_t v, bool msb_first);

// Reads a 32-bit sign-magnitude word: bit 31 the sign, bits 0-30 the
// magnitude; negative zero reads as 0.
int32_t Get4FuBin(const uint8_t* p, bool msb_first);

// Stores `v` as 32-bit sign-magnitude.
void Put4FuBin(uint8_t* out, int32_t v, bool msb_first);

// Reads an AccPac number: byte 0 holds the sign (bit 7) and the count n of
// magnitude bytes (low 4 bits); bytes 1 to n the magnitude, least significant
// first. `avail` bytes are readable from `p`; a count reaching past them reads
// the missing bytes as 0.
double GetAccPac(const uint8_t* p, size_t avail);

// Stores `v` as a 6-byte AccPac number (fraction truncated; magnitudes of
// 256^5 and above lose their high part).
void PutAccPac(uint8_t* out, double v);

}  // namespace codec
}  // namespace zq

#endif  // ZQ_TYPES_CODEC_BINARY_H
