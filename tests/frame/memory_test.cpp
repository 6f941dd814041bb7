// Tests of the allocation routing: the sub-heap mask, the zq::Mem* routines
// and, when the library exports them, the process-wide malloc family.
#include "frame/memory.h"

#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <ace/OS_NS_string.h>
#include <ace/SString.h>
#include <gtest/gtest.h>

#include "frame/heapmask.h"

namespace {

// ---- before any constructor ---------------------------------------------

// Blocks allocated from the executable's pre-initialisation hook, which runs
// before the initialisers of every shared library (the runtime's included).
void* g_early_block;
void* g_early_plain;

void EarlyAllocate(int, char**, char**) {
  g_early_block = zq::MemAlloc(100);
  if (g_early_block) std::memset(g_early_block, 0x11, 100);
  // With the exports on, this is the runtime's malloc.
  g_early_plain = malloc(300);
}

__attribute__((section(".preinit_array"), used)) void (*g_preinit)(int, char**, char**) =
    &EarlyAllocate;

TEST(FrameMemory, AllocatesBeforeAnyConstructorRuns) {
  ASSERT_NE(g_early_block, nullptr);
  EXPECT_GE(zq::MemSize(g_early_block), 100u);
  EXPECT_EQ(static_cast<unsigned char*>(g_early_block)[99], 0x11);
  zq::MemFree(g_early_block);
  ASSERT_NE(g_early_plain, nullptr);
  free(g_early_plain);
}

// ---- mask ---------------------------------------------------------------

TEST(FrameMemory, SubHeapMask) {
  struct Case {
    std::uint32_t n, mask;
  } cases[] = {{0, 1},  {1, 1},   {2, 3},   {3, 7},   {4, 7},    {5, 15},   {8, 15},
               {9, 31}, {33, 127}, {64, 127}, {65, 127}, {1000, 127}};
  for (const Case& c : cases) EXPECT_EQ(zq::SubHeapMask(c.n), c.mask) << "N = " << c.n;
}

// ---- the zq::Mem* routines and the exported family ------------------------

// One allocation interface.
struct Api {
  const char* name;
  void* (*alloc)(size_t);
  void* (*calloc)(size_t, size_t);
  void* (*realloc)(void*, size_t);
  void (*free)(void*);
  size_t (*size)(void*);
};

size_t MemSizeMutable(void* p) { return zq::MemSize(p); }

const Api kMem = {"zq::Mem", zq::MemAlloc, zq::MemCalloc, zq::MemRealloc, zq::MemFree,
                  MemSizeMutable};

// The library exports the malloc family except in sanitizer builds.
bool Exported() { return dlsym(RTLD_DEFAULT, "_msize") != nullptr; }

// An entry point as the dynamic linker resolves it for the whole process.
template <typename F>
F Sym(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_DEFAULT, name));
}

// The library's own routines, and the exported C functions when it exports them.
std::vector<Api> Apis() {
  std::vector<Api> apis{kMem};
  if (Exported()) {
    apis.push_back({"exported", Sym<void* (*)(size_t)>("malloc"),
                    Sym<void* (*)(size_t, size_t)>("calloc"),
                    Sym<void* (*)(void*, size_t)>("realloc"), Sym<void (*)(void*)>("free"),
                    Sym<size_t (*)(void*)>("_msize")});
  }
  return apis;
}

void Fill(void* p, size_t n, unsigned seed) {
  auto* b = static_cast<unsigned char*>(p);
  for (size_t i = 0; i < n; ++i) b[i] = static_cast<unsigned char>(seed + i * 7);
}

bool Holds(const void* p, size_t n, unsigned seed) {
  std::vector<unsigned char> want(n);
  Fill(want.data(), n, seed);
  return n == 0 || std::memcmp(p, want.data(), n) == 0;
}

TEST(FrameMemory, ReallocAlwaysMovesAndCopiesWhatFits) {
  for (const Api& api : Apis()) {
    SCOPED_TRACE(api.name);
    // A null block allocates; size zero frees and returns null.
    void* p = api.realloc(nullptr, 40);
    ASSERT_NE(p, nullptr);
    EXPECT_GE(api.size(p), 40u);
    EXPECT_EQ(api.realloc(p, 0), nullptr);

    // Growing copies the old block's whole usable size (as much as fits).
    for (size_t from : {1, 16, 100, 5000, 300000}) {
      for (size_t to : {from + 1, from * 3, size_t{2000000}}) {
        void* a = api.alloc(from);
        size_t old = api.size(a);
        Fill(a, old, static_cast<unsigned>(from));
        void* b = api.realloc(a, to);
        ASSERT_NE(b, nullptr);
        EXPECT_NE(a, b);
        EXPECT_GE(api.size(b), to);
        EXPECT_TRUE(Holds(b, std::min(old, to), static_cast<unsigned>(from)))
            << from << " -> " << to;
        api.free(b);
      }
    }

    // Shrinking copies only the new size: the small block lands in a hole
    // between live neighbours, whose contents must survive.
    std::vector<void*> row;
    for (int i = 0; i < 64; ++i) row.push_back(api.alloc(16));
    for (int i = 0; i < 64; i += 2) api.free(row[i]);
    for (int i = 1; i < 64; i += 2) Fill(row[i], 16, static_cast<unsigned>(i));
    void* big = api.alloc(4000);
    Fill(big, api.size(big), 99);
    void* small = api.realloc(big, 10);
    ASSERT_NE(small, nullptr);
    EXPECT_TRUE(Holds(small, 10, 99));
    for (int i = 1; i < 64; i += 2) {
      EXPECT_TRUE(Holds(row[i], 16, static_cast<unsigned>(i))) << "neighbour " << i;
      api.free(row[i]);
    }
    api.free(small);
  }
}

TEST(FrameMemory, CallocZeroSizesErrnoAndNull) {
  for (const Api& api : Apis()) {
    SCOPED_TRACE(api.name);
    // Reused memory is zeroed too.
    for (int round = 0; round < 3; ++round) {
      for (size_t n : {1, 24, 1000, 100000, 400000}) {
        auto* p = static_cast<unsigned char*>(api.calloc(n, 3));
        ASSERT_NE(p, nullptr);
        for (size_t i = 0; i < 3 * n; ++i) ASSERT_EQ(p[i], 0) << n;
        std::memset(p, 0xFF, api.size(p));
        api.free(p);
      }
    }
    void* empty = api.calloc(0, 8);
    ASSERT_NE(empty, nullptr);
    api.free(empty);
    // A product that does not fit in size_t, and one that would fit in 32 bits
    // after truncation, are refused.
    for (auto [count, size] : {std::pair<size_t, size_t>{SIZE_MAX / 2 + 1, 2},
                               {size_t{1} << 32, (size_t{1} << 32) + 1},
                               {SIZE_MAX, SIZE_MAX}}) {
      errno = 0;
      EXPECT_EQ(api.calloc(count, size), nullptr);
      EXPECT_EQ(errno, ENOMEM);
    }
    std::set<void*> held;
    for (int i = 0; i < 100; ++i) {
      void* p = api.alloc(0);
      ASSERT_NE(p, nullptr);
      EXPECT_TRUE(held.insert(p).second) << "malloc(0) repeated a live pointer";
    }
    held.insert(api.alloc(5u << 20));
    for (void* p : held) {
      errno = 4321;
      api.free(p);
      EXPECT_EQ(errno, 4321);
    }
    api.free(nullptr);
    EXPECT_EQ(api.size(nullptr), 0u);
    errno = 0;
    EXPECT_EQ(api.alloc(SIZE_MAX - 100), nullptr);
    EXPECT_EQ(errno, ENOMEM);
  }
}

// ---- the process-wide exports ---------------------------------------------

TEST(FrameMemory, ProcessRunsOnTheExportedAllocator) {
  if (!Exported()) GTEST_SKIP() << "malloc family not exported in this build";
  // Every entry point of the family, as the dynamic linker resolves it for
  // the whole process, lives in the runtime library.
  const char* names[] = {
      "malloc", "calloc", "free", "realloc", "_msize", "_msize_base", "posix_memalign",
      "aligned_alloc", "memalign", "valloc", "pvalloc", "malloc_usable_size",
      "_Znwm", "_Znam", "_ZnwmRKSt9nothrow_t", "_ZnamRKSt9nothrow_t",
      "_ZnwmSt11align_val_t", "_ZnamSt11align_val_t", "_ZnwmSt11align_val_tRKSt9nothrow_t",
      "_ZnamSt11align_val_tRKSt9nothrow_t", "_ZdlPv", "_ZdaPv", "_ZdlPvm", "_ZdaPvm",
      "_ZdlPvRKSt9nothrow_t", "_ZdaPvRKSt9nothrow_t", "_ZdlPvSt11align_val_t",
      "_ZdaPvSt11align_val_t", "_ZdlPvmSt11align_val_t", "_ZdaPvmSt11align_val_t",
      "_ZdlPvSt11align_val_tRKSt9nothrow_t", "_ZdaPvSt11align_val_tRKSt9nothrow_t"};
  for (const char* name : names) {
    void* sym = dlsym(RTLD_DEFAULT, name);
    ASSERT_NE(sym, nullptr) << name;
    Dl_info info{};
    ASSERT_NE(dladdr(sym, &info), 0) << name;
    EXPECT_NE(std::string(info.dli_fname).find("libzq750util.so"), std::string::npos)
        << name << " resolves to " << info.dli_fname;
  }

  // Blocks made inside libstdc++, ACE and the C library are the runtime's.
  std::string text(200, 'x');
  std::ostringstream stream;
  stream << text << 12345;
  ACE_CString ace_text("allocated inside the ACE library");
  char* dup = ACE_OS::strdup("copied by the C library");
  ASSERT_NE(dup, nullptr);
  EXPECT_EQ(malloc_usable_size(text.data()), zq::MemSize(text.data()));
  EXPECT_GE(zq::MemSize(text.data()), 201u);
  EXPECT_GE(zq::MemSize(dup), std::strlen(dup) + 1);
  free(dup);

  // The C library's own allocator never served a byte in this process.
  struct mallinfo2 info = mallinfo2();
  EXPECT_EQ(info.arena, 0u);
  EXPECT_EQ(info.hblkhd, 0u);
  EXPECT_EQ(info.uordblks, 0u);
}

TEST(FrameMemory, AlignedFamilyAndOperatorNew) {
  if (!Exported()) GTEST_SKIP() << "malloc family not exported in this build";
  auto pm = Sym<int (*)(void**, size_t, size_t)>("posix_memalign");
  auto aa = Sym<void* (*)(size_t, size_t)>("aligned_alloc");
  auto ma = Sym<void* (*)(size_t, size_t)>("memalign");
  auto va = Sym<void* (*)(size_t)>("valloc");
  auto pva = Sym<void* (*)(size_t)>("pvalloc");
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

  for (size_t align : {8, 16, 32, 64, 128, 4096, 65536, 1 << 22}) {
    for (size_t n : {0, 1, 33, 4096, 500000}) {
      void* p = nullptr;
      ASSERT_EQ(pm(&p, align, n), 0);
      void* q = aa(align, n);
      void* r = ma(align, n);
      for (void* b : {p, q, r}) {
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(b) % align, 0u) << align << " " << n;
        EXPECT_GE(malloc_usable_size(b), n);
        std::memset(b, 0x3C, malloc_usable_size(b));
      }
      // Realloc of an aligned block keeps its contents.
      auto* moved = static_cast<unsigned char*>(realloc(p, n + 100));
      ASSERT_NE(moved, nullptr);
      EXPECT_TRUE(n == 0 || moved[n - 1] == 0x3C);
      for (void* b : {static_cast<void*>(moved), q, r}) free(b);
    }
  }
  // Bad alignments.
  void* p = reinterpret_cast<void*>(1);
  for (size_t bad : {0, 3, 4, 24, 48}) EXPECT_EQ(pm(&p, bad, 10), EINVAL) << bad;
  EXPECT_EQ(p, reinterpret_cast<void*>(1));
  errno = 0;
  EXPECT_EQ(aa(24, 10), nullptr);
  EXPECT_EQ(errno, EINVAL);
  // memalign rounds an odd alignment up to a power of two.
  void* odd = ma(48, 10);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(odd) % 64, 0u);
  free(odd);

  void *v = va(100), *pv = pva(100);
  for (void* b : {v, pv}) EXPECT_EQ(reinterpret_cast<uintptr_t>(b) % page, 0u);
  EXPECT_GE(malloc_usable_size(pv), page);
  free(v);
  free(pv);

  // Over-aligned operator new and its matching delete.
  struct alignas(256) Wide {
    char bytes[256];
  };
  std::vector<Wide*> wides;
  for (int i = 0; i < 20; ++i) {
    wides.push_back(new Wide);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(wides.back()) % 256, 0u);
  }
  for (Wide* w : wides) delete w;
  Wide* arr = new (std::nothrow) Wide[3];
  ASSERT_NE(arr, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(arr) % 256, 0u);
  delete[] arr;
  // A size just below the limit the compiler checks, which no system can map.
  volatile size_t huge = SIZE_MAX / 4;
  EXPECT_THROW(static_cast<void>(operator new(huge)), std::bad_alloc);
  EXPECT_EQ(operator new(huge, std::nothrow), nullptr);
  EXPECT_EQ(operator new[](huge, std::align_val_t{64}, std::nothrow), nullptr);
}

}  // namespace
