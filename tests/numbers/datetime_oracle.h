// Helpers for the calendar tests: running reference programs and re-running
// this test program under another locale.
#ifndef ZQ_TESTS_NUMBERS_DATETIME_ORACLE_H
#define ZQ_TESTS_NUMBERS_DATETIME_ORACLE_H

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace zqtest {

// Runs `command` through the shell; its standard output, or false when it
// could not be run or did not exit with status 0.
inline bool RunCommand(const std::string& command, std::string& out) {
  out.clear();
  FILE* f = popen(command.c_str(), "r");
  if (f == nullptr) return false;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
  int status = pclose(f);
  return status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Path of the running test program.
inline std::string SelfPath() {
  char buf[4096];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf);
  return n > 0 ? std::string(buf, n) : std::string();
}

// True in a child started by RunChildTests.
inline bool InChild() { return getenv("ZQ_DATETIME_CHILD") != nullptr; }

// Re-runs this program's tests matching `filter` with LC_ALL=`locale`;
// their output, and whether all of them passed.
inline bool RunChildTests(const std::string& filter, const std::string& locale,
                          std::string& out) {
  std::string cmd = "ZQ_DATETIME_CHILD=1 LC_ALL=" + locale + " '" + SelfPath() +
                    "' --gtest_filter='" + filter + "' 2>&1";
  return RunCommand(cmd, out);
}

}  // namespace zqtest

#endif  // ZQ_TESTS_NUMBERS_DATETIME_ORACLE_H
