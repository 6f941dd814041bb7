// Tests of the zq750mem allocator, called directly through its C interface.
#include "zq/zqmem.h"

#include <errno.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

// One extra allocator instance for these tests, built as the runtime builds
// its own (operations 1 to 3); instances live as long as the process.
zqmem_allocator* TestInstance() {
  static zqmem_allocator* a = [] {
    zqmem_lock();
    zqmem_allocator* made = zqmem_construct(zqmem_raw_alloc(ZQMEM_INSTANCE_SIZE));
    zqmem_unlock();
    return made;
  }();
  return a;
}

const uint64_t* Classes() { return zqmem_size_classes(nullptr); }

size_t BlockSize(const void* p) { return zqmem_block_size(Classes(), p); }

void* Alloc(size_t n) { return zqmem_heap_alloc(TestInstance(), zqmem_selector(), n); }

void Free(void* p) { zqmem_free(TestInstance(), p); }

// Resident set size in bytes, from the kernel's accounting.
size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  size_t pages_total = 0, pages_resident = 0;
  statm >> pages_total >> pages_resident;
  return pages_resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// True when the page holding `p` is mapped (mincore fails with ENOMEM if not).
bool IsMapped(const void* p) {
  uintptr_t page = reinterpret_cast<uintptr_t>(p) & ~uintptr_t{4095};
  unsigned char vec = 0;
  return mincore(reinterpret_cast<void*>(page), 1, &vec) == 0;
}

TEST(ZqMemModule, CountAndSelectorComeFromTheSystem) {
  EXPECT_EQ(zqmem_count(), static_cast<unsigned>(sysconf(_SC_NPROCESSORS_ONLN)));
  EXPECT_EQ(zqmem_selector(), static_cast<unsigned>(syscall(SYS_gettid)));
  unsigned other = 0;
  std::thread([&] { other = zqmem_selector(); }).join();
  EXPECT_NE(other, zqmem_selector());
  EXPECT_EQ(zqmem_construct(nullptr), nullptr);
}

TEST(ZqMemModule, SizeClassesAreTheSmallestThatFit) {
  size_t count = 0;
  const uint64_t* table = zqmem_size_classes(&count);
  ASSERT_GT(count, 0u);
  for (size_t c = 1; c < count; ++c) {
    EXPECT_LT(table[c - 1], table[c]);
    EXPECT_EQ(table[c] % 16, 0u);
  }
  // Every request up to the largest class gets exactly the first class that
  // holds it; above that the block is mapped and holds at least the request.
  std::vector<void*> held;
  for (size_t n = 0; n <= table[count - 1] + 5000; n += (n < 4096 ? 1 : 97)) {
    void* p = Alloc(n);
    ASSERT_NE(p, nullptr) << n;
    size_t want = *std::lower_bound(table, table + count, std::max<size_t>(n, 1));
    if (n <= table[count - 1]) {
      ASSERT_EQ(BlockSize(p), want) << "request " << n;
    } else {
      ASSERT_GE(BlockSize(p), n);
    }
    EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 16, 0u) << n;
    held.push_back(p);
    if (held.size() > 64) {
      for (void* q : held) Free(q);
      held.clear();
    }
  }
  for (void* q : held) Free(q);
}

TEST(ZqMemModule, AlignedBlocks) {
  for (size_t align : {1, 8, 16, 32, 64, 256, 4096, 65536, 1 << 21}) {
    for (size_t n : {0, 1, 100, 5000, 300000}) {
      char* p = static_cast<char*>(zqmem_heap_alloc_aligned(TestInstance(), 3, align, n));
      ASSERT_NE(p, nullptr) << align << " " << n;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % std::max<size_t>(align, 16), 0u);
      size_t usable = BlockSize(p);
      EXPECT_GE(usable, n);
      std::memset(p, 0xA5, usable);
      Free(p);
    }
  }
  errno = 0;
  EXPECT_EQ(zqmem_heap_alloc_aligned(TestInstance(), 0, 48, 10), nullptr);
  EXPECT_EQ(errno, EINVAL);
}

TEST(ZqMemModule, FailedAllocationReturnsNull) {
  for (size_t n : {SIZE_MAX, SIZE_MAX - 8, SIZE_MAX / 2, size_t{1} << 50}) {
    errno = 0;
    EXPECT_EQ(Alloc(n), nullptr) << n;
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(zqmem_heap_alloc_aligned(TestInstance(), 0, 4096, n), nullptr);
  }
  EXPECT_EQ(zqmem_heap_alloc(nullptr, 0, 10), nullptr);
  EXPECT_EQ(zqmem_raw_alloc(0), nullptr);
  EXPECT_EQ(zqmem_raw_alloc(SIZE_MAX), nullptr);
}

TEST(ZqMemModule, LargeBlocksGoBackToTheSystem) {
  const size_t n = 64u << 20;
  char* p = static_cast<char*>(Alloc(n));
  ASSERT_NE(p, nullptr);
  EXPECT_GE(BlockSize(p), n);
  p[0] = 1;
  p[n - 1] = 2;
  EXPECT_TRUE(IsMapped(p + n / 2));
  errno = 1234;
  Free(p);
  EXPECT_EQ(errno, 1234);
  EXPECT_FALSE(IsMapped(p + n / 2));
}

TEST(ZqMemModule, FreeKeepsErrnoAndIgnoresNull) {
  for (size_t n : {0, 40, 100000, 1000000}) {
    void* p = Alloc(n);
    errno = 77;
    Free(p);
    EXPECT_EQ(errno, 77);
  }
  Free(nullptr);
  zqmem_release(nullptr);
}

TEST(ZqMemModule, FreedMemoryIsReused) {
  // Blocks freed by another thread come back to the allocating thread.
  std::vector<void*> first;
  for (int i = 0; i < 2000; ++i) first.push_back(Alloc(48));
  std::thread([&] {
    for (void* p : first) Free(p);
  }).join();
  std::set<void*> old(first.begin(), first.end());
  int reused = 0;
  std::vector<void*> second;
  for (int i = 0; i < 2000; ++i) {
    second.push_back(Alloc(48));
    reused += old.count(second.back()) != 0;
  }
  // All but the few blocks this thread's cache already held.
  EXPECT_GE(reused, 2000 - 64);
  for (void* p : second) Free(p);

  // Memory of one size class serves another once it has been freed.
  constexpr size_t kBytes = 64u << 20;
  std::vector<void*> v(kBytes / 32);  // touched now, so it does not count below
  size_t before = ResidentBytes();
  for (size_t size : {32, 48, 100, 200, 1000, 4000}) {
    size_t count = kBytes / size;
    for (size_t i = 0; i < count; ++i) {
      v[i] = Alloc(size);
      ASSERT_NE(v[i], nullptr);
      std::memset(v[i], 1, size);
    }
    for (size_t i = 0; i < count; ++i) Free(v[i]);
  }
  EXPECT_LT(ResidentBytes(), before + (24u << 20));
}

TEST(ZqMemModule, ExitingThreadsGiveTheirBlocksBack) {
  // Each thread leaves freed blocks of every small class in its own cache;
  // those must go back to the chunks when the thread ends, or a program that
  // starts many threads would grow without bound.
  // Left in the caches, 400 threads would hold about 90 MiB.
  auto work = [] {
    void* v[64 * 40];
    size_t count = 0;
    for (size_t size = 16; size <= 1024; size += 16) {
      for (int i = 0; i < 40; ++i) v[count++] = zqmem_heap_alloc(TestInstance(), 0, size);
    }
    for (size_t i = 0; i < count; ++i) Free(v[i]);
  };
  std::thread(work).join();
  size_t before = ResidentBytes();
  for (int t = 0; t < 400; ++t) std::thread(work).join();
  EXPECT_LT(ResidentBytes(), before + (32u << 20));
}

TEST(ZqMemModule, PlainAllocation) {
  std::vector<char*> v;
  for (size_t n : {0, 1, 128, 70000, 600000}) {
    char* p = static_cast<char*>(zqmem_alloc(n));
    ASSERT_NE(p, nullptr);
    EXPECT_GE(BlockSize(p), n);
    std::memset(p, 0x5A, n);
    v.push_back(p);
  }
  // Any instance may free blocks of another.
  Free(v[0]);
  zqmem_free(nullptr, v[1]);
  for (size_t i = 2; i < v.size(); ++i) zqmem_release(v[i]);
}

// Fills a block with a pattern derived from `seed`; large blocks get a
// sample of the bytes so that the test stays fast.
void Stamp(unsigned char* p, size_t n, unsigned seed, bool check, bool* ok) {
  auto at = [&](size_t i) {
    unsigned char want = static_cast<unsigned char>(seed + i * 131);
    if (check) {
      if (p[i] != want) *ok = false;
    } else {
      p[i] = want;
    }
  };
  if (n <= 2048) {
    for (size_t i = 0; i < n; ++i) at(i);
    return;
  }
  size_t stride = n > (256u << 10) ? 65536 : 4096;
  for (size_t i = 0; i < 512; ++i) at(i);
  for (size_t i = n - 512; i < n; ++i) at(i);
  for (size_t i = 512; i < n - 512; i += stride) at(i);
}

// Sizes from 1 byte to 1 MiB, spread over their logarithm: nine in ten up to
// 4 KiB, the rest up to 1 MiB (a quarter of those mapped on their own).
size_t RandomSize(std::mt19937& rng) {
  bool big = rng() % 10 == 0;
  double e = std::uniform_real_distribution<double>(big ? 12 : 0, big ? 20 : 12)(rng);
  return static_cast<size_t>(std::exp2(e));
}

TEST(ZqMemModule, ChurnFromManyThreadsNeverClobbers) {
  constexpr int kThreads = 4;
#if defined(__SANITIZE_ADDRESS__)
  constexpr int kOpsPerThread = 250000;  // the instrumented checks are slower
#else
  constexpr int kOpsPerThread = 600000;
#endif
  constexpr int kSlots = 256;
  struct Slot {
    unsigned char* p = nullptr;
    size_t n = 0;
    unsigned seed = 0;
  };
  // A shared exchange lets blocks be freed by other threads than their maker.
  std::vector<std::atomic<Slot*>> exchange(64);
  std::atomic<bool> ok{true};
  std::atomic<long> undersized{0};
  auto worker = [&](int id) {
    std::mt19937 rng(1000 + id);
    std::vector<Slot> slots(kSlots);
    bool good = true;
    auto release = [&](Slot& s) {
      Stamp(s.p, s.n, s.seed, true, &good);
      Free(s.p);
    };
    for (int op = 0; op < kOpsPerThread; ++op) {
      Slot& s = slots[rng() % kSlots];
      if (s.p && rng() % 8 == 0) {
        // Hand the block over; free whatever another thread left there.
        Slot* mine = new Slot(s);
        Slot* theirs = exchange[rng() % exchange.size()].exchange(mine);
        if (theirs) {
          release(*theirs);
          delete theirs;
        }
        s.p = nullptr;
      } else if (s.p) {
        release(s);
        s.p = nullptr;
      }
      s.n = RandomSize(rng);
      s.seed = static_cast<unsigned>(rng());
      s.p = static_cast<unsigned char*>(Alloc(s.n));
      if (!s.p) {
        good = false;
        break;
      }
      if (BlockSize(s.p) < s.n) ++undersized;
      Stamp(s.p, s.n, s.seed, false, &good);
    }
    for (Slot& s : slots) {
      if (s.p) release(s);
    }
    if (!good) ok = false;
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(worker, i);
  for (auto& t : threads) t.join();
  for (auto& e : exchange) {
    if (Slot* s = e.exchange(nullptr)) {
      bool good = true;
      Stamp(s->p, s->n, s->seed, true, &good);
      if (!good) ok = false;
      Free(s->p);
      delete s;
    }
  }
  EXPECT_TRUE(ok) << "a block's contents changed while it was live";
  EXPECT_EQ(undersized, 0);
}

TEST(ZqMemModule, ForkWhileOtherThreadsAllocate) {
  // The other threads keep the locks busy: the creation lock and every
  // sub-heap, with sizes the per-thread caches do not serve.
  std::atomic<bool> stop{false};
  std::vector<std::thread> busy;
  for (int t = 0; t < 3; ++t) {
    busy.emplace_back([&, t] {
      std::mt19937 rng(t);
      for (unsigned i = 0; !stop; ++i) {
        void* p = zqmem_heap_alloc(TestInstance(), i, 2000 + rng() % 60000);
        zqmem_free(nullptr, p);
        void* q = zqmem_alloc(rng() % 100000);
        zqmem_release(q);
        zqmem_lock();
        zqmem_unlock();
      }
    });
  }
  int failures = 0;
  for (int round = 0; round < 60 && failures == 0; ++round) {
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      // A lock left taken by a thread that does not exist here would hang.
      alarm(5);
      zqmem_lock();
      zqmem_unlock();
      for (unsigned i = 0; i < 2000; ++i) {
        void* p = zqmem_heap_alloc(TestInstance(), i, 2000 + i * 7 % 60000);
        void* q = zqmem_alloc(i % 300);
        if (!p || !q) _exit(2);
        zqmem_free(nullptr, p);
        zqmem_release(q);
      }
      _exit(0);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) ++failures;
  }
  stop = true;
  for (auto& t : busy) t.join();
  EXPECT_EQ(failures, 0);
}

}  // namespace
