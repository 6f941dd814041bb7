// Loading shared objects, and the runtime's loading of encoding modules and
// the process locale, each scenario in a fresh process of the probe.
#include "platform/dynlib.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace platform = zq::platform;
using platform::LoadFailure;

TEST(DynLib, ExplainsWhyALoadFailedOrLoadsAndResolves) {
  const std::string dir = testing::TempDir() + "zq_dynlib_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0755);
  mkdir((dir + "/folder.so").c_str(), 0755);
  std::ofstream(dir + "/text.so") << "not a shared object\n";
  std::ofstream(dir + "/empty.so");
  const LoadFailure kNotFound = LoadFailure::kNotFound, kNotValid = LoadFailure::kNotValid;
  const std::pair<std::string, LoadFailure> cases[] = {
      {dir + "/missing.so", kNotFound}, {"zq_no_such_module.so", kNotFound}, {"", kNotFound},
      {dir + "/text.so", kNotValid},    {dir + "/empty.so", kNotValid},
      {dir + "/folder.so", kNotValid},  {"/bin/sh", kNotValid},  // an executable, not a library
  };
  for (const auto& [name, want] : cases) {
    platform::LoadError error;
    EXPECT_EQ(platform::LoadLibrary(name.c_str(), &error), nullptr) << name;
    EXPECT_EQ(static_cast<int>(error.failure), static_cast<int>(want)) << name << error.text;
    EXPECT_FALSE(error.text.empty()) << name;
  }
  EXPECT_EQ(platform::LoadLibrary(nullptr, nullptr), nullptr);

  const std::string lib_dir = std::string(ZQ_BINARY_DIR) + "/lib";
  const std::string path = lib_dir + "/zqenccp1250.so";
  platform::LoadError error;
  void* lib = platform::LoadLibrary(path.c_str(), &error);
  ASSERT_NE(lib, nullptr) << error.text;
  EXPECT_EQ(error.failure, LoadFailure::kNone);
  EXPECT_EQ(platform::DirectoryOfAddress(platform::FindSymbol(lib, "zq_mbtowc")), lib_dir);
  EXPECT_EQ(platform::DirectoryOfAddress(nullptr), "");
  EXPECT_EQ(platform::FindSymbol(lib, "zq_no_such_entry"), nullptr);
  EXPECT_EQ(platform::FindSymbol(nullptr, "zq_mbtowc"), nullptr);
  void* again = platform::LoadLibrary(path.c_str(), nullptr);  // the same object, released twice
  EXPECT_EQ(again, lib);
  platform::FreeLibrary(again);
  platform::FreeLibrary(lib);
  platform::FreeLibrary(nullptr);
}

// Runs the probe with exactly the environment `env` (plus HOME and PATH)
// and returns its "key=value" report, with "exit" for its exit status.
std::map<std::string, std::string> Probe(const std::string& args,
                                         const std::vector<std::string>& env) {
  std::string cmd = "env -i HOME=/nonexistent PATH=/usr/bin:/bin";
  for (const std::string& e : env) cmd += " '" + e + "'";
  FILE* out = popen((cmd + " " + ZQ_ENC_PROBE + " " + args).c_str(), "r");
  std::map<std::string, std::string> report;
  char word[256];
  while (out != nullptr && std::fscanf(out, "%255s", word) == 1) {
    const char* eq = std::strchr(word, '=');
    if (eq != nullptr) report[std::string(word, eq - word)] = eq + 1;
  }
  const int status = out != nullptr ? pclose(out) : -1;
  report["exit"] = WIFEXITED(status) ? std::to_string(WEXITSTATUS(status)) : "failed";
  return report;
}

TEST(EncodingModuleLoading, FindsModulesOrFallsBackOnce) {
  const std::string tmp = testing::TempDir() + "zq_enc_" + std::to_string(getpid());
  const std::string foreign = tmp + "_foreign", empty = tmp + "_empty";
  mkdir(foreign.c_str(), 0755);
  mkdir(empty.c_str(), 0755);
  std::ofstream(foreign + "/zqenccp1250.so") << "this is not a shared object\n";
  const std::string lib = std::string(ZQ_BINARY_DIR) + "/lib";
  // Code set, the probe's environment, and the unit of byte 0xC4 when a
  // module loads (nullptr: the code set falls back to code set 0).
  const struct {
    const char* cs;
    std::vector<std::string> env;
    const char* unit;
  } cases[] = {
      {"11", {"ZQLIB=" + empty}, nullptr},                           // no module anywhere
      {"11", {}, nullptr},                                           // and no ZQLIB
      {"11", {"ZQLIB=" + lib}, "196"},                               // the library directory
      {"19", {"LD_LIBRARY_PATH=" + lib}, "65412"},                   // the loader's search path
      {"13", {"LD_LIBRARY_PATH=" + lib}, "916"},
      {"11", {"ZQLIB=" + foreign}, nullptr},                         // not a shared object
      {"12", {std::string("ZQLIB=") + ZQ_ENC_PARTIAL_DIR}, nullptr},  // lacks entry points
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.cs << " " << (c.env.empty() ? "" : c.env[0]));
    auto r = Probe(std::string("load ") + c.cs, c.env);
    const bool loads = c.unit != nullptr;
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "0");
    EXPECT_EQ(r["state"], loads ? "1" : "-1");
    EXPECT_EQ(r["attempts"], "1");  // never retried, also after a failure
    EXPECT_EQ(r["same_as_oem"], loads ? "0" : "1");
    EXPECT_EQ(r["valid"], loads ? "1" : "0");
    EXPECT_TRUE(!loads || r["unit"] == c.unit) << r["unit"];
  }
  // Built-in code sets never load anything.
  auto r = Probe("load 2", {"ZQLIB=" + empty});
  EXPECT_EQ(r["before"], "1");
  EXPECT_EQ(r["attempts"], "0");
  EXPECT_EQ(r["unit"], "196");
}

TEST(EncodingLocale, SetLocaleFollowsTheEnvironment) {
  // LC_ALL, then the expected GetLangID and MBMaxChars.
  const char* cases[][3] = {{"de_DE.UTF-8", "2", "6"},  {"de_DE", "2", "1"},
                            {"ja_JP.UTF-8", "20", "6"}, {"ja_JP.EUC-JP", "20", "3"},
                            {"C", "2", "1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c[0]);
    auto r = Probe("locale", {std::string("LC_ALL=") + c[0]});
    ASSERT_EQ(r["exit"], "0");
    EXPECT_EQ(r["before"], "2");
    EXPECT_EQ(r["langid"], c[1]);
    EXPECT_EQ(r["ctype"], c[0]);
    EXPECT_EQ(r["maxchars"], c[2]);
  }
}

}  // namespace
