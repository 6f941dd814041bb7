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
#include <utility>
#include <vector>

#include <ace/OS_NS_string.h>
#include <ace/SString.h>
#include <gtest/gtest.h>

#include "frame/heapmask.h"

namespace {

// Allocated from the executable's pre-initialisation hook, which runs before
// the initialisers of every shared library (the runtime's included).
void* g_early_block;
__attribute__((section(".preinit_array"), used)) void (*g_preinit)(int, char**, char**) =
    [](int, char**, char**) {
      g_early_block = zq::MemAlloc(100);
      if (g_early_block) std::memset(g_early_block, 0x11, 100);
    };

TEST(FrameMemory, AllocatesBeforeAnyConstructorRuns) {
  ASSERT_NE(g_early_block, nullptr);
  EXPECT_GE(zq::MemSize(g_early_block), 100u);
  EXPECT_EQ(static_cast<unsigned char*>(g_early_block)[99], 0x11);
  zq::MemFree(g_early_block);
}

TEST(FrameMemory, SubHeapMask) {
  for (auto [n, mask] : {std::pair<std::uint32_t, std::uint32_t>{0, 1}, {1, 1}, {2, 3}, {4, 7},
                         {5, 15}, {33, 127}, {64, 127}, {1000, 127}})
    EXPECT_EQ(zq::SubHeapMask(n), mask) << "N = " << n;
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
  // A null block allocates; size zero frees and returns null.
  void* p = zq::MemRealloc(nullptr, 40);
  ASSERT_NE(p, nullptr);
  EXPECT_GE(zq::MemSize(p), 40u);
  EXPECT_EQ(zq::MemRealloc(p, 0), nullptr);
  // Growing copies the old block's whole usable size; shrinking copies only
  // the new size, so the small block may land in a hole between live
  // neighbours, whose contents must survive.
  std::vector<void*> row;
  for (int i = 0; i < 64; ++i) row.push_back(zq::MemAlloc(16));
  for (int i = 0; i < 64; i += 2) zq::MemFree(row[i]);
  for (int i = 1; i < 64; i += 2) Fill(row[i], 16, static_cast<unsigned>(i));
  for (size_t from : {1, 100, 4000, 300000}) {
    for (size_t to : {size_t{10}, from + 1, from * 3, size_t{2000000}}) {
      void* a = zq::MemAlloc(from);
      size_t old = zq::MemSize(a);
      Fill(a, old, static_cast<unsigned>(from));
      void* b = zq::MemRealloc(a, to);
      ASSERT_NE(b, nullptr);
      EXPECT_NE(a, b);
      EXPECT_GE(zq::MemSize(b), to);
      EXPECT_TRUE(Holds(b, std::min(old, to), static_cast<unsigned>(from))) << from << " -> " << to;
      zq::MemFree(b);
    }
  }
  for (int i = 1; i < 64; i += 2) {
    EXPECT_TRUE(Holds(row[i], 16, static_cast<unsigned>(i))) << "neighbour " << i;
    zq::MemFree(row[i]);
  }
}

TEST(FrameMemory, CallocZeroSizesErrnoAndNull) {
  for (int round = 0; round < 2; ++round) {  // the second round reuses dirty blocks
    for (size_t n : {0, 1, 24, 1000, 100000, 400000}) {
      auto* p = static_cast<unsigned char*>(zq::MemCalloc(n, 3));
      ASSERT_NE(p, nullptr);
      for (size_t i = 0; i < 3 * n; ++i) ASSERT_EQ(p[i], 0) << n;
      std::memset(p, 0xFF, zq::MemSize(p));
      zq::MemFree(p);
    }
  }
  // Products that overflow size_t, or would fit 32 bits once truncated, are
  // refused (count 0: a plain allocation too large to map).
  for (auto [count, size] : {std::pair<size_t, size_t>{SIZE_MAX / 2 + 1, 2},
                             {size_t{1} << 32, (size_t{1} << 32) + 1},
                             {SIZE_MAX, SIZE_MAX},
                             {0, SIZE_MAX - 100}}) {
    errno = 0;
    EXPECT_EQ(count ? zq::MemCalloc(count, size) : zq::MemAlloc(size), nullptr) << count;
    EXPECT_EQ(errno, ENOMEM) << count;
  }
  // malloc(0) gives distinct live blocks, and free keeps errno.
  std::set<void*> held{zq::MemAlloc(5u << 20)};
  for (int i = 0; i < 50; ++i) EXPECT_TRUE(held.insert(zq::MemAlloc(0)).second) << "repeated";
  for (void* p : held) {
    errno = 4321;
    zq::MemFree(p);
    EXPECT_EQ(errno, 4321);
  }
  EXPECT_EQ(zq::MemSize(nullptr), 0u);
}

// An entry point as the dynamic linker resolves it for the whole process;
// called through a pointer, so the compiler assumes nothing about its result.
template <typename F>
F Sym(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_DEFAULT, name));
}

TEST(FrameMemory, ProcessRunsOnTheExportedAllocator) {
  // The library exports the malloc family except in sanitizer builds.
  if (!Sym<void*>("_msize")) GTEST_SKIP() << "malloc family not exported in this build";
  // Every entry point of the family resolves, for the whole process, into the runtime.
  for (const char* name :
       {"malloc", "calloc", "free", "realloc", "_msize", "_msize_base", "posix_memalign",
        "aligned_alloc", "memalign", "valloc", "pvalloc", "malloc_usable_size", "_Znwm", "_Znam",
        "_ZnwmRKSt9nothrow_t", "_ZnamRKSt9nothrow_t", "_ZnwmSt11align_val_t",
        "_ZnamSt11align_val_t", "_ZnwmSt11align_val_tRKSt9nothrow_t",
        "_ZnamSt11align_val_tRKSt9nothrow_t", "_ZdlPv", "_ZdaPv", "_ZdlPvm", "_ZdaPvm",
        "_ZdlPvRKSt9nothrow_t", "_ZdaPvRKSt9nothrow_t", "_ZdlPvSt11align_val_t",
        "_ZdaPvSt11align_val_t", "_ZdlPvmSt11align_val_t", "_ZdaPvmSt11align_val_t",
        "_ZdlPvSt11align_val_tRKSt9nothrow_t", "_ZdaPvSt11align_val_tRKSt9nothrow_t"}) {
    Dl_info info{};
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, name), &info), 0) << name;
    EXPECT_NE(std::string(info.dli_fname).find("libzq750util.so"), std::string::npos)
        << name << " resolves to " << info.dli_fname;
  }
  // The exported family keeps the contract of the routines above.
  errno = 4321;
  free(Sym<void* (*)(size_t)>("malloc")(0));
  EXPECT_EQ(errno, 4321);
  EXPECT_EQ(Sym<void* (*)(size_t, size_t)>("calloc")(size_t{1} << 32, (size_t{1} << 32) + 1),
            nullptr);
  // Blocks made inside libstdc++, ACE and the C library are the runtime's: the
  // C library's own allocator never serves a byte in this process.
  std::ostringstream stream;
  stream << std::string(200, 'x') << 12345;
  ACE_CString ace_text("allocated inside the ACE library");
  char* dup = ACE_OS::strdup("copied by the C library");
  EXPECT_EQ(malloc_usable_size(dup), zq::MemSize(dup));
  free(dup);
  struct mallinfo2 info = mallinfo2();
  EXPECT_EQ(info.arena + info.hblkhd + info.uordblks, 0u);
}

TEST(FrameMemory, AlignedFamilyAndOperatorNew) {
  if (!Sym<void*>("_msize")) GTEST_SKIP() << "malloc family not exported in this build";
  auto pm = Sym<int (*)(void**, size_t, size_t)>("posix_memalign");
  auto aa = Sym<void* (*)(size_t, size_t)>("aligned_alloc");
  auto ma = Sym<void* (*)(size_t, size_t)>("memalign");
  for (size_t align : {8, 64, 4096, 1 << 22}) {
    for (size_t n : {0, 33, 500000}) {
      void* p = nullptr;
      ASSERT_EQ(pm(&p, align, n), 0);
      for (void* b : {p, aa(align, n), ma(align, n)}) {
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(b) % align, 0u) << align << " " << n;
        EXPECT_GE(malloc_usable_size(b), n);
        std::memset(b, 0x3C, malloc_usable_size(b));
        auto* moved = static_cast<unsigned char*>(realloc(b, n + 100));  // keeps the contents
        EXPECT_TRUE(n == 0 || moved[n - 1] == 0x3C);
        free(moved);
      }
    }
  }
  void* p = reinterpret_cast<void*>(1);
  for (size_t bad : {0, 3, 4, 24}) EXPECT_EQ(pm(&p, bad, 10), EINVAL) << bad;
  EXPECT_EQ(p, reinterpret_cast<void*>(1));
  errno = 0;
  EXPECT_EQ(aa(24, 10), nullptr);
  EXPECT_EQ(errno, EINVAL);
  void* odd = ma(48, 10);  // memalign rounds an odd alignment up to a power of two
  EXPECT_EQ(reinterpret_cast<uintptr_t>(odd) % 64, 0u);
  free(odd);
  // Over-aligned operator new[] and its delete[]; sizes no system can map.
  struct alignas(256) Wide {
    char bytes[256];
  };
  Wide* arr = new Wide[3];
  EXPECT_EQ(reinterpret_cast<uintptr_t>(arr) % 256, 0u);
  delete[] arr;
  volatile size_t huge = SIZE_MAX / 4;  // just below the limit the compiler checks
  EXPECT_THROW(static_cast<void>(operator new(huge)), std::bad_alloc);
  EXPECT_EQ(operator new(huge, std::nothrow), nullptr);
  EXPECT_EQ(operator new[](huge, std::align_val_t{64}, std::nothrow), nullptr);
}

}  // namespace
