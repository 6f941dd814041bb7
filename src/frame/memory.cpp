// Routing of every allocation to the zq750mem allocator.
//
// One allocator instance serves the process; it is built on first use in a
// block mapped by zq750mem.  Allocations go to the sub-heap picked by the
// calling thread's selector AND a mask fixed from the processor count.  With
// ZQ_EXPORT_MALLOC the C allocation functions and the global operator
// new/delete are defined here too and then serve the whole process.
#include "frame/memory.h"

#include <errno.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "frame/heapmask.h"
#include "zq/zqmem.h"

namespace zq {
namespace {

// Plain words, zero before any code runs; no constructor is involved.
zqmem_allocator* g_allocator;
int g_ready;
std::uint32_t g_mask;

__attribute__((noinline)) zqmem_allocator* CreateAllocator() {
  zqmem_lock();
  if (!__atomic_load_n(&g_ready, __ATOMIC_RELAXED)) {
    g_allocator = zqmem_construct(zqmem_raw_alloc(ZQMEM_INSTANCE_SIZE));
    // Stay unready after a failed mapping so that a later call retries.
    if (g_allocator) __atomic_store_n(&g_ready, 1, __ATOMIC_RELEASE);
  }
  zqmem_unlock();
  return g_allocator;
}

inline zqmem_allocator* Allocator() {
  if (__builtin_expect(__atomic_load_n(&g_ready, __ATOMIC_ACQUIRE), 1)) return g_allocator;
  return CreateAllocator();
}

// Two threads computing the mask at once compute the same value, so the
// one-shot needs no lock.
inline unsigned SubHeapIndex() {
  std::uint32_t mask = __atomic_load_n(&g_mask, __ATOMIC_RELAXED);
  if (__builtin_expect(mask == 0, 0)) {
    mask = SubHeapMask(zqmem_count());
    __atomic_store_n(&g_mask, mask, __ATOMIC_RELAXED);
  }
  return zqmem_selector() & mask;
}

}  // namespace

void* MemAlloc(std::size_t n) {
  zqmem_allocator* a = Allocator();
  if (!a) {
    errno = ENOMEM;
    return nullptr;
  }
  return zqmem_heap_alloc(a, SubHeapIndex(), n);
}

void* MemAlignedAlloc(std::size_t align, std::size_t n) {
  zqmem_allocator* a = Allocator();
  if (!a) {
    errno = ENOMEM;
    return nullptr;
  }
  return zqmem_heap_alloc_aligned(a, SubHeapIndex(), align, n);
}

void* MemCalloc(std::size_t count, std::size_t size) {
  std::size_t total;
  if (__builtin_mul_overflow(count, size, &total)) {
    errno = ENOMEM;
    return nullptr;
  }
  void* p = MemAlloc(total);
  if (p) std::memset(p, 0, total);
  return p;
}

void MemFree(void* p) {
  if (p) zqmem_free(g_allocator, p);
}

std::size_t MemSize(const void* p) { return zqmem_block_size(zqmem_size_classes(nullptr), p); }

// Always moves: a new block, a copy of what fits, the old block freed.
void* MemRealloc(void* p, std::size_t n) {
  if (!p) return MemAlloc(n);
  if (n == 0) {
    MemFree(p);
    return nullptr;
  }
  void* q = MemAlloc(n);
  if (!q) return nullptr;  // the old block stays valid, as realloc promises
  std::size_t old = MemSize(p);
  std::memcpy(q, p, old < n ? old : n);
  MemFree(p);
  return q;
}

}  // namespace zq

#ifdef ZQ_EXPORT_MALLOC

namespace {

inline bool IsPowerOfTwo(std::size_t n) { return n != 0 && (n & (n - 1)) == 0; }

inline std::size_t PageBytes() {
  long p = sysconf(_SC_PAGESIZE);
  return p > 0 ? static_cast<std::size_t>(p) : 4096;
}

// operator new's contract: retry through the new-handler, else throw.
void* NewOrThrow(std::size_t n) {
  for (;;) {
    if (void* p = zq::MemAlloc(n)) return p;
    std::new_handler handler = std::get_new_handler();
    if (!handler) throw std::bad_alloc();
    handler();
  }
}

void* NewAlignedOrThrow(std::size_t n, std::align_val_t al) {
  for (;;) {
    if (void* p = zq::MemAlignedAlloc(static_cast<std::size_t>(al), n)) return p;
    std::new_handler handler = std::get_new_handler();
    if (!handler) throw std::bad_alloc();
    handler();
  }
}

}  // namespace

extern "C" {

ZQ_EXPORT void* malloc(std::size_t n) noexcept { return zq::MemAlloc(n); }

ZQ_EXPORT void* calloc(std::size_t count, std::size_t size) noexcept {
  return zq::MemCalloc(count, size);
}

ZQ_EXPORT void free(void* p) noexcept { zq::MemFree(p); }

ZQ_EXPORT void* realloc(void* p, std::size_t n) noexcept { return zq::MemRealloc(p, n); }

ZQ_EXPORT std::size_t _msize(void* p) noexcept { return zq::MemSize(p); }

ZQ_EXPORT std::size_t _msize_base(void* p) noexcept { return zq::MemSize(p); }

ZQ_EXPORT std::size_t malloc_usable_size(void* p) noexcept { return zq::MemSize(p); }

ZQ_EXPORT int posix_memalign(void** out, std::size_t align, std::size_t n) noexcept {
  if (!IsPowerOfTwo(align) || align % sizeof(void*) != 0) return EINVAL;
  int saved = errno;
  void* p = zq::MemAlignedAlloc(align, n);
  errno = saved;
  if (!p) return ENOMEM;
  *out = p;
  return 0;
}

ZQ_EXPORT void* aligned_alloc(std::size_t align, std::size_t n) noexcept {
  if (!IsPowerOfTwo(align)) {
    errno = EINVAL;
    return nullptr;
  }
  return zq::MemAlignedAlloc(align, n);
}

// memalign rounds an alignment that is not a power of two up to one, as the
// C library does.
ZQ_EXPORT void* memalign(std::size_t align, std::size_t n) noexcept {
  if (align > (SIZE_MAX >> 1) + 1) {
    errno = EINVAL;
    return nullptr;
  }
  std::size_t pow2 = 1;
  while (pow2 < align) pow2 <<= 1;
  return zq::MemAlignedAlloc(pow2, n);
}

ZQ_EXPORT void* valloc(std::size_t n) noexcept { return zq::MemAlignedAlloc(PageBytes(), n); }

ZQ_EXPORT void* pvalloc(std::size_t n) noexcept {
  std::size_t page = PageBytes();
  if (n > SIZE_MAX - page) {
    errno = ENOMEM;
    return nullptr;
  }
  return zq::MemAlignedAlloc(page, (n + page - 1) & ~(page - 1));
}

}  // extern "C"

ZQ_EXPORT void* operator new(std::size_t n) { return NewOrThrow(n); }
ZQ_EXPORT void* operator new[](std::size_t n) { return NewOrThrow(n); }
ZQ_EXPORT void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  return zq::MemAlloc(n);
}
ZQ_EXPORT void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  return zq::MemAlloc(n);
}
ZQ_EXPORT void* operator new(std::size_t n, std::align_val_t al) {
  return NewAlignedOrThrow(n, al);
}
ZQ_EXPORT void* operator new[](std::size_t n, std::align_val_t al) {
  return NewAlignedOrThrow(n, al);
}
ZQ_EXPORT void* operator new(std::size_t n, std::align_val_t al, const std::nothrow_t&) noexcept {
  return zq::MemAlignedAlloc(static_cast<std::size_t>(al), n);
}
ZQ_EXPORT void* operator new[](std::size_t n, std::align_val_t al,
                               const std::nothrow_t&) noexcept {
  return zq::MemAlignedAlloc(static_cast<std::size_t>(al), n);
}

ZQ_EXPORT void operator delete(void* p) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete[](void* p) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete(void* p, std::size_t) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete[](void* p, std::size_t) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete(void* p, const std::nothrow_t&) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete[](void* p, const std::nothrow_t&) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete(void* p, std::align_val_t) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete[](void* p, std::align_val_t) noexcept { zq::MemFree(p); }
ZQ_EXPORT void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  zq::MemFree(p);
}
ZQ_EXPORT void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
  zq::MemFree(p);
}
ZQ_EXPORT void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  zq::MemFree(p);
}
ZQ_EXPORT void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
  zq::MemFree(p);
}

#endif  // ZQ_EXPORT_MALLOC
