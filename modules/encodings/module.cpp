// A table-driven encoding module: one code page of one or two bytes per
// character. The code page's tables come from the generated header named by
// ZQ_ENC_TABLES; every lookup is one or two array reads.
#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zq/encmodule.h"
#include ZQ_ENC_TABLES

namespace {

constexpr unsigned short kInvalid = 0xFFFF;

// Decodes the character at `p`, reading at most `n` (>= 1) bytes; returns
// its length, 0 for the zero byte, -1 when it is invalid or cut short.
inline int Decode(const unsigned char* p, std::size_t n, unsigned short* u) {
  unsigned short single = table::kSingle[p[0]];
  if (single != kInvalid) {
    *u = single;
    return single == 0 ? 0 : 1;
  }
  if (table::kMaxBytes == 1 || n < 2) return -1;
  unsigned short pair = table::kDouble[table::kLeadRow[p[0]]][p[1]];
  if (pair == kInvalid) return -1;
  *u = pair;
  return 2;
}

// Unit of the character starting with byte `b0` followed by `b1` (used only
// when `b0` is a lead byte), kInvalid when there is none. Branch-free.
inline uint32_t Select(unsigned char b0, unsigned char b1) {
  uint32_t row = table::kLeadRow[b0];
  uint32_t single = table::kSingle[b0];
  uint32_t pair = table::kDouble[row][b1];
  return single ^ ((single ^ pair) & (0u - (row != 0)));
}

// Bytes of `u` (lead << 8 | trail for two), 0 when it has none; unit 0 is
// the zero byte.
inline unsigned short Encode(unsigned short u) {
  return table::kRevPage[table::kRevIndex[u >> 8]][u & 0xFF];
}

// Bytes searched for the zero byte at a time, ahead of the bulk run.
constexpr std::size_t kScanWindow = 4096;

// Bytes the bulk run takes per step; it reads one more for a character
// that starts on the step's last byte.
constexpr std::size_t kBlock = 64;

// Mask of the bytes of `x` that are no character alone.
inline uint32_t MultiBits(__m128i x) {
  __m128i any = _mm_setzero_si128();
  for (int r = 0; r < table::kMultiRangeCount; ++r) {
    const unsigned char lo = table::kMultiRanges[r][0];
    const unsigned char span = table::kMultiRanges[r][1] - lo;
    __m128i t = _mm_sub_epi8(x, _mm_set1_epi8(static_cast<char>(lo)));
    __m128i inside = _mm_cmpeq_epi8(_mm_min_epu8(t, _mm_set1_epi8(static_cast<char>(span))), t);
    any = _mm_or_si128(any, inside);
  }
  return static_cast<uint32_t>(_mm_movemask_epi8(any));
}

// Trailing bytes of a block that starts with a character, where `multi`
// marks the bytes that are no character alone: a byte is a trailing byte
// when it follows a run of such bytes of odd length, as each run starting
// on a character alternates lead and trailing bytes. A byte of the run that
// is no lead byte either is an invalid character where it starts one.
inline uint64_t TrailBits(uint64_t multi) {
  constexpr uint64_t kEven = 0x5555555555555555u;
  uint64_t follows = multi << 1;
  uint64_t odd_starts = multi & ~kEven & ~follows;
  uint64_t even_runs = odd_starts + multi;
  return (kEven ^ (even_runs << 1)) & follows;
}

// Decodes whole characters from `p` (`len` bytes, none of them zero) into
// at most `room` units, a block at a time, while a block and its next byte
// fit in `len`; stops before an invalid character. Sets `*used` to the bytes
// consumed and returns the units written.
std::size_t DecodeRun(const unsigned char* p, std::size_t len, unsigned short* out,
                      std::size_t room, std::size_t* used) {
  std::size_t i = 0;
  std::size_t o = 0;
  while (len - i > kBlock && room - o >= kBlock) {
    const unsigned char* b = p + i;
    uint64_t starts = ~uint64_t{0};
    if (table::kMaxBytes > 1) {
      uint64_t multi = 0;
      for (std::size_t k = 0; k < kBlock / 16; ++k) {
        __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 16 * k));
        multi |= uint64_t{MultiBits(x)} << (16 * k);
      }
      starts = ~TrailBits(multi);
    }
    uint64_t left = starts;
    while (left != 0) {
      std::size_t pos = static_cast<std::size_t>(__builtin_ctzll(left));
      left &= left - 1;
      uint32_t unit = table::kMaxBytes > 1 ? Select(b[pos], b[pos + 1]) : table::kSingle[b[pos]];
      if (unit == kInvalid) {
        *used = i + pos;
        return o;
      }
      out[o++] = static_cast<unsigned short>(unit);
    }
    // A character starting on the last byte takes the next one too.
    i += kBlock + (table::kMaxBytes > 1 && table::kLeadRow[b[kBlock - 1]] != 0 &&
                   (starts >> (kBlock - 1)) != 0);
  }
  *used = i;
  return o;
}

inline int Put(unsigned short bytes, char* out) {
  if (bytes > 0xFF) {
    out[0] = static_cast<char>(bytes >> 8);
    out[1] = static_cast<char>(bytes & 0xFF);
    return 2;
  }
  out[0] = static_cast<char>(bytes);
  return 1;
}

}  // namespace

int zq_mbtowc(unsigned short* out, const char* in, size_t n) {
  if (in == nullptr) return 0;
  if (n == 0) return -1;
  unsigned short u = 0;
  int len = Decode(reinterpret_cast<const unsigned char*>(in), n, &u);
  if (len >= 0 && out != nullptr) *out = u;
  return len;
}

size_t zq_mbstowcs(unsigned short* out, const char* in, size_t n) {
  if (in == nullptr) return ZQ_ENCODING_ERROR;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(in);
  size_t count = 0;
  unsigned short u = 0;
  if (out == nullptr) {
    for (;; ++count) {
      int len = Decode(p, 2, &u);
      if (len < 0) return ZQ_ENCODING_ERROR;
      if (len == 0) return count;
      p += len;
    }
  }
  // Stretches known to hold no zero byte (found a window at a time, never
  // looking past the terminator) go through the bulk run; it stops before
  // an invalid character, which the step below then reports. The step takes
  // one character: once the zero byte is ruled out, the next byte is inside
  // the text (at worst its terminator), so both lookups are made and the
  // unit chosen without a branch that depends on the text.
  const unsigned char* known = p;
  bool end_seen = false;
  for (; count < n; ++count) {
    if (known < p) known = p;  // the step may cross it
    if (!end_seen && static_cast<std::size_t>(known - p) <= kBlock && n - count >= kBlock) {
      const void* zero = std::memchr(known, 0, kScanWindow);
      if (zero != nullptr) {
        known = static_cast<const unsigned char*>(zero);
        end_seen = true;
      } else {
        known += kScanWindow;
      }
    }
    if (static_cast<std::size_t>(known - p) > kBlock) {
      std::size_t used = 0;
      count += DecodeRun(p, static_cast<std::size_t>(known - p), out + count, n - count, &used);
      p += used;
      if (count >= n) break;
    }
    unsigned short single = table::kSingle[p[0]];
    if (single == 0) {
      out[count] = 0;
      return count;
    }
    if (table::kMaxBytes == 1) {
      if (single == kInvalid) return ZQ_ENCODING_ERROR;
      out[count] = single;
      ++p;
      continue;
    }
    uint32_t unit = Select(p[0], p[1]);
    if (unit == kInvalid) return ZQ_ENCODING_ERROR;
    out[count] = static_cast<unsigned short>(unit);
    p += table::kLeadRow[p[0]] != 0 ? 2 : 1;
  }
  return count;
}

int zq_wctomb(char* out, unsigned short u) {
  if (out == nullptr) return 0;
  if (u == 0) {
    *out = '\0';
    return 1;
  }
  unsigned short bytes = Encode(u);
  if (bytes == 0) return -1;
  return Put(bytes, out);
}

size_t zq_wcstombs(char* out, const unsigned short* in, size_t n) {
  if (in == nullptr) return ZQ_ENCODING_ERROR;
  size_t count = 0;
  for (; *in != 0; ++in) {
    unsigned short bytes = Encode(*in);
    if (bytes == 0) return ZQ_ENCODING_ERROR;
    size_t len = bytes > 0xFF ? 2 : 1;
    if (out != nullptr) {
      if (count + len > n) return count;  // a character is never split
      Put(bytes, out + count);
    }
    count += len;
  }
  if (out != nullptr && count < n) out[count] = '\0';
  return count;
}

int zq_mblen(const char* in, size_t n) {
  if (in == nullptr) return 0;
  if (n == 0) return -1;
  unsigned short u = 0;
  return Decode(reinterpret_cast<const unsigned char*>(in), n, &u);
}

int zq_isleadbyte(int c) {
  if (c < 0 || c > 0xFF) return 0;
  return table::kLeadRow[c] != 0 ? 1 : 0;
}

int zq_mbcurmax(void) { return table::kMaxBytes; }
