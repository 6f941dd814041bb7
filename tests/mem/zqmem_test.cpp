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

size_t BlockSize(const void* p) { return zqmem_block_size(zqmem_size_classes(nullptr), p); }
void* Alloc(size_t n) { return zqmem_heap_alloc(TestInstance(), zqmem_selector(), n); }
void Free(void* p) { zqmem_free(TestInstance(), p); }

// Resident set size in bytes, from the kernel's accounting.
size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  size_t pages_total = 0, pages_resident = 0;
  statm >> pages_total >> pages_resident;
  return pages_resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
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
      EXPECT_GE(BlockSize(p), n);
      std::memset(p, 0xA5, BlockSize(p));
      Free(p);
    }
  }
  errno = 0;
  EXPECT_EQ(zqmem_heap_alloc_aligned(TestInstance(), 0, 48, 10), nullptr);
  EXPECT_EQ(errno, EINVAL);
}

TEST(ZqMemModule, PlainBlocksFailuresAndFree) {
  // Plain blocks; any instance (or none) may free blocks of another, and
  // freeing never touches errno.
  int i = 0;
  for (size_t n : {0, 1, 40, 128, 70000, 100000, 600000, 1000000}) {
    char* p = static_cast<char*>(i % 2 ? zqmem_alloc(n) : Alloc(n));
    ASSERT_NE(p, nullptr) << n;
    EXPECT_GE(BlockSize(p), n);
    std::memset(p, 0x5A, n);
    errno = 77;
    if (i % 3 == 0) Free(p); else if (i % 3 == 1) zqmem_free(nullptr, p); else zqmem_release(p);
    EXPECT_EQ(errno, 77) << n;
    ++i;
  }
  Free(nullptr);
  zqmem_release(nullptr);
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
  // mincore fails with ENOMEM on a page that is not mapped.
  unsigned char vec = 0;
  void* middle = reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(p + n / 2) & ~uintptr_t{4095});
  EXPECT_EQ(mincore(middle, 1, &vec), 0);
  errno = 1234;
  Free(p);
  EXPECT_EQ(errno, 1234);
  EXPECT_NE(mincore(middle, 1, &vec), 0);
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
  // Blocks freed into a thread's cache go back to the chunks when the thread
  // ends: left in the caches, 400 threads would hold about 90 MiB.
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

// A live block with the seed of its byte pattern.
struct Block {
  unsigned char* p = nullptr;
  size_t n = 0;
  unsigned seed = 0;
};

// Writes (or, with `check`, compares) the block's pattern; large blocks get
// a sample of their bytes so that the test stays fast.
bool Stamp(const Block& b, bool check) {
  bool ok = true;
  auto at = [&](size_t i) {
    unsigned char want = static_cast<unsigned char>(b.seed + i * 131);
    if (check) ok &= b.p[i] == want; else b.p[i] = want;
  };
  size_t edge = std::min<size_t>(b.n, 512);
  size_t stride = b.n <= 2048 ? 1 : b.n > (256u << 10) ? 65536 : 4096;
  for (size_t i = 0; i < edge; ++i) at(i);
  for (size_t i = b.n - edge; i < b.n; ++i) at(i);
  for (size_t i = edge; i + edge < b.n; i += stride) at(i);
  return ok;
}

TEST(ZqMemModule, ChurnFromManyThreadsNeverClobbers) {
#if defined(__SANITIZE_ADDRESS__)
  constexpr int kOpsPerThread = 250000;  // the instrumented checks are slower
#else
  constexpr int kOpsPerThread = 600000;
#endif
  // A shared exchange lets blocks be freed by other threads than their maker.
  std::vector<std::atomic<Block*>> exchange(64);
  std::atomic<bool> ok{true};
  std::atomic<long> undersized{0};
  auto release = [&](Block* b) {
    if (!Stamp(*b, true)) ok = false;
    Free(b->p);
    delete b;
  };
  auto worker = [&](int id) {
    std::mt19937 rng(1000 + id);
    std::vector<Block*> slots(256);
    for (int op = 0; op < kOpsPerThread; ++op) {
      Block*& s = slots[rng() % slots.size()];
      if (s && rng() % 8 == 0) s = exchange[rng() % exchange.size()].exchange(s);  // hand over
      if (s) release(s);
      // Sizes spread over their logarithm: nine in ten up to 4 KiB, the rest
      // up to 1 MiB (a quarter of those mapped on their own).
      bool big = rng() % 10 == 0;
      s = new Block;
      s->n = static_cast<size_t>(
          std::exp2(std::uniform_real_distribution<double>(big ? 12 : 0, big ? 20 : 12)(rng)));
      s->seed = static_cast<unsigned>(rng());
      s->p = static_cast<unsigned char*>(Alloc(s->n));
      if (!s->p) {
        ok = false;
        break;
      }
      if (BlockSize(s->p) < s->n) ++undersized;
      Stamp(*s, false);
    }
    for (Block* s : slots) {
      if (s && s->p) release(s);
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(worker, i);
  for (auto& t : threads) t.join();
  for (auto& e : exchange) {
    if (Block* b = e.exchange(nullptr)) release(b);
  }
  EXPECT_TRUE(ok) << "a block's contents changed while it was live";
  EXPECT_EQ(undersized, 0);
}

TEST(ZqMemModule, ForkWhileOtherThreadsAllocate) {
  // The other threads keep the locks busy: the creation lock and every
  // sub-heap, with sizes the per-thread caches do not serve.
  std::atomic<bool> stop{false};
  std::vector<std::thread> busy;
  auto round = [](unsigned i, size_t n, size_t m) {
    void* p = zqmem_heap_alloc(TestInstance(), i, n);
    void* q = zqmem_alloc(m);
    zqmem_free(nullptr, p);
    zqmem_release(q);
    return p != nullptr && q != nullptr;
  };
  for (int t = 0; t < 3; ++t) {
    busy.emplace_back([&, t] {
      std::mt19937 rng(t);
      for (unsigned i = 0; !stop; ++i) {
        round(i, 2000 + rng() % 60000, rng() % 100000);
        zqmem_lock();
        zqmem_unlock();
      }
    });
  }
  int failures = 0;
  for (int r = 0; r < 60 && failures == 0; ++r) {
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      // A lock left taken by a thread that does not exist here would hang.
      alarm(5);
      zqmem_lock();
      zqmem_unlock();
      for (unsigned i = 0; i < 2000; ++i) {
        if (!round(i, 2000 + i * 7 % 60000, i % 300)) _exit(2);
      }
      _exit(0);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    failures += !WIFEXITED(status) || WEXITSTATUS(status) != 0;
  }
  stop = true;
  for (auto& t : busy) t.join();
  EXPECT_EQ(failures, 0);
}

}  // namespace
