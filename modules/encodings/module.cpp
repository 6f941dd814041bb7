// A table-driven encoding module: one code page of one or two bytes per
// character. The code page's tables come from the generated header named by
// ZQ_ENC_TABLES; every lookup is one or two array reads.
#include <cstddef>
#include <cstdint>

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
  // One character at a time. Once the zero byte is ruled out, the next
  // byte is inside the text (at worst its terminator), so both lookups are
  // made and the unit chosen without a branch that depends on the text.
  for (; count < n; ++count) {
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
