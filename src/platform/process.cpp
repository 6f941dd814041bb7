#include "platform/process.h"

#include <errno.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace zq {
namespace platform {

int RunShellCommand(const char* command, bool wait, std::string& reason) {
  reason.clear();
  if (command == nullptr) {
    reason = strerror(EINVAL);
    return -1;
  }
  char sh[] = "/bin/sh";
  char dash_c[] = "-c";
  char* argv[] = {sh, dash_c, const_cast<char*>(command), nullptr};
  pid_t pid;
  int rc = ::posix_spawn(&pid, sh, nullptr, nullptr, argv, environ);
  if (rc != 0) {
    reason = strerror(rc);
    return -1;
  }
  if (!wait) return static_cast<int>(pid);
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) {
      reason = strerror(errno);
      return -1;
    }
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return -1;
}

void WriteStandardError(const std::string& text) {
  const char* p = text.data();
  std::size_t n = text.size();
  while (n > 0) {
    ssize_t w = ::write(2, p, n);
    if (w < 0 && errno == EINTR) continue;
    if (w <= 0) return;
    p += w;
    n -= static_cast<std::size_t>(w);
  }
}

}  // namespace platform
}  // namespace zq
