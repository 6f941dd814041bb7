// Loading shared objects through the dynamic linker.
#include "platform/dynlib.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstring>

namespace zq {
namespace platform {

namespace {

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

LoadFailure ClassifyLoadFailure(const char* name, const std::string& text) {
  // The dynamic linker reports a file it found but could not use with the
  // ELF-level reason; a search that found nothing ends in ENOENT's text.
  if (Contains(text, "invalid ELF header") || Contains(text, "file too short") ||
      Contains(text, "wrong ELF class") || Contains(text, "ELF load command") ||
      Contains(text, "ELF file") || Contains(text, "ET_DYN") ||
      Contains(text, "cannot dynamically load") ||
      Contains(text, "Exec format error")) {
    return LoadFailure::kNotValid;
  }
  if (Contains(text, "No such file or directory")) {
    return LoadFailure::kNotFound;
  }
  // A named file that exists but failed for a reason not listed above is
  // still not usable as a module; a missing one is simply not there.
  if (name != nullptr && std::strchr(name, '/') != nullptr) {
    struct stat st;
    if (::stat(name, &st) != 0) return LoadFailure::kNotFound;
    if (S_ISDIR(st.st_mode)) return LoadFailure::kNotValid;
  }
  return LoadFailure::kOther;
}

void* LoadLibrary(const char* name, LoadError* error) {
  if (name == nullptr || *name == '\0') {
    if (error != nullptr) {
      error->failure = LoadFailure::kNotFound;
      error->text = "empty module name";
    }
    return nullptr;
  }
  ::dlerror();
  void* library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr && error != nullptr) {
    const char* text = ::dlerror();
    error->text = text != nullptr ? text : "";
    error->failure = ClassifyLoadFailure(name, error->text);
  }
  return library;
}

void* FindSymbol(void* library, const char* name) {
  if (library == nullptr || name == nullptr) return nullptr;
  return ::dlsym(library, name);
}

std::string DirectoryOfAddress(const void* address) {
  Dl_info info;
  if (address == nullptr || ::dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
    return std::string();
  }
  std::string path = info.dli_fname;
  std::string::size_type slash = path.rfind('/');
  if (slash == std::string::npos) return std::string();
  return path.substr(0, slash == 0 ? 1 : slash);
}

void FreeLibrary(void* library) {
  if (library != nullptr) ::dlclose(library);
}

}  // namespace platform
}  // namespace zq
