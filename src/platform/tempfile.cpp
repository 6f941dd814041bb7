#include "platform/tempfile.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "platform/env.h"
#include "platform/fs.h"

namespace zq {
namespace platform {

bool MakeTempFile(const char* dir, const char* prefix, std::string& name) {
  static const char kChars[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  std::string base = (dir != nullptr && *dir != '\0') ? std::string(dir) : TempDirectory();
  if (base.size() > 1 && base.back() == '/') base.pop_back();
  if (base != "/") base += '/';
  base += (prefix != nullptr ? prefix : "");
  name.clear();
  for (int attempt = 0; attempt < 256; ++attempt) {
    unsigned char rnd[6];
    if (!RandomBytes(rnd, sizeof rnd)) return false;
    std::string candidate = base;
    for (unsigned char r : rnd) candidate += kChars[r % (sizeof kChars - 1)];
    int fd = ::open(candidate.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd >= 0) {
      ::close(fd);
      name = candidate;
      return true;
    }
    if (errno != EEXIST) return false;
  }
  return false;
}

}  // namespace platform
}  // namespace zq
