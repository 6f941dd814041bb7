// The 16-bit printf-style formatter.
//
// Formats into `unsigned short` text with the wide-printf convention: %s and
// %c take 16-bit text and units, %S and %C narrow text and bytes, %hs/%hc
// are always narrow and %ls/%lc always 16-bit. Conversions "diouxXeEfgcCsSpn%"
// (also G), flags "#0- +", width and precision (`*` reads an int), size
// prefixes h, l (the 32-bit long), ll, q and I64 (64-bit). Floating
// conversions give exactly the C library's digits. A null string argument
// prints "(null)" as the C library does. Widths and precisions above
// 1,048,576 are taken as 1,048,576.
#ifndef ZQ_WSFMT_H
#define ZQ_WSFMT_H

#include <cstdarg>
#include <cstddef>

#include "zq/export.h"

// Formats into `out`, which must be large enough; returns the units written
// (without the terminator), or -1 when `out` or `fmt` is null.
ZQ_EXPORT int wsfmt(unsigned short* out, const unsigned short* fmt, ...);
ZQ_EXPORT int vwsfmt(unsigned short* out, const unsigned short* fmt, va_list ap);

// Formats at most `n` units including the terminator into `out`, always
// terminating when `n` is positive (nothing is written when `n` is 0 or
// less). Like snprintf, returns the number of units the whole output needs
// (without the terminator), so a result of `n` or more means it was cut;
// -1 when `fmt` is null.
ZQ_EXPORT int wsnfmt(unsigned short* out, int n, const unsigned short* fmt, ...);
ZQ_EXPORT int vwsnfmt(unsigned short* out, int n, const unsigned short* fmt,
                      va_list ap);

#endif  // ZQ_WSFMT_H
