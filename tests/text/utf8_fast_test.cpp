// The block-at-a-time paths of the UTF-8 routines against a plain
// one-sequence-at-a-time model of the same lenient rules: every result and
// every unit or byte written must agree, wherever a non-ASCII, invalid or
// cut-off sequence falls inside a block or near the end of the input, and
// whatever the capacity. Inputs end at an unreadable page and outputs end
// at an unwritable one, so reading past `n` (or the terminator) or writing
// past `cap` faults.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/zqglob.h"

namespace {

using Bytes = std::basic_string<unsigned char>;
using Units = std::basic_string<unsigned short>;

// ---- the model: the rules one sequence at a time ------------------------

int ModelDecode(const unsigned char* in, int64_t len, unsigned short* out, int cap) {
  static const int64_t kOffsets[4] = {0, 0x3080, 0xE2080, 0x3C82080};
  int64_t o = 0;
  for (int64_t i = 0; i < len;) {
    int count = ZQGlob::BytesInUTF8(in[i]);
    if (count > 4) return -2;
    if (i + count > len) return -1;
    int64_t value = 0;
    for (int k = 0; k < count; ++k) value = (value << 6) + in[i + k];
    value -= kOffsets[count - 1];
    i += count;
    if (value > 0x10FFFF) return -2;
    int units = value < 0x10000 ? 1 : 2;
    if (o + units + 1 > cap) return -2;
    if (units == 1) {
      out[o++] = static_cast<unsigned short>(value);
    } else {
      out[o++] = static_cast<unsigned short>(0xD800 + ((value - 0x10000) >> 10));
      out[o++] = static_cast<unsigned short>(0xDC00 + ((value - 0x10000) & 0x3FF));
    }
  }
  out[o] = 0;
  return static_cast<int>(o);
}

int ModelEncode(const unsigned short* in, int64_t len, unsigned char* out, int cap) {
  int64_t o = 0;
  for (int64_t i = 0; i < len; ++i) {
    uint32_t u = in[i];
    if (u >= 0xD800 && u <= 0xDBFF) {
      if (i + 1 >= len || in[i + 1] < 0xDC00 || in[i + 1] > 0xDFFF) return -1;
      u = 0x10000 + ((u - 0xD800) << 10) + (in[++i] - 0xDC00);
    }
    unsigned char seq[4];
    int k = u < 0x80 ? 1 : u < 0x800 ? 2 : u < 0x10000 ? 3 : 4;
    static const unsigned char kLead[5] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (int j = k - 1; j > 0; --j, u >>= 6) seq[j] = static_cast<unsigned char>(0x80 | (u & 0x3F));
    seq[0] = static_cast<unsigned char>(kLead[k] | u);
    if (o + k + 1 > cap) return -2;
    for (int j = 0; j < k; ++j) out[o++] = seq[j];
  }
  out[o] = 0;
  return static_cast<int>(o);
}

// Code set -3, zero-terminated input; -1 for the error result.
int ModelMbsToWcs(unsigned short* out, const unsigned char* p, size_t n) {
  size_t count = 0;
  while (count < n) {
    uint32_t c = p[0];
    if (c < 0xC0) {
      out[count] = static_cast<unsigned short>(c);
      if (c == 0) return static_cast<int>(count);
      ++count;
      ++p;
      continue;
    }
    int len = c < 0xE0 ? 2 : c < 0xF0 ? 3 : c < 0xF8 ? 4 : 0;
    if (len == 0) return -1;
    uint32_t v = c;
    for (int k = 1; k < len; ++k) {
      if (p[k] == 0) return -1;
      v = (v << 6) + p[k];
    }
    static const uint32_t kOffsets[5] = {0, 0, 0x3080, 0xE2080, 0x3C82080};
    v -= kOffsets[len];
    if (v > 0x10FFFF) return -1;
    if (v < 0x10000) {
      out[count++] = static_cast<unsigned short>(v);
    } else {
      if (count + 2 > n) return static_cast<int>(count);
      out[count++] = static_cast<unsigned short>(0xD800 + ((v - 0x10000) >> 10));
      out[count++] = static_cast<unsigned short>(0xDC00 + ((v - 0x10000) & 0x3FF));
    }
    p += len;
  }
  return static_cast<int>(count);
}

// Code set -3, zero-terminated units.
int ModelWcsToMbs(unsigned char* out, const unsigned short* in, size_t n) {
  size_t count = 0;
  for (;; ++in) {
    if (*in == 0) {
      if (count < n) out[count] = 0;
      return static_cast<int>(count);
    }
    unsigned char seq[8];
    size_t units = 1;
    int len;
    if (in[0] >= 0xD800 && in[0] <= 0xDBFF && in[1] >= 0xDC00 && in[1] <= 0xDFFF) {
      len = ModelEncode(in, 2, seq, 8);
      units = 2;
    } else {
      len = ModelEncode(in, 1, seq, 8);
    }
    if (len < 0) return -1;
    if (count + len > n) return static_cast<int>(count);
    std::memcpy(out + count, seq, len);
    count += len;
    in += units - 1;
  }
}

// ---- guarded memory -----------------------------------------------------

// Memory whose end is followed by an inaccessible page; one per role, made
// once, as mapping pages for every check is slow.
template <typename T>
class Guarded {
 public:
  static Guarded& Source() {
    static Guarded* g = new Guarded(kElements);
    return *g;
  }
  static Guarded& Target() {
    static Guarded* g = new Guarded(kElements);
    return *g;
  }

  explicit Guarded(size_t count) {
    size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    size_ = ((count * sizeof(T) + page - 1) / page + 1) * page;
    base_ = static_cast<char*>(
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base_ + size_ - page, page, PROT_NONE);
    end_ = reinterpret_cast<T*>(base_ + size_ - page);
  }
  ~Guarded() { munmap(base_, size_); }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  static constexpr size_t kElements = 1 << 14;

  // The last `count` elements before the guard, holding `data`.
  T* Put(const T* data, size_t count) {
    EXPECT_LE(count, kElements);
    std::memcpy(end_ - count, data, count * sizeof(T));
    return end_ - count;
  }
  // The last `count` elements before the guard, each set to `fill`.
  T* Fill(size_t count, T fill) {
    EXPECT_LE(count, kElements);
    for (size_t i = 1; i <= count; ++i) end_[-static_cast<ptrdiff_t>(i)] = fill;
    return end_ - count;
  }

 private:
  char* base_;
  size_t size_;
  T* end_;
};

// ---- inputs -------------------------------------------------------------

// Pieces of UTF-8 input, well-formed and not.
const Bytes kOddPieces[] = {
    {0xC3, 0xA9},             {0xE6, 0x97, 0xA5},       {0xF0, 0x9F, 0x98, 0x80},
    {0x80},                   {0xBF},                   {0xC3, 0x41},
    {0xE2, 0x82, 0x41},       {0xE2, 0x41, 0x82},       {0xC0, 0x80},
    {0xE0, 0x80, 0x80},       {0xEF, 0xBF, 0xBF},       {0xF4, 0x90, 0x80, 0x80},
    {0xF8, 0x88, 0x80, 0x80, 0x80}, {0xFF},             {0xC2},
    {0xE1, 0x80},             {0xDF, 0xBF},             {0x00},
};

Bytes RandomUtf8(std::mt19937& rng, size_t len) {
  Bytes t;
  while (t.size() < len) {
    switch (rng() % 4) {
      case 0:
        t.append(rng() % 40, static_cast<unsigned char>('a' + rng() % 26));
        break;
      case 1:
        t += kOddPieces[rng() % 3];  // well-formed
        break;
      case 2:
        if (rng() % 4 == 0) {
          t += kOddPieces[rng() % (sizeof(kOddPieces) / sizeof(kOddPieces[0]))];
          break;
        }
        [[fallthrough]];
      default:
        t += kOddPieces[rng() % 2];
        break;
    }
  }
  return t;
}

const Units kUnitPieces[] = {
    {0xE9},   {0x65E5},         {0x7FF},  {0x800},  {0xFFFF}, {0xDC00},
    {0xD83D, 0xDE00},           {0xDBFF, 0xDFFF},   {0xD800}, {0xD83D, 'a'},
    {0x0000}, {0x80},
};

Units RandomUnits(std::mt19937& rng, size_t len) {
  Units t;
  while (t.size() < len) {
    if (rng() % 3 == 0) {
      t.append(rng() % 20, static_cast<unsigned short>('a' + rng() % 26));
    } else {
      size_t pick = rng() % 8 == 0 ? rng() % (sizeof(kUnitPieces) / sizeof(kUnitPieces[0]))
                                   : rng() % 5;
      t += kUnitPieces[pick];
    }
  }
  return t;
}

// ---- checks -------------------------------------------------------------

// Decodes `in` whole with capacity `cap` both ways and compares everything.
void CheckDecode(const Bytes& in, int cap) {
  std::vector<unsigned short> want(cap, 0xAAAA);
  int want_n = ModelDecode(in.data(), static_cast<int64_t>(in.size()), want.data(), cap);
  Guarded<unsigned char>& src = Guarded<unsigned char>::Source();
  Guarded<unsigned short>& dst = Guarded<unsigned short>::Target();
  const unsigned char* p = src.Put(in.data(), in.size());
  unsigned short* out = dst.Fill(cap, 0xAAAA);
  ASSERT_EQ(ZQGlob::UTF8ToUnicode(p, static_cast<int>(in.size()), out, cap), want_n)
      << testing::PrintToString(in) << " cap " << cap;
  ASSERT_EQ(std::vector<unsigned short>(out, out + cap), want)
      << testing::PrintToString(in) << " cap " << cap;
}

void CheckEncode(const Units& in, int cap) {
  std::vector<unsigned char> want(cap, 0x55);
  int want_n = ModelEncode(in.data(), static_cast<int64_t>(in.size()), want.data(), cap);
  Guarded<unsigned short>& src = Guarded<unsigned short>::Source();
  Guarded<unsigned char>& dst = Guarded<unsigned char>::Target();
  const unsigned short* p = src.Put(in.data(), in.size());
  unsigned char* out = dst.Fill(cap, 0x55);
  ASSERT_EQ(ZQGlob::UnicodeToUTF8(p, static_cast<int>(in.size()), out, cap), want_n)
      << testing::PrintToString(in) << " cap " << cap;
  ASSERT_EQ(std::vector<unsigned char>(out, out + cap), want)
      << testing::PrintToString(in) << " cap " << cap;
}

// Code set -3 with `text` zero-terminated right before the guard.
void CheckMbsToWcs(const Bytes& text, size_t n) {
  Bytes z = text + static_cast<unsigned char>(0);
  std::vector<unsigned short> want(n + 1, 0xAAAA);
  int want_n = ModelMbsToWcs(want.data(), z.data(), n);
  want.resize(n);
  Guarded<unsigned char>& src = Guarded<unsigned char>::Source();
  Guarded<unsigned short>& dst = Guarded<unsigned short>::Target();
  const char* p = reinterpret_cast<const char*>(src.Put(z.data(), z.size()));
  unsigned short* out = dst.Fill(n, 0xAAAA);
  ASSERT_EQ(ZQGlob::MBStoWCS(out, p, static_cast<int>(n), ZQ_CSET_UTF8), want_n)
      << testing::PrintToString(text) << " n " << n;
  ASSERT_EQ(std::vector<unsigned short>(out, out + n), want)
      << testing::PrintToString(text) << " n " << n;
}

void CheckWcsToMbs(const Units& text, size_t n) {
  Units z = text + static_cast<unsigned short>(0);
  std::vector<unsigned char> want(n + 1, 0x55);
  int want_n = ModelWcsToMbs(want.data(), z.data(), n);
  want.resize(n);
  Guarded<unsigned short>& src = Guarded<unsigned short>::Source();
  Guarded<unsigned char>& dst = Guarded<unsigned char>::Target();
  const unsigned short* p = src.Put(z.data(), z.size());
  unsigned char* out = dst.Fill(n, 0x55);
  ASSERT_EQ(ZQGlob::WCStoMBS(reinterpret_cast<char*>(out), p, static_cast<int>(n), ZQ_CSET_UTF8),
            want_n)
      << testing::PrintToString(text) << " n " << n;
  ASSERT_EQ(std::vector<unsigned char>(out, out + n), want)
      << testing::PrintToString(text) << " n " << n;
}

// ---- tests --------------------------------------------------------------

// One odd piece at every position of an ASCII text, from every distance to
// either end: inside a block, across a block's end, at the input's end.
TEST(Utf8FastTest, DecodeOnePieceAnywhere) {
  for (const Bytes& piece : kOddPieces) {
    for (size_t before = 0; before < 72; ++before) {
      for (size_t after = 0; after < 72; after += (after < 40 ? 1 : 7)) {
        Bytes in = Bytes(before, 'x') + piece + Bytes(after, 'y');
        int units = ModelDecode(in.data(), static_cast<int64_t>(in.size()),
                                std::vector<unsigned short>(in.size() + 2).data(),
                                static_cast<int>(in.size() + 2));
        int cap = units >= 0 ? units + 1 : static_cast<int>(in.size() + 1);
        CheckDecode(in, cap);
        CheckDecode(in, cap - 1 > 0 ? cap - 1 : 1);
        CheckMbsToWcs(in, static_cast<size_t>(units >= 0 ? units : in.size()));
        if (HasFatalFailure()) return;
      }
    }
  }
}

// Random mixtures, every prefix length of some, and capacities around the
// exact need and below it.
TEST(Utf8FastTest, DecodeRandomTexts) {
  std::mt19937 rng(7);
  for (int round = 0; round < 400; ++round) {
    Bytes text = RandomUtf8(rng, rng() % 400);
    std::vector<unsigned short> scratch(text.size() + 2);
    for (size_t cut : {text.size(), text.size() - text.size() / 3, text.size() / 2}) {
      Bytes in = text.substr(0, cut);
      int units = ModelDecode(in.data(), static_cast<int64_t>(in.size()), scratch.data(),
                              static_cast<int>(scratch.size()));
      int full = static_cast<int>(in.size()) + 1;
      for (int cap : {full, units + 1, units, units - 1, units / 2, 1 + static_cast<int>(rng() % full)}) {
        if (cap >= 1) CheckDecode(in, cap);
      }
      for (size_t n : {in.size(), in.size() / 2, in.size() / 3 + 1}) CheckMbsToWcs(in, n);
      if (HasFatalFailure()) return;
    }
  }
}

// Runs of well-formed text long enough for many blocks, broken at every
// position of a block by one odd piece.
TEST(Utf8FastTest, DecodeLongRunsBrokenInBlocks) {
  std::mt19937 rng(11);
  Bytes base;
  while (base.size() < 200) base += kOddPieces[rng() % 3] + Bytes(rng() % 5, 'q');
  for (const Bytes& piece : kOddPieces) {
    for (size_t at = 64; at < 130; ++at) {
      Bytes in = base.substr(0, at) + piece + base.substr(at);
      CheckDecode(in, static_cast<int>(in.size() + 1));
      CheckMbsToWcs(in, in.size());
      if (HasFatalFailure()) return;
    }
  }
}

TEST(Utf8FastTest, EncodeOnePieceAnywhere) {
  for (const Units& piece : kUnitPieces) {
    for (size_t before = 0; before < 24; ++before) {
      for (size_t after = 0; after < 24; ++after) {
        Units in = Units(before, 'x') + piece + Units(after, 0x4E2D);
        std::vector<unsigned char> scratch(in.size() * 3 + 1);
        int bytes = ModelEncode(in.data(), static_cast<int64_t>(in.size()), scratch.data(),
                                static_cast<int>(scratch.size()));
        int cap = bytes >= 0 ? bytes + 1 : static_cast<int>(scratch.size());
        CheckEncode(in, cap);
        CheckEncode(in, cap - 1 > 0 ? cap - 1 : 1);
        CheckEncode(in, cap - 2 > 0 ? cap - 2 : 1);
        CheckWcsToMbs(in, static_cast<size_t>(bytes >= 0 ? bytes : scratch.size()));
        if (bytes > 1) CheckWcsToMbs(in, static_cast<size_t>(bytes - 1));
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(Utf8FastTest, EncodeRandomTexts) {
  std::mt19937 rng(5);
  for (int round = 0; round < 400; ++round) {
    Units in = RandomUnits(rng, rng() % 300);
    std::vector<unsigned char> scratch(in.size() * 3 + 1);
    int bytes = ModelEncode(in.data(), static_cast<int64_t>(in.size()), scratch.data(),
                            static_cast<int>(scratch.size()));
    int full = static_cast<int>(scratch.size());
    for (int cap : {full, bytes + 1, bytes, bytes - 1, bytes - 2, 1 + static_cast<int>(rng() % full)}) {
      if (cap >= 1) CheckEncode(in, cap);
    }
    for (size_t n : {scratch.size(), scratch.size() / 2, static_cast<size_t>(rng() % full)}) {
      CheckWcsToMbs(in, n);
    }
    if (HasFatalFailure()) return;
  }
}

}  // namespace
