#include "catalog/utf.h"

#include <cstdint>

namespace zq {
namespace catalog {
namespace {

void PutUtf8(uint32_t c, std::string& out) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

}  // namespace

std::string Utf16ToUtf8(const unsigned short* s, std::size_t n) {
  std::string out;
  out.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    uint32_t c = s[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (s[i + 1] - 0xDC00u);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    PutUtf8(c, out);
  }
  return out;
}

std::basic_string<unsigned short> Utf8ToUtf16(const std::string& s) {
  std::basic_string<unsigned short> out;
  out.reserve(s.size());
  const unsigned char* p = reinterpret_cast<const unsigned char*>(s.data());
  std::size_t n = s.size();
  std::size_t i = 0;
  while (i < n) {
    uint32_t b = p[i];
    int extra;
    uint32_t c;
    uint32_t min;
    if (b < 0x80) {
      out += static_cast<unsigned short>(b);
      ++i;
      continue;
    } else if (b >= 0xC2 && b <= 0xDF) {
      extra = 1, c = b & 0x1F, min = 0x80;
    } else if (b >= 0xE0 && b <= 0xEF) {
      extra = 2, c = b & 0x0F, min = 0x800;
    } else if (b >= 0xF0 && b <= 0xF4) {
      extra = 3, c = b & 0x07, min = 0x10000;
    } else {
      out += 0xFFFD;
      ++i;
      continue;
    }
    bool ok = true;
    for (int k = 1; ok && k <= extra; ++k) {
      if (i + static_cast<std::size_t>(k) >= n || (p[i + k] & 0xC0) != 0x80) {
        ok = false;
      } else {
        c = (c << 6) | (p[i + k] & 0x3F);
      }
    }
    if (!ok || c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out += 0xFFFD;
      ++i;
      continue;
    }
    if (c >= 0x10000) {
      c -= 0x10000;
      out += static_cast<unsigned short>(0xD800 + (c >> 10));
      out += static_cast<unsigned short>(0xDC00 + (c & 0x3FF));
    } else {
      out += static_cast<unsigned short>(c);
    }
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

}  // namespace catalog
}  // namespace zq
