// Loading of encoding modules and the process locale, each scenario in a
// fresh process of the probe (tests/modules/probe/enc_probe.cpp).
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

const std::string kModuleDir = std::string(ZQ_BINARY_DIR) + "/lib";

// Runs the probe with exactly the environment `env` (plus HOME and PATH)
// and returns its "key=value" report, with "exit" for its exit status.
std::map<std::string, std::string> Probe(const std::string& args,
                                         const std::vector<std::string>& env) {
  std::string cmd = "env -i HOME=/nonexistent PATH=/usr/bin:/bin";
  for (const std::string& e : env) cmd += " '" + e + "'";
  FILE* out = popen((cmd + " " + ZQ_ENC_PROBE + " " + args).c_str(), "r");
  std::map<std::string, std::string> report;
  if (out == nullptr) return report;
  std::string text;
  char buf[512];
  for (size_t got; (got = fread(buf, 1, sizeof(buf), out)) > 0;) text.append(buf, got);
  int status = pclose(out);
  report["exit"] = WIFEXITED(status) ? std::to_string(WEXITSTATUS(status)) : "signal";
  std::istringstream words(text);
  for (std::string word; words >> word;) {
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
  std::vector<std::string> env;  // the probe's environment
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
    auto r = Probe(std::string("load ") + c.cs, c.env);
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "0");
    EXPECT_EQ(r["state"], c.state);
    EXPECT_EQ(r["attempts"], "1");  // never retried, also after a failure
    EXPECT_EQ(r["same_as_oem"], c.same_as_oem);
    EXPECT_EQ(r["valid"], c.valid);
    EXPECT_TRUE(*c.unit == '\0' || r["unit"] == c.unit) << r["unit"];
  }
  // Built-in code sets never load anything.
  auto r = Probe("load 2", {"ZQLIB=" + empty});
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
    auto r = Probe("locale", {std::string("LC_ALL=") + c.locale});
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "2");
    EXPECT_EQ(r["langid"], c.langid);
    EXPECT_EQ(r["ctype"], c.locale);
    EXPECT_EQ(r["maxchars"], c.maxchars);
  }
}

}  // namespace
