// Code sets: the name table, the table of per-code-set conversion routines,
// lazy loading of encoding modules, and the process locale.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include <ace/Guard_T.h>
#include <ace/Thread_Mutex.h>

#include "platform/dynlib.h"
#include "platform/locale.h"
#include "text/codepage.h"
#include "text/utf8_run.h"
#include "zq/encmodule.h"
#include "zq/options.h"
#include "zq/zqglob.h"
#include "zq_cp1252.inc"

namespace {

constexpr std::size_t kError = ZQ_ENCODING_ERROR;
constexpr int kCodeSets = 24;

// ---- names -------------------------------------------------------------

struct NameRow {
  const char* name;
  ZQ_CSET cs;
};

// Searched in this order: "Shift_JIS" therefore finds 19, and 20 shares the
// name but can be chosen only by value.
constexpr NameRow kNameRows[] = {
    {"OEM", ZQ_CSET_OEM},           {"ISO-8859-1", ZQ_CSET_ISO8859_1},
    {"CP1252", ZQ_CSET_CP1252},     {"ISO-8859-2", ZQ_CSET_ISO8859_2},
    {"ISO-8859-3", ZQ_CSET_ISO8859_3}, {"ISO-8859-4", ZQ_CSET_ISO8859_4},
    {"ISO-8859-5", ZQ_CSET_ISO8859_5}, {"ISO-8859-6", ZQ_CSET_ISO8859_6},
    {"ISO-8859-7", ZQ_CSET_ISO8859_7}, {"ISO-8859-8", ZQ_CSET_ISO8859_8},
    {"ISO-8859-9", ZQ_CSET_ISO8859_9}, {"CP1250", ZQ_CSET_CP1250},
    {"CP1251", ZQ_CSET_CP1251},     {"CP1253", ZQ_CSET_CP1253},
    {"CP1254", ZQ_CSET_CP1254},     {"CP1255", ZQ_CSET_CP1255},
    {"CP1256", ZQ_CSET_CP1256},     {"CP1257", ZQ_CSET_CP1257},
    {"CP1258", ZQ_CSET_CP1258},     {"Shift_JIS", ZQ_CSET_SHIFTJIS},
    {"Shift_JIS", ZQ_CSET_CP932},   {"GB2312", ZQ_CSET_CP936},
    {"ks_c_5601", ZQ_CSET_CP949},   {"Big5", ZQ_CSET_CP950},
    {"USASCII", ZQ_CSET_ISO8859_1}, {"Shift-JIS", ZQ_CSET_SHIFTJIS},
    {"Shift-JIS", ZQ_CSET_CP932},
};
constexpr int kNameCount = sizeof(kNameRows) / sizeof(kNameRows[0]);
constexpr int kNameLen = 12;

// The names as 16-bit text, made at compile time from the rows above, plus
// the two names outside the table.
struct WideNames {
  unsigned short rows[kNameCount][kNameLen];
  unsigned short utf8[kNameLen];
  unsigned short ucs2[kNameLen];

  static constexpr void Widen(const char* from, unsigned short* to) {
    for (int i = 0; i < kNameLen - 1 && from[i] != '\0'; ++i) {
      to[i] = static_cast<unsigned char>(from[i]);
    }
  }

  constexpr WideNames() : rows{}, utf8{}, ucs2{} {
    for (int i = 0; i < kNameCount; ++i) Widen(kNameRows[i].name, rows[i]);
    Widen("UTF-8", utf8);
    Widen("UCS-2", ucs2);
  }
};
constexpr WideNames kWideNames;

// ---- the descriptor table -------------------------------------------------

struct Routines {
  zq_mbtowc_fn mbtowc;
  zq_mbstowcs_fn mbstowcs;
  zq_wctomb_fn wctomb;
  zq_wcstombs_fn wcstombs;
  zq_mblen_fn mblen;
  zq_isleadbyte_fn isleadbyte;
  zq_mbcurmax_fn mbcurmax;
};

struct CodeSet {
  const char* module;                 // word in "zqenc<word>.so"; empty if built in
  std::atomic<int32_t> state;         // 1 ready, 0 not yet loaded, -1 failed
  Routines routines;
  std::atomic<int32_t> load_attempts;
};

// Single-byte code sets built into the library: a table from byte to unit
// and one back. Every byte of these code sets is a character.
template <typename Table>
struct SingleByte {
  static int MbToWc(unsigned short* out, const char* in, std::size_t n) {
    if (in == nullptr) return 0;
    if (n == 0) return -1;
    unsigned short u = Table::ToUnit(static_cast<unsigned char>(*in));
    if (out != nullptr) *out = u;
    return u == 0 ? 0 : 1;
  }

  static std::size_t MbsToWcs(unsigned short* out, const char* in, std::size_t n) {
    if (in == nullptr) return kError;
    if (out == nullptr) return std::strlen(in);
    const unsigned char* p = reinterpret_cast<const unsigned char*>(in);
    for (std::size_t i = 0; i < n; ++i) {
      unsigned short u = Table::ToUnit(p[i]);
      out[i] = u;
      if (u == 0) return i;
    }
    return n;
  }

  static int WcToMb(char* out, unsigned short u) {
    if (out == nullptr) return 0;
    unsigned short b = Table::ToByte(u);
    if (b == 0 && u != 0) return -1;
    *out = static_cast<char>(b);
    return 1;
  }

  static std::size_t WcsToMbs(char* out, const unsigned short* in, std::size_t n) {
    if (in == nullptr) return kError;
    std::size_t i = 0;
    for (; in[i] != 0; ++i) {
      unsigned short b = Table::ToByte(in[i]);
      if (b == 0) return kError;
      if (out != nullptr) {
        if (i >= n) return i;
        out[i] = static_cast<char>(b);
      }
    }
    if (out != nullptr && i < n) out[i] = '\0';
    return i;
  }

  static int MbLen(const char* in, std::size_t n) {
    if (in == nullptr) return 0;
    if (n == 0) return -1;
    return *in == '\0' ? 0 : 1;
  }

  static int IsLeadByte(int) { return 0; }
  static int MbCurMax() { return 1; }

  static constexpr Routines kRoutines = {MbToWc, MbsToWcs, WcToMb, WcsToMbs,
                                         MbLen,  IsLeadByte, MbCurMax};
};

// ISO-8859-1: byte value and unit value are the same.
struct Latin1Table {
  static unsigned short ToUnit(unsigned char b) { return b; }
  static unsigned short ToByte(unsigned short u) { return u <= 0xFF ? u : 0; }
};

// CP1252 from its generated tables; 0 back means the unit has no byte.
struct Cp1252Table {
  static unsigned short ToUnit(unsigned char b) { return cp1252::kSingle[b]; }
  static unsigned short ToByte(unsigned short u) {
    return cp1252::kRevPage[cp1252::kRevIndex[u >> 8]][u & 0xFF];
  }
};

using Latin1 = SingleByte<Latin1Table>;
using Cp1252 = SingleByte<Cp1252Table>;

constexpr Routines kLocaleRoutines = {
    zq::platform::LocaleMbToWc,  zq::platform::LocaleMbsToWcs,
    zq::platform::LocaleWcToMb,  zq::platform::LocaleWcsToMbs,
    zq::platform::LocaleMbLen,   zq::platform::LocaleIsLeadByte,
    zq::platform::LocaleMbCurMax};

// Entries 0 to 2 are ready from the start; the others wait for their module.
// Constant-initialised, so the table is complete before any code runs.
CodeSet g_code_sets[kCodeSets] = {
    {"", {1}, kLocaleRoutines, {0}},
    {"", {1}, Latin1::kRoutines, {0}},
    {"", {1}, Cp1252::kRoutines, {0}},
    {"8859-2", {0}, {}, {0}},   {"8859-3", {0}, {}, {0}},
    {"8859-4", {0}, {}, {0}},   {"8859-5", {0}, {}, {0}},
    {"8859-6", {0}, {}, {0}},   {"8859-7", {0}, {}, {0}},
    {"8859-8", {0}, {}, {0}},   {"8859-9", {0}, {}, {0}},
    {"cp1250", {0}, {}, {0}},   {"cp1251", {0}, {}, {0}},
    {"cp1253", {0}, {}, {0}},   {"cp1254", {0}, {}, {0}},
    {"cp1255", {0}, {}, {0}},   {"cp1256", {0}, {}, {0}},
    {"cp1257", {0}, {}, {0}},   {"cp1258", {0}, {}, {0}},
    {"shiftjis", {0}, {}, {0}}, {"cp932", {0}, {}, {0}},
    {"cp936", {0}, {}, {0}},    {"cp949", {0}, {}, {0}},
    {"cp950", {0}, {}, {0}},
};

// Guards the loading of modules, so that a code set is tried only once
// even when several threads use it first at the same time.
ACE_Thread_Mutex& LoadMutex() {
  static ACE_Thread_Mutex mutex;
  return mutex;
}

// Loads "zqenc<word>.so": by bare name through the loader's search path,
// then from the runtime's own folder (what its RUNPATH $ORIGIN means, for
// when the loader does not see the runtime as the caller, as under
// sanitizers that wrap dlopen), then from the option block's library folder.
void* LoadModule(const char* word) {
  char name[512];
  std::snprintf(name, sizeof(name), "zqenc%s.so", word);
  void* library = zq::platform::LoadLibrary(name, nullptr);
  if (library != nullptr) return library;
  std::string own = zq::platform::DirectoryOfAddress(reinterpret_cast<const void*>(&LoadModule));
  if (!own.empty()) {
    std::snprintf(name, sizeof(name), "%s/zqenc%s.so", own.c_str(), word);
    library = zq::platform::LoadLibrary(name, nullptr);
    if (library != nullptr) return library;
  }
  const ZQOptionBlock* options = ZQOptionBlock::GlobalOptions();
  const char* dir = options != nullptr ? options->LibDir() : nullptr;
  if (dir == nullptr || *dir == '\0') return nullptr;
  std::snprintf(name, sizeof(name), "%s/zqenc%s.so", dir, word);
  return zq::platform::LoadLibrary(name, nullptr);
}

// Loads the module of `cs` (3 to 23) once; later calls see the final state.
void LoadCodeSet(int cs) {
  CodeSet& entry = g_code_sets[cs];
  ACE_Guard<ACE_Thread_Mutex> guard(LoadMutex());
  if (entry.state.load(std::memory_order_relaxed) != 0) return;
  entry.load_attempts.fetch_add(1, std::memory_order_relaxed);
  void* library = LoadModule(entry.module);
  Routines r{};
  if (library != nullptr) {
    using zq::platform::FindSymbol;
    r.mbtowc = reinterpret_cast<zq_mbtowc_fn>(FindSymbol(library, "zq_mbtowc"));
    r.mbstowcs = reinterpret_cast<zq_mbstowcs_fn>(FindSymbol(library, "zq_mbstowcs"));
    r.wctomb = reinterpret_cast<zq_wctomb_fn>(FindSymbol(library, "zq_wctomb"));
    r.wcstombs = reinterpret_cast<zq_wcstombs_fn>(FindSymbol(library, "zq_wcstombs"));
    r.mblen = reinterpret_cast<zq_mblen_fn>(FindSymbol(library, "zq_mblen"));
    r.isleadbyte = reinterpret_cast<zq_isleadbyte_fn>(FindSymbol(library, "zq_isleadbyte"));
    r.mbcurmax = reinterpret_cast<zq_mbcurmax_fn>(FindSymbol(library, "zq_mbcurmax"));
  }
  if (library != nullptr && r.mbtowc && r.mbstowcs && r.wctomb && r.wcstombs &&
      r.mblen && r.isleadbyte && r.mbcurmax) {
    entry.routines = r;
    entry.state.store(1, std::memory_order_release);
  } else {
    // A module without every entry point stays loaded but unused, like one
    // that loaded fine: modules are never unloaded.
    entry.state.store(-1, std::memory_order_release);
  }
}

// The routines serving `cs`: anything outside 0 to 23 and every code set
// whose module failed to load is served by the current locale (0).
const Routines& Resolve(int cs) {
  if (cs < 0 || cs >= kCodeSets) cs = 0;
  int32_t state = g_code_sets[cs].state.load(std::memory_order_acquire);
  if (state == 0) {
    LoadCodeSet(cs);
    state = g_code_sets[cs].state.load(std::memory_order_acquire);
  }
  return g_code_sets[state == 1 ? cs : 0].routines;
}

std::size_t Count(int n) { return n < 0 ? 0 : static_cast<std::size_t>(n); }

// A byte count where -1 means "up to the terminating zero": the routines
// stop at a zero byte by themselves.
std::size_t Limit(int n) {
  return static_cast<std::size_t>(n < 0 ? INT32_MAX : n);
}

int Result(std::size_t r) {
  if (r == kError || r > static_cast<std::size_t>(INT32_MAX)) return -1;
  return static_cast<int>(r);
}

// ---- UTF-8 (-3) ------------------------------------------------------------
// The narrow side of UTF-8 uses the library's decoding arithmetic: a lead
// byte gives the length, trailing bytes are added in without checks, and a
// fixed offset per length is subtracted. A zero byte always ends the text.

// Bytes searched for the zero byte at a time, ahead of the bulk run.
constexpr std::size_t kScanWindow = 4096;

constexpr uint32_t kUtf8Offset[5] = {0, 0, 0x3080, 0xE2080, 0x3C82080};

// Decodes one sequence of at most `n` bytes; returns its length (0 for the
// zero byte) or -1.
int Utf8Decode(const unsigned char* in, std::size_t n, uint32_t* cp) {
  if (n == 0) return -1;
  unsigned char lead = in[0];
  if (lead == 0) {
    *cp = 0;
    return 0;
  }
  int len = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 5;
  if (len > 4 || static_cast<std::size_t>(len) > n) return -1;
  uint32_t v = 0;
  for (int i = 0; i < len; ++i) {
    if (i > 0 && in[i] == 0) return -1;  // cut short by the end of the text
    v = (v << 6) + in[i];
  }
  v -= kUtf8Offset[len];
  if (v > 0x10FFFF) return -1;
  *cp = v;
  return len;
}

int Utf8MbToWc(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  uint32_t cp = 0;
  int len = Utf8Decode(reinterpret_cast<const unsigned char*>(in), n, &cp);
  if (len < 0 || cp > 0xFFFF) return -1;
  if (out != nullptr) *out = static_cast<unsigned short>(cp);
  return len;
}

std::size_t Utf8MbsToWcs(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return kError;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(in);
  std::size_t count = 0;
  if (out == nullptr) {
    for (;;) {
      uint32_t cp = 0;
      int len = Utf8Decode(p, 4, &cp);
      if (len < 0) return kError;
      if (len == 0) return count;
      count += cp < 0x10000 ? 1 : 2;
      p += len;
    }
  }
  // Well-formed stretches go through the bulk run, which must not look past
  // the zero byte: `known` marks how far the text is known to hold none,
  // found a window at a time. Everything else takes the step below: the
  // same arithmetic as Utf8Decode, unrolled per length, where a trailing
  // byte is read only after the one before it proved non-zero.
  const unsigned char* known = p;
  bool end_seen = false;
  while (count < n) {
    if (known < p) known = p;  // the step below may cross it
    if (!end_seen && static_cast<std::size_t>(known - p) < zq::kUtf8RunMinBytes &&
        n - count >= zq::kUtf8RunMinBytes) {
      const void* zero = std::memchr(known, 0, kScanWindow);
      if (zero != nullptr) {
        known = static_cast<const unsigned char*>(zero);
        end_seen = true;
      } else {
        known += kScanWindow;
      }
    }
    if (static_cast<std::size_t>(known - p) >= zq::kUtf8RunMinBytes) {
      std::size_t used = 0;
      count += zq::Utf8DecodeRun(p, static_cast<std::size_t>(known - p), out + count,
                                 n - count, &used);
      p += used;
      if (count >= n) break;
    }
    uint32_t c = p[0];
    if (c < 0xC0) {  // one byte, a stray trailing byte included
      out[count] = static_cast<unsigned short>(c);
      if (c == 0) return count;
      ++count;
      ++p;
      continue;
    }
    uint32_t v;
    int len;
    if (c < 0xE0) {
      if (p[1] == 0) return kError;
      v = (c << 6) + p[1] - kUtf8Offset[2];
      len = 2;
    } else if (c < 0xF0) {
      if (p[1] == 0 || p[2] == 0) return kError;
      v = (c << 12) + (p[1] << 6) + p[2] - kUtf8Offset[3];
      len = 3;
    } else if (c < 0xF8) {
      if (p[1] == 0 || p[2] == 0 || p[3] == 0) return kError;
      v = (c << 18) + (p[1] << 12) + (p[2] << 6) + p[3] - kUtf8Offset[4];
      len = 4;
    } else {
      return kError;
    }
    if (v > 0x10FFFF) return kError;
    if (v < 0x10000) {
      out[count++] = static_cast<unsigned short>(v);
    } else {
      if (count + 2 > n) return count;  // a pair is never split
      out[count] = static_cast<unsigned short>(0xD800 + ((v - 0x10000) >> 10));
      out[count + 1] = static_cast<unsigned short>(0xDC00 + ((v - 0x10000) & 0x3FF));
      count += 2;
    }
    p += len;
  }
  return count;
}

// Encodes a code point; a high surrogate alone has no form, a low one is
// encoded like any other unit (as the library's encoder does).
int Utf8Encode(uint32_t cp, unsigned char* out) {
  if (cp >= 0xD800 && cp <= 0xDBFF) return -1;
  if (cp < 0x80) {
    out[0] = static_cast<unsigned char>(cp);
    return 1;
  }
  if (cp < 0x800) {
    out[0] = static_cast<unsigned char>(0xC0 | (cp >> 6));
    out[1] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    return 2;
  }
  if (cp < 0x10000) {
    out[0] = static_cast<unsigned char>(0xE0 | (cp >> 12));
    out[1] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    return 3;
  }
  out[0] = static_cast<unsigned char>(0xF0 | (cp >> 18));
  out[1] = static_cast<unsigned char>(0x80 | ((cp >> 12) & 0x3F));
  out[2] = static_cast<unsigned char>(0x80 | ((cp >> 6) & 0x3F));
  out[3] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
  return 4;
}

int Utf8WcToMb(char* out, unsigned short u) {
  if (out == nullptr) return 0;
  return Utf8Encode(u, reinterpret_cast<unsigned char*>(out));
}

std::size_t Utf8WcsToMbs(char* out, const unsigned short* in, std::size_t n) {
  if (in == nullptr) return kError;
  std::size_t count = 0;
  unsigned char bytes[4];
  for (;;) {
    if (out != nullptr) {
      std::size_t used = 0;
      count += zq::Utf8EncodeRunToZero(in, reinterpret_cast<unsigned char*>(out) + count,
                                       n - count, &used);
      in += used;
    }
    uint32_t cp = *in;
    if (cp == 0) {
      if (out != nullptr && count < n) out[count] = '\0';
      return count;
    }
    std::size_t units = 1;
    if (cp >= 0xD800 && cp <= 0xDBFF && in[1] >= 0xDC00 && in[1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (in[1] - 0xDC00);
      units = 2;
    }
    int len = Utf8Encode(cp, bytes);
    if (len < 0) return kError;
    if (out != nullptr) {
      if (count + len > n) return count;
      std::memcpy(out + count, bytes, len);
    }
    count += len;
    in += units;
  }
}

int Utf8MbLen(const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  uint32_t cp = 0;
  return Utf8Decode(reinterpret_cast<const unsigned char*>(in), n, &cp);
}

int Utf8IsLeadByte(int c) { return c >= 0xC0 && c <= 0xF7 ? 1 : 0; }
int Utf8MbCurMax() { return 4; }

// ---- UCS-2 (-2) --------------------------------------------------------------
// The narrow text holds the units themselves, two bytes each in the
// machine's order; a zero unit ends it.

unsigned short LoadUnit(const char* in) {
  unsigned short u;
  std::memcpy(&u, in, sizeof(u));
  return u;
}

int Ucs2MbToWc(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  if (n < 2) return -1;
  unsigned short u = LoadUnit(in);
  if (out != nullptr) *out = u;
  return u == 0 ? 0 : 2;
}

std::size_t Ucs2MbsToWcs(unsigned short* out, const char* in, std::size_t n) {
  if (in == nullptr) return kError;
  std::size_t count = 0;
  for (;; ++count, in += 2) {
    unsigned short u = LoadUnit(in);
    if (out != nullptr) {
      if (count >= n) return count;
      out[count] = u;
    }
    if (u == 0) return count;
  }
}

int Ucs2WcToMb(char* out, unsigned short u) {
  if (out == nullptr) return 0;
  std::memcpy(out, &u, sizeof(u));
  return 2;
}

std::size_t Ucs2WcsToMbs(char* out, const unsigned short* in, std::size_t n) {
  if (in == nullptr) return kError;
  std::size_t count = 0;
  for (; *in != 0; ++in, count += 2) {
    if (out != nullptr) {
      if (count + 2 > n) return count;
      std::memcpy(out + count, in, 2);
    }
  }
  if (out != nullptr && count + 2 <= n) std::memset(out + count, 0, 2);
  return count;
}

int Ucs2MbLen(const char* in, std::size_t n) {
  if (in == nullptr) return 0;
  if (n < 2) return -1;
  return LoadUnit(in) == 0 ? 0 : 2;
}

int Ucs2IsLeadByte(int c) { return c >= 0 && c <= 0xFF ? 1 : 0; }
int Ucs2MbCurMax() { return 2; }

constexpr Routines kUtf8Routines = {Utf8MbToWc, Utf8MbsToWcs, Utf8WcToMb, Utf8WcsToMbs,
                                    Utf8MbLen,  Utf8IsLeadByte, Utf8MbCurMax};
constexpr Routines kUcs2Routines = {Ucs2MbToWc, Ucs2MbsToWcs, Ucs2WcToMb, Ucs2WcsToMbs,
                                    Ucs2MbLen,  Ucs2IsLeadByte, Ucs2MbCurMax};

const Routines& For(ZQ_CSET cs) {
  if (cs == ZQ_CSET_UTF8) return kUtf8Routines;
  if (cs == ZQ_CSET_UCS2) return kUcs2Routines;
  return Resolve(cs);
}

// ---- locale ------------------------------------------------------------------

struct LanguageRow {
  const char* language;
  ZQ_CSET cs;
};

constexpr LanguageRow kLanguages[] = {
    {"English", ZQ_CSET_CP1252},
    {"Chinese_People's Republic of China", ZQ_CSET_CP936},
    {"Chinese(Taiwan)", ZQ_CSET_CP950},
    {"Czech", ZQ_CSET_CP1250},
    {"Danish", ZQ_CSET_CP1252},
    {"Dutch", ZQ_CSET_CP1252},
    {"Finnish", ZQ_CSET_CP1252},
    {"French", ZQ_CSET_CP1252},
    {"German", ZQ_CSET_CP1252},
    {"Greek", ZQ_CSET_CP1253},
    {"Hebrew", ZQ_CSET_CP1255},
    {"Hungarian", ZQ_CSET_CP1250},
    {"Icelandic", ZQ_CSET_CP1252},
    {"Italian", ZQ_CSET_CP1252},
    {"Japanese", ZQ_CSET_CP932},
    {"Korean", ZQ_CSET_CP949},
    {"Norwegian", ZQ_CSET_CP1252},
    {"Polish", ZQ_CSET_CP1250},
    {"Portuguese", ZQ_CSET_CP1252},
    {"Russian", ZQ_CSET_CP1251},
    {"Slovak", ZQ_CSET_CP1250},
    {"Spanish", ZQ_CSET_CP1252},
    {"Turkish", ZQ_CSET_CP1254},
    {"Vietnamese", ZQ_CSET_CP1258},
};

std::atomic<bool> g_locale_done{false};
std::atomic<int> g_lang_id{ZQ_CSET_CP1252};
std::atomic<int32_t> g_code_page{0x002501B5};

}  // namespace

namespace zq {

int EncodingState(int cs) {
  if (cs < 0 || cs >= kCodeSets) return -1;
  return g_code_sets[cs].state.load(std::memory_order_acquire);
}

int EncodingLoadAttempts(int cs) {
  if (cs < 0 || cs >= kCodeSets) return 0;
  return g_code_sets[cs].load_attempts.load(std::memory_order_relaxed);
}

}  // namespace zq

ZQ_CSET ZQGlob::EncodingByName(const unsigned short* name) {
  if (name == nullptr) return ZQ_CSET_UNKNOWN;
  if (wcscmpi(name, kWideNames.ucs2) == 0) return ZQ_CSET_UCS2;
  if (wcscmpi(name, kWideNames.utf8) == 0) return ZQ_CSET_UTF8;
  for (int i = 0; i < kNameCount; ++i) {
    if (wcscmpi(name, kWideNames.rows[i]) == 0) return kNameRows[i].cs;
  }
  return ZQ_CSET_UNKNOWN;
}

const unsigned short* ZQGlob::EncodingToName(ZQ_CSET cs) {
  if (cs == ZQ_CSET_UTF8) return kWideNames.utf8;
  if (cs == ZQ_CSET_UCS2) return kWideNames.ucs2;
  for (int i = 0; i < kNameCount; ++i) {
    if (kNameRows[i].cs == cs) return kWideNames.rows[i];
  }
  return nullptr;
}

bool ZQGlob::ValidateEncoding(ZQ_CSET cs) {
  if (cs == ZQ_CSET_UTF8 || cs == ZQ_CSET_UCS2) return true;
  if (cs < 0 || cs >= kCodeSets) return false;
  Resolve(cs);
  return g_code_sets[cs].state.load(std::memory_order_acquire) == 1;
}

bool ZQGlob::ISOEncoding(ZQ_CSET cs) {
  return cs == ZQ_CSET_ISO8859_1 || (cs >= ZQ_CSET_ISO8859_2 && cs <= ZQ_CSET_ISO8859_9);
}

int ZQGlob::MBtoWC(unsigned short* out, const char* in, int n, ZQ_CSET cs) {
  return For(cs).mbtowc(out, in, Limit(n));
}

int ZQGlob::MBStoWCS(unsigned short* out, const char* in, int n, ZQ_CSET cs) {
  return Result(For(cs).mbstowcs(out, in, Count(n)));
}

int ZQGlob::WCtoMB(char* out, unsigned short u, ZQ_CSET cs) {
  return For(cs).wctomb(out, u);
}

int ZQGlob::WCStoMBS(char* out, const unsigned short* in, int n, ZQ_CSET cs) {
  return Result(For(cs).wcstombs(out, in, Count(n)));
}

int ZQGlob::MBLen(const char* in, int n, ZQ_CSET cs) {
  return For(cs).mblen(in, Limit(n));
}

int ZQGlob::IsLeadByte(int c, ZQ_CSET cs) {
  return For(cs).isleadbyte(c & 0xFF);
}

int ZQGlob::MBMaxChars(ZQ_CSET cs) { return For(cs).mbcurmax(); }

void ZQGlob::SetLocale() {
  if (g_locale_done.load(std::memory_order_acquire)) return;
  static ACE_Thread_Mutex mutex;
  ACE_Guard<ACE_Thread_Mutex> guard(mutex);
  if (g_locale_done.load(std::memory_order_relaxed)) return;
  // The user's default locale is the environment's; its English language
  // name picks the code set of the user's language.
  zq::platform::SetUserDefaultLocale();
  std::string language = zq::platform::LocaleLanguageName();
  for (const LanguageRow& row : kLanguages) {
    if (language == row.language) {
      g_lang_id.store(row.cs, std::memory_order_relaxed);
      break;
    }
  }
  g_locale_done.store(true, std::memory_order_release);
}

ZQ_CSET ZQGlob::GetLangID() {
  return static_cast<ZQ_CSET>(g_lang_id.load(std::memory_order_relaxed));
}

long ZQGlob::GetCodePage() { return g_code_page.load(std::memory_order_relaxed); }

int ZQGlob::SetCodePage(long cp) {
  g_code_page.store(static_cast<int32_t>(cp), std::memory_order_relaxed);
  return 0;
}
