// The 16-bit formatter against snprintf under combinations of flags and sizes.
#include "zq/wsfmt.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"

namespace {

using zqtest::U16;
using zqtest::Widen;

// `form` with its first `from` replaced by `to`.
std::string Conv(std::string form, const char* from, const char* to) {
  return form.replace(form.find(from), std::strlen(from), to);
}

// `wide` with wsnfmt on `wargs` gives `narrow` with snprintf on `nargs`, widened.
template <typename W, typename N>
void CheckWith(const std::string& wide, const std::string& narrow, W wargs, N nargs) {
  char n[1024];
  int nr = std::apply([&](auto... a) { return std::snprintf(n, sizeof n, narrow.c_str(), a...); },
                      nargs);
  ASSERT_TRUE(nr >= 0 && nr < static_cast<int>(sizeof n));
  unsigned short w[1024];
  const U16 wf = Widen(wide);
  int wr = std::apply([&](auto... a) { return wsnfmt(w, 1024, wf.c_str(), a...); }, wargs);
  ASSERT_EQ(wr, nr) << wide;
  ASSERT_TRUE(U16(w, wr + 1) == Widen(std::string(n, nr + 1))) << wide << " want " << n;
}

// The same arguments on both sides.
template <typename... A>
void Check(const std::string& wide, const std::string& narrow, A... args) {
  CheckWith(wide, narrow, std::make_tuple(args...), std::make_tuple(args...));
}

// Every flag set, a few widths and precisions, for one conversion.
std::vector<std::string> Formats(const std::string& conv, bool precision = true) {
  std::vector<std::string> out;
  const char* flags = "#0- +";
  for (int mask = 0; mask < 32; ++mask) {
    std::string f;
    for (int b = 0; b < 5; ++b) f += std::string(mask >> b & 1, flags[b]);
    for (const char* width : {"", "1", "7", "14"}) {
      for (const char* prec : {"", ".0", ".2", ".9"}) {
        if (!precision && *prec) continue;
        out.push_back("[%" + f + width + prec + conv + "]");
      }
    }
  }
  return out;
}

TEST(WsfmtTest, IntegersMatchSnprintf) {
  const long long values[] = {0, 1, -1, 42, 255, 65535, 70000, 32768, -32769, 123456789,
                              INT_MAX, INT_MIN, 0x80000000LL, 0x100000005LL, -4294967297LL,
                              123456789012345LL, LLONG_MAX, LLONG_MIN};
  for (const std::string conv : {"d", "i", "o", "u", "x", "X"}) {
    for (const auto& form : Formats(conv)) {
      const std::string h = Conv(form, conv.c_str(), ("h" + conv).c_str());
      const std::string ll = Conv(form, conv.c_str(), ("ll" + conv).c_str());
      for (long long v : values) {
        // h: a short; l: the low 32 bits of a long; ll, q and I64: 64 bits.
        Check(form, form, static_cast<int>(v));
        Check(h, h, static_cast<int>(v));
        CheckWith(Conv(form, conv.c_str(), ("l" + conv).c_str()), form,
                  std::make_tuple(static_cast<long>(v)), std::make_tuple(static_cast<int32_t>(v)));
        for (const char* prefix : {"ll", "q", "I64"}) Check(Conv(ll, "ll", prefix), ll, v);
      }
    }
  }
}

TEST(WsfmtTest, FloatsMatchSnprintf) {
  const double values[] = {0.0, -0.0, 1.0, -2.25, 0.1, 1.0 / 3, 123456.789, 9.9999995,
                           1e-10, 6.02214076e23, 1e300, 4.9e-324, NAN, INFINITY, -INFINITY};
  for (const char* conv : {"e", "E", "f", "g", "G"}) {
    for (const auto& form : Formats(conv)) {
      for (double v : values) Check(form, form, v);
    }
  }
  // A long output that does not fit a small internal buffer.
  Check("%.300f|%400.3e", "%.300f|%400.3e", 1e300, -1.5);
}

TEST(WsfmtTest, TextAndCharacters) {
  const U16 wide_text = Widen("caf\xe9 au lait");
  const std::string narrow_text = "caf\xe9 au lait";
  for (const auto& form : Formats("s")) {
    // %s and %ls take 16-bit text; %S and %hs narrow.
    for (const char* conv : {"s", "ls"}) {
      CheckWith(Conv(form, "s", conv), form, std::make_tuple(wide_text.c_str()),
                std::make_tuple(narrow_text.c_str()));
    }
    for (const char* conv : {"S", "hs"}) Check(Conv(form, "s", conv), form, narrow_text.c_str());
  }
  for (const auto& form : Formats("c", false)) {
    for (int v : {int{'a'}, 0xE9, int{' '}}) {
      Check(form, form, v);
      Check(Conv(form, "c", "C"), form, v);
    }
  }
  // 16-bit units beyond one byte pass through %s and %c unchanged.
  const U16 cjk = {0x4E2D, 0x6587, 0};
  unsigned short w[32];
  EXPECT_EQ(wsnfmt(w, 32, Widen("<%-4s|%c|%hc>").c_str(), cjk.c_str(), 0x20AC, 0x1E9), 10);
  EXPECT_EQ(U16(w, 10), (U16{'<', 0x4E2D, 0x6587, ' ', ' ', '|', 0x20AC, '|', 0xE9, '>'}));
  // A null text prints as the C library prints it.
  Check("%s|%10S|%.3s|%-8hs|", "%s|%10s|%.3s|%-8s|",
        static_cast<const unsigned short*>(nullptr), static_cast<const char*>(nullptr),
        static_cast<const unsigned short*>(nullptr), static_cast<const char*>(nullptr));
}

TEST(WsfmtTest, StarPointerPercentAndCount) {
  const U16 ab = Widen("ab");
  for (int width : {-12, -1, 0, 3, 20}) {
    for (int prec : {-3, 0, 2, 8}) {
      Check("%*.*d|%-*.*f|%*S", "%*.*d|%-*.*f|%*s", width, prec, 1234, width, prec, 3.14159,
            width, "ab");
      CheckWith("%*.*x|%*s", "%*.*x|%*s", std::make_tuple(width, prec, 0xBEEFu, width, ab.c_str()),
                std::make_tuple(width, prec, 0xBEEFu, width, "ab"));
    }
  }
  int x = 0;
  for (const auto& form : Formats("p", false)) {
    Check(form, form, static_cast<void*>(&x));
    Check(form, form, static_cast<void*>(nullptr));
  }
  Check("100%% %5%|%-3%|", "100%% %5%|%-3%|");

  int count = -1;
  short hcount = -1;
  long lcount = -1;
  long long qcount = -1;
  unsigned short w[64];  // %n, %hn, %ln and %qn store the count so far
  EXPECT_EQ(wsnfmt(w, 64, Widen("ab%n%5d%hn|%ln%s%qn").c_str(), &count, 7, &hcount, &lcount,
                   Widen("xyz").c_str(), &qcount), 11);
  EXPECT_EQ(std::make_tuple(count, hcount, lcount, qcount), std::make_tuple(2, 7, 8L, 11LL));
}

TEST(WsfmtTest, BoundsAndReturn) {
  // Cut to every size like snprintf: the full length back, output terminated.
  const char* fmt = "%s=%08.3f [%-6d] %x";
  const U16 name = Widen("pressure");
  int len = std::snprintf(nullptr, 0, fmt, "pressure", 3.14159, -42, 0xCAFEu);
  for (int n = 0; n <= len + 2; ++n) {
    char nb[128];
    std::memset(nb, 'Z', sizeof nb);
    int nr = std::snprintf(nb, static_cast<size_t>(n), fmt, "pressure", 3.14159, -42, 0xCAFEu);
    std::vector<unsigned short> wb(128, 0x5A5A);
    int wr = wsnfmt(wb.data(), n, Widen(fmt).c_str(), name.c_str(), 3.14159, -42, 0xCAFEu);
    ASSERT_EQ(wr, nr) << n;
    U16 want = Widen(std::string(nb, n == 0 ? 0 : std::min(n - 1, len)));
    if (n > 0) want += static_cast<unsigned short>(0);
    want.resize(wb.size(), 0x5A5A);
    ASSERT_TRUE(U16(wb.data(), wb.size()) == want) << n;
  }
  unsigned short w[64] = {0x5A5A};
  EXPECT_TRUE(wsnfmt(w, -5, Widen("abc").c_str()) == 3 && w[0] == 0x5A5A);
  EXPECT_EQ(wsnfmt(nullptr, 10, Widen("abc").c_str()), 3);
  EXPECT_TRUE(wsnfmt(w, 10, nullptr) == -1 && w[0] == 0);

  // wsfmt has no bound.
  std::vector<unsigned short> big(2100);
  char nb[2100];
  int nr = std::snprintf(nb, sizeof nb, "%2000d|%s", 7, "end");
  EXPECT_EQ(wsfmt(big.data(), Widen("%2000d|%s").c_str(), 7, Widen("end").c_str()), nr);
  EXPECT_EQ(U16(big.data(), nr), Widen(nb));
  // Widths and precisions are capped at 1,048,576.
  EXPECT_EQ(wsnfmt(big.data(), 10, Widen("%*d").c_str(), INT_MAX, 5), 1 << 20);
  EXPECT_EQ(wsnfmt(big.data(), 10, Widen("%-*d").c_str(), INT_MIN, 5), 1 << 20);
  EXPECT_EQ(wsnfmt(big.data(), 10, Widen("%99999999999s").c_str(), Widen("a").c_str()), 1 << 20);
  EXPECT_EQ(U16(big.data(), 9), Widen("         "));
  // A conversion cut short by the end of the format is copied as written.
  EXPECT_EQ(wsfmt(big.data(), Widen("50%-").c_str()), 4);
  EXPECT_EQ(U16(big.data(), 4), Widen("50%-"));
}

}  // namespace
