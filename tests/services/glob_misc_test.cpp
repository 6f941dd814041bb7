// Executable probe, scrambling, counters, numbers, GUIDs, paths, programs,
// modules, buffers and string conversions of ZQGlob.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "services/test_util.h"
#include "zq/options.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"

namespace {

TEST(GlobMisc, CheckEXEBitSizeReadsTheNewHeaderSignature) {
  zqtest::TempDir dir;
  std::string pe = "MZ" + std::string(198, '\0');
  pe[60] = static_cast<char>(0x80);  // new header at offset 128
  pe.replace(128, 2, "PE");
  std::string ne = pe, far = pe;
  ne[128] = 'N';
  far[61] = 0x7f;  // offset beyond the end of the file
  for (auto [data, bits] : {std::pair<std::string, int>{pe, 32}, {ne, 16}, {"MZ", 16}, {far, 16}}) {
    EXPECT_EQ(ZQGlob::CheckEXEBitSize(dir.Write("x.exe", data).c_str()), bits) << data.size();
  }
  EXPECT_EQ(ZQGlob::CheckEXEBitSize(dir.File("missing").c_str()), 0);
  EXPECT_EQ(ZQGlob::CheckEXEBitSize(nullptr), 0);
}

TEST(GlobMisc, ScramblingChainsAndUnchains) {
  // Stored byte = ~plain ^ previous stored byte, first against the seed.
  std::string data = "Hello", expect;
  ZQGlob::Encrypt(data, 0x5A);
  int prev = 0x5A;
  for (char c : std::string("Hello")) expect += static_cast<char>(prev = (~c ^ prev) & 0xFF);
  EXPECT_EQ(data, expect);
  prev = 0x5A;
  std::string plain;
  for (char c : data) plain += static_cast<char>(ZQGlob::uncode(static_cast<unsigned char>(c), prev));
  EXPECT_EQ(plain, "Hello");
  EXPECT_EQ(prev, static_cast<unsigned char>(data.back()));
  std::mt19937 rng(3);
  for (int i = 0; i < 50; ++i) {
    std::string s, t;
    for (int k = 0; k < 64; ++k) s += static_cast<char>(rng());
    int seed = static_cast<int>(rng() & 0xFF);
    ZQGlob::Encrypt(t = s, seed);
    ZQGlob::Decrypt(t, seed);
    ASSERT_EQ(t, s);
  }
}

TEST(GlobMisc, BtrieveCountersAreSharedAndUnbounded) {
  int a0 = ZQGlob::PeekBtrieveRefcount(true);
  int b0 = ZQGlob::PeekBtrieveRefcount(false);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 10000; ++i) ZQGlob::IncrementBtrieveRefcount(true);
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(ZQGlob::PeekBtrieveRefcount(true), a0 + 40000);
  EXPECT_EQ(ZQGlob::DecrementBtrieveRefcount(false), b0 - 1);
  EXPECT_EQ(ZQGlob::PeekBtrieveRefcount(false), b0 - 1);
  ZQGlob::IncrementBtrieveRefcount(false);
  EXPECT_EQ(ZQGlob::PeekBtrieveRefcount(false), b0);
}

TEST(GlobMisc, NumberConversionAndFormatting) {
  ZQOptionBlock* opt = ZQOptionBlock::GlobalOptions();
  char dec = opt->DecSep(), th = opt->ThsndSep();
  opt->SetSeparators('.', '\0');
  EXPECT_EQ(ZQGlob::CDbl("1234.5"), 1234.5);
  EXPECT_EQ(ZQGlob::CDbl("junk"), 0);
  EXPECT_EQ(ZQGlob::CDbl(nullptr), 0);
  EXPECT_EQ(ZQGlob::CInt("2.5"), 2);  // half to even
  EXPECT_EQ(ZQGlob::CInt("3.5"), 4);
  EXPECT_EQ(ZQGlob::CInt("-40000"), -32768);
  EXPECT_EQ(ZQGlob::CByte("300"), 255);
  EXPECT_EQ(ZQGlob::CByte("-1"), 0);
  EXPECT_EQ(ZQGlob::CLong("1e12"), 2147483647L);
  EXPECT_EQ(ZQGlob::CLong("-2147483648.4"), -2147483647L - 1);
  EXPECT_FLOAT_EQ(ZQGlob::CSng("0.1"), 0.1f);
  EXPECT_TRUE(ZQGlob::CBool("yes"));
  EXPECT_TRUE(ZQGlob::CBool("-2"));
  EXPECT_FALSE(ZQGlob::CBool("False"));
  EXPECT_FALSE(ZQGlob::CBool("0"));
  std::string s;
  ZQGlob::FormatNumber(-1234567.891, 2, s);
  EXPECT_EQ(s, "-1234567.89");
  opt->SetSeparators(',', '.');
  using Format = std::tuple<double, int, const char*>;
  for (auto [value, places, want] :
       {Format{-1234567.891, 2, "-1.234.567,89"}, {999, 0, "999"}, {100000, 1, "100.000,0"}}) {
    ZQGlob::FormatNumber(value, places, s);
    EXPECT_EQ(s, want);
  }
  EXPECT_EQ(ZQGlob::CDbl("1.234.567,5"), 1234567.5);
  char buf[6];
  EXPECT_EQ(ZQGlob::CopyNumber(buf, sizeof buf, "12.345,678"), 5);
  EXPECT_STREQ(buf, "12345");
  opt->SetSeparators(dec, th);
}

TEST(GlobMisc, GUIDTextRoundTrips) {
  ZQGlob::GUID g{};
  ASSERT_TRUE(ZQGlob::StringToGUID("{6B29FC40-CA47-1067-B31D-00DD010662DA}", g));
  EXPECT_EQ(g.data1, 0x6B29FC40u);
  EXPECT_EQ(g.data2, 0xCA47);
  EXPECT_EQ(g.data3, 0x1067);
  EXPECT_EQ(g.data4[0], 0xB3);
  EXPECT_EQ(g.data4[7], 0xDA);
  EXPECT_EQ(ZQGlob::GUIDToString(g), "{6B29FC40-CA47-1067-B31D-00DD010662DA}");
  ZQGlob::GUID h{};
  EXPECT_TRUE(ZQGlob::StringToGUID("6b29fc40-ca47-1067-b31d-00dd010662da", h));
  EXPECT_EQ(ZQGlob::GUIDToString(h), ZQGlob::GUIDToString(g));
  for (const char* bad : {"{6B29FC40-CA47-1067-B31D-00DD010662DA", "6B29FC40CA47-1067-B31D-00DD010662DAX",
                          "{6B29FC40-CA47-1067-B31D-00DD010662DG}", "", "{}"}) {
    ZQGlob::GUID k{};
    EXPECT_FALSE(ZQGlob::StringToGUID(bad, k)) << bad;
  }
  EXPECT_FALSE(ZQGlob::StringToGUID(nullptr, h));
  ZQGlob::GUID r1{}, r2{};
  ASSERT_TRUE(ZQGlob::CreateGUID(r1));
  ASSERT_TRUE(ZQGlob::CreateGUID(r2));
  EXPECT_NE(ZQGlob::GUIDToString(r1), ZQGlob::GUIDToString(r2));
  EXPECT_EQ(r1.data3 >> 12, 4);
  EXPECT_EQ(r1.data4[0] & 0xC0, 0x80);
  ZQGlob::GUID back{};
  ASSERT_TRUE(ZQGlob::StringToGUID(ZQGlob::GUIDToString(r1).c_str(), back));
  EXPECT_EQ(ZQGlob::GUIDToString(back), ZQGlob::GUIDToString(r1));
}

TEST(GlobMisc, PathsTemporaryNamesAndPrograms) {
  EXPECT_EQ(ZQGlob::JoinPath("/a", "b"), "/a/b");
  EXPECT_EQ(ZQGlob::JoinPath("/a/", "/b"), "/a/b");
  EXPECT_EQ(ZQGlob::JoinPath("", "b"), "b");
  EXPECT_EQ(ZQGlob::JoinPath(nullptr, "b"), "b");
  zqtest::TempDir dir;
  zqtest::EnvVar tmpdir("TMPDIR", dir.path().c_str());
  std::string n1, n2;
  ASSERT_TRUE(ZQGlob::tempnam(n1, "srt"));
  ASSERT_TRUE(ZQGlob::tempnam(n2, "srt"));
  EXPECT_NE(n1, n2);
  EXPECT_EQ(n1.rfind(dir.path() + "/srt", 0), 0u) << n1;
  struct stat st;
  EXPECT_EQ(stat(n1.c_str(), &st), 0);  // reserved by creating it
  ZQString z;
  EXPECT_TRUE(ZQGlob::tempnam(z));
  EXPECT_EQ(std::string(z.c_str()).rfind(dir.path() + "/zq", 0), 0u);
  setenv("TMPDIR", (dir.path() + "/nonexistent").c_str(), 1);
  ASSERT_TRUE(ZQGlob::tempnam(n1));
  EXPECT_EQ(n1.rfind("/tmp/zq", 0), 0u);
  unlink(n1.c_str());

  EXPECT_EQ(ZQGlob::Execute("exit 3", true), 3);
  EXPECT_EQ(ZQGlob::Execute(("echo hi > '" + dir.File("out") + "'").c_str(), true), 0);
  EXPECT_EQ(zqtest::ReadFile(dir.File("out")), "hi\n");
  EXPECT_EQ(ZQGlob::Execute("kill -9 $$", true), 128 + 9);
  std::string msg;
  EXPECT_EQ(ZQGlob::Execute(nullptr, true, &msg), -1);
  EXPECT_FALSE(msg.empty());
}

TEST(GlobMisc, ModulesAreFoundAndFailuresExplained) {
  std::string path;
  ASSERT_TRUE(ZQGlob::FindModule("libc.so.6", path));
  EXPECT_EQ(path.substr(path.size() - 10), "/libc.so.6");
  EXPECT_FALSE(ZQGlob::FindModule("no-such-module-zq", path));
  EXPECT_FALSE(ZQGlob::FindModule(nullptr, path));
  zqtest::TempDir dir;
  dir.Write("fake.so", "this is text, not a module");
  zqtest::EnvVar path_var("LD_LIBRARY_PATH", ("/nonexistent:" + dir.path()).c_str());
  EXPECT_TRUE(ZQGlob::FindModule("fake", path));  // ".so" is implied
  EXPECT_EQ(path, dir.File("fake.so"));
  std::string msg;
  EXPECT_EQ(ZQGlob::GetLoadErrorMessage("fake.so", "invalid ELF header", msg), 193);
  EXPECT_NE(msg.find(dir.File("fake.so")), std::string::npos) << msg;
  EXPECT_EQ(ZQGlob::GetLoadErrorMessage("no-such-module-zq.so", "", msg), 126);
  EXPECT_NE(msg.find("no-such-module-zq.so"), std::string::npos) << msg;
  EXPECT_EQ(ZQGlob::GetLoadErrorMessage("libc.so.6", "undefined symbol: x", msg), 0);
  EXPECT_NE(msg.find("undefined symbol: x"), std::string::npos) << msg;
}

TEST(GlobMisc, BuffersAndStringConversions) {
  char* buf = nullptr;
  int size = 0;
  ASSERT_TRUE(ZQGlob::growbuf(buf, size, 10));
  EXPECT_GE(size, 10);
  std::memset(buf, 'x', static_cast<size_t>(size));
  int old = size;
  ASSERT_TRUE(ZQGlob::growbuf(buf, size, old + 1));
  EXPECT_GE(size, 2 * old);
  EXPECT_EQ(std::string(buf, static_cast<size_t>(old)), std::string(static_cast<size_t>(old), 'x'));
  ZQGlob::freebuf(buf);
  unsigned short* wbuf = nullptr;
  size = 0;
  ASSERT_TRUE(ZQGlob::growbuf(wbuf, size, 100000));
  wbuf[99999] = 1;
  ZQGlob::freebuf(wbuf);

  std::basic_string<unsigned short> w;
  ZQGlob::StringToWString("gr\xC3\xBC\xC3\x9F", w, ZQ_CSET_UTF8);
  EXPECT_EQ(w, (std::basic_string<unsigned short>{'g', 'r', 0xFC, 0xDF}));
  std::string back;
  ZQGlob::WStringToString(w, back, ZQ_CSET_UTF8);
  EXPECT_EQ(back, "gr\xC3\xBC\xC3\x9F");
  ZQGlob::WStringToString(w.c_str(), back, ZQ_CSET_ISO8859_1);
  EXPECT_EQ(back, "gr\xFC\xDF");
  std::string s = "MiXeD 123";
  ZQGlob::ToUpper(s);
  EXPECT_EQ(s, "MIXED 123");
  ZQGlob::ToLower(s);
  EXPECT_EQ(s, "mixed 123");
  char text[] = "same", out[8];
  EXPECT_STREQ(ZQGlob::ExternalToInternal(text, out), "same");
  EXPECT_STREQ(ZQGlob::InternalToExternal(text, text), "same");
}

}  // namespace
