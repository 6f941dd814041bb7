// The library's block-move routine.
#include <cstring>

#include "zq/strutil.h"

void movemem(void* dst, const void* src, long n) {
  if (dst == nullptr || src == nullptr || n <= 0) return;
  std::memmove(dst, src, static_cast<size_t>(n));
}
