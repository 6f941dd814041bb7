// Bulk UTF-8 <-> 16-bit loops shared by the buffer routines of ZQGlob and
// code set -3. They cover the common, well-formed part of a text quickly and
// stop at anything else, where the caller's exact one-character step takes
// over; the results are therefore those of the exact step alone.
#ifndef ZQ_TEXT_UTF8_RUN_H
#define ZQ_TEXT_UTF8_RUN_H

#include <cstddef>

namespace zq {

// Fewest input bytes Utf8DecodeRun works on; with fewer it returns at once.
constexpr std::size_t kUtf8RunMinBytes = 34;

// Decodes sequences of 1 to 3 bytes whose trailing bytes are 10xxxxxx from
// `in` (`len` bytes) into at most `room` units, one unit each, and stops
// before any other sequence, before a sequence cut off by `len`, when fewer
// than kUtf8RunMinBytes bytes are left, or when `room` may not suffice.
// Sets `*used` to the bytes consumed and returns the units written.
std::size_t Utf8DecodeRun(const unsigned char* in, std::size_t len,
                          unsigned short* out, std::size_t room,
                          std::size_t* used);

// Encodes the `len` units at `in` into at most `room` bytes, a surrogate
// pair as one 4-byte sequence, never splitting a sequence; stops before a
// high surrogate (0xD800 to 0xDBFF) not followed by a low one within `len`,
// and may stop up to 3 bytes short of `room`. Sets `*used` to the units
// consumed and returns the bytes written.
std::size_t Utf8EncodeRun(const unsigned short* in, std::size_t len,
                          unsigned char* out, std::size_t room,
                          std::size_t* used);

// Utf8EncodeRun for zero-terminated units: also stops at the zero unit,
// never reading past it.
std::size_t Utf8EncodeRunToZero(const unsigned short* in, unsigned char* out,
                                std::size_t room, std::size_t* used);

}  // namespace zq

#endif  // ZQ_TEXT_UTF8_RUN_H
