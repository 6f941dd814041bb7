// ZQGlob members that reach the system: profiles, temporary names, program
// execution and the search for loadable modules.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/env.h"
#include "platform/fs.h"
#include "platform/process.h"
#include "platform/profile.h"
#include "platform/tempfile.h"
#include "zq/catalog.h"
#include "zq/options.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"

namespace {

// Copies `text` into `out` cut to `size` bytes with the terminator.
int CopyOut(const std::string& text, char* out, int size) {
  if (out == nullptr || size <= 0) return 0;
  std::size_t n = text.size();
  if (n > static_cast<std::size_t>(size - 1)) n = static_cast<std::size_t>(size - 1);
  std::memcpy(out, text.data(), n);
  out[n] = '\0';
  return static_cast<int>(n);
}

// Writes names as a list of zero-terminated strings closed by one more zero
// byte, cut to `size`; returns the bytes written before the final zero, or
// size - 2 when the list was cut.
int CopyList(const std::vector<std::string>& names, char* out, int size) {
  if (out == nullptr || size <= 0) return 0;
  if (size == 1) {
    out[0] = '\0';
    return 0;
  }
  int pos = 0;
  for (const std::string& name : names) {
    if (pos + static_cast<int>(name.size()) + 1 > size - 1) {
      int room = size - 2 - pos;
      if (room > 0) {
        std::memcpy(out + pos, name.data(), static_cast<std::size_t>(room));
        pos += room;
      }
      out[pos] = '\0';
      out[size - 1] = '\0';
      return size - 2;
    }
    std::memcpy(out + pos, name.data(), name.size());
    pos += static_cast<int>(name.size());
    out[pos++] = '\0';
  }
  out[pos] = '\0';
  return pos;
}

// True when `path` starts like a 64-bit x86 ELF shared object or program.
bool IsLoadableHere(const char* path) {
  int fd = zq::platform::FileOpenRead(path);
  if (fd < 0) return false;
  unsigned char h[20];
  long n = zq::platform::FileRead(fd, h, sizeof h);
  zq::platform::FileClose(fd);
  return n == static_cast<long>(sizeof h) && h[0] == 0x7F && h[1] == 'E' && h[2] == 'L' &&
         h[3] == 'F' && h[4] == 2 /* 64-bit */ && h[5] == 1 /* little-endian */ &&
         (h[16] == 3 || h[16] == 2) /* shared object or program */ && h[18] == 62 &&
         h[19] == 0 /* x86-64 */;
}

std::string Translate(const char* message) { return lgettext(message); }

}  // namespace

int ZQGlob::ReadProfileString(const char* section, const char* key, const char* def, char* out,
                              int size, const char* file) {
  zq::platform::ProfileFile profile;
  bool loaded = file != nullptr && *file != '\0' && profile.Load(file);
  if (section == nullptr) return CopyList(loaded ? profile.Sections() : std::vector<std::string>(), out, size);
  if (key == nullptr) {
    std::vector<std::string> keys;
    if (loaded) profile.Keys(section, keys);
    return CopyList(keys, out, size);
  }
  std::string value;
  if (!loaded || !profile.Get(section, key, value)) {
    // The default loses its trailing blanks, as a stored value would.
    value = def != nullptr ? def : "";
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.pop_back();
  }
  return CopyOut(value, out, size);
}

int ZQGlob::ReadProfileInt(const char* section, const char* key, int def, const char* file) {
  zq::platform::ProfileFile profile;
  std::string value;
  if (section == nullptr || key == nullptr || file == nullptr || !profile.Load(file) ||
      !profile.Get(section, key, value)) {
    return def;
  }
  const char* p = value.c_str();
  bool negative = false;
  if (*p == '-' || *p == '+') negative = *p++ == '-';
  long long v = 0;
  for (; *p >= '0' && *p <= '9'; ++p) {
    v = v * 10 + (*p - '0');
    if (v > 0xFFFFFFFFLL) v = 0xFFFFFFFFLL;
  }
  // Wraps to 32 bits as the integer width of the file format requires.
  uint32_t bits = static_cast<uint32_t>(v);
  if (negative) bits = 0u - bits;
  return static_cast<int>(static_cast<int32_t>(bits));
}

bool ZQGlob::tempnam(std::string& name, const char* prefix) {
  return zq::platform::MakeTempFile(nullptr, prefix != nullptr ? prefix : "zq", name);
}

bool ZQGlob::tempnam(ZQString& name, const char* prefix) {
  std::string n;
  bool ok = tempnam(n, prefix);
  name = n;
  return ok;
}

int ZQGlob::Execute(const char* command, bool wait, std::string* message) {
  std::string reason;
  int rc = zq::platform::RunShellCommand(command, wait, reason);
  if (message != nullptr) {
    message->clear();
    if (rc < 0) {
      char buf[512];
      std::snprintf(buf, sizeof buf, Translate("Unable to run %.200s: %.200s").c_str(),
                    command != nullptr ? command : "", reason.c_str());
      *message = buf;
    }
  }
  return rc;
}

bool ZQGlob::FindModule(const char* name, std::string& path) {
  path.clear();
  if (name == nullptr || *name == '\0') return false;
  std::vector<std::string> names{name};
  // A name without an extension also stands for the name with ".so".
  const char* base = std::strrchr(name, '/');
  if (std::strchr(base != nullptr ? base : name, '.') == nullptr) names.push_back(std::string(name) + ".so");
  if (std::strchr(name, '/') != nullptr) {
    for (const std::string& n : names) {
      if (zq::platform::IsRegularFile(n.c_str())) {
        path = n;
        return true;
      }
    }
    return false;
  }
  std::vector<std::string> dirs;
  if (const char* ld = zq::platform::GetEnv("LD_LIBRARY_PATH")) {
    std::string list = ld;
    std::string::size_type start = 0;
    for (;;) {
      std::string::size_type colon = list.find(':', start);
      std::string dir = list.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
      dirs.push_back(dir.empty() ? "." : dir);
      if (colon == std::string::npos) break;
      start = colon + 1;
    }
  }
  dirs.push_back(ZQOptionBlock::GlobalOptions()->LibDir());
  dirs.push_back(zq::platform::RuntimeDirectory());
  for (const char* const* d = zq::platform::SystemLibraryDirectories(); *d != nullptr; ++d) {
    dirs.push_back(*d);
  }
  for (const std::string& dir : dirs) {
    if (dir.empty()) continue;
    for (const std::string& n : names) {
      std::string candidate = JoinPath(dir.c_str(), n.c_str());
      if (zq::platform::IsRegularFile(candidate.c_str())) {
        path = candidate;
        return true;
      }
    }
  }
  return false;
}

int ZQGlob::GetLoadErrorMessage(const char* name, const char* loaderText, std::string& message) {
  char buf[1024];
  const char* module = name != nullptr ? name : "";
  const char* why = loaderText != nullptr ? loaderText : "";
  std::string path;
  if (!FindModule(module, path)) {
    std::snprintf(buf, sizeof buf,
                  Translate("The module %.256s was not found in LD_LIBRARY_PATH, the library "
                            "directory or the system library folders.").c_str(),
                  module);
    message = buf;
    return 126;
  }
  if (!IsLoadableHere(path.c_str())) {
    std::snprintf(buf, sizeof buf,
                  Translate("%.256s is not a valid module for this machine (found as %.256s).")
                      .c_str(),
                  module, path.c_str());
    message = buf;
    return 193;
  }
  std::snprintf(buf, sizeof buf,
                Translate("The module %.256s (found as %.256s) could not be loaded: %.400s").c_str(),
                module, path.c_str(), why);
  message = buf;
  return 0;
}
