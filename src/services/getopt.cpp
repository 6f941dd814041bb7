// getopt: the classic command-line option scanner, sharing the C library's
// globals so that it can stand in for the C library's own.
#include <cstring>
#include <string>

#include "platform/process.h"
#include "zq/options.h"

extern "C" {
char* optarg = nullptr;
int optind = 1;
int opterr = 1;
int optopt = 0;
}

namespace {

// Position inside argv[optind] of the next option letter (1 at the start of
// an argument), and the argument index it belongs to.
int g_sp = 1;
int g_sp_index = 1;

void Complain(const char* program, const char* text, int c) {
  std::string line = program != nullptr ? program : "";
  line += text;
  line += static_cast<char>(c);
  line += '\n';
  zq::platform::WriteStandardError(line);
}

}  // namespace

extern "C" int getopt(int argc, char* const* argv, const char* optstring) noexcept {
  const char* opts = optstring != nullptr ? optstring : "";
  // "+" asks for POSIX order elsewhere; scanning here always stops at the
  // first non-option, so it is skipped.
  if (*opts == '+') ++opts;
  bool quiet = *opts == ':';
  // A caller that reset or moved optind starts afresh at that argument.
  if (optind <= 0) {
    optind = 1;
    g_sp = 1;
  }
  if (g_sp != 1 && g_sp_index != optind) g_sp = 1;
  optarg = nullptr;
  if (g_sp == 1) {
    if (argv == nullptr || optind >= argc || argv[optind] == nullptr ||
        argv[optind][0] != '-' || argv[optind][1] == '\0') {
      return -1;
    }
    if (std::strcmp(argv[optind], "--") == 0) {
      ++optind;
      return -1;
    }
  }
  const char* arg = argv[optind];
  int c = static_cast<unsigned char>(arg[g_sp]);
  optopt = c;
  const char* entry = c == ':' ? nullptr : std::strchr(opts, c);
  if (entry == nullptr) {
    if (opterr && !quiet) Complain(argv[0], ": illegal option -- ", c);
    if (arg[++g_sp] == '\0') {
      ++optind;
      g_sp = 1;
    }
    g_sp_index = optind;
    return '?';
  }
  if (entry[1] == ':') {
    if (arg[g_sp + 1] != '\0') {
      optarg = const_cast<char*>(&arg[g_sp + 1]);
      ++optind;
    } else if (++optind >= argc || argv[optind] == nullptr) {
      if (opterr && !quiet) Complain(argv[0], ": option requires an argument -- ", c);
      g_sp = 1;
      return quiet ? ':' : '?';
    } else {
      optarg = argv[optind++];
    }
    g_sp = 1;
  } else if (arg[++g_sp] == '\0') {
    g_sp = 1;
    ++optind;
  }
  g_sp_index = optind;
  return c;
}
