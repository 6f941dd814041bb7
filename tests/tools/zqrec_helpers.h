// Helpers of the zqrec end-to-end tests: a scratch folder, running the
// program with its output captured, and file access.
#ifndef ZQ_TESTS_TOOLS_ZQREC_HELPERS_H
#define ZQ_TESTS_TOOLS_ZQREC_HELPERS_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace zqrec_test {

struct Result {
  int code = -1;
  std::string out;
  std::string err;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void WriteFile(const std::string& path, const std::string& data) {
  std::ofstream(path, std::ios::binary) << data;
}

inline std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) {
    if (c == '\'') {
      q += "'\\''";
    } else {
      q += c;
    }
  }
  return q + "'";
}

inline std::string Example(const std::string& name) {
  return std::string(ZQ_SOURCE_DIR) + "/examples/records/" + name;
}

// A scratch folder removed at the end of the test.
class TempDir {
 public:
  TempDir() {
    char tmpl[] = "/tmp/zqrec-test-XXXXXX";
    path_ = mkdtemp(tmpl);
  }
  ~TempDir() { std::system(("rm -rf " + Quote(path_)).c_str()); }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Runs a shell command line with standard output and error captured.
inline Result Shell(const std::string& cmd, const TempDir& dir) {
  Result r;
  const std::string out = dir / ".stdout", err = dir / ".stderr";
  const int status = std::system((cmd + " >" + Quote(out) + " 2>" + Quote(err)).c_str());
  r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  r.out = ReadFile(out);
  r.err = ReadFile(err);
  return r;
}

// Runs zqrec with `args` (each quoted for the shell).
inline Result Zqrec(const std::vector<std::string>& args, const TempDir& dir) {
  std::string cmd = Quote(ZQREC_BIN);
  for (const std::string& a : args) cmd += " " + Quote(a);
  return Shell(cmd + " </dev/null", dir);
}

inline bool HaveProgram(const char* name) {
  return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace zqrec_test

#endif  // ZQ_TESTS_TOOLS_ZQREC_HELPERS_H
