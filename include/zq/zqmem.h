// zq750mem: the general-purpose allocator module.
//
// An allocator instance holds 128 sub-heaps; a caller picks one by its
// thread's selector value and allocates from it, and any thread may free any
// block.  Every block is preceded by a 16-byte header: a link word, then a
// pointer to the descriptor of the chunk that owns it, whose first word is the
// block's size class.  The module allocates nothing through malloc, runs no
// static constructors and stays consistent across fork.
#ifndef ZQ_ZQMEM_H
#define ZQ_ZQMEM_H

#include <stddef.h>
#include <stdint.h>

#include "zq/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// Bytes a caller reserves for one allocator instance (operation 2, then 3).
#define ZQMEM_INSTANCE_SIZE 486016u
// Number of sub-heaps in an instance.
#define ZQMEM_SUBHEAPS 128u
// Size class recorded in the descriptor of a block mapped on its own.
#define ZQMEM_LARGE_CLASS (~(uint64_t)0)
// Bytes of the header that precedes every block.
#define ZQMEM_HEADER_SIZE 16u

typedef struct zqmem_allocator zqmem_allocator;

// Header in front of every block.  `link` chains free blocks; in a live block
// it holds an odd tag (the size class shifted left, plus one), except that a
// block made by zqmem_heap_alloc_aligned keeps there the (even) address of the
// block it was cut from.  `chunk` points to the owning chunk's descriptor:
// word 0 is the size class, and for ZQMEM_LARGE_CLASS word 1 is the usable
// size of the block.
typedef struct zqmem_header {
  void* link;
  const uint64_t* chunk;
} zqmem_header;

// 1. Takes and releases the process-wide creation lock.
ZQ_MEM_EXPORT void zqmem_lock(void);
ZQ_MEM_EXPORT void zqmem_unlock(void);

// 2. Maps a raw block of `size` bytes straight from the system; null on failure.
ZQ_MEM_EXPORT void* zqmem_raw_alloc(size_t size);

// 3. Builds an allocator in `raw` (ZQMEM_INSTANCE_SIZE bytes, zero-filled as
// mapped); returns it, or null when `raw` is null.
ZQ_MEM_EXPORT zqmem_allocator* zqmem_construct(void* raw);

// 4. The count N that sizes the sub-heap selector: online processors (>= 1).
ZQ_MEM_EXPORT unsigned zqmem_count(void);

// 5. The calling thread's selector value (its kernel thread id).
ZQ_MEM_EXPORT unsigned zqmem_selector(void);

// 6. Allocates `size` bytes from sub-heap `index` (taken modulo
// ZQMEM_SUBHEAPS); 16-byte aligned, unique even for size 0; null on failure.
ZQ_MEM_EXPORT void* zqmem_heap_alloc(zqmem_allocator* a, unsigned index, size_t size);

// Like zqmem_heap_alloc with `align` (a power of two) alignment.
ZQ_MEM_EXPORT void* zqmem_heap_alloc_aligned(zqmem_allocator* a, unsigned index,
                                             size_t align, size_t size);

// 7. Frees a block made by any instance of this module; null is ignored and
// errno is preserved.  `a` may be null: the block knows its owner.
ZQ_MEM_EXPORT void zqmem_free(zqmem_allocator* a, void* p);

// 8. Table mapping size class to usable bytes; stores the count in `*count`
// when `count` is not null.
ZQ_MEM_EXPORT const uint64_t* zqmem_size_classes(size_t* count);

// 9. Plain allocate and free through the module's own default instance.
ZQ_MEM_EXPORT void* zqmem_alloc(size_t size);
ZQ_MEM_EXPORT void zqmem_release(void* p);

// Usable bytes of a block made by this module (0 for null), read from its
// header and the size-class table.
static inline size_t zqmem_block_size(const uint64_t* classes, const void* p) {
  if (p == NULL) return 0;
  const zqmem_header* h = (const zqmem_header*)p - 1;
  size_t skip = 0;
  if (((uintptr_t)h->link & 1) == 0) {
    // An aligned block: measure the block it was cut from, less the offset.
    skip = (size_t)((const char*)p - (const char*)h->link);
    h = (const zqmem_header*)h->link - 1;
  }
  uint64_t cls = h->chunk[0];
  size_t usable = cls == ZQMEM_LARGE_CLASS ? (size_t)h->chunk[1] : (size_t)classes[cls];
  return usable - skip;
}

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // ZQ_ZQMEM_H
