/* Interface of an encoding module: a shared object "zqenc<word>.so" that
 * converts between one code page and 16-bit units for the runtime.
 *
 * The runtime loads a module the first time its code set is used, first by
 * bare name (RUNPATH, LD_LIBRARY_PATH, system paths), then from the library
 * directory of the option block, and resolves the seven entry points below.
 * A module missing any of them is not used. Each entry point follows the
 * semantics of the C library routine of the same base name, with 16-bit
 * units in place of wchar_t. Modules are stateless: no routine keeps a
 * shift state between calls, and all of them may be called from several
 * threads at once.
 *
 * Plain C, so that modules can be written in C or C++; mark each entry point
 * ZQ_ENCODING_EXPORT.
 */
#ifndef ZQ_ENCMODULE_H
#define ZQ_ENCMODULE_H

#include <stddef.h>

#ifdef __cplusplus
#define ZQ_ENCODING_EXTERN extern "C"
#else
#define ZQ_ENCODING_EXTERN
#endif

#define ZQ_ENCODING_EXPORT ZQ_ENCODING_EXTERN __attribute__((visibility("default")))

/* Error result of the string conversions, as (size_t)-1 in the C library. */
#define ZQ_ENCODING_ERROR ((size_t)-1)

/* Decodes the character at `in`, reading at most `n` bytes, into `*out`
 * (when `out` is not null). Returns the bytes used; 0 when the character
 * is the zero byte; -1 when the bytes are no valid character or the
 * character is cut short by `n`. A null `in` returns 0 (no shift state). */
typedef int (*zq_mbtowc_fn)(unsigned short* out, const char* in, size_t n);

/* Decodes the zero-terminated text `in` into at most `n` units at `out`;
 * a terminating zero unit is written only when there is room for it.
 * Returns the units written without the terminator, or ZQ_ENCODING_ERROR
 * at the first invalid byte sequence. With a null `out`, returns the number
 * of units the whole text needs, and `n` is ignored. */
typedef size_t (*zq_mbstowcs_fn)(unsigned short* out, const char* in, size_t n);

/* Encodes the unit `u` at `out` (room for zq_mbcurmax() bytes needed).
 * Returns the bytes written, or -1 when the code page has no form for `u`.
 * A null `out` returns 0 (no shift state). */
typedef int (*zq_wctomb_fn)(char* out, unsigned short u);

/* Encodes the zero-terminated units `in` into at most `n` bytes at `out`,
 * never splitting a character; a terminating zero byte is written only when
 * there is room for it. Returns the bytes written without the terminator,
 * or ZQ_ENCODING_ERROR at the first unit without a form. With a null `out`,
 * returns the bytes the whole text needs, and `n` is ignored. */
typedef size_t (*zq_wcstombs_fn)(char* out, const unsigned short* in, size_t n);

/* Length in bytes of the character at `in`, reading at most `n` bytes:
 * 0 for the zero byte, -1 for an invalid or cut-short sequence. A null `in`
 * returns 0. */
typedef int (*zq_mblen_fn)(const char* in, size_t n);

/* Non-zero when the byte value `c` (0 to 255) starts a character of more
 * than one byte; 0 for every other value. */
typedef int (*zq_isleadbyte_fn)(int c);

/* The longest byte sequence of one character in this code page. */
typedef int (*zq_mbcurmax_fn)(void);

/* The entry points a module defines, under exactly these names. */
ZQ_ENCODING_EXPORT int zq_mbtowc(unsigned short* out, const char* in, size_t n);
ZQ_ENCODING_EXPORT size_t zq_mbstowcs(unsigned short* out, const char* in, size_t n);
ZQ_ENCODING_EXPORT int zq_wctomb(char* out, unsigned short u);
ZQ_ENCODING_EXPORT size_t zq_wcstombs(char* out, const unsigned short* in, size_t n);
ZQ_ENCODING_EXPORT int zq_mblen(const char* in, size_t n);
ZQ_ENCODING_EXPORT int zq_isleadbyte(int c);
ZQ_ENCODING_EXPORT int zq_mbcurmax(void);

#endif /* ZQ_ENCMODULE_H */
