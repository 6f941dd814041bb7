// Wall-clock seconds for rate estimates, replaceable in tests.
#ifndef ZQ_PLATFORM_TICKS_H
#define ZQ_PLATFORM_TICKS_H

#include "zq/export.h"

namespace zq {
namespace platform {

// Seconds since the epoch, from the C library's time().
long NowSeconds();

// Makes NowSeconds() call `fn` instead of the system clock; null restores it.
ZQ_EXPORT void SetSecondsSourceForTesting(long (*fn)());

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_TICKS_H
