// Compiled message catalogues (".mo") and the process-wide lgettext.
#include "zq/catalog.h"

#include <ace/Thread_Mutex.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "catalog/utf.h"
#include "platform/env.h"
#include "platform/fs.h"
#include "zq/options.h"
#include "zq/zqglob.h"
#include "zq/zqwstring.h"

namespace {

constexpr uint32_t kMagic = 0x950412deu;
constexpr uint32_t kMagicSwapped = 0xde120495u;

uint32_t Read32(const unsigned char* p, bool swap) {
  if (swap) {
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 |
           static_cast<uint32_t>(p[2]) << 8 | p[3];
  }
  return static_cast<uint32_t>(p[3]) << 24 | static_cast<uint32_t>(p[2]) << 16 |
         static_cast<uint32_t>(p[1]) << 8 | p[0];
}

// The charset named in a catalogue header ("...charset=NAME\n..."); empty
// when none is named.
std::string HeaderCharset(const std::string& header) {
  std::string::size_type at = header.find("charset=");
  if (at == std::string::npos) return std::string();
  at += 8;
  std::string::size_type end = at;
  while (end < header.size() && header[end] != '\n' && header[end] != ';' && header[end] != ' ' &&
         header[end] != '\r') {
    ++end;
  }
  return header.substr(at, end - at);
}

bool SameCharset(const std::string& a, const char* b) {
  if (a.size() != std::strlen(b)) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    char x = a[i] >= 'a' && a[i] <= 'z' ? static_cast<char>(a[i] - 32) : a[i];
    if (x != b[i]) return false;
  }
  return true;
}

// Re-encodes `text` from `charset` into UTF-8 through the library's code
// sets; unknown charsets are taken as UTF-8 already.
std::string ToUtf8(const std::string& text, const std::string& charset) {
  if (charset.empty() || SameCharset(charset, "UTF-8") || SameCharset(charset, "UTF8") ||
      SameCharset(charset, "ASCII") || SameCharset(charset, "US-ASCII") ||
      SameCharset(charset, "CHARSET")) {
    return text;
  }
  std::basic_string<unsigned short> wname(charset.begin(), charset.end());
  ZQ_CSET cs = ZQGlob::EncodingByName(wname.c_str());
  if (cs == ZQ_CSET_UNKNOWN || cs == ZQ_CSET_UTF8) return text;
  ZQWString w;
  w.Assign(text.data(), cs, static_cast<int>(text.size()));
  return zq::catalog::Utf16ToUtf8(w.c_str(), static_cast<std::size_t>(w.length()));
}

// The process catalogue and the 16-bit forms of its translations handed
// out so far. States are never freed once published, so that every text
// returned stays valid.
struct CatalogState {
  ZQMessageCatalog catalog;
  bool loaded = false;
  std::unordered_map<std::string, std::basic_string<unsigned short>> wide;
};

ACE_Thread_Mutex g_catalog_mutex;
CatalogState* g_state = nullptr;

// Candidate catalogue files in search order.
std::vector<std::string> CatalogCandidates() {
  std::vector<std::string> paths;
  std::string libdir = ZQOptionBlock::GlobalOptions()->LibDir();
  if (libdir.empty()) return paths;
  std::string locale = zq::platform::MessageLocaleName();
  std::string::size_type cut = locale.find_first_of(".@");
  if (cut != std::string::npos) locale.erase(cut);
  std::vector<std::string> langs;
  if (!locale.empty() && locale != "C" && locale != "POSIX") {
    langs.push_back(locale);
    std::string::size_type underscore = locale.find('_');
    if (underscore != std::string::npos) langs.push_back(locale.substr(0, underscore));
  }
  for (const std::string& lang : langs) {
    paths.push_back(ZQGlob::JoinPath(libdir.c_str(), ("locale/" + lang + "/LC_MESSAGES/messages.mo").c_str()));
  }
  for (const std::string& lang : langs) {
    paths.push_back(ZQGlob::JoinPath(libdir.c_str(), (lang + "/messages.mo").c_str()));
  }
  paths.push_back(ZQGlob::JoinPath(libdir.c_str(), "messages.mo"));
  return paths;
}

// Every state ever published; kept, never freed, because texts handed out
// from a state must outlive its replacement.
std::vector<CatalogState*>& Published() {
  static std::vector<CatalogState*>* states = new std::vector<CatalogState*>;
  return *states;
}

// Publishes `fresh` as the process catalogue unless one is there already
// (`replace` false); returns the state in force.
CatalogState* Publish(CatalogState* fresh, bool replace) {
  g_catalog_mutex.acquire();
  if (g_state == nullptr || replace) {
    Published().push_back(fresh);
    g_state = fresh;
    fresh = nullptr;
  }
  CatalogState* current = g_state;
  g_catalog_mutex.release();
  delete fresh;
  return current;
}

// The process catalogue, searched for on first use. Loading happens outside
// the mutex because converting a catalogue's charset may itself translate.
CatalogState* CurrentState() {
  g_catalog_mutex.acquire();
  CatalogState* s = g_state;
  g_catalog_mutex.release();
  if (s != nullptr) return s;
  CatalogState* fresh = new CatalogState;
  for (const std::string& path : CatalogCandidates()) {
    if (fresh->catalog.Load(path.c_str())) {
      fresh->loaded = true;
      break;
    }
  }
  return Publish(fresh, false);
}

}  // namespace

bool ZQMessageCatalog::Load(const char* path) {
  map_.clear();
  charset_ = "UTF-8";
  std::string data;
  // Catalogues are small; a limit keeps a wrong file from exhausting memory.
  if (!zq::platform::ReadWholeFile(path, data, 256u << 20)) return false;
  return LoadFromMemory(data.data(), data.size());
}

bool ZQMessageCatalog::LoadFromMemory(const void* data, size_t size) {
  map_.clear();
  charset_ = "UTF-8";
  const unsigned char* d = static_cast<const unsigned char*>(data);
  if (d == nullptr || size < 28) return false;
  bool swap;
  uint32_t magic = Read32(d, false);
  if (magic == kMagic) {
    swap = false;
  } else if (magic == kMagicSwapped) {
    swap = true;
  } else {
    return false;
  }
  if ((Read32(d + 4, swap) >> 16) > 1) return false;
  uint64_t n = Read32(d + 8, swap);
  uint64_t originals = Read32(d + 12, swap);
  uint64_t translations = Read32(d + 16, swap);
  if (originals + n * 8 > size || translations + n * 8 > size) return false;
  // A string is valid when it and its terminating zero lie inside the file.
  auto string_at = [&](uint64_t table, uint64_t i, std::string& out) {
    uint64_t len = Read32(d + table + i * 8, swap);
    uint64_t off = Read32(d + table + i * 8 + 4, swap);
    if (off + len >= size || d[off + len] != 0) return false;
    out.assign(reinterpret_cast<const char*>(d + off));  // up to the first zero
    return true;
  };
  std::unordered_map<std::string, std::string> map;
  std::string key, value;
  for (uint64_t i = 0; i < n; ++i) {
    if (!string_at(originals, i, key) || !string_at(translations, i, value)) return false;
    map.emplace(key, value);
  }
  auto header = map.find(std::string());
  std::string charset = header != map.end() ? HeaderCharset(header->second) : std::string();
  for (auto& entry : map) {
    if (!entry.first.empty()) entry.second = ToUtf8(entry.second, charset);
  }
  map_.swap(map);
  if (!charset.empty()) charset_ = charset;
  return true;
}

const char* ZQMessageCatalog::Find(const char* msgid) const {
  if (msgid == nullptr || *msgid == '\0') return nullptr;
  auto it = map_.find(msgid);
  if (it == map_.end() || it->second.empty()) return nullptr;
  return it->second.c_str();
}

bool LoadMessageCatalog(const char* path) {
  if (path == nullptr) {
    g_catalog_mutex.acquire();
    g_state = nullptr;  // searched again on the next translation
    g_catalog_mutex.release();
    return true;
  }
  CatalogState* fresh = new CatalogState;
  fresh->loaded = fresh->catalog.Load(path);
  bool ok = fresh->loaded;
  Publish(fresh, true);
  return ok;
}

const char* lgettext(const char* msgid) {
  if (msgid == nullptr) return nullptr;
  CatalogState* s = CurrentState();
  if (!s->loaded) return msgid;
  const char* t = s->catalog.Find(msgid);
  return t != nullptr ? t : msgid;
}

const unsigned short* lgettext(const unsigned short* msgid) {
  if (msgid == nullptr) return nullptr;
  CatalogState* s = CurrentState();
  if (!s->loaded) return msgid;
  std::size_t n = 0;
  while (msgid[n] != 0) ++n;
  std::string key = zq::catalog::Utf16ToUtf8(msgid, n);
  const char* t = s->catalog.Find(key.c_str());
  if (t == nullptr) return msgid;
  g_catalog_mutex.acquire();
  auto it = s->wide.find(key);
  if (it == s->wide.end()) it = s->wide.emplace(key, zq::catalog::Utf8ToUtf16(t)).first;
  const unsigned short* result = it->second.c_str();
  g_catalog_mutex.release();
  return result;
}
