// Plain file access for the runtime services: descriptors, whole files,
// and questions about paths.
#ifndef ZQ_PLATFORM_FS_H
#define ZQ_PLATFORM_FS_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace zq {
namespace platform {

// Opens `path` read-only; -1 on failure.
int FileOpenRead(const char* path);
// Opens `path` write-only for appending, creating it with `mode` (less the
// umask); -1 on failure.
int FileOpenAppend(const char* path, int mode);
// Reads up to `n` bytes, retrying on interruption; -1 on error.
long FileRead(int fd, void* buf, std::size_t n);
// Writes all `n` bytes, retrying on interruption and short writes; false
// when the system refused.
bool FileWriteAll(int fd, const void* buf, std::size_t n);
// Moves the file position; -1 on error.
int64_t FileSeek(int fd, int64_t offset, int whence);
// Commits the file's data to disk.
void FileSync(int fd);
// Closes a descriptor; negative ones are ignored.
void FileClose(int fd);
// A second descriptor for the same open file; -1 on failure.
int FileDup(int fd);

// Reads the whole file (at most `limit` bytes); false when it cannot be read.
bool ReadWholeFile(const char* path, std::string& out,
                   std::size_t limit = static_cast<std::size_t>(-1));
// Replaces the file's content (created with mode 0666 less the umask).
bool WriteWholeFile(const char* path, const std::string& data);

// True for an existing regular file (after following links).
bool IsRegularFile(const char* path);
// True for an existing directory.
bool IsDirectory(const char* path);
// True when a process-wide source of random bytes filled `buf`.
bool RandomBytes(void* buf, std::size_t n);

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_FS_H
