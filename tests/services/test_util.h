// Scratch folders, files and environment variables for the tests.
#ifndef ZQ_TESTS_SERVICES_TEST_UTIL_H
#define ZQ_TESTS_SERVICES_TEST_UTIL_H

#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <string>

namespace zqtest {

inline std::string ReadFile(const std::string& path) {
  std::stringstream s;
  s << std::ifstream(path, std::ios::binary).rdbuf();
  return s.str();
}

// A fresh directory under /tmp, removed with its contents at destruction.
struct TempDir {
  std::string path = MakeDir();
  ~TempDir() { Run("rm -rf '" + path + "'"); }
  std::string File(const std::string& name) const { return path + "/" + name; }
  // Writes `data` to the named file in the directory and gives its path.
  std::string Write(const std::string& name, const std::string& data) const {
    std::ofstream(File(name), std::ios::binary) << data;
    return File(name);
  }
  static int Run(const std::string& cmd) { return system(cmd.c_str()); }
  static std::string MakeDir() {
    char pattern[] = "/tmp/zqtestXXXXXX";
    return mkdtemp(pattern);
  }
};

// Sets an environment variable for the life of the object.
struct EnvVar {
  EnvVar(const char* name, const std::string& value)
      : name(name), had(getenv(name) != nullptr), old(had ? getenv(name) : "") {
    setenv(name, value.c_str(), 1);
  }
  ~EnvVar() { had ? setenv(name, old.c_str(), 1) : unsetenv(name); }
  const char* name;
  bool had;
  std::string old;
};

}  // namespace zqtest

#endif  // ZQ_TESTS_SERVICES_TEST_UTIL_H
