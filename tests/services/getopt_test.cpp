// getopt against the C library's own scanner on the same argument vectors.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

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
  EXPECT_EQ(Trace(&getopt, {"prog", "-ab", "x", "rest"}, "ab:"), "97@1; 98@3 arg=x; -1@3");
  // Messages go to standard error in the classic wording, unless opterr is
  // clear or the option string starts with a colon (which answers ':').
  std::string bad[] = {"prog", "-q", "-c"};
  char* argv[] = {&bad[0][0], &bad[1][0], &bad[2][0], nullptr};
  const struct {
    int optind, opterr;  // optind -1: carry on
    const char* opts;
    int result, optopt;
  } steps[] = {{1, 1, "c:", '?', 'q'}, {-1, 1, "c:", '?', 'c'}, {1, 0, "c:", '?', 'q'},
               {2, 0, ":c:", ':', 'c'}};
  testing::internal::CaptureStderr();
  for (const auto& s : steps) {
    if (s.optind >= 0) optind = s.optind;
    opterr = s.opterr;
    EXPECT_EQ(getopt(3, argv, s.opts), s.result) << s.opts;
    EXPECT_EQ(optopt, s.optopt);
  }
  opterr = 1;
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "prog: illegal option -- q\nprog: option requires an argument -- c\n");
}

}  // namespace
