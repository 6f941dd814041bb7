// Internal view of the code-set table, for the library and its tests.
#ifndef ZQ_TEXT_CODEPAGE_H
#define ZQ_TEXT_CODEPAGE_H

#include "zq/export.h"

namespace zq {

// Load state of a code set's routines: 1 ready, 0 not yet loaded, -1 the
// module could not be loaded (the code set falls back to 0 for good).
// Returns -1 for values outside 0 to 23.
ZQ_EXPORT int EncodingState(int cs);

// How many times the library has tried to load the module of code set `cs`
// (each try may look in two places). Stays at 1 after a failed load.
ZQ_EXPORT int EncodingLoadAttempts(int cs);

}  // namespace zq

#endif  // ZQ_TEXT_CODEPAGE_H
