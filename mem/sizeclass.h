// Size classes of zq750mem.
//
// Usable sizes run 16, 32, ..., 256 in steps of 16, then four classes per
// doubling (320, 384, 448, 512, 640, ...) up to 256 KiB.  Larger requests are
// mapped on their own.  The table is computed here at compile time, so it
// exists before any code of the process runs.
#ifndef ZQ_MEM_SIZECLASS_H
#define ZQ_MEM_SIZECLASS_H

#include <cstddef>
#include <cstdint>

namespace zqmem {

constexpr unsigned kFineClasses = 16;        // 16..256 in steps of 16
constexpr unsigned kFineStep = 16;
constexpr unsigned kFirstCoarseShift = 8;    // coarse classes start above 2^8
constexpr unsigned kCoarseShifts = 10;       // doublings from 2^8 to 2^18
constexpr unsigned kClassCount = kFineClasses + 4 * kCoarseShifts;
constexpr std::size_t kMaxClassSize = std::size_t{1} << (kFirstCoarseShift + kCoarseShifts);

// Usable bytes of class `c`.
constexpr std::uint64_t ClassSize(unsigned c) {
  if (c < kFineClasses) return std::uint64_t{c + 1} * kFineStep;
  unsigned b = kFirstCoarseShift + (c - kFineClasses) / 4;
  unsigned s = (c - kFineClasses) % 4 + 1;
  return (std::uint64_t{1} << b) + s * (std::uint64_t{1} << (b - 2));
}

// Smallest class whose blocks hold `n` bytes; `n` must not exceed kMaxClassSize.
inline unsigned ClassOf(std::size_t n) {
  if (n <= kFineClasses * kFineStep) return n == 0 ? 0 : static_cast<unsigned>((n - 1) >> 4);
  unsigned b = 63 - static_cast<unsigned>(__builtin_clzll(n - 1));
  return kFineClasses + (b - kFirstCoarseShift) * 4 +
         static_cast<unsigned>((n - 1) >> (b - 2)) - 4;
}

struct ClassTable {
  std::uint64_t size[kClassCount];
};

constexpr ClassTable MakeClassTable() {
  ClassTable t{};
  for (unsigned c = 0; c < kClassCount; ++c) t.size[c] = ClassSize(c);
  return t;
}

inline constexpr ClassTable kClassTable = MakeClassTable();

static_assert(ClassSize(kClassCount - 1) == kMaxClassSize, "last class is the largest");

}  // namespace zqmem

#endif  // ZQ_MEM_SIZECLASS_H
