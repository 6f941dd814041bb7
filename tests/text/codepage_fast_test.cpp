// The block-at-a-time string decoding of the encoding modules against the
// modules' own one-character routine, and against iconv for valid text:
// lead bytes, trailing bytes that look like lead bytes, and invalid bytes at
// every position of a block and near the terminator, with every capacity.
// Inputs end with their zero byte at an unreadable page; outputs end at an
// unwritable one.
#include <iconv.h>
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

// A region of `Bytes` bytes ending at an inaccessible page, made once.
class GuardedRegion {
 public:
  static constexpr size_t kBytes = 1 << 16;

  static GuardedRegion& Get(int which) {
    static GuardedRegion* regions[2] = {new GuardedRegion, new GuardedRegion};
    return *regions[which];
  }

  char* End() { return end_; }

 private:
  GuardedRegion() {
    size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    char* base = static_cast<char*>(mmap(nullptr, kBytes + page, PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base + kBytes, page, PROT_NONE);
    end_ = base + kBytes;
  }
  char* end_;
};

// Code set `cs` one character at a time through MBtoWC, as the string
// routine must behave: -1 at the first invalid character.
int Model(const std::string& text, unsigned short* out, size_t n, ZQ_CSET cs) {
  const char* p = text.c_str();
  size_t count = 0;
  for (; count < n; ++count) {
    unsigned short u = 0;
    int len = ZQGlob::MBtoWC(&u, p, -1, cs);
    if (len < 0) return -1;
    if (len == 0) {
      out[count] = 0;
      return static_cast<int>(count);
    }
    out[count] = u;
    p += len;
  }
  return static_cast<int>(count);
}

// MBStoWCS of `text` (zero-terminated just before the guard) into `n` units
// ending at the other guard, compared unit by unit with the model.
void Check(const std::string& text, size_t n, ZQ_CSET cs) {
  std::vector<unsigned short> want(n, 0xAAAA);
  int want_n = Model(text, want.data(), n, cs);
  char* in = GuardedRegion::Get(0).End() - text.size() - 1;
  std::memcpy(in, text.c_str(), text.size() + 1);
  unsigned short* out = reinterpret_cast<unsigned short*>(GuardedRegion::Get(1).End()) - n;
  std::fill(out, out + n, 0xAAAA);
  ASSERT_EQ(ZQGlob::MBStoWCS(out, in, static_cast<int>(n), cs), want_n)
      << "cs " << cs << " n " << n << " " << testing::PrintToString(text);
  ASSERT_EQ(std::vector<unsigned short>(out, out + n), want)
      << "cs " << cs << " n " << n << " " << testing::PrintToString(text);
}

struct Pieces {
  std::vector<std::string> valid;    // characters, one or two bytes
  std::vector<std::string> invalid;  // bytes and pairs that are none
};

// The characters of an iconv code page, found by asking iconv, and the byte
// sequences it rejects.
Pieces PiecesOf(const char* iconv_name) {
  Pieces pieces;
  iconv_t cd = iconv_open("UTF-16LE", iconv_name);
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1));
  auto decodes = [&](const std::string& s) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char buf[16];
    char* ip = const_cast<char*>(s.data());
    size_t il = s.size();
    char* op = buf;
    size_t ol = sizeof(buf);
    return iconv(cd, &ip, &il, &op, &ol) != static_cast<size_t>(-1) && il == 0 &&
           op - buf == 2;
  };
  for (int b = 1; b < 256; ++b) {
    std::string one(1, static_cast<char>(b));
    if (decodes(one)) {
      pieces.valid.push_back(one);
      continue;
    }
    bool lead = false;
    for (int t = 1; t < 256; ++t) {
      std::string two = one + static_cast<char>(t);
      if (decodes(two)) {
        lead = true;
        pieces.valid.push_back(two);
      } else if (t % 37 == 0) {
        pieces.invalid.push_back(two);
      }
    }
    if (!lead) pieces.invalid.push_back(one);
  }
  iconv_close(cd);
  return pieces;
}

struct CodeSetCase {
  ZQ_CSET cs;
  const char* iconv_name;
};

const CodeSetCase kCases[] = {
    {ZQ_CSET_SHIFTJIS, "SHIFT_JIS"}, {ZQ_CSET_CP932, "CP932"}, {ZQ_CSET_CP936, "CP936"},
    {ZQ_CSET_CP949, "CP949"},        {ZQ_CSET_CP950, "CP950"}, {ZQ_CSET_CP1250, "CP1250"},
    {ZQ_CSET_ISO8859_6, "ISO-8859-6"},
};

// Valid text of two-byte characters whose trailing bytes fall in the lead
// range, single bytes and ASCII, mixed; with a piece (valid or not) put at
// every position of the first blocks and at every distance to the end.
TEST(CodePageFastTest, OnePieceAnywhere) {
  for (const CodeSetCase& c : kCases) {
    SCOPED_TRACE(c.iconv_name);
    Pieces pieces = PiecesOf(c.iconv_name);
    ASSERT_FALSE(pieces.valid.empty());
    std::mt19937 rng(3);
    std::string base;
    while (base.size() < 150) base += pieces.valid[rng() % pieces.valid.size()];
    std::vector<std::string> probes = pieces.invalid;
    for (int k = 0; k < 6; ++k) probes.push_back(pieces.valid[rng() % pieces.valid.size()]);
    if (probes.size() > 40) probes.resize(40);
    for (const std::string& probe : probes) {
      for (size_t at = 0; at < 140; ++at) {
        std::string text = base.substr(0, at) + probe + base.substr(at, 70);
        std::vector<unsigned short> scratch(text.size() + 1);
        int units = Model(text, scratch.data(), scratch.size(), c.cs);
        Check(text, text.size() + 1, c.cs);
        if (units > 0) Check(text, static_cast<size_t>(units), c.cs);
        if (units > 1) Check(text, static_cast<size_t>(units - 1), c.cs);
        if (HasFatalFailure()) return;
      }
      for (size_t tail = 0; tail < 80; ++tail) {
        Check(base.substr(0, 100 + tail) + probe, 300, c.cs);
        if (HasFatalFailure()) return;
      }
    }
  }
}

// Long valid texts decode as iconv decodes them.
TEST(CodePageFastTest, LongTextsAsIconv) {
  for (const CodeSetCase& c : kCases) {
    SCOPED_TRACE(c.iconv_name);
    Pieces pieces = PiecesOf(c.iconv_name);
    std::mt19937 rng(9);
    for (int round = 0; round < 20; ++round) {
      std::string text;
      size_t len = 1000 + rng() % 20000;
      while (text.size() < len) {
        if (rng() % 3 == 0) text.append(rng() % 80, static_cast<char>('a' + rng() % 26));
        text += pieces.valid[rng() % pieces.valid.size()];
      }
      iconv_t cd = iconv_open("UTF-16LE", c.iconv_name);
      std::vector<unsigned short> want(text.size() + 1);
      char* ip = text.data();
      size_t il = text.size();
      char* op = reinterpret_cast<char*>(want.data());
      size_t ol = want.size() * 2;
      ASSERT_NE(iconv(cd, &ip, &il, &op, &ol), static_cast<size_t>(-1));
      iconv_close(cd);
      want.resize((op - reinterpret_cast<char*>(want.data())) / 2);
      std::vector<unsigned short> got(text.size() + 1, 0xAAAA);
      int n = ZQGlob::MBStoWCS(got.data(), text.c_str(), static_cast<int>(got.size()), c.cs);
      ASSERT_EQ(n, static_cast<int>(want.size()));
      got.resize(n);
      ASSERT_EQ(got, want);
      Check(text, want.size() / 2, c.cs);
      Check(text, want.size(), c.cs);
    }
  }
}

}  // namespace
