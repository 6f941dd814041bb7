// The library's own allocation routines.
//
// Everything the library allocates for itself (string buffers, tables, file
// buffers) goes through these, so it lands in zq750mem whether or not the
// malloc family is exported to the rest of the process (ZQ_EXPORT_MALLOC).
// They are visible outside the library so that its tests and benchmarks can
// reach the allocator the same way the library does.
#ifndef ZQ_FRAME_MEMORY_H
#define ZQ_FRAME_MEMORY_H

#include <cstddef>

#include "zq/export.h"

namespace zq {

// Allocates `n` bytes from the calling thread's sub-heap; null on failure.
ZQ_EXPORT void* MemAlloc(std::size_t n);
// Allocates `count * size` zeroed bytes; null on overflow or failure.
ZQ_EXPORT void* MemCalloc(std::size_t count, std::size_t size);
// Moves the block to a new one of `n` bytes (never in place); see realloc.
ZQ_EXPORT void* MemRealloc(void* p, std::size_t n);
// Returns a block to the allocator; any thread may free any block.
ZQ_EXPORT void MemFree(void* p);
// Usable size of a block, from its size class; 0 for null.
ZQ_EXPORT std::size_t MemSize(const void* p);
// Allocates `n` bytes aligned to `align` (a power of two); null with errno
// EINVAL for a bad alignment, ENOMEM on failure.
ZQ_EXPORT void* MemAlignedAlloc(std::size_t align, std::size_t n);

}  // namespace zq

#endif  // ZQ_FRAME_MEMORY_H
