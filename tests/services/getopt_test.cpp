// getopt against the C library's own scanner on the same argument vectors.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "zq/options.h"

namespace {

using GetoptFn = int (*)(int, char* const*, const char*);

// The observable trace of scanning `args` to the end.
std::string Trace(GetoptFn fn, std::vector<std::string> args, const std::string& opts) {
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  optind = 0;
  opterr = 0;
  std::string trace;
  for (int c = 0, step = 0; c != -1 && step < 64; ++step) {
    c = fn(static_cast<int>(args.size()), argv.data(), opts.c_str());
    trace += std::to_string(c) + "@" + std::to_string(optind) + " ";
    if (c == '?' || c == ':') trace += "optopt=" + std::to_string(optopt) + " ";
    std::string::size_type at = opts.find(static_cast<char>(c));
    if (c >= 'a' && at != std::string::npos && opts[at + 1] == ':') {
      trace += std::string("arg=") + (optarg != nullptr ? optarg : "(null)") + " ";
    }
  }
  return trace;
}

TEST(Getopt, MatchesTheCLibraryInPosixMode) {
  // glibc's getopt, reached past ours (which replaces it in the process).
  auto libc = reinterpret_cast<GetoptFn>(dlsym(dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD), "getopt"));
  ASSERT_TRUE(libc != nullptr && libc != &getopt);
  const std::vector<std::string> words = {"-a", "-b", "-ab", "-ba", "-c", "-cval", "-acb", "-x",
                                          "-ax", "-", "--", "file", "-:", "-bc", "--b", "val"};
  const std::vector<std::string> optstrings = {"+abc:", "+:abc:", "+a:b", "+ab", "+c:a"};
  std::mt19937 rng(2024);
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::string> args = {"prog"};
    std::string line;
    for (int i = static_cast<int>(rng() % 7); i > 0; --i) {
      args.push_back(words[rng() % words.size()]);
      line += args.back() + " ";
    }
    const std::string& opts = optstrings[rng() % optstrings.size()];
    ASSERT_EQ(Trace(&getopt, args, opts), Trace(libc, args, opts)) << line << " opts: " << opts;
  }
}

TEST(Getopt, ClassicMessages) {
  std::string bad[] = {"prog", "-q", "-c"};
  char* argv[] = {&bad[0][0], &bad[1][0], &bad[2][0], nullptr};
  testing::internal::CaptureStderr();
  for (int err : {1, 0}) {
    for (const char* opts : {"c:", ":c:"}) {  // a leading colon silences them and answers ':'
      optind = 1;
      opterr = err;
      EXPECT_EQ(getopt(3, argv, opts), '?');
      EXPECT_EQ(getopt(3, argv, opts), opts[0] == ':' ? ':' : '?');
    }
  }
  opterr = 1;
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "prog: illegal option -- q\nprog: option requires an argument -- c\n");
}

}  // namespace
