// Sub-heap selector mask of the allocator routing.
#ifndef ZQ_FRAME_HEAPMASK_H
#define ZQ_FRAME_HEAPMASK_H

#include <cstdint>

namespace zq {

// Mask applied to a thread's selector to pick its sub-heap: twice the smallest
// power of two >= `n` (the processor count), minus one; so 1 -> 1, 4 -> 7,
// 5 -> 15.  Capped at 127 so that more than 64 processors still index one of
// the 128 sub-heaps.
constexpr std::uint32_t SubHeapMask(std::uint32_t n) {
  std::uint32_t pow2 = 1;
  while (pow2 < n && pow2 < 64) pow2 <<= 1;
  return 2 * pow2 - 1;
}

}  // namespace zq

#endif  // ZQ_FRAME_HEAPMASK_H
