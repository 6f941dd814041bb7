// Comparisons without regard to case, narrow and 16-bit.
#include <cctype>
#include <cwctype>

#include "zq/strutil.h"
#include "zq/zqglob.h"

int strcmpi(const char* a, const char* b) {
  static const char kEmpty[1] = {0};
  const unsigned char* x = reinterpret_cast<const unsigned char*>(a ? a : kEmpty);
  const unsigned char* y = reinterpret_cast<const unsigned char*>(b ? b : kEmpty);
  for (;; ++x, ++y) {
    int cx = std::tolower(*x);
    int cy = std::tolower(*y);
    if (cx != cy || cx == 0) return cx - cy;
  }
}

namespace {

// Compares at most `n` units (all when `n` is negative), each folded with
// towlower; null is the empty string.
int CompareFolded(const unsigned short* a, const unsigned short* b, long n) {
  static const unsigned short kEmpty[1] = {0};
  if (a == nullptr) a = kEmpty;
  if (b == nullptr) b = kEmpty;
  for (long i = 0; n < 0 || i < n; ++i) {
    long cx = static_cast<long>(std::towlower(a[i]));
    long cy = static_cast<long>(std::towlower(b[i]));
    if (cx != cy || cx == 0) return cx < cy ? -1 : (cx > cy ? 1 : 0);
  }
  return 0;
}

}  // namespace

int ZQGlob::wcscmpi(const unsigned short* a, const unsigned short* b) {
  return CompareFolded(a, b, -1);
}

// A negative `n` compares the whole strings.
int ZQGlob::wcsncmpi(const unsigned short* a, const unsigned short* b, int n) {
  return CompareFolded(a, b, n);
}
