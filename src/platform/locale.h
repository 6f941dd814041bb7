// The process locale and the C library's multibyte routines under it.
#ifndef ZQ_PLATFORM_LOCALE_H
#define ZQ_PLATFORM_LOCALE_H

#include <cstddef>
#include <string>

namespace zq {
namespace platform {

// Sets every category of the process locale from the environment (the
// user's default locale); false when the environment names no usable one.
bool SetUserDefaultLocale();

// English name of the current locale's language ("German"), from the
// locale's identification data; empty for the C and POSIX locales.
std::string LocaleLanguageName();

// English name of the current locale's territory ("Germany"); empty for the
// C and POSIX locales.
std::string LocaleTerritoryName();

// Conversions between the current locale's multibyte text and 16-bit units,
// with the contract of the encoding-module entry points (zq/encmodule.h).
// Characters beyond the 16-bit range fail in the one-character routines and
// travel as surrogate pairs in the string routines.
int LocaleMbToWc(unsigned short* out, const char* in, std::size_t n);
std::size_t LocaleMbsToWcs(unsigned short* out, const char* in, std::size_t n);
int LocaleWcToMb(char* out, unsigned short u);
std::size_t LocaleWcsToMbs(char* out, const unsigned short* in, std::size_t n);
int LocaleMbLen(const char* in, std::size_t n);
int LocaleIsLeadByte(int c);
int LocaleMbCurMax();

}  // namespace platform
}  // namespace zq

#endif  // ZQ_PLATFORM_LOCALE_H
