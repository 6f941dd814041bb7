// ZQOptionBlock: installation settings from $ZQLIB, "initfile.nam" and the
// init file it names.
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/env.h"
#include "platform/fs.h"
#include "zq/options.h"
#include "zq/zqglob.h"

namespace {

// Copies `src` into a field of `capacity` bytes plus the terminator.
void CopyField(char* field, std::size_t capacity, const char* src) {
  std::size_t n = src != nullptr ? std::strlen(src) : 0;
  if (n > capacity) n = capacity;
  std::memmove(field, src != nullptr ? src : "", n);
  field[n] = '\0';
}

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

}  // namespace

ZQOptionBlock::ZQOptionBlock() {
  libdir_[0] = '\0';
  initfile_[0] = '\0';
  const char* zqlib = zq::platform::GetEnv("ZQLIB");
  if (zqlib != nullptr) CopyField(libdir_, sizeof libdir_ - 1, zqlib);
  // Without $ZQLIB there is no directory to look in, so no "initfile.nam".
  std::string name;
  std::string nam_path = ZQGlob::JoinPath(libdir_, "initfile.nam");
  if (libdir_[0] != '\0' && zq::platform::ReadWholeFile(nam_path.c_str(), name, 4096)) {
    std::string::size_type eol = name.find('\n');
    if (eol != std::string::npos) name.erase(eol);
    if (name.size() > sizeof initfile_ - 1) name.resize(sizeof initfile_ - 1);
  }
  InitFile(name.c_str());
}

ZQOptionBlock* ZQOptionBlock::GlobalOptions() {
  // Trivially destructible, so it stays usable during exit callbacks.
  static ZQOptionBlock options;
  return &options;
}

void ZQOptionBlock::InitFile(const char* name) {
  owner_[0] = organization_[0] = installpath_[0] = classpath_[0] = '\0';
  version_[0] = productname_[0] = connlistfile_[0] = '\0';
  decsep_ = '.';
  thsndsep_ = '\0';
  special_ = 3;
  if (name != initfile_) CopyField(initfile_, sizeof initfile_ - 1, name);
  std::size_t n = std::strlen(initfile_);
  while (n > 0 && IsSpace(initfile_[n - 1])) initfile_[--n] = '\0';
  if (n == 0) return;
  ReadSettings();
}

void ZQOptionBlock::ReadSettings() {
  const char* file = initfile_;
  struct Text {
    const char* key;
    char* field;
    std::size_t capacity;
    const char* def;
  };
  const char* zqlib = zq::platform::GetEnv("ZQLIB");
  const Text texts[] = {
      {"owner", owner_, sizeof owner_, ""},
      {"organization", organization_, sizeof organization_, ""},
      {"installpath", installpath_, sizeof installpath_, ""},
      {"classpath", classpath_, sizeof classpath_, ""},
      {"version", version_, sizeof version_, ""},
      {"productname", productname_, sizeof productname_, "Third party conversion product"},
      {"connlistfile", connlistfile_, sizeof connlistfile_, ""},
      {"librarypath", libdir_, sizeof libdir_, zqlib != nullptr ? zqlib : ""},
  };
  for (const Text& t : texts) {
    ZQGlob::ReadProfileString("userinfo", t.key, t.def, t.field, static_cast<int>(t.capacity),
                              file);
  }
  // Both keys fill the one field; the later, "optimizationlevel", wins.
  struct Number {
    const char* section;
    const char* key;
  };
  const Number numbers[] = {{"internal", "special"}, {"userinfo", "optimizationlevel"}};
  for (const Number& num : numbers) {
    char value[20];
    if (ZQGlob::ReadProfileString(num.section, num.key, "", value, sizeof value, file) > 0) {
      special_ = static_cast<int>(std::strtol(value, nullptr, 10));
    }
  }
}
