// ZQGlob general utilities: Boolean words, escaping, Base64, executable
// probe, scrambling, shared counters, number and GUID text, paths, buffers
// and string conversions.
#include "zq/zqglob.h"

#include <ace/Thread_Mutex.h>

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "frame/memory.h"
#include "platform/fs.h"
#include "zq/options.h"
#include "zq/zqmem.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using WStr = std::basic_string<unsigned short>;

// Guards the two Btrieve user counters; made at load.
ACE_Thread_Mutex g_btrieve_mutex;
int g_btrieve_count[2] = {0, 0};

const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int Base64Value(unsigned int u) {
  if (u >= 'A' && u <= 'Z') return static_cast<int>(u - 'A');
  if (u >= 'a' && u <= 'z') return static_cast<int>(u - 'a' + 26);
  if (u >= '0' && u <= '9') return static_cast<int>(u - '0' + 52);
  if (u == '+') return 62;
  if (u == '/') return 63;
  return -1;
}

int HexValue(unsigned int u) {
  if (u >= '0' && u <= '9') return static_cast<int>(u - '0');
  if (u >= 'a' && u <= 'f') return static_cast<int>(u - 'a' + 10);
  if (u >= 'A' && u <= 'F') return static_cast<int>(u - 'A' + 10);
  return -1;
}

// Matches `value` against the word list; returns 1 (true word), 0 (false
// word) or -1 (no match).
int MatchBoolWord(const char* value, const char* words, bool fold) {
  if (value == nullptr || words == nullptr || *value == '\0' || *words == '\0') return -1;
  bool truth = true;
  const char* w = words;
  for (;;) {
    const char* v = value;
    const char* p = w;
    while (*p != '\0' && *p != '.' && *v != '\0') {
      unsigned char a = static_cast<unsigned char>(*p);
      unsigned char b = static_cast<unsigned char>(*v);
      if (fold ? std::tolower(a) != std::tolower(b) : a != b) break;
      ++p;
      ++v;
    }
    if (*v == '\0' && (*p == '\0' || *p == '.')) return truth ? 1 : 0;
    while (*p != '\0' && *p != '.') ++p;
    if (*p == '\0') return -1;
    w = p + 1;
    truth = !truth;
  }
}

// Shared escape writer over 8-bit or 16-bit units.
template <class Unit, class Out>
void EscapeUnits(const Unit* in, Out&& put) {
  static const char kHex[] = "0123456789abcdef";
  for (; *in != 0; ++in) {
    unsigned int u = static_cast<unsigned int>(*in);
    switch (u) {
      case '\t': put('\\'); put('t'); break;
      case '\n': put('\\'); put('n'); break;
      case '\f': put('\\'); put('f'); break;
      case '\r': put('\\'); put('r'); break;
      case '\\': put('\\'); put('\\'); break;
      default:
        if (u >= 32) {
          put(u);
        } else {
          put('\\');
          put('x');
          put(static_cast<unsigned int>(kHex[u >> 4]));
          put(static_cast<unsigned int>(kHex[u & 15]));
        }
    }
  }
}

// Shared unescape reader over `n` units: "\x" and "\X" take up to two hex
// digits, a digit starts up to three decimal digits (value modulo 256, as
// ZQString::Extract reads them); the unit that ends an escape early is kept.
template <class Unit, class Out>
void UnEscapeUnits(const Unit* in, std::size_t n, Out&& put) {
  std::size_t i = 0;
  while (i < n) {
    unsigned int u = static_cast<unsigned int>(in[i++]);
    if (u != '\\' || i >= n) {
      put(u);
      continue;
    }
    unsigned int e = static_cast<unsigned int>(in[i++]);
    switch (e) {
      case 'n': put('\n'); break;
      case 'r': put('\r'); break;
      case 't': put('\t'); break;
      case 'f': put('\f'); break;
      case 'x':
      case 'X': {
        unsigned int v = 0;
        int digits = 0;
        while (digits < 2 && i < n && HexValue(static_cast<unsigned int>(in[i])) >= 0) {
          v = v * 16 + static_cast<unsigned int>(HexValue(static_cast<unsigned int>(in[i++])));
          ++digits;
        }
        if (digits == 0) {
          put(e);
        } else {
          put(v);
        }
        break;
      }
      default:
        if (e >= '0' && e <= '9') {
          unsigned int v = e - '0';
          int digits = 1;
          while (digits < 3 && i < n && in[i] >= '0' && in[i] <= '9') {
            v = v * 10 + static_cast<unsigned int>(in[i++] - '0');
            ++digits;
          }
          put(v % 256);
        } else {
          put(e);
        }
    }
  }
}

template <class Unit>
std::size_t UnitLength(const Unit* s) {
  std::size_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

// Rounds half to even and clamps to [lo, hi]; NaN gives 0.
double RoundClamp(double v, double lo, double hi) {
  if (std::isnan(v)) return 0;
  v = std::nearbyint(v);
  if (v < lo) return lo;
  if (v > hi) return hi;
  return v;
}

bool ParseHex(const char* s, int digits, unsigned long& out) {
  unsigned long v = 0;
  for (int i = 0; i < digits; ++i) {
    int h = HexValue(static_cast<unsigned char>(s[i]));
    if (h < 0) return false;
    v = v * 16 + static_cast<unsigned long>(h);
  }
  out = v;
  return true;
}

}  // namespace

// ---- Boolean words -----------------------------------------------------------

const char* ZQGlob::BoolToStr(bool b) { return b ? "True" : "False"; }

bool ZQGlob::StrToBool(const char* value, const char* words) {
  return MatchBoolWord(value, words, true) == 1;
}

bool ZQGlob::ConvertBool(const char* value, const char* words, bool caseSensitive, bool& out) {
  int m = MatchBoolWord(value, words, !caseSensitive);
  if (m < 0) return false;
  out = m == 1;
  return true;
}

// ---- Escaping ------------------------------------------------------------------

void ZQGlob::EscapeString(const char* in, std::string& out) {
  if (in == nullptr) return;
  EscapeUnits(reinterpret_cast<const unsigned char*>(in),
              [&out](unsigned int u) { out += static_cast<char>(u); });
}

void ZQGlob::UnEscapeString(const std::string& in, std::string& out) {
  UnEscapeUnits(reinterpret_cast<const unsigned char*>(in.data()), in.size(),
                [&out](unsigned int u) { out += static_cast<char>(u); });
}

void ZQGlob::UnEscapeString(const char* in, ZQString& out) {
  if (in == nullptr) return;
  UnEscapeUnits(reinterpret_cast<const unsigned char*>(in), std::strlen(in),
                [&out](unsigned int u) { out += static_cast<char>(u); });
}

void ZQGlob::EscapeString(const unsigned short* in, ZQWString& out) {
  if (in == nullptr) return;
  EscapeUnits(in, [&out](unsigned int u) { out += static_cast<unsigned short>(u); });
}

void ZQGlob::UnEscapeString(const unsigned short* in, ZQWString& out) {
  if (in == nullptr) return;
  UnEscapeUnits(in, UnitLength(in),
                [&out](unsigned int u) { out += static_cast<unsigned short>(u); });
}

// ---- Base64 --------------------------------------------------------------------

void ZQGlob::EncodeBase64(void* data, unsigned int n, WStr& out) {
  out.clear();
  const unsigned char* p = static_cast<const unsigned char*>(data);
  if (p == nullptr) n = 0;
  out.reserve(n / 3 * 4 + n / 54 + 8);
  unsigned int column = 0;
  for (unsigned int i = 0; i < n; i += 3) {
    unsigned int rest = n - i;
    uint32_t group = static_cast<uint32_t>(p[i]) << 16;
    if (rest > 1) group |= static_cast<uint32_t>(p[i + 1]) << 8;
    if (rest > 2) group |= p[i + 2];
    out += static_cast<unsigned short>(kBase64[(group >> 18) & 63]);
    out += static_cast<unsigned short>(kBase64[(group >> 12) & 63]);
    out += static_cast<unsigned short>(rest > 1 ? kBase64[(group >> 6) & 63] : '=');
    out += static_cast<unsigned short>(rest > 2 ? kBase64[group & 63] : '=');
    column += 4;
    if (column >= 72) {
      out += static_cast<unsigned short>('\n');
      column = 0;
    }
  }
  out += static_cast<unsigned short>(0);
}

void ZQGlob::EncodeBase64(const WStr& in, WStr& out) {
  std::string bytes;
  bytes.reserve(in.size() * 2);
  for (unsigned short u : in) {
    bytes += static_cast<char>(u & 0xFF);
    bytes += static_cast<char>(u >> 8);
  }
  EncodeBase64(bytes.empty() ? nullptr : &bytes[0], static_cast<unsigned int>(bytes.size()), out);
}

void* ZQGlob::DecodeBase64(const WStr& in, unsigned int& n) {
  n = 0;
  unsigned char* block = static_cast<unsigned char*>(zqmem_alloc(in.size() + 1));
  if (block == nullptr) return nullptr;
  uint32_t bits = 0;
  int nbits = 0;
  unsigned int count = 0;
  for (unsigned short u : in) {
    if (u == '\n' || u == '\r' || u == ' ' || u == '\t') continue;
    if (u == '=' || u == 0) break;
    int v = Base64Value(u);
    if (v < 0) {
      zqmem_release(block);
      return nullptr;
    }
    bits = (bits << 6) | static_cast<uint32_t>(v);
    nbits += 6;
    if (nbits >= 8) {
      nbits -= 8;
      block[count++] = static_cast<unsigned char>(bits >> nbits);
    }
  }
  n = count;
  return block;
}

void ZQGlob::FreeBase64(void* block) {
  if (block != nullptr) zqmem_release(block);
}

void ZQGlob::DecodeBase64(const WStr& in, WStr& out) {
  out.clear();
  unsigned int n = 0;
  unsigned char* bytes = static_cast<unsigned char*>(DecodeBase64(in, n));
  if (bytes == nullptr) return;
  out.reserve((n + 1) / 2);
  for (unsigned int i = 0; i < n; i += 2) {
    unsigned short u = bytes[i];
    if (i + 1 < n) u = static_cast<unsigned short>(u | (bytes[i + 1] << 8));
    out += u;
  }
  FreeBase64(bytes);
}

// ---- Executables, scrambling, counters ------------------------------------------------

int ZQGlob::CheckEXEBitSize(const char* path) {
  int fd = zq::platform::FileOpenRead(path);
  if (fd < 0) return 0;
  int bits = 16;
  unsigned char word[4];
  if (zq::platform::FileSeek(fd, 60, SEEK_SET) == 60 &&
      zq::platform::FileRead(fd, word, 4) == 4) {
    uint32_t offset = static_cast<uint32_t>(word[0]) | static_cast<uint32_t>(word[1]) << 8 |
                      static_cast<uint32_t>(word[2]) << 16 | static_cast<uint32_t>(word[3]) << 24;
    unsigned char sig[2];
    if (zq::platform::FileSeek(fd, offset, SEEK_SET) == static_cast<int64_t>(offset) &&
        zq::platform::FileRead(fd, sig, 2) == 2 && sig[0] == 'P' && sig[1] == 'E') {
      bits = 32;
    }
  }
  zq::platform::FileClose(fd);
  return bits;
}

int ZQGlob::uncode(int c, int& prev) {
  int result = (~c ^ prev) & 0xFF;
  prev = c;
  return result;
}

void ZQGlob::Encrypt(unsigned char* data, int n, int seed) {
  if (data == nullptr) return;
  int prev = seed;
  for (int i = 0; i < n; ++i) {
    data[i] = static_cast<unsigned char>((~data[i] ^ prev) & 0xFF);
    prev = data[i];
  }
}

void ZQGlob::Encrypt(std::string& data, int seed) {
  Encrypt(reinterpret_cast<unsigned char*>(&data[0]), static_cast<int>(data.size()), seed);
}

void ZQGlob::Decrypt(unsigned char* data, int n, int seed) {
  if (data == nullptr) return;
  int prev = seed;
  for (int i = 0; i < n; ++i) data[i] = static_cast<unsigned char>(uncode(data[i], prev));
}

void ZQGlob::Decrypt(std::string& data, int seed) {
  Decrypt(reinterpret_cast<unsigned char*>(&data[0]), static_cast<int>(data.size()), seed);
}

void ZQGlob::IncrementBtrieveRefcount(bool which) {
  g_btrieve_mutex.acquire();
  ++g_btrieve_count[which ? 0 : 1];
  g_btrieve_mutex.release();
}

int ZQGlob::DecrementBtrieveRefcount(bool which) {
  g_btrieve_mutex.acquire();
  int v = --g_btrieve_count[which ? 0 : 1];
  g_btrieve_mutex.release();
  return v;
}

int ZQGlob::PeekBtrieveRefcount(bool which) {
  g_btrieve_mutex.acquire();
  int v = g_btrieve_count[which ? 0 : 1];
  g_btrieve_mutex.release();
  return v;
}

// ---- Number conversion ----------------------------------------------------------

int ZQGlob::CopyNumber(char* out, int size, const char* in) {
  if (out == nullptr || size <= 0) return 0;
  const ZQOptionBlock* opt = ZQOptionBlock::GlobalOptions();
  char dec = opt->DecSep();
  char thsnd = opt->ThsndSep();
  int n = 0;
  for (const char* p = in; p != nullptr && *p != '\0' && n < size - 1; ++p) {
    if (thsnd != '\0' && *p == thsnd) continue;
    out[n++] = (dec != '\0' && *p == dec) ? '.' : *p;
  }
  out[n] = '\0';
  return n;
}

double ZQGlob::CDbl(const char* text) {
  if (text == nullptr) return 0;
  std::string plain(std::strlen(text) + 1, '\0');
  CopyNumber(&plain[0], static_cast<int>(plain.size()), text);
  char* end = nullptr;
  double v = std::strtod(plain.c_str(), &end);
  return end == plain.c_str() ? 0 : v;
}

float ZQGlob::CSng(const char* text) { return static_cast<float>(CDbl(text)); }

long ZQGlob::CLong(const char* text) {
  return static_cast<long>(static_cast<int32_t>(RoundClamp(CDbl(text), INT32_MIN, INT32_MAX)));
}

short ZQGlob::CInt(const char* text) {
  return static_cast<short>(RoundClamp(CDbl(text), SHRT_MIN, SHRT_MAX));
}

unsigned char ZQGlob::CByte(const char* text) {
  return static_cast<unsigned char>(RoundClamp(CDbl(text), 0, 255));
}

bool ZQGlob::CBool(const char* text) {
  bool b = false;
  if (ConvertBool(text, "True.False.Yes.No.On.Off", false, b)) return b;
  return CDbl(text) != 0;
}

void ZQGlob::FormatNumber(double value, int decimals, std::string& out) {
  if (decimals < 0) decimals = 0;
  if (decimals > 15) decimals = 15;
  char buf[400];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
  const ZQOptionBlock* opt = ZQOptionBlock::GlobalOptions();
  char dec = opt->DecSep() != '\0' ? opt->DecSep() : '.';
  char thsnd = opt->ThsndSep();
  out.clear();
  const char* p = buf;
  if (*p == '-') out += *p++;
  std::size_t digits = std::strspn(p, "0123456789");
  for (std::size_t i = 0; i < digits; ++i) {
    if (thsnd != '\0' && i > 0 && (digits - i) % 3 == 0) out += thsnd;
    out += p[i];
  }
  for (p += digits; *p != '\0'; ++p) out += (*p == '.') ? dec : *p;
}

// ---- GUIDs -----------------------------------------------------------------------

std::string ZQGlob::GUIDToString(const GUID& g) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                g.data1, g.data2, g.data3, g.data4[0], g.data4[1], g.data4[2], g.data4[3],
                g.data4[4], g.data4[5], g.data4[6], g.data4[7]);
  return buf;
}

bool ZQGlob::StringToGUID(const char* text, GUID& guid) {
  if (text == nullptr) return false;
  std::size_t len = std::strlen(text);
  if (len == 38 && text[0] == '{' && text[37] == '}') {
    ++text;
    len = 36;
  }
  if (len != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') {
    return false;
  }
  GUID g;
  unsigned long v;
  if (!ParseHex(text, 8, v)) return false;
  g.data1 = static_cast<unsigned int>(v);
  if (!ParseHex(text + 9, 4, v)) return false;
  g.data2 = static_cast<unsigned short>(v);
  if (!ParseHex(text + 14, 4, v)) return false;
  g.data3 = static_cast<unsigned short>(v);
  static const int kByteAt[8] = {19, 21, 24, 26, 28, 30, 32, 34};
  for (int i = 0; i < 8; ++i) {
    if (!ParseHex(text + kByteAt[i], 2, v)) return false;
    g.data4[i] = static_cast<unsigned char>(v);
  }
  guid = g;
  return true;
}

bool ZQGlob::CreateGUID(GUID& guid) {
  unsigned char r[16];
  if (!zq::platform::RandomBytes(r, sizeof r)) return false;
  guid.data1 = static_cast<unsigned int>(r[0]) << 24 | static_cast<unsigned int>(r[1]) << 16 |
               static_cast<unsigned int>(r[2]) << 8 | r[3];
  guid.data2 = static_cast<unsigned short>(r[4] << 8 | r[5]);
  guid.data3 = static_cast<unsigned short>(((r[6] << 8 | r[7]) & 0x0FFF) | 0x4000);
  std::memcpy(guid.data4, r + 8, 8);
  guid.data4[0] = static_cast<unsigned char>((guid.data4[0] & 0x3F) | 0x80);
  return true;
}

// ---- Paths -------------------------------------------------------------------------

std::string ZQGlob::JoinPath(const char* dir, const char* name) {
  std::string path = dir != nullptr ? dir : "";
  const char* n = name != nullptr ? name : "";
  if (path.empty()) return n;
  if (path.back() == '/') {
    while (*n == '/') ++n;
  } else if (*n != '/') {
    path += '/';
  }
  return path + n;
}

// ---- Buffers -----------------------------------------------------------------------

namespace {

template <class T>
bool GrowBuffer(T*& buf, int& size, int need) {
  if (need <= size && buf != nullptr) return true;
  if (need < 0) return false;
  long long n = size > 0 ? size : 16;
  while (n < need) n *= 2;
  if (n > INT_MAX) n = need;
  T* fresh = static_cast<T*>(zq::MemAlloc(static_cast<std::size_t>(n) * sizeof(T)));
  if (fresh == nullptr) return false;
  if (buf != nullptr && size > 0) std::memcpy(fresh, buf, static_cast<std::size_t>(size) * sizeof(T));
  zq::MemFree(buf);
  buf = fresh;
  size = static_cast<int>(n);
  return true;
}

}  // namespace

bool ZQGlob::growbuf(char*& buf, int& size, int need) { return GrowBuffer(buf, size, need); }

bool ZQGlob::growbuf(unsigned short*& buf, int& size, int need) {
  return GrowBuffer(buf, size, need);
}

void ZQGlob::freebuf(void* buf) { zq::MemFree(buf); }

// ---- Strings -----------------------------------------------------------------------

void ZQGlob::StringToWString(const char* in, WStr& out, ZQ_CSET cs) {
  out.clear();
  if (in == nullptr) return;
  ZQWString w;
  w.Assign(in, cs, static_cast<int>(std::strlen(in)));
  w.AssignToStd(out);
}

void ZQGlob::StringToWString(const std::string& in, WStr& out, ZQ_CSET cs) {
  out.clear();
  ZQWString w;
  w.Assign(in.data(), cs, static_cast<int>(in.size()));
  w.AssignToStd(out);
}

void ZQGlob::WStringToString(const unsigned short* in, std::string& out, ZQ_CSET cs) {
  out.clear();
  if (in == nullptr) return;
  ZQString s;
  s.Assign(in, cs, static_cast<int>(UnitLength(in)));
  s.AssignToStd(out);
}

void ZQGlob::WStringToString(const WStr& in, std::string& out, ZQ_CSET cs) {
  out.clear();
  ZQString s;
  s.Assign(in.data(), cs, static_cast<int>(in.size()));
  s.AssignToStd(out);
}

void ZQGlob::ToUpper(std::string& s) {
  ZQString z(s.data(), static_cast<int>(s.size()));
  z.ToUpper();
  z.AssignToStd(s);
}

void ZQGlob::ToLower(std::string& s) {
  ZQString z(s.data(), static_cast<int>(s.size()));
  z.ToLower();
  z.AssignToStd(s);
}

char* ZQGlob::ExternalToInternal(const char* in, char* out) {
  if (in != nullptr && out != nullptr && in != out) std::memmove(out, in, std::strlen(in) + 1);
  return out;
}

char* ZQGlob::InternalToExternal(const char* in, char* out) {
  return ExternalToInternal(in, out);
}
