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
};

#endif  // ZQ_OPTIONS_H
