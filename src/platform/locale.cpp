// The process locale and the C library's multibyte routines under it.
#include "platform/locale.h"

#include <langinfo.h>
#include <locale.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace zq {
namespace platform {

namespace {

constexpr std::size_t kError = static_cast<std::size_t>(-1);

std::string Identification(nl_item item) {
  const char* text = ::nl_langinfo(item);
  return text != nullptr ? std::string(text) : std::string();
}

bool IsPlainLocale() {
  const char* name = ::setlocale(LC_IDENTIFICATION, nullptr);
  return name == nullptr || std::strcmp(name, "C") == 0 ||
         std::strcmp(name, "POSIX") == 0 || std::strncmp(name, "C.", 2) == 0;
}

// Stores a code point as one or two units; returns the units needed, and
// writes them only when `room` allows.
std::size_t PutUnits(uint32_t cp, unsigned short* out, std::size_t room) {
  if (cp < 0x10000) {
    if (room >= 1) out[0] = static_cast<unsigned short>(cp);
    return 1;
  }
  if (room >= 2) {
    cp -= 0x10000;
    out[0] = static_cast<unsigned short>(0xD800 + (cp >> 10));
    out[1] = static_cast<unsigned short>(0xDC00 + (cp & 0x3FF));
  }
  return 2;
}

}  // namespace

bool SetUserDefaultLocale() { return ::setlocale(LC_ALL, "") != nullptr; }

std::string LocaleLanguageName() {
  if (IsPlainLocale()) return std::string();
  return Identification(_NL_IDENTIFICATION_LANGUAGE);
}

std::string LocaleTerritoryName() {
  if (IsPlainLocale()) return std::string();
  return Identification(_NL_IDENTIFICATION_TERRITORY);
}

int LocaleMbToWc(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  if (n == 0) return -1;
  std::mbstate_t state{};
  wchar_t wc = 0;
  std::size_t used = std::mbrtowc(&wc, in, n, &state);
  if (used == kError || used == static_cast<std::size_t>(-2)) return -1;
  if (static_cast<uint32_t>(wc) > 0xFFFF) return -1;  // needs two units
  if (out != nullptr) *out = static_cast<unsigned short>(wc);
  return static_cast<int>(used);
}

std::size_t LocaleMbsToWcs(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return kError;
  std::mbstate_t state{};
  std::size_t count = 0;
  unsigned short pair[2];
  for (;;) {
    if (out != nullptr && count >= n) return count;
    wchar_t wc = 0;
    std::size_t used = std::mbrtowc(&wc, in, MB_LEN_MAX, &state);
    if (used == kError || used == static_cast<std::size_t>(-2)) return kError;
    if (used == 0) {
      if (out != nullptr) out[count] = 0;
      return count;
    }
    uint32_t cp = static_cast<uint32_t>(wc);
    if (cp > 0x10FFFF) return kError;
    std::size_t need = PutUnits(cp, pair, 2);
    if (out != nullptr) {
      if (count + need > n) return count;  // a pair is never split
      for (std::size_t i = 0; i < need; ++i) out[count + i] = pair[i];
    }
    count += need;
    in += used;
  }
}

int LocaleWcToMb(char* out, unsigned short u) {
  if (out == nullptr) return 0;
  if (u >= 0xD800 && u <= 0xDFFF) return -1;  // half a character
  std::mbstate_t state{};
  std::size_t len = std::wcrtomb(out, static_cast<wchar_t>(u), &state);
  return len == kError ? -1 : static_cast<int>(len);
}

std::size_t LocaleWcsToMbs(char* out, const unsigned short* in, std::size_t n) {
  if (in == nullptr) return kError;
  std::mbstate_t state{};
  std::size_t count = 0;
  char bytes[MB_LEN_MAX];
  for (;;) {
    uint32_t cp = *in;
    std::size_t units = 1;
    if (cp == 0) {
      if (out != nullptr && count < n) out[count] = '\0';
      return count;
    }
    if (cp >= 0xD800 && cp <= 0xDBFF && in[1] >= 0xDC00 && in[1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (in[1] - 0xDC00);
      units = 2;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      return kError;
    }
    std::size_t len = std::wcrtomb(bytes, static_cast<wchar_t>(cp), &state);
    if (len == kError) return kError;
    if (out != nullptr) {
      if (count + len > n) return count;  // a character is never split
      std::memcpy(out + count, bytes, len);
    }
    count += len;
    in += units;
  }
}

int LocaleMbLen(const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  if (n == 0) return -1;
  std::mbstate_t state{};
  std::size_t used = std::mbrlen(in, n, &state);
  if (used == kError || used == static_cast<std::size_t>(-2)) return -1;
  return static_cast<int>(used);
}

int LocaleIsLeadByte(int c) {
  if (c < 0 || c > 0xFF) return 0;
  // A lead byte alone is an incomplete character.
  char byte = static_cast<char>(c);
  std::mbstate_t state{};
  return std::mbrlen(&byte, 1, &state) == static_cast<std::size_t>(-2) ? 1 : 0;
}

int LocaleMbCurMax() { return static_cast<int>(MB_CUR_MAX); }

}  // namespace platform
}  // namespace zq
