// Small plain helpers for bytes and narrow text.
#ifndef ZQ_STRUTIL_H
#define ZQ_STRUTIL_H

#include "zq/export.h"

// Copies `n` bytes from `src` to `dst` (in memmove order: destination first);
// the ranges may overlap. Nothing happens when `n` is 0 or less or a
// pointer is null.
ZQ_EXPORT void movemem(void* dst, const void* src, long n);

// Compares two zero-terminated strings without regard to case (bytes folded
// with tolower, then ordered as unsigned values): negative, zero or positive.
// A null pointer counts as the empty string.
ZQ_EXPORT int strcmpi(const char* a, const char* b);

#endif  // ZQ_STRUTIL_H
