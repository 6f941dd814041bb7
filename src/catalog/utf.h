// UTF-8 and UTF-16 conversion for message texts.
#ifndef ZQ_CATALOG_UTF_H
#define ZQ_CATALOG_UTF_H

#include <cstddef>
#include <string>

namespace zq {
namespace catalog {

// UTF-16 units (surrogate pairs joined) as UTF-8; a lone surrogate becomes
// U+FFFD.
std::string Utf16ToUtf8(const unsigned short* s, std::size_t n);

// UTF-8 as UTF-16 units (characters above U+FFFF as surrogate pairs); each
// malformed byte becomes U+FFFD.
std::basic_string<unsigned short> Utf8ToUtf16(const std::string& s);

}  // namespace catalog
}  // namespace zq

#endif  // ZQ_CATALOG_UTF_H
