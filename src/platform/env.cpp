#include "platform/env.h"

#include <dlfcn.h>
#include <stdlib.h>

#include "platform/fs.h"

namespace zq {
namespace platform {

const char* GetEnv(const char* name) {
  if (name == nullptr || *name == '\0') return nullptr;
  return ::getenv(name);
}

std::string MessageLocaleName() {
  static const char* const kVars[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
  for (const char* var : kVars) {
    const char* v = GetEnv(var);
    if (v != nullptr && *v != '\0') return v;
  }
  return std::string();
}

std::string TempDirectory() {
  const char* dir = GetEnv("TMPDIR");
  if (dir != nullptr && *dir != '\0' && IsDirectory(dir)) return dir;
  return "/tmp";
}

std::string RuntimeDirectory() {
  Dl_info info;
  if (::dladdr(reinterpret_cast<void*>(&RuntimeDirectory), &info) == 0 ||
      info.dli_fname == nullptr) {
    return std::string();
  }
  std::string path = info.dli_fname;
  std::string::size_type slash = path.rfind('/');
  if (slash == std::string::npos) return std::string();
  return path.substr(0, slash == 0 ? 1 : slash);
}

const char* const* SystemLibraryDirectories() {
  static const char* const kDirs[] = {
      "/lib/x86_64-linux-gnu", "/usr/lib/x86_64-linux-gnu", "/lib64", "/usr/lib64",
      "/lib", "/usr/lib", "/usr/local/lib", nullptr};
  return kDirs;
}

}  // namespace platform
}  // namespace zq
