// The library's own allocation routines.
//
// Everything the library allocates for itself (string buffers, tables, file
// buffers) goes through these, so it lands in zq750mem whether or not the
// malloc family is exported to the rest of the process (ZQ_EXPORT_MALLOC).
#ifndef ZQ_FRAME_MEMORY_H
#define ZQ_FRAME_MEMORY_H

#include <cstddef>

namespace zq {

// Allocates `n` bytes from the calling thread's sub-heap; null on failure.
void* MemAlloc(std::size_t n);
// Allocates `count * size` zeroed bytes; null on overflow or failure.
void* MemCalloc(std::size_t count, std::size_t size);
// Moves the block to a new one of `n` bytes (never in place); see realloc.
void* MemRealloc(void* p, std::size_t n);
// Returns a block to the allocator; any thread may free any block.
void MemFree(void* p);
// Usable size of a block, from its size class; 0 for null.
std::size_t MemSize(const void* p);

}  // namespace zq

#endif  // ZQ_FRAME_MEMORY_H
