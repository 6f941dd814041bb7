// getopt against the C library's own scanner on the same argument vectors.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <string>
#include <vector>

#include "services/test_util.h"
#include "zq/options.h"

namespace {

using GetoptFn = int (*)(int, char* const*, const char*);

// glibc's getopt, reached past ours (which replaces it in the process).
GetoptFn LibcGetopt() {
  static void* libc = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
  return libc != nullptr ? reinterpret_cast<GetoptFn>(dlsym(libc, "getopt")) : nullptr;
}

// The observable trace of scanning `args` to the end.
std::string Trace(GetoptFn fn, const std::vector<std::string>& args, const std::string& opts) {
  std::vector<std::string> copy = args;
  std::vector<char*> argv;
  for (std::string& a : copy) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  optind = 0;
  opterr = 0;
  std::string trace;
  for (int step = 0; step < 64; ++step) {
    int c = fn(static_cast<int>(copy.size()), argv.data(), opts.c_str());
    trace += std::to_string(c) + "@" + std::to_string(optind);
    if (c == -1) break;
    if (c == '?' || c == ':') trace += " optopt=" + std::to_string(optopt);
    std::string::size_type at = opts.find(static_cast<char>(c));
    if (c != '?' && c != ':' && at != std::string::npos && opts[at + 1] == ':') {
      trace += std::string(" arg=") + (optarg != nullptr ? optarg : "(null)");
    }
    trace += "; ";
  }
  return trace;
}

TEST(Getopt, MatchesTheCLibraryInPosixMode) {
  GetoptFn libc = LibcGetopt();
  ASSERT_NE(libc, nullptr);
  ASSERT_NE(libc, &getopt);
  const std::vector<std::string> words = {"-a", "-b", "-ab", "-ba", "-c", "-cval", "-acb", "-x",
                                          "-ax", "-", "--", "file", "-:", "-bc", "--b", "val"};
  const std::vector<std::string> optstrings = {"+abc:", "+:abc:", "+a:b", "+ab", "+c:a"};
  std::mt19937 rng(2024);
  for (int round = 0; round < 3000; ++round) {
    std::vector<std::string> args = {"prog"};
    int n = static_cast<int>(rng() % 7);
    for (int i = 0; i < n; ++i) args.push_back(words[rng() % words.size()]);
    const std::string& opts = optstrings[rng() % optstrings.size()];
    std::string ours = Trace(&getopt, args, opts);
    std::string theirs = Trace(libc, args, opts);
    std::string line;
    for (const std::string& a : args) line += a + " ";
    ASSERT_EQ(ours, theirs) << "args: " << line << " opts: " << opts;
  }
}

TEST(Getopt, ClassicCasesAndMessages) {
  std::vector<std::string> args = {"prog", "-ab", "x", "rest"};
  EXPECT_EQ(Trace(&getopt, args, "ab:"), "97@1; 98@3 arg=x; -1@3");
  // Error messages go to standard error in the classic wording.
  zqtest::TempDir dir;
  std::string err = dir.File("stderr");
  int saved = dup(2);
  FILE* f = fopen(err.c_str(), "w");
  dup2(fileno(f), 2);
  std::vector<std::string> bad = {"prog", "-q", "-c"};
  std::vector<char*> argv;
  for (std::string& a : bad) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  optind = 1;
  opterr = 1;
  int c1 = getopt(3, argv.data(), "c:");
  int o1 = optopt;
  int c2 = getopt(3, argv.data(), "c:");
  opterr = 0;
  optind = 1;
  int c3 = getopt(3, argv.data(), "c:");  // silent
  optind = 2;
  int c4 = getopt(3, argv.data(), ":c:");  // leading colon: ':' and silent
  opterr = 1;
  fflush(stderr);
  dup2(saved, 2);
  close(saved);
  fclose(f);
  EXPECT_EQ(c1, '?');
  EXPECT_EQ(o1, 'q');
  EXPECT_EQ(c2, '?');
  EXPECT_EQ(c3, '?');
  EXPECT_EQ(c4, ':');
  EXPECT_EQ(optopt, 'c');
  EXPECT_EQ(zqtest::ReadFile(err),
            "prog: illegal option -- q\nprog: option requires an argument -- c\n");
}

}  // namespace
