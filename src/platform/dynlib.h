// Loading shared objects and resolving their symbols.
#ifndef ZQ_PLATFORM_DYNLIB_H
#define ZQ_PLATFORM_DYNLIB_H

#include <string>

namespace zq {
namespace platform {

// Why a shared object could not be loaded. The two causes with their own
// explanation keep the numbers callers have always shown for them.
enum class LoadFailure {
  kNone = 0,
  kNotFound = 126,   // no such file on the search path
  kNotValid = 193,   // the file exists but is no loadable shared object here
  kOther = -1        // anything else: see the loader's text
};

// Outcome of the last failed load on the calling thread.
struct LoadError {
  LoadFailure failure = LoadFailure::kNone;
  std::string text;  // the loader's own explanation, possibly empty
};

// Loads a shared object with every symbol bound now and kept local. A name
// without a slash is searched the system's way (RUNPATH, LD_LIBRARY_PATH,
// the system directories); with a slash it names one file. Returns null on
// failure and fills `error` when it is not null.
void* LoadLibrary(const char* name, LoadError* error);

// Address of the exported symbol `name`, or null when the object has none.
void* FindSymbol(void* library, const char* name);

// Releases one load of `library`; null is ignored.
void FreeLibrary(void* library);

// Folder of the loaded object (library or program) that holds `address`,
// without a trailing slash; empty when the address belongs to none.
std::string DirectoryOfAddress(const void* address);

// Classifies the loader's message for a failed load of `name`.
LoadFailure ClassifyLoadFailure(const char* name, const std::string& text);

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_DYNLIB_H
