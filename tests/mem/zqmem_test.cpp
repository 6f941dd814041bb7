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
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

// One extra allocator instance, built in a raw block as the runtime builds its own.
zqmem_allocator* const g_test = zqmem_construct(zqmem_raw_alloc(ZQMEM_INSTANCE_SIZE));

size_t BlockSize(const void* p) { return zqmem_block_size(zqmem_size_classes(nullptr), p); }
void* Alloc(size_t n) { return zqmem_heap_alloc(g_test, zqmem_selector(), n); }
void Free(void* p) { zqmem_free(g_test, p); }

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
  for (size_t c = 1; c < count; ++c) EXPECT_TRUE(table[c - 1] < table[c] && table[c] % 16 == 0);
  // A request gets exactly the first class that holds it (the last 64 blocks stay
  // live, so the thread cache refills); above the largest class, at least n bytes.
  void* ring[64] = {};
  for (size_t n = 0; n <= table[count - 1] + 5000; n += (n < 4096 ? 1 : 97)) {
    void* p = Alloc(n);
    ASSERT_NE(p, nullptr) << n;
    ASSERT_EQ(reinterpret_cast<uintptr_t>(p) % 16, 0u) << n;
    if (n <= table[count - 1]) {
      // The header's second word points to the chunk descriptor; its first word is the class.
      const uint64_t* chunk = static_cast<const uint64_t* const*>(p)[-1];
      ASSERT_EQ(table[chunk[0]], *std::lower_bound(table, table + count, std::max<size_t>(n, 1)))
          << "request " << n;
    } else {
      ASSERT_GE(BlockSize(p), n);
    }
    Free(std::exchange(ring[n % 64], p));
  }
  for (void* p : ring) Free(p);
}

TEST(ZqMemModule, BlocksOfEveryKindAndFailures) {
  // Any instance (or none) frees any block, freeing keeps errno, and a large
  // block goes back to the system (mincore fails on a page that is not mapped).
  int i = 0;
  unsigned char vec = 0;
  for (size_t align : {0, 8, 64, 4096, 1 << 21}) {  // 0: a plain block
    for (size_t n : {0, 1, 100, 5000, 300000, 1000000}) {
      void* p = align ? zqmem_heap_alloc_aligned(g_test, 3, align, n)
                      : i % 2 ? zqmem_alloc(n) : Alloc(n);
      ASSERT_NE(p, nullptr) << align << " " << n;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % std::max<size_t>(align, 16), 0u);
      EXPECT_GE(BlockSize(p), n);
      std::memset(p, 0xA5, BlockSize(p));
      auto* middle = reinterpret_cast<void*>((reinterpret_cast<uintptr_t>(p) + n / 2) & ~4095ul);
      errno = 77;
      if (i % 3 == 0) Free(p); else if (i % 3 == 1) zqmem_free(nullptr, p); else zqmem_release(p);
      EXPECT_EQ(errno, 77) << align << " " << n;
      EXPECT_TRUE(n < 1000000 || mincore(middle, 1, &vec) != 0) << align << " still mapped";
      ++i;
    }
  }
  Free(nullptr);
  zqmem_release(nullptr);
  for (auto [align, n, error] :  // align 0: a plain block
       {std::tuple<size_t, size_t, int>{0, SIZE_MAX, ENOMEM}, {0, SIZE_MAX - 8, ENOMEM},
        {0, size_t{1} << 50, ENOMEM}, {4096, SIZE_MAX / 2, ENOMEM}, {48, 10, EINVAL}}) {
    errno = 0;
    EXPECT_EQ(align ? zqmem_heap_alloc_aligned(g_test, 0, align, n) : Alloc(n), nullptr) << n;
    EXPECT_EQ(errno, error) << align << " " << n;
  }
  EXPECT_EQ(zqmem_heap_alloc(nullptr, 0, 10), nullptr);
  EXPECT_EQ(zqmem_raw_alloc(SIZE_MAX), nullptr);
}

TEST(ZqMemModule, FreedMemoryIsReused) {
  // Blocks freed by another thread come back to the allocating thread, all but
  // the few this thread's cache already held.
  std::vector<void*> first(2000), second(2000);
  for (void*& p : first) p = Alloc(48);
  std::thread([&] {
    for (void* p : first) Free(p);
  }).join();
  std::set<void*> old(first.begin(), first.end());
  int reused = 0;
  for (void*& p : second) reused += old.count(p = Alloc(48));
  EXPECT_GE(reused, 2000 - 64);
  for (void* p : second) Free(p);

  // A thread's cache goes back to the chunks when the thread ends: left in
  // the caches, 400 threads would hold about 90 MiB.
  auto work = [] {
    std::vector<void*> blocks;
    for (size_t size = 16; size <= 1024; size += 16) {
      for (int i = 0; i < 40; ++i) blocks.push_back(zqmem_heap_alloc(g_test, 0, size));
    }
    for (void* p : blocks) Free(p);
  };
  std::thread(work).join();
  size_t before = ResidentBytes();
  for (int t = 0; t < 400; ++t) std::thread(work).join();
  EXPECT_LT(ResidentBytes(), before + (32u << 20));
}

struct Block {
  unsigned char* p;
  size_t n;
};

// Writes (or, with `check`, compares) a pattern seeded by the block's address:
// every byte of a small block, the edges and a sample of a large one.
bool Stamp(const Block& b, bool check) {
  bool ok = true;
  size_t edge = std::min<size_t>(b.n, 512);
  size_t stride = b.n <= 2048 ? 1 : b.n > (256u << 10) ? 65536 : 4096;
  for (size_t i = 0; i < b.n;
       i += i < edge || i >= b.n - edge ? 1 : std::min(stride, b.n - edge - i)) {
    auto want = static_cast<unsigned char>((reinterpret_cast<uintptr_t>(b.p) >> 4) + i * 131);
    if (check) ok &= b.p[i] == want; else b.p[i] = want;
  }
  return ok;
}

TEST(ZqMemModule, ChurnFromManyThreadsNeverClobbers) {
  // A shared exchange lets blocks be freed by other threads than their maker.
  std::vector<std::atomic<Block*>> exchange(64);
  std::atomic<bool> ok{true};
  auto release = [&](Block* b) {
    if (b && !Stamp(*b, true)) ok = false;
    if (b) Free(b->p);
    delete b;
  };
  auto worker = [&](int id) {
    std::mt19937 rng(1000 + id);
    std::vector<Block*> slots(256);
    for (int op = 0; op < 300000 && ok; ++op) {
      Block*& s = slots[rng() % slots.size()];
      if (s && rng() % 8 == 0) s = exchange[rng() % exchange.size()].exchange(s);  // hand over
      release(s);
      // Sizes spread over their logarithm: nine in ten up to 4 KiB, the rest
      // up to 1 MiB (a quarter of those mapped on their own).
      bool big = rng() % 10 == 0;
      auto n = static_cast<size_t>(
          std::exp2(std::uniform_real_distribution<double>(big ? 12 : 0, big ? 20 : 12)(rng)));
      s = new Block{static_cast<unsigned char*>(Alloc(n)), n};
      s->n = s->p && BlockSize(s->p) >= n ? n : 0;  // a failed block is reported, not stamped
      if (s->n != n) ok = false;
      Stamp(*s, false);
    }
    for (Block* s : slots) release(s);
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(worker, i);
  for (auto& t : threads) t.join();
  for (auto& e : exchange) release(e.exchange(nullptr));
  EXPECT_TRUE(ok) << "a block failed or its contents changed while it was live";
}

TEST(ZqMemModule, ForkWhileOtherThreadsAllocate) {
  // Other threads keep the creation lock and both instances' sub-heaps busy (sizes
  // the thread caches do not serve); a child left holding one of their locks hangs.
  auto round = [](unsigned i, size_t n) {
    void* p = zqmem_heap_alloc(g_test, i, n);
    void* q = zqmem_alloc(n / 2);
    zqmem_free(nullptr, p);
    zqmem_release(q);
    zqmem_lock();
    zqmem_unlock();
    return p && q;
  };
  std::atomic<bool> stop{false};
  std::vector<std::thread> busy;
  for (unsigned t = 0; t < 3; ++t)
    busy.emplace_back([&, t] { for (auto i = t; !stop; i += 3) round(i, 2000 + i * 97 % 60000); });
  int failures = 0;
  for (int r = 0; r < 60 && failures == 0; ++r) {
    pid_t pid = fork();
    if (pid == 0) {
      alarm(5);
      bool ok = true;
      for (unsigned i = 0; i < 2000; ++i) ok &= round(i, 2000 + i * 7 % 60000);
      _exit(ok ? 0 : 2);
    }
    int status = 0;
    failures += pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) ||
                WEXITSTATUS(status) != 0;
  }
  stop = true;
  for (auto& t : busy) t.join();
  EXPECT_EQ(failures, 0);
}

}  // namespace
