// Helpers of the zqrec end-to-end tests: running the program with its
// output captured.
#ifndef ZQ_TESTS_TOOLS_ZQREC_HELPERS_H
#define ZQ_TESTS_TOOLS_ZQREC_HELPERS_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "services/test_util.h"

namespace zqrec_test {

using zqtest::ReadFile;
using zqtest::TempDir;
using zqtest::WriteFile;

struct Result {
  int code = -1;
  std::string out;
  std::string err;
};

inline std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

inline std::string Example(const std::string& name) {
  return std::string(ZQ_SOURCE_DIR) + "/examples/records/" + name;
}

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

// Runs zqrec, expects success and gives its standard output.
inline std::string Ok(const std::vector<std::string>& args, const TempDir& dir) {
  Result r = Zqrec(args, dir);
  EXPECT_EQ(r.code, 0) << r.err;
  return r.out;
}

inline bool HaveProgram(const char* name) {
  return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace zqrec_test

#endif  // ZQ_TESTS_TOOLS_ZQREC_HELPERS_H
