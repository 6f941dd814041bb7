// ZQOptionBlock: the installation settings, and the command-line scanner.
#ifndef ZQ_OPTIONS_H
#define ZQ_OPTIONS_H

#include "zq/export.h"

class ZQ_EXPORT ZQOptionBlock {
 public:
  // Builds the settings from $ZQLIB, its "initfile.nam" and the init file.
  ZQOptionBlock();

  // The process-wide instance, made on first use.
  static ZQOptionBlock* GlobalOptions();

  // Re-reads every setting from the named profile file.
  void InitFile(const char* name);

  const char* LibDir() const { return libdir_; }
  const char* UserName() const { return owner_; }
  const char* Organization() const { return organization_; }
  const char* InstallPath() const { return installpath_; }
  const char* ClassPath() const { return classpath_; }
  const char* Version() const { return version_; }
  const char* ProductName() const { return productname_; }
  const char* ConnListFile() const { return connlistfile_; }
  const char* InitFile() const { return initfile_; }
  char DecSep() const { return decsep_; }
  char ThsndSep() const { return thsndsep_; }
  int Special() const { return special_; }
  // Sets the separators used for numbers shown to the user (zero: none).
  void SetSeparators(char dec, char thsnd) {
    decsep_ = dec;
    thsndsep_ = thsnd;
  }

 private:
  char libdir_[256 + 1];
  char owner_[64 + 1];
  char organization_[64 + 1];
  char installpath_[256 + 1];
  char classpath_[4096 + 1];
  char version_[64 + 1];
  char productname_[64 + 1];
  char connlistfile_[256 + 1];
  char initfile_[256 + 1];
  char decsep_;
  char thsndsep_;
  int special_;

  // Empties every setting read from the init file and reads them again.
  void ReadSettings();
};

// The command-line option scanner. It replaces the C library's getopt in the
// process and shares its globals, so callers stay in step whichever header
// they include: `optind` is the index of the next argument (1 at start; set
// it to 0 or 1 to start over), `optarg` the argument of the last option,
// `optopt` the last option letter met (the offending one after an error) and
// `opterr` the switch that lets error messages reach standard error.
#ifdef __cplusplus
extern "C" {
#endif
// Next option letter of argv, '?' for an unknown letter or a missing
// argument (':' for the latter when optstring starts with ':'), -1 at the
// first non-option argument, "-" alone, or after "--".
ZQ_EXPORT int getopt(int argc, char* const* argv, const char* optstring) noexcept;
ZQ_EXPORT extern char* optarg;
ZQ_EXPORT extern int optind;
ZQ_EXPORT extern int opterr;
ZQ_EXPORT extern int optopt;
#ifdef __cplusplus
}
#endif

#endif  // ZQ_OPTIONS_H
