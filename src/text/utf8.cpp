// UTF-8 <-> 16-bit conversion.
//
// Decoding is deliberately lenient: trailing bytes are not checked for the
// 10xxxxxx form and overlong forms are accepted; the value is the plain
// shift-and-add of the bytes less a fixed offset per sequence length.
#include <cstdint>

#include "zq/zqglob.h"

namespace {

// What shift-and-add of the marker bits of a sequence of 1 to 4 bytes adds.
constexpr int64_t kOffsets[4] = {0, 0x3080, 0xE2080, 0x3C82080};

// Shift-and-add decoding of the `count` bytes at `in`.
int64_t Accumulate(const unsigned char* in, int count) {
  int64_t value = 0;
  for (int i = 0; i < count; ++i) value = (value << 6) + in[i];
  return value - kOffsets[count - 1];
}

int64_t ZLength(const unsigned char* s) {
  int64_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

int64_t ZLength(const unsigned short* s) {
  int64_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

}  // namespace

int ZQGlob::BytesInUTF8(unsigned char lead) {
  if (lead < 0xC0) return 1;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  if (lead < 0xFC) return 5;
  return 6;
}

// Decodes `n` bytes (-1: up to the zero byte) into `out`, which holds `cap`
// units including the zero unit written at the end. Returns the units
// decoded, -1 when the input ends inside a sequence, -2 for a lead byte of
// a sequence longer than 4 bytes, a value above 0x10FFFF or too small `out`.
int ZQGlob::UTF8ToUnicode(const unsigned char* in, int n, unsigned short* out,
                          int cap) {
  if (in == nullptr) n = 0;
  int64_t len = n < 0 ? ZLength(in) : n;
  if (out == nullptr || cap < 1) return -2;
  int64_t o = 0;
  for (int64_t i = 0; i < len;) {
    int count = BytesInUTF8(in[i]);
    if (count > 4) return -2;
    if (i + count > len) return -1;
    int64_t value = Accumulate(in + i, count);
    i += count;
    if (value > 0x10FFFF) return -2;
    int units = value < 0x10000 ? 1 : 2;
    if (o + units + 1 > cap) return -2;
    if (units == 1) {
      out[o++] = static_cast<unsigned short>(value);
    } else {
      value -= 0x10000;
      out[o++] = static_cast<unsigned short>(0xD800 + (value >> 10));
      out[o++] = static_cast<unsigned short>(0xDC00 + (value & 0x3FF));
    }
  }
  out[o] = 0;
  return static_cast<int>(o);
}

// Decodes one sequence into `u` (values beyond 16 bits keep their low 16
// bits); the bytes used, or -1 for a lead byte of more than 4 bytes.
int ZQGlob::UTF8ToUnicode(const unsigned char* in, unsigned short& u) {
  if (in == nullptr) return -1;
  int count = BytesInUTF8(in[0]);
  if (count > 4) return -1;
  u = static_cast<unsigned short>(Accumulate(in, count));
  return count;
}

// Encodes one unit (1 to 3 bytes and a zero byte); -1 for a high surrogate,
// which gets nothing written. Low surrogates encode like any other unit.
int ZQGlob::UnicodeToUTF8(unsigned short u, unsigned char* out) {
  if (out == nullptr || (u >= 0xD800 && u <= 0xDBFF)) return -1;
  int n;
  if (u < 0x80) {
    out[0] = static_cast<unsigned char>(u);
    n = 1;
  } else if (u < 0x800) {
    out[0] = static_cast<unsigned char>(0xC0 | (u >> 6));
    out[1] = static_cast<unsigned char>(0x80 | (u & 0x3F));
    n = 2;
  } else {
    out[0] = static_cast<unsigned char>(0xE0 | (u >> 12));
    out[1] = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | (u & 0x3F));
    n = 3;
  }
  out[n] = 0;
  return n;
}

// Encodes `n` units (-1: up to the zero unit) into `out`, which holds `cap`
// bytes including the zero byte written at the end. A high surrogate
// followed by a low one becomes one 4-byte sequence; a lone low surrogate
// encodes as 3 bytes. Returns the bytes written, -1 for a high surrogate
// without its low half, -2 when `out` is too small.
int ZQGlob::UnicodeToUTF8(const unsigned short* in, int n, unsigned char* out,
                          int cap) {
  if (in == nullptr) n = 0;
  int64_t len = n < 0 ? ZLength(in) : n;
  if (out == nullptr || cap < 1) return -2;
  int64_t o = 0;
  for (int64_t i = 0; i < len; ++i) {
    unsigned short u = in[i];
    unsigned char seq[5];
    int k;
    if (u >= 0xD800 && u <= 0xDBFF) {
      if (i + 1 >= len || in[i + 1] < 0xDC00 || in[i + 1] > 0xDFFF) return -1;
      uint32_t cp = 0x10000 + ((static_cast<uint32_t>(u) - 0xD800) << 10) +
                    (in[i + 1] - 0xDC00);
      seq[0] = static_cast<unsigned char>(0xF0 | (cp >> 18));
      seq[1] = static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F));
      seq[2] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
      seq[3] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
      k = 4;
      ++i;
    } else {
      k = UnicodeToUTF8(u, seq);
    }
    if (o + k + 1 > cap) return -2;
    for (int j = 0; j < k; ++j) out[o++] = seq[j];
  }
  out[o] = 0;
  return static_cast<int>(o);
}
