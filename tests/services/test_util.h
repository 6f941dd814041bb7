// Helpers shared by the runtime-services tests.
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
    char pattern[] = "/tmp/zqsvcXXXXXX";
    path_ = mkdtemp(pattern);
  }
  ~TempDir() { Run("rm -rf '" + path_ + "'"); }
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  static int Run(const std::string& cmd) { return system(cmd.c_str()); }

 private:
  std::string path_;
};

inline void WriteFile(const std::string& path, const std::string& data) {
  std::ofstream(path, std::ios::binary) << data;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

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
