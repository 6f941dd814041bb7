// Loading of encoding modules and the process locale, each scenario in a
// fresh process of the probe (tests/modules/probe/enc_probe.cpp).
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

extern char** environ;

namespace {

const std::string kModuleDir = std::string(ZQ_BINARY_DIR) + "/lib";

// Runs the probe with exactly the environment `env` and returns its
// "key=value" report.
std::map<std::string, std::string> Probe(const std::vector<std::string>& args,
                                         const std::vector<std::string>& env) {
  std::map<std::string, std::string> report;
  int fds[2];
  if (pipe(fds) != 0) return report;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
  posix_spawn_file_actions_addclose(&actions, fds[0]);
  std::vector<char*> argv{const_cast<char*>(ZQ_ENC_PROBE)};
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  std::vector<std::string> full = env;
  full.push_back("HOME=/nonexistent");
  full.push_back("PATH=/usr/bin:/bin");
  std::vector<char*> envp;
  for (const std::string& e : full) envp.push_back(const_cast<char*>(e.c_str()));
  envp.push_back(nullptr);
  pid_t pid;
  int rc = posix_spawn(&pid, ZQ_ENC_PROBE, &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  std::string out;
  char buf[512];
  ssize_t got;
  while ((got = read(fds[0], buf, sizeof(buf))) > 0) out.append(buf, got);
  close(fds[0]);
  if (rc != 0) return report;
  int status = 0;
  waitpid(pid, &status, 0);
  report["exit"] = WIFEXITED(status) ? std::to_string(WEXITSTATUS(status)) : "signal";
  std::istringstream words(out);
  std::string word;
  while (words >> word) {
    size_t eq = word.find('=');
    if (eq != std::string::npos) report[word.substr(0, eq)] = word.substr(eq + 1);
  }
  return report;
}

std::string TempDir(const char* tag) {
  std::string dir = testing::TempDir() + "zq_enc_" + tag + "_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0755);
  return dir;
}

struct LoadCase {
  const char* name;
  const char* cs;
  std::vector<std::string> env;  // "@mod", "@foreign", "@partial" name folders
  const char* state;
  const char* same_as_oem;
  const char* valid;
  const char* unit;  // unit of byte 0x8A, "" when not checked
};

TEST(EncodingModuleLoading, FindsModulesOrFallsBackOnce) {
  std::string foreign = TempDir("foreign");
  std::ofstream(foreign + "/zqenccp1250.so") << "this is not a shared object\n";
  std::string empty = TempDir("empty");

  const LoadCase cases[] = {
      // No module anywhere: code set 11 behaves as 0, tried once.
      {"missing", "11", {"ZQLIB=" + empty}, "-1", "1", "0", ""},
      {"missing without ZQLIB", "11", {}, "-1", "1", "0", ""},
      // The library directory of the option block is the second place.
      {"library directory", "11", {"ZQLIB=" + kModuleDir}, "1", "0", "1", "196"},
      // A bare name goes through the loader's search path.
      {"search path", "19", {"LD_LIBRARY_PATH=" + kModuleDir}, "1", "0", "1", "65412"},
      {"search path greek", "13", {"LD_LIBRARY_PATH=" + kModuleDir}, "1", "0", "1",
       "916"},
      // A file named like the module that is no shared object.
      {"foreign file", "11", {"ZQLIB=" + foreign}, "-1", "1", "0", ""},
      // A module without all seven entry points.
      {"partial module", "12", {std::string("ZQLIB=") + ZQ_ENC_PARTIAL_DIR}, "-1", "1", "0",
       ""},
  };
  for (const LoadCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto r = Probe({"load", c.cs}, c.env);
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "0");
    EXPECT_EQ(r["state"], c.state);
    EXPECT_EQ(r["attempts"], "1");  // never retried, also after a failure
    EXPECT_EQ(r["same_as_oem"], c.same_as_oem);
    EXPECT_EQ(r["valid"], c.valid);
    if (*c.unit) {
      EXPECT_EQ(r["unit"], c.unit);
    }
  }
  // Built-in code sets never load anything.
  auto r = Probe({"load", "2"}, {"ZQLIB=" + empty});
  EXPECT_EQ(r["before"], "1");
  EXPECT_EQ(r["attempts"], "0");
  EXPECT_EQ(r["unit"], "196");
}

TEST(EncodingLocale, SetLocaleFollowsTheEnvironment) {
  struct Case {
    const char* locale;
    const char* langid;
    const char* maxchars;
  } cases[] = {
      {"de_DE.UTF-8", "2", "6"},
      {"de_DE", "2", "1"},
      {"ja_JP.UTF-8", "20", "6"},
      {"ja_JP.EUC-JP", "20", "3"},
      {"C", "2", "1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.locale);
    auto r = Probe({"locale"}, {std::string("LC_ALL=") + c.locale});
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "2");
    EXPECT_EQ(r["langid"], c.langid);
    EXPECT_EQ(r["ctype"], c.locale);
    EXPECT_EQ(r["maxchars"], c.maxchars);
  }
}

}  // namespace
