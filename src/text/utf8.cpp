// UTF-8 <-> 16-bit conversion.
//
// Decoding is deliberately lenient: trailing bytes are not checked for the
// 10xxxxxx form and overlong forms are accepted; the value is the plain
// shift-and-add of the bytes less a fixed offset per sequence length.
//
// The buffer routines hand the well-formed bulk of a text to the runs below
// (a block of bytes or units at a time, without branches that depend on the
// text) and take every other sequence one at a time with the exact rules.
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "text/utf8_run.h"
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

int64_t ZLength(const unsigned short* s) {
  int64_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

// Bytes the decoding run looks at per step.
constexpr std::size_t kBlock = 32;

// The 32-bit mask of the top bits of the bytes of `lo` and `hi`.
inline uint32_t Bits(__m128i lo, __m128i hi) {
  return static_cast<uint32_t>(_mm_movemask_epi8(lo)) |
         (static_cast<uint32_t>(_mm_movemask_epi8(hi)) << 16);
}

// Stores, for 8 positions whose byte and the two after it are `b0`, `b1`
// and `b2` (one per 16-bit lane), the unit of a sequence of 1 to 3 bytes
// starting there, taken as well-formed. In a 16-bit lane the lead byte of a
// 3-byte sequence shifted left by 12 keeps just its four value bits.
inline void StoreUnits(__m128i b0, __m128i b1, __m128i b2, unsigned short* to) {
  const __m128i six = _mm_set1_epi16(0x3F);
  __m128i t1 = _mm_and_si128(b1, six);
  __m128i t2 = _mm_and_si128(b2, six);
  __m128i two = _mm_or_si128(_mm_slli_epi16(_mm_and_si128(b0, _mm_set1_epi16(0x1F)), 6), t1);
  __m128i three = _mm_or_si128(_mm_or_si128(_mm_slli_epi16(b0, 12), _mm_slli_epi16(t1, 6)), t2);
  __m128i is_multi = _mm_cmpgt_epi16(b0, _mm_set1_epi16(0xBF));
  __m128i is_three = _mm_cmpgt_epi16(b0, _mm_set1_epi16(0xDF));
  __m128i v = _mm_or_si128(_mm_and_si128(is_multi, two), _mm_andnot_si128(is_multi, b0));
  v = _mm_or_si128(_mm_and_si128(is_three, three), _mm_andnot_si128(is_three, v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v);
}

// Lead bytes of sequences of 1 to 3 bytes, by sequence length.
constexpr unsigned char kLeadBase[4] = {0, 0x00, 0xC0, 0xE0};

// Writes the 1 to 3 bytes of `u` (not a high surrogate) without a branch
// and returns their number. The trailing bytes are stored before the lead
// byte at places that, for a shorter form, fall inside the form and are
// overwritten in turn: nothing is written past the sequence.
inline std::size_t PutUnit(uint32_t u, unsigned char* out) {
  std::size_t k = 1 + (u >= 0x80) + (u >= 0x800);
  out[k == 3] = static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F));
  out[k - 1] = static_cast<unsigned char>(0x80 | (u & 0x3F));
  out[0] = static_cast<unsigned char>(kLeadBase[k] | (u >> (6 * (k - 1))));
  return k;
}

inline bool IsHighSurrogate(uint32_t u) { return (u & 0xFC00) == 0xD800; }

// Lays out the bytes of 8 units (none a high surrogate) as one 32-bit word
// each, lead byte first and padded with unused bytes, into `words`, and
// their lengths into `lengths`.
inline void Layout(__m128i u, uint32_t* words, uint16_t* lengths) {
  const __m128i six = _mm_set1_epi16(0x3F);
  const __m128i mark = _mm_set1_epi16(0x80);
  const __m128i zero = _mm_setzero_si128();
  __m128i last = _mm_or_si128(_mm_and_si128(u, six), mark);
  __m128i mid = _mm_or_si128(_mm_and_si128(_mm_srli_epi16(u, 6), six), mark);
  __m128i two = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(u, 6), _mm_set1_epi16(0xC0)),
                             _mm_slli_epi16(last, 8));
  __m128i three = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(u, 12), _mm_set1_epi16(0xE0)),
                               _mm_slli_epi16(mid, 8));
  __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(u, _mm_set1_epi16(static_cast<short>(0xFF80))), zero);
  __m128i upto2 = _mm_cmpeq_epi16(_mm_and_si128(u, _mm_set1_epi16(static_cast<short>(0xF800))), zero);
  __m128i multi = _mm_or_si128(_mm_and_si128(upto2, two), _mm_andnot_si128(upto2, three));
  __m128i first = _mm_or_si128(_mm_and_si128(ascii, u), _mm_andnot_si128(ascii, multi));
  _mm_store_si128(reinterpret_cast<__m128i*>(words), _mm_unpacklo_epi16(first, last));
  _mm_store_si128(reinterpret_cast<__m128i*>(words + 4), _mm_unpackhi_epi16(first, last));
  // 3, less one for each mask a unit is in (a mask lane is -1).
  _mm_store_si128(reinterpret_cast<__m128i*>(lengths),
                  _mm_add_epi16(_mm_set1_epi16(3), _mm_add_epi16(ascii, upto2)));
}

}  // namespace

namespace zq {

std::size_t Utf8DecodeRun(const unsigned char* in, std::size_t len,
                          unsigned short* out, std::size_t room,
                          std::size_t* used) {
  std::size_t i = 0;
  std::size_t o = 0;
  const __m128i zero = _mm_setzero_si128();
  while (len - i >= kUtf8RunMinBytes && room - o >= kBlock) {
    const unsigned char* p = in + i;
    __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16));
    uint32_t high = Bits(lo, hi);
    if (high == 0) {  // 32 ASCII bytes
      __m128i* to = reinterpret_cast<__m128i*>(out + o);
      _mm_storeu_si128(to, _mm_unpacklo_epi8(lo, zero));
      _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(lo, zero));
      _mm_storeu_si128(to + 2, _mm_unpacklo_epi8(hi, zero));
      _mm_storeu_si128(to + 3, _mm_unpackhi_epi8(hi, zero));
      i += kBlock;
      o += kBlock;
      continue;
    }
    // Byte classes by signed value: trailing bytes 0x80 to 0xBF lie below
    // -64, bytes from 0xE0 above -33, bytes from 0xF0 above -17.
    const __m128i below_c0 = _mm_set1_epi8(-64);
    const __m128i from_e0 = _mm_set1_epi8(-33);
    const __m128i from_f0 = _mm_set1_epi8(-17);
    uint32_t trail = Bits(_mm_cmplt_epi8(lo, below_c0), _mm_cmplt_epi8(hi, below_c0));
    uint32_t ge_e0 = Bits(_mm_cmpgt_epi8(lo, from_e0), _mm_cmpgt_epi8(hi, from_e0)) & high;
    uint32_t ge_f0 = Bits(_mm_cmpgt_epi8(lo, from_f0), _mm_cmpgt_epi8(hi, from_f0)) & high;
    uint32_t lead2 = high & ~trail & ~ge_e0;
    uint32_t lead3 = ge_e0 & ~ge_f0;
    // Where trailing bytes must be; the block is taken up to the first byte
    // that disagrees or leads a longer sequence.
    uint64_t expect = (uint64_t{lead2 | lead3} << 1) | (uint64_t{lead3} << 2);
    uint64_t bad = uint64_t{(trail ^ static_cast<uint32_t>(expect)) | ge_f0} |
                   (uint64_t{1} << kBlock);
    unsigned stop = static_cast<unsigned>(__builtin_ctzll(bad));
    uint64_t starts = ~uint64_t{trail} & ((uint64_t{1} << stop) - 1);
    std::size_t consumed = stop;
    if ((expect >> stop) & 1) {  // the last sequence before `stop` reaches it
      unsigned last = 63 - static_cast<unsigned>(__builtin_clzll(starts));
      starts &= ~(uint64_t{1} << last);
      consumed = last;
    }
    // The unit of a sequence starting at every byte of the block, from the
    // byte and the two after it; the starts then pick theirs in order.
    alignas(16) unsigned short units[kBlock];
    for (std::size_t half = 0; half < kBlock; half += 16) {
      const unsigned char* q = p + half;
      __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
      __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q + 1));
      __m128i x2 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q + 2));
      StoreUnits(_mm_unpacklo_epi8(x0, zero), _mm_unpacklo_epi8(x1, zero),
                 _mm_unpacklo_epi8(x2, zero), units + half);
      StoreUnits(_mm_unpackhi_epi8(x0, zero), _mm_unpackhi_epi8(x1, zero),
                 _mm_unpackhi_epi8(x2, zero), units + half + 8);
    }
    while (starts != 0) {
      out[o++] = units[__builtin_ctzll(starts)];
      starts &= starts - 1;
    }
    i += consumed;
    if (stop < kBlock) break;
  }
  *used = i;
  return o;
}

std::size_t Utf8EncodeRun(const unsigned short* in, std::size_t len,
                          unsigned char* out, std::size_t room,
                          std::size_t* used) {
  std::size_t i = 0;
  std::size_t o = 0;
  const __m128i not_ascii = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i surrogate_bits = _mm_set1_epi16(static_cast<short>(0xFC00));
  const __m128i high_surrogate = _mm_set1_epi16(static_cast<short>(0xD800));
  for (;;) {
    if (len - i >= 16 && room - o >= 48) {
      __m128i x0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
      __m128i x1 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 8));
      __m128i both = _mm_or_si128(x0, x1);
      __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(both, not_ascii), _mm_setzero_si128());
      if (_mm_movemask_epi8(ascii) == 0xFFFF) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o), _mm_packus_epi16(x0, x1));
        i += 16;
        o += 16;
        continue;
      }
      __m128i hs0 = _mm_cmpeq_epi16(_mm_and_si128(x0, surrogate_bits), high_surrogate);
      __m128i hs1 = _mm_cmpeq_epi16(_mm_and_si128(x1, surrogate_bits), high_surrogate);
      if (_mm_movemask_epi8(_mm_or_si128(hs0, hs1)) == 0) {
        // Each unit's word is stored whole; its unused bytes are overwritten
        // by the units after it. The last three go byte by byte and cover
        // every unused byte before them, so nothing lands past the end.
        alignas(16) uint32_t words[16];
        alignas(16) uint16_t lengths[16];
        Layout(x0, words, lengths);
        Layout(x1, words + 8, lengths + 8);
        for (int j = 0; j < 13; ++j) {
          std::memcpy(out + o, &words[j], 4);
          o += lengths[j];
        }
        for (int j = 13; j < 16; ++j) o += PutUnit(in[i + j], out + o);
        i += 16;
        continue;
      }
    }
    if (i >= len || room - o < 4) break;
    uint32_t u = in[i];
    if (IsHighSurrogate(u)) {
      if (len - i < 2 || (in[i + 1] & 0xFC00) != 0xDC00) break;
      uint32_t cp = 0x10000 + ((u - 0xD800) << 10) + (in[i + 1] - 0xDC00);
      out[o] = static_cast<unsigned char>(0xF0 | (cp >> 18));
      out[o + 1] = static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F));
      out[o + 2] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
      out[o + 3] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
      o += 4;
      i += 2;
      continue;
    }
    o += PutUnit(u, out + o);
    ++i;
  }
  *used = i;
  return o;
}

std::size_t Utf8EncodeRunToZero(const unsigned short* in, unsigned char* out,
                                std::size_t room, std::size_t* used) {
  // Units are looked at a window at a time, each window ending at the zero
  // unit or before it; a window is then encoded as a counted one.
  constexpr std::size_t kWindow = 64;
  std::size_t i = 0;
  std::size_t o = 0;
  for (;;) {
    std::size_t known = 0;
    while (known < kWindow && in[i + known] != 0) ++known;
    std::size_t took = 0;
    o += Utf8EncodeRun(in + i, known, out + o, room - o, &took);
    i += took;
    if (took < known || known < kWindow) break;
  }
  *used = i;
  return o;
}

}  // namespace zq

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
  int64_t len = n < 0 ? static_cast<int64_t>(std::strlen(reinterpret_cast<const char*>(in))) : n;
  if (out == nullptr || cap < 1) return -2;
  const std::size_t room = static_cast<std::size_t>(cap) - 1;  // the zero unit
  int64_t o = 0;
  for (int64_t i = 0; i < len;) {
    if (static_cast<std::size_t>(len - i) >= zq::kUtf8RunMinBytes) {
      std::size_t used = 0;
      o += static_cast<int64_t>(zq::Utf8DecodeRun(in + i, static_cast<std::size_t>(len - i),
                                                  out + o, room - static_cast<std::size_t>(o),
                                                  &used));
      i += static_cast<int64_t>(used);
      if (i >= len) break;
    }
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
  const std::size_t room = static_cast<std::size_t>(cap) - 1;  // the zero byte
  int64_t o = 0;
  for (int64_t i = 0; i < len; ++i) {
    std::size_t used = 0;
    o += static_cast<int64_t>(zq::Utf8EncodeRun(in + i, static_cast<std::size_t>(len - i),
                                                out + o, room - static_cast<std::size_t>(o),
                                                &used));
    i += static_cast<int64_t>(used);
    if (i >= len) break;
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
