#include "platform/fs.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zq {
namespace platform {

int FileOpenRead(const char* path) {
  if (path == nullptr || *path == '\0') return -1;
  int fd;
  do {
    fd = ::open(path, O_RDONLY | O_CLOEXEC);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

int FileOpenAppend(const char* path, int mode) {
  if (path == nullptr || *path == '\0') return -1;
  int fd;
  do {
    fd = ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

long FileRead(int fd, void* buf, std::size_t n) {
  ssize_t r;
  do {
    r = ::read(fd, buf, n);
  } while (r < 0 && errno == EINTR);
  return static_cast<long>(r);
}

bool FileWriteAll(int fd, const void* buf, std::size_t n) {
  const char* p = static_cast<const char*>(buf);
  while (n > 0) {
    ssize_t w = ::write(fd, p, n);
    if (w < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (w == 0) return false;
    p += w;
    n -= static_cast<std::size_t>(w);
  }
  return true;
}

int64_t FileSeek(int fd, int64_t offset, int whence) {
  return static_cast<int64_t>(::lseek(fd, static_cast<off_t>(offset), whence));
}

void FileSync(int fd) {
  if (fd >= 0) ::fsync(fd);
}

void FileClose(int fd) {
  if (fd >= 0) ::close(fd);
}

int FileDup(int fd) {
  if (fd < 0) return -1;
  return ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

bool ReadWholeFile(const char* path, std::string& out, std::size_t limit) {
  out.clear();
  int fd = FileOpenRead(path);
  if (fd < 0) return false;
  char buf[65536];
  bool ok = true;
  while (out.size() < limit) {
    std::size_t want = sizeof buf;
    if (limit - out.size() < want) want = limit - out.size();
    long r = FileRead(fd, buf, want);
    if (r < 0) {
      ok = false;
      break;
    }
    if (r == 0) break;
    out.append(buf, static_cast<std::size_t>(r));
  }
  FileClose(fd);
  return ok;
}

bool WriteWholeFile(const char* path, const std::string& data) {
  if (path == nullptr || *path == '\0') return false;
  int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  bool ok = FileWriteAll(fd, data.data(), data.size());
  if (::close(fd) != 0) ok = false;
  return ok;
}

bool IsRegularFile(const char* path) {
  struct stat st;
  return path != nullptr && ::stat(path, &st) == 0 && S_ISREG(st.st_mode);
}

bool IsDirectory(const char* path) {
  struct stat st;
  return path != nullptr && ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

bool RandomBytes(void* buf, std::size_t n) {
  char* p = static_cast<char*>(buf);
  while (n > 0) {
    ssize_t r = ::getrandom(p, n, 0);
    if (r < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    p += r;
    n -= static_cast<std::size_t>(r);
  }
  return true;
}

}  // namespace platform
}  // namespace zq
