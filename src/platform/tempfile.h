// Reserved temporary file names.
#ifndef ZQ_PLATFORM_TEMPFILE_H
#define ZQ_PLATFORM_TEMPFILE_H

#include <string>

namespace zq {
namespace platform {

// Creates a new empty file "<dir>/<prefix>XXXXXX" (six random letters and
// digits) with O_EXCL, so that no other process can claim the same name,
// and stores its name. `dir` defaults to TempDirectory(). False and an empty
// name when no file could be created.
bool MakeTempFile(const char* dir, const char* prefix, std::string& name);

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_TEMPFILE_H
