// zq750mem: a general-purpose allocator with 128 locked sub-heaps.
//
// Memory comes from the system in chunks of 256 KiB (more for the largest
// classes).  A chunk serves one size class for one sub-heap: it carves blocks
// from its never-used tail and keeps freed blocks on its own free list, linked
// through the header's link word.  Each sub-heap keeps, per class, a list of
// its chunks that still have room.  A chunk that becomes empty goes back to a
// small per-instance pool (or to the system) unless it is the only chunk of
// its list, so churn reuses memory instead of growing.  Requests above the
// largest class are mapped on their own and unmapped when freed.  In front of
// the sub-heaps each thread caches a few freed blocks of the small classes, so
// that most allocations and frees take no lock.
//
// Nothing here allocates through malloc or needs a constructor: all state is
// zero-initialised or lives in memory mapped by the allocator itself.
#include "zq/zqmem.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

#include "sizeclass.h"

namespace {

using zqmem::kClassCount;
using zqmem::kClassTable;
using zqmem::kMaxClassSize;

constexpr std::size_t kStdChunkBytes = 256 * 1024;
constexpr std::size_t kChunkHead = 128;       // descriptor room at a chunk's start
// Chunks are mapped at multiples of the page size, so their descriptors would
// all fall into the same cache sets; each chunk starts its descriptor at one
// of 64 cache-line offsets instead.
constexpr std::size_t kColorBytes = 4096;
constexpr std::size_t kMinBlocksPerChunk = 4;
constexpr std::size_t kLargeHead = 32;        // descriptor room of a mapped block
constexpr std::size_t kPageBytes = 4096;
constexpr unsigned kPoolMax = 32;             // empty standard chunks kept per instance

struct Header {
  void* link;
  const std::uint64_t* chunk;
};
static_assert(sizeof(Header) == ZQMEM_HEADER_SIZE, "two words of header");

struct SubHeap;

// Descriptor at the start of every chunk; word 0 is the size class.
struct Chunk {
  std::uint64_t size_class;
  std::uint64_t usable;     // usable bytes of one block
  std::uint64_t map_bytes;  // bytes mapped for the chunk
  char* map_base;           // start of the mapping (the descriptor sits a little in)
  SubHeap* owner;
  Chunk* next;              // neighbours in the owner's list of chunks with room
  Chunk* prev;
  Header* free;             // freed blocks
  char* bump;               // first never-used block
  char* end;
  std::uint32_t used;       // live blocks
  std::uint32_t listed;     // on the owner's list
};
static_assert(sizeof(Chunk) <= kChunkHead, "descriptor fits its room");

// Descriptor at the start of a block mapped on its own.
struct LargeHead {
  std::uint64_t size_class;  // ZQMEM_LARGE_CLASS
  std::uint64_t usable;
  std::uint64_t map_bytes;
  std::uint64_t unused;
};
static_assert(sizeof(LargeHead) + sizeof(Header) == kLargeHead + 16, "large layout");

struct alignas(64) SubHeap {
  std::uint32_t lock;
  std::uint32_t index;
  zqmem_allocator* owner;
  Chunk* open[kClassCount];  // chunks with room, per class
};

}  // namespace

struct zqmem_allocator {
  zqmem_allocator* next_instance;  // every instance, for the fork handlers
  std::uint32_t pool_lock;
  std::uint32_t pool_count;
  Chunk* pool;                     // empty standard chunks
  alignas(64) SubHeap heaps[ZQMEM_SUBHEAPS];
};
static_assert(sizeof(zqmem_allocator) <= ZQMEM_INSTANCE_SIZE, "instance fits its block");

namespace {

// Process-wide state: zero-initialised, no constructors.
std::uint32_t g_create_lock;
zqmem_allocator* g_instances;
int g_atfork_registered;
std::size_t g_next_color;
zqmem_allocator* g_default;
alignas(64) char g_default_storage[ZQMEM_INSTANCE_SIZE];
__thread unsigned t_selector __attribute__((tls_model("initial-exec")));

// ---- locks -------------------------------------------------------------

__attribute__((noinline)) void LockSlow(std::uint32_t* l) {
  for (unsigned spins = 0;; ++spins) {
    if (__atomic_load_n(l, __ATOMIC_RELAXED) == 0 &&
        __atomic_exchange_n(l, 1, __ATOMIC_ACQUIRE) == 0) {
      return;
    }
    if (spins < 64) {
      __builtin_ia32_pause();
    } else {
      // The holder may be descheduled; let it run.
      sched_yield();
    }
  }
}

inline void Lock(std::uint32_t* l) {
  if (__builtin_expect(__atomic_exchange_n(l, 1, __ATOMIC_ACQUIRE) == 0, 1)) return;
  LockSlow(l);
}

inline void Unlock(std::uint32_t* l) { __atomic_store_n(l, 0, __ATOMIC_RELEASE); }

// ---- system memory -----------------------------------------------------

void* MapBytes(std::size_t bytes) {
  void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return p == MAP_FAILED ? nullptr : p;
}

void UnmapBytes(void* p, std::size_t bytes) {
  int saved = errno;
  munmap(p, bytes);
  errno = saved;
}

inline std::size_t RoundUp(std::size_t n, std::size_t to) { return (n + to - 1) & ~(to - 1); }

std::size_t ChunkBytesFor(std::size_t stride) {
  std::size_t need = kColorBytes + kChunkHead + kMinBlocksPerChunk * stride;
  return need <= kStdChunkBytes ? kStdChunkBytes : RoundUp(need, kPageBytes);
}

// ---- chunk lists (the owner's lock is held) ----------------------------

void ListFront(SubHeap* h, Chunk* c) {
  Chunk*& head = h->open[c->size_class];
  c->prev = nullptr;
  c->next = head;
  if (head) head->prev = c;
  head = c;
  c->listed = 1;
}

void Unlist(SubHeap* h, Chunk* c) {
  if (c->prev) {
    c->prev->next = c->next;
  } else {
    h->open[c->size_class] = c->next;
  }
  if (c->next) c->next->prev = c->prev;
  c->next = c->prev = nullptr;
  c->listed = 0;
}

Chunk* NewChunk(SubHeap* h, unsigned cls) {
  std::size_t usable = kClassTable.size[cls];
  std::size_t bytes = ChunkBytesFor(usable + sizeof(Header));
  Chunk* c = nullptr;
  if (bytes == kStdChunkBytes) {
    zqmem_allocator* a = h->owner;
    Lock(&a->pool_lock);
    c = a->pool;
    if (c) {
      a->pool = c->next;
      --a->pool_count;
    }
    Unlock(&a->pool_lock);
  }
  if (!c) {
    char* m = static_cast<char*>(MapBytes(bytes));
    if (!m) return nullptr;
    std::size_t color = __atomic_fetch_add(&g_next_color, 1, __ATOMIC_RELAXED) % 64;
    c = reinterpret_cast<Chunk*>(m + color * 64);
    c->map_base = m;
    c->map_bytes = bytes;
  }
  c->size_class = cls;
  c->usable = usable;
  c->owner = h;
  c->free = nullptr;
  c->bump = reinterpret_cast<char*>(c) + kChunkHead;
  c->end = c->map_base + bytes;
  c->used = 0;
  ListFront(h, c);
  return c;
}

// Gives an empty chunk back: to the instance's pool if it is a standard one
// and the pool has room, else to the system.
void ReleaseChunk(SubHeap* h, Chunk* c) {
  if (c->map_bytes == kStdChunkBytes) {
    zqmem_allocator* a = h->owner;
    Lock(&a->pool_lock);
    if (a->pool_count < kPoolMax) {
      c->next = a->pool;
      a->pool = c;
      ++a->pool_count;
      Unlock(&a->pool_lock);
      return;
    }
    Unlock(&a->pool_lock);
  }
  UnmapBytes(c->map_base, c->map_bytes);
}

// ---- fork --------------------------------------------------------------

void ForEachLock(void (*fn)(std::uint32_t*)) {
  for (zqmem_allocator* a = __atomic_load_n(&g_instances, __ATOMIC_ACQUIRE); a;
       a = a->next_instance) {
    for (unsigned i = 0; i < ZQMEM_SUBHEAPS; ++i) fn(&a->heaps[i].lock);
    fn(&a->pool_lock);
  }
}

void ResetLock(std::uint32_t* l) { __atomic_store_n(l, 0, __ATOMIC_RELAXED); }

void BeforeFork() {
  Lock(&g_create_lock);
  ForEachLock(Lock);
}

void AfterForkParent() {
  ForEachLock(Unlock);
  Unlock(&g_create_lock);
}

// The child has only the forking thread, which holds every lock.
void AfterForkChild() {
  ForEachLock(ResetLock);
  ResetLock(&g_create_lock);
  t_selector = 0;
}

// Registers the fork handlers once.  Every path that takes a lock of this
// module calls it first (outside every lock, because registering may itself
// allocate); the cached fast paths take no lock and skip it.
inline void EnsureForkHandlers() {
  if (__builtin_expect(__atomic_load_n(&g_atfork_registered, __ATOMIC_ACQUIRE), 1)) return;
  if (__atomic_exchange_n(&g_atfork_registered, 1, __ATOMIC_ACQ_REL) == 0) {
    pthread_atfork(BeforeFork, AfterForkParent, AfterForkChild);
  }
}

// ---- allocation --------------------------------------------------------

// Link word of a live block: its class, shifted and marked odd so that it
// can be told from the (even) address an aligned block keeps there.
inline void* LiveTag(std::uint64_t cls) {
  return reinterpret_cast<void*>(static_cast<std::uintptr_t>((cls << 1) | 1));
}

void* LargeAlloc(std::size_t n) {
  if (n > SIZE_MAX - kLargeHead - sizeof(Header) - kPageBytes) {
    errno = ENOMEM;
    return nullptr;
  }
  std::size_t bytes = RoundUp(n + kLargeHead + sizeof(Header), kPageBytes);
  char* m = static_cast<char*>(MapBytes(bytes));
  if (!m) {
    errno = ENOMEM;
    return nullptr;
  }
  LargeHead* d = reinterpret_cast<LargeHead*>(m);
  d->size_class = ZQMEM_LARGE_CLASS;
  d->usable = bytes - kLargeHead - sizeof(Header);
  d->map_bytes = bytes;
  Header* b = reinterpret_cast<Header*>(m + kLargeHead);
  b->link = LiveTag(ZQMEM_LARGE_CLASS);
  b->chunk = &d->size_class;
  return b + 1;
}

// Takes one block of class `cls` from sub-heap `h` (its lock is held);
// null when no chunk can be had.
inline Header* TakeLocked(SubHeap* h, unsigned cls) {
  Chunk* c = h->open[cls];
  if (__builtin_expect(c == nullptr, 0)) {
    c = NewChunk(h, cls);
    if (!c) return nullptr;
  }
  std::size_t stride = c->usable + sizeof(Header);
  Header* b = c->free;
  if (b) {
    c->free = static_cast<Header*>(b->link);
  } else {
    b = reinterpret_cast<Header*>(c->bump);
    c->bump += stride;
    b->chunk = &c->size_class;
  }
  ++c->used;
  if (!c->free && static_cast<std::size_t>(c->end - c->bump) < stride) Unlist(h, c);
  return b;
}

// Returns block `b` to its chunk `c`; the lock of the chunk's owner `h` is
// held.  A list holds an empty chunk only when that chunk is its only one, so
// that a block allocated and freed in a loop does not map and unmap a chunk
// each time, yet freed chunks do not pile up.
inline void GiveLocked(SubHeap* h, Chunk* c, Header* b) {
  b->link = c->free;
  c->free = b;
  --c->used;
  if (!c->listed) {
    Chunk* head = h->open[c->size_class];
    ListFront(h, c);
    if (head && head->used == 0) {
      Unlist(h, head);
      ReleaseChunk(h, head);
    }
  } else if (c->used == 0 && (c->prev || c->next)) {
    Unlist(h, c);
    ReleaseChunk(h, c);
  }
}

inline Chunk* ChunkOf(Header* b) {
  return const_cast<Chunk*>(reinterpret_cast<const Chunk*>(b->chunk));
}

// ---- per-thread cache --------------------------------------------------
//
// Each thread keeps a few freed blocks of the small classes for itself, so
// that most allocations and frees take no lock.  Blocks of every instance are
// interchangeable, so the cache serves whichever instance is asked.  The cache
// is emptied back into the chunks when a class holds too many blocks and when
// the thread ends; a block waiting in a cache keeps its chunk in use.

constexpr unsigned kCachedClasses = 24;  // classes up to 1 KiB
constexpr std::uint32_t kCacheMax = 32;
constexpr std::uint32_t kCacheBatch = 16;
static_assert(kClassTable.size[kCachedClasses - 1] == 1024, "cache covers up to 1 KiB");

constexpr std::size_t kCachedMaxSize = 1024;

// Class of each request up to kCachedMaxSize, indexed by (size + 15) / 16.
struct SmallClassTable {
  unsigned char cls[kCachedMaxSize / 16 + 1];
};

constexpr SmallClassTable MakeSmallClassTable() {
  SmallClassTable t{};
  for (std::size_t i = 0; i <= kCachedMaxSize / 16; ++i) {
    unsigned c = 0;
    while (kClassTable.size[c] < i * 16) ++c;
    t.cls[i] = static_cast<unsigned char>(c);
  }
  return t;
}

constexpr SmallClassTable kCachedClassOf = MakeSmallClassTable();

enum CacheState : std::uint32_t { kCacheUnset = 0, kCacheOn = 1, kCacheOff = 2 };

struct ThreadCache {
  Header* bin[kCachedClasses];
  std::uint32_t count[kCachedClasses];
  std::uint32_t state;
};

__thread ThreadCache t_cache __attribute__((tls_model("initial-exec")));
pthread_key_t g_cache_key;
int g_cache_key_state;  // 0 not made, 1 made, -1 failed

// Returns cached blocks of class `cls` to their chunks until `keep` remain,
// holding each owner's lock over a run of blocks that share it.
void Drain(ThreadCache* tc, unsigned cls, std::uint32_t keep) {
  SubHeap* held = nullptr;
  while (tc->count[cls] > keep) {
    Header* b = tc->bin[cls];
    tc->bin[cls] = static_cast<Header*>(b->link);
    --tc->count[cls];
    Chunk* c = ChunkOf(b);
    if (c->owner != held) {
      if (held) Unlock(&held->lock);
      held = c->owner;
      Lock(&held->lock);
    }
    GiveLocked(held, c, b);
  }
  if (held) Unlock(&held->lock);
}

// Thread-exit destructor: empties the cache and turns it off for whatever
// the thread still frees afterwards.
void ThreadCacheExit(void*) {
  ThreadCache* tc = &t_cache;
  tc->state = kCacheOff;
  for (unsigned cls = 0; cls < kCachedClasses; ++cls) Drain(tc, cls, 0);
}

// Switches the calling thread's cache on, once.  While this runs the cache
// is off, so an allocation made by the thread library here takes the locked
// path.
__attribute__((noinline)) void SetUpCache(ThreadCache* tc) {
  tc->state = kCacheOff;
  EnsureForkHandlers();
  Lock(&g_create_lock);
  if (g_cache_key_state == 0) {
    g_cache_key_state = pthread_key_create(&g_cache_key, ThreadCacheExit) == 0 ? 1 : -1;
  }
  int key_state = g_cache_key_state;
  Unlock(&g_create_lock);
  if (key_state == 1 && pthread_setspecific(g_cache_key, tc) == 0) tc->state = kCacheOn;
}

__attribute__((noinline)) Header* Refill(zqmem_allocator* a, unsigned index, unsigned cls,
                                         ThreadCache* tc) {
  SubHeap* h = &a->heaps[index % ZQMEM_SUBHEAPS];
  Lock(&h->lock);
  Header* first = TakeLocked(h, cls);
  for (std::uint32_t i = 1; first && i < kCacheBatch; ++i) {
    Header* b = TakeLocked(h, cls);
    if (!b) break;
    b->link = tc->bin[cls];
    tc->bin[cls] = b;
    ++tc->count[cls];
  }
  Unlock(&h->lock);
  return first;
}

// Everything but a hit in the thread's cache.
__attribute__((noinline)) void* HeapAllocSlow(zqmem_allocator* a, unsigned index,
                                              std::size_t n) {
  if (!a) {
    errno = ENOMEM;
    return nullptr;
  }
  if (n > kMaxClassSize) return LargeAlloc(n);
  unsigned cls = zqmem::ClassOf(n);
  Header* b;
  ThreadCache* tc = &t_cache;
  if (cls < kCachedClasses && tc->state == kCacheUnset) SetUpCache(tc);
  if (cls < kCachedClasses && tc->state == kCacheOn) {
    b = tc->bin[cls];
    if (b) {
      tc->bin[cls] = static_cast<Header*>(b->link);
      --tc->count[cls];
    } else {
      b = Refill(a, index, cls, tc);
    }
  } else {
    EnsureForkHandlers();
    SubHeap* h = &a->heaps[index % ZQMEM_SUBHEAPS];
    Lock(&h->lock);
    b = TakeLocked(h, cls);
    Unlock(&h->lock);
  }
  if (!b) {
    errno = ENOMEM;
    return nullptr;
  }
  b->link = LiveTag(cls);
  return b + 1;
}

inline __attribute__((always_inline)) void* HeapAlloc(zqmem_allocator* a, unsigned index,
                                                       std::size_t n) {
  if (__builtin_expect(n <= kCachedMaxSize && a != nullptr, 1)) {
    unsigned cls = kCachedClassOf.cls[(n + 15) >> 4];
    ThreadCache* tc = &t_cache;
    Header* b = tc->bin[cls];
    if (__builtin_expect(b != nullptr && tc->state == kCacheOn, 1)) {
      tc->bin[cls] = static_cast<Header*>(b->link);
      --tc->count[cls];
      b->link = LiveTag(cls);
      return b + 1;
    }
  }
  return HeapAllocSlow(a, index, n);
}

// Returns a block to its chunk under the owner's lock.
__attribute__((noinline)) void FreeLocked(Header* b) {
  EnsureForkHandlers();
  Chunk* c = ChunkOf(b);
  SubHeap* h = c->owner;
  Lock(&h->lock);
  GiveLocked(h, c, b);
  Unlock(&h->lock);
}

__attribute__((noinline)) void FreeLarge(Header* b) {
  const LargeHead* d = reinterpret_cast<const LargeHead*>(b->chunk);
  UnmapBytes(const_cast<LargeHead*>(d), d->map_bytes);
}

inline __attribute__((always_inline)) void HeapFree(void* p) {
  if (!p) return;
  Header* b = static_cast<Header*>(p) - 1;
  std::uintptr_t tag = reinterpret_cast<std::uintptr_t>(b->link);
  if (__builtin_expect((tag & 1) == 0, 0)) {
    // An aligned block: free the block it was cut from.
    b = static_cast<Header*>(b->link) - 1;
    tag = reinterpret_cast<std::uintptr_t>(b->link);
  }
  // The tag names the class, so the fast path need not read the chunk.
  std::uint64_t cls = tag >> 1;
  if (cls < kCachedClasses) {
    ThreadCache* tc = &t_cache;
    if (__builtin_expect(tc->state == kCacheOn, 1)) {
      b->link = tc->bin[cls];
      tc->bin[cls] = b;
      if (__builtin_expect(++tc->count[cls] > kCacheMax, 0)) {
        Drain(tc, static_cast<unsigned>(cls), kCacheBatch);
      }
      return;
    }
  }
  if (__builtin_expect(tag == ~std::uintptr_t{0}, 0)) {  // mapped on its own
    FreeLarge(b);
    return;
  }
  FreeLocked(b);
}

void* HeapAllocAligned(zqmem_allocator* a, unsigned index, std::size_t align, std::size_t n) {
  if (align == 0 || (align & (align - 1)) != 0) {
    errno = EINVAL;
    return nullptr;
  }
  if (align <= sizeof(Header)) return HeapAlloc(a, index, n);
  if (n > SIZE_MAX - align) {
    errno = ENOMEM;
    return nullptr;
  }
  // Blocks are 16-byte aligned, so the aligned address is at most align - 16
  // bytes in, leaving at least 16 bytes before it for its own header.
  char* base = static_cast<char*>(HeapAlloc(a, index, n + align - sizeof(Header)));
  if (!base) return nullptr;
  std::uintptr_t u = reinterpret_cast<std::uintptr_t>(base);
  std::uintptr_t aligned = (u + align - 1) & ~(std::uintptr_t{align} - 1);
  if (aligned == u) return base;
  Header* h = reinterpret_cast<Header*>(aligned) - 1;
  h->link = base;
  h->chunk = (reinterpret_cast<Header*>(base) - 1)->chunk;
  return reinterpret_cast<void*>(aligned);
}

zqmem_allocator* Construct(void* raw) {
  if (!raw) return nullptr;
  zqmem_allocator* a = static_cast<zqmem_allocator*>(raw);
  std::memset(static_cast<void*>(a), 0, sizeof(*a));
  for (unsigned i = 0; i < ZQMEM_SUBHEAPS; ++i) {
    a->heaps[i].index = i;
    a->heaps[i].owner = a;
  }
  zqmem_allocator* head = __atomic_load_n(&g_instances, __ATOMIC_RELAXED);
  do {
    a->next_instance = head;
  } while (!__atomic_compare_exchange_n(&g_instances, &head, a, true, __ATOMIC_RELEASE,
                                        __ATOMIC_RELAXED));
  return a;
}

zqmem_allocator* DefaultInstance() {
  zqmem_allocator* a = __atomic_load_n(&g_default, __ATOMIC_ACQUIRE);
  if (__builtin_expect(a != nullptr, 1)) return a;
  EnsureForkHandlers();
  Lock(&g_create_lock);
  a = __atomic_load_n(&g_default, __ATOMIC_RELAXED);
  if (!a) {
    a = Construct(g_default_storage);
    __atomic_store_n(&g_default, a, __ATOMIC_RELEASE);
  }
  Unlock(&g_create_lock);
  return a;
}

inline unsigned Selector() {
  unsigned s = t_selector;
  if (__builtin_expect(s == 0, 0)) {
    s = static_cast<unsigned>(syscall(SYS_gettid));
    t_selector = s;
  }
  return s;
}

// Counts the processors listed in /sys/devices/system/cpu/online ("0-3,6").
// Read by hand: the C library's helpers may allocate.
unsigned OnlineProcessors() {
  int fd = open("/sys/devices/system/cpu/online", O_RDONLY | O_CLOEXEC);
  if (fd >= 0) {
    char buf[256];
    ssize_t got = read(fd, buf, sizeof(buf) - 1);
    close(fd);
    if (got > 0) {
      buf[got] = '\0';
      unsigned count = 0;
      const char* s = buf;
      while (*s >= '0' && *s <= '9') {
        unsigned lo = 0;
        while (*s >= '0' && *s <= '9') lo = lo * 10 + static_cast<unsigned>(*s++ - '0');
        unsigned hi = lo;
        if (*s == '-') {
          ++s;
          hi = 0;
          while (*s >= '0' && *s <= '9') hi = hi * 10 + static_cast<unsigned>(*s++ - '0');
        }
        if (hi >= lo) count += hi - lo + 1;
        if (*s == ',') ++s;
      }
      if (count > 0) return count;
    }
  }
  long n = sysconf(_SC_NPROCESSORS_ONLN);
  return n > 0 ? static_cast<unsigned>(n) : 1;
}

}  // namespace

extern "C" {

void zqmem_lock(void) {
  EnsureForkHandlers();
  Lock(&g_create_lock);
}

void zqmem_unlock(void) { Unlock(&g_create_lock); }

void* zqmem_raw_alloc(size_t size) {
  if (size == 0 || size > SIZE_MAX - kPageBytes) return nullptr;
  return MapBytes(RoundUp(size, kPageBytes));
}

zqmem_allocator* zqmem_construct(void* raw) { return Construct(raw); }

unsigned zqmem_count(void) { return OnlineProcessors(); }

unsigned zqmem_selector(void) { return Selector(); }

void* zqmem_heap_alloc(zqmem_allocator* a, unsigned index, size_t size) {
  return HeapAlloc(a, index, size);
}

void* zqmem_heap_alloc_aligned(zqmem_allocator* a, unsigned index, size_t align, size_t size) {
  return HeapAllocAligned(a, index, align, size);
}

void zqmem_free(zqmem_allocator*, void* p) { HeapFree(p); }

const uint64_t* zqmem_size_classes(size_t* count) {
  if (count) *count = kClassCount;
  return kClassTable.size;
}

void* zqmem_alloc(size_t size) { return HeapAlloc(DefaultInstance(), Selector(), size); }

void zqmem_release(void* p) { HeapFree(p); }

}  // extern "C"
