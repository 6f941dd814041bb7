// The process environment as the runtime services read it.
#ifndef ZQ_PLATFORM_ENV_H
#define ZQ_PLATFORM_ENV_H

#include <string>

namespace zq {
namespace platform {

// Value of the environment variable `name`, or null when it is not set.
const char* GetEnv(const char* name);

// Locale name that governs messages: LC_ALL, else LC_MESSAGES, else LANG
// (the first one set and not empty); empty when none is.
std::string MessageLocaleName();

// Folder for temporary files: $TMPDIR when it names a directory, else /tmp.
std::string TempDirectory();

// Folder holding the runtime library itself (empty when unknown).
std::string RuntimeDirectory();

// Standard folders the dynamic loader searches after LD_LIBRARY_PATH.
const char* const* SystemLibraryDirectories();

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_ENV_H
