// Binary integer codecs.
#include "types/codec_binary.h"

#include <cmath>
#include <cstring>

namespace zq {
namespace codec {

int64_t GetBinary(const uint8_t* p, int n, bool msb_first, bool is_signed) {
  if (n < 1) return 0;
  if (n > 8) n = 8;
  uint64_t v = 0;
  if (msb_first) {
    for (int i = 0; i < n; ++i) v = (v << 8) | p[i];
  } else {
    for (int i = n - 1; i >= 0; --i) v = (v << 8) | p[i];
  }
  if (n < 8) {
    const uint8_t top = msb_first ? p[0] : p[n - 1];
    if (is_signed && (top & 0x80)) v |= ~uint64_t{0} << (8 * n);
  }
  return static_cast<int64_t>(v);
}

void PutBinary(uint8_t* out, int64_t v, int n, bool msb_first) {
  uint64_t u = static_cast<uint64_t>(v);
  if (n > 8) n = 8;
  for (int i = 0; i < n; ++i) {
    const uint8_t b = static_cast<uint8_t>(u >> (8 * i));
    if (msb_first) {
      out[n - 1 - i] = b;
    } else {
      out[i] = b;
    }
  }
}

void GetRaw(const uint8_t* p, int n, bool msb_first, void* dst) {
  uint8_t* d = static_cast<uint8_t*>(dst);
  if (msb_first) {
    for (int i = 0; i < n; ++i) d[i] = p[n - 1 - i];
  } else {
    std::memcpy(d, p, n);
  }
}

void PutRaw(uint8_t* out, const void* src, int n, bool msb_first) {
  const uint8_t* s = static_cast<const uint8_t*>(src);
  if (msb_first) {
    for (int i = 0; i < n; ++i) out[i] = s[n - 1 - i];
  } else {
    std::memcpy(out, s, n);
  }
}

int32_t Get3Byte(const uint8_t* p, bool msb_first, bool is_signed) {
  return static_cast<int32_t>(GetBinary(p, 3, msb_first, is_signed));
}

void Put3Byte(uint8_t* out, int32_t v, bool msb_first) { PutBinary(out, v, 3, msb_first); }

int32_t Get4FuBin(const uint8_t* p, bool msb_first) {
  const uint32_t w = static_cast<uint32_t>(GetBinary(p, 4, msb_first, false));
  const int32_t mag = static_cast<int32_t>(w & 0x7FFFFFFFu);
  return (w & 0x80000000u) ? -mag : mag;
}

void Put4FuBin(uint8_t* out, int32_t v, bool msb_first) {
  uint32_t w;
  if (v < 0) {
    w = (0u - static_cast<uint32_t>(v)) | 0x80000000u;
  } else {
    w = static_cast<uint32_t>(v);
  }
  PutBinary(out, w, 4, msb_first);
}

double GetAccPac(const uint8_t* p, size_t avail) {
  if (avail == 0) return 0.0;
  const int n = p[0] & 0x0F;
  double v = 0.0;
  double unit = 1.0;
  for (int i = 1; i <= n; ++i) {
    if (static_cast<size_t>(i) < avail) v += p[i] * unit;
    unit *= 256.0;
  }
  return (p[0] & 0x80) ? -v : v;
}

void PutAccPac(uint8_t* out, double v) {
  std::memset(out, 0, 6);
  const bool neg = v < 0;
  double m = std::fabs(v);
  int count = 0;
  // NaN fails the comparison and stores an empty magnitude.
  while (m >= 1.0 && count < 5) {
    out[1 + count] = static_cast<uint8_t>(std::fmod(std::floor(m), 256.0));
    m /= 256.0;
    ++count;
  }
  out[0] = static_cast<uint8_t>(count | (neg ? 0x80 : 0));
}

}  // namespace codec
}  // namespace zq
