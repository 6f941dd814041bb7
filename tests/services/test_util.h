// Helpers shared by the tests: scratch folders, files and the environment.
#ifndef ZQ_TESTS_SERVICES_TEST_UTIL_H
#define ZQ_TESTS_SERVICES_TEST_UTIL_H

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

namespace zqtest {

// A fresh directory under /tmp, removed with its contents at destruction.
class TempDir {
 public:
  TempDir() {
    char pattern[] = "/tmp/zqtestXXXXXX";
    path_ = mkdtemp(pattern);
  }
  ~TempDir() { Run("rm -rf '" + path_ + "'"); }
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  std::string operator/(const std::string& name) const { return File(name); }
  // Writes `data` to the named file in the directory and gives its path.
  std::string Write(const std::string& name, const std::string& data) const;
  static int Run(const std::string& cmd) { return system(cmd.c_str()); }

 private:
  std::string path_;
};

inline void WriteFile(const std::string& path, const std::string& data) {
  std::ofstream(path, std::ios::binary) << data;
}

inline std::string TempDir::Write(const std::string& name, const std::string& data) const {
  WriteFile(File(name), data);
  return File(name);
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// Sets or clears an environment variable for the life of the object.
class EnvVar {
 public:
  EnvVar(const char* name, const char* value) : name_(name) {
    const char* old = getenv(name);
    had_ = old != nullptr;
    if (had_) old_ = old;
    if (value != nullptr) setenv(name, value, 1); else unsetenv(name);
  }
  ~EnvVar() {
    if (had_) setenv(name_, old_.c_str(), 1); else unsetenv(name_);
  }

 private:
  const char* name_;
  bool had_;
  std::string old_;
};

// Standard output of a shell command.
inline std::string Capture(const std::string& cmd) {
  std::string out;
  FILE* p = popen(cmd.c_str(), "r");
  if (p == nullptr) return out;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
  pclose(p);
  return out;
}

}  // namespace zqtest

#endif  // ZQ_TESTS_SERVICES_TEST_UTIL_H
