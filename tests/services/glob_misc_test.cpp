// The smaller services of ZQGlob: probes, scrambling, counters, numbers, GUIDs, paths, modules.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "services/test_util.h"
#include "zq/options.h"
#include "zq/zqglob.h"

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
  std::string data = "Hi", all, t;  // stored byte = ~plain ^ previous stored byte, first the seed
  ZQGlob::Encrypt(data, 0x5A);
  EXPECT_EQ(data, "\xED\x7B");
  int prev = 0x5A;
  EXPECT_EQ(ZQGlob::uncode(0xED, prev), 'H');
  EXPECT_EQ(prev, 0xED);
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c * 7);
  ZQGlob::Encrypt(t = all, 0xA5);
  ZQGlob::Decrypt(t, 0xA5);
  EXPECT_EQ(t, all);
}

TEST(GlobMisc, BtrieveCountersAreSharedAndUnbounded) {
  int a0 = ZQGlob::PeekBtrieveRefcount(true), b0 = ZQGlob::PeekBtrieveRefcount(false);
  std::vector<std::thread> threads(4);
  auto bump = [] { for (int i = 0; i < 10000; ++i) ZQGlob::IncrementBtrieveRefcount(true); };
  for (auto& th : threads) th = std::thread(bump);
  for (auto& th : threads) th.join();
  EXPECT_EQ(ZQGlob::PeekBtrieveRefcount(true), a0 + 40000);
  EXPECT_EQ(ZQGlob::DecrementBtrieveRefcount(false), b0 - 1);
  EXPECT_EQ(ZQGlob::PeekBtrieveRefcount(false), b0 - 1);
}

TEST(GlobMisc, NumberConversionAndFormatting) {
  ZQOptionBlock* opt = ZQOptionBlock::GlobalOptions();
  char dec = opt->DecSep(), th = opt->ThsndSep();
  opt->SetSeparators('.', '\0');
  EXPECT_EQ(ZQGlob::CDbl("1234.5"), 1234.5);
  EXPECT_EQ(ZQGlob::CDbl("junk"), 0);
  EXPECT_EQ(ZQGlob::CDbl(nullptr), 0);
  EXPECT_FLOAT_EQ(ZQGlob::CSng("0.1"), 0.1f);
  const struct { const char* what; long got, want; } rows[] = {
      {"CInt 2.5", ZQGlob::CInt("2.5"), 2}, {"CInt 3.5", ZQGlob::CInt("3.5"), 4},
      {"CInt -40000", ZQGlob::CInt("-40000"), -32768}, {"CByte 300", ZQGlob::CByte("300"), 255},
      {"CByte -1", ZQGlob::CByte("-1"), 0}, {"CLong 1e12", ZQGlob::CLong("1e12"), 2147483647L},
      {"CLong min", ZQGlob::CLong("-2147483648.4"), -2147483647L - 1}, {"CBool -2", ZQGlob::CBool("-2"), 1},
      {"CBool yes", ZQGlob::CBool("yes"), 1}, {"CBool False", ZQGlob::CBool("False"), 0}};
  for (const auto& r : rows) EXPECT_EQ(r.got, r.want) << r.what;
  const struct { char dec, th; double value; int places; const char* want; } formats[] = {
      {'.', '\0', -1234567.891, 2, "-1234567.89"}, {',', '.', -1234567.891, 2, "-1.234.567,89"},
      {',', '.', 999, 0, "999"}, {',', '.', 100000, 1, "100.000,0"}};
  for (const auto& f : formats) {
    std::string s;
    opt->SetSeparators(f.dec, f.th);
    ZQGlob::FormatNumber(f.value, f.places, s);
    EXPECT_EQ(s, f.want);
  }
  EXPECT_EQ(ZQGlob::CDbl("1.234.567,5"), 1234567.5);
  char buf[6];
  EXPECT_EQ(ZQGlob::CopyNumber(buf, sizeof buf, "12.345,678"), 5);
  EXPECT_STREQ(buf, "12345");
  opt->SetSeparators(dec, th);
}

TEST(GlobMisc, GUIDTextRoundTrips) {
  const char kText[] = "{6B29FC40-CA47-1067-B31D-00DD010662DA}";
  ZQGlob::GUID g{}, h{}, r1{}, r2{};
  ASSERT_TRUE(ZQGlob::StringToGUID(kText, g));
  EXPECT_TRUE(g.data1 == 0x6B29FC40u && g.data2 == 0xCA47 && g.data3 == 0x1067 &&
              g.data4[0] == 0xB3 && g.data4[7] == 0xDA);
  EXPECT_EQ(ZQGlob::GUIDToString(g), kText);
  ASSERT_TRUE(ZQGlob::StringToGUID("6b29fc40-ca47-1067-b31d-00dd010662da", h));
  EXPECT_EQ(ZQGlob::GUIDToString(h), kText);
  for (const char* bad : {"{6B29FC40-CA47-1067-B31D-00DD010662DA", "6B29FC40CA47-1067-B31D-00DD010662DAX",
                          "{6B29FC40-CA47-1067-B31D-00DD010662DG}", "", "{}", (const char*)nullptr}) {
    EXPECT_FALSE(ZQGlob::StringToGUID(bad, h)) << (bad ? bad : "(null)");
  }
  ASSERT_TRUE(ZQGlob::CreateGUID(r1) && ZQGlob::CreateGUID(r2));
  EXPECT_NE(ZQGlob::GUIDToString(r1), ZQGlob::GUIDToString(r2));
  EXPECT_TRUE(r1.data3 >> 12 == 4 && (r1.data4[0] & 0xC0) == 0x80) << ZQGlob::GUIDToString(r1);
}

TEST(GlobMisc, PathsTemporaryNamesAndPrograms) {
  EXPECT_EQ(ZQGlob::JoinPath("/a/", "/b"), "/a/b");
  zqtest::TempDir dir;
  zqtest::EnvVar tmpdir("TMPDIR", dir.path);
  std::string n1, n2;
  struct stat st;
  ASSERT_TRUE(ZQGlob::tempnam(n1, "srt") && ZQGlob::tempnam(n2, "srt"));
  EXPECT_NE(n1, n2);
  EXPECT_EQ(n1.rfind(dir.path + "/srt", 0), 0u) << n1;
  EXPECT_EQ(stat(n1.c_str(), &st), 0);  // reserved by creating it
  setenv("TMPDIR", (dir.path + "/nonexistent").c_str(), 1);
  ASSERT_TRUE(ZQGlob::tempnam(n1));
  EXPECT_EQ(n1.rfind("/tmp/zq", 0), 0u);
  unlink(n1.c_str());
  EXPECT_EQ(ZQGlob::Execute("exit 3", true), 3);
  EXPECT_EQ(ZQGlob::Execute("kill -9 $$", true), 128 + 9);
  std::string msg;
  EXPECT_EQ(ZQGlob::Execute(nullptr, true, &msg), -1);
  EXPECT_FALSE(msg.empty());
}

TEST(GlobMisc, ModulesAreFoundAndFailuresExplained) {
  std::string path, msg;
  ASSERT_TRUE(ZQGlob::FindModule("libc.so.6", path));
  EXPECT_EQ(path.substr(path.size() - 10), "/libc.so.6");
  EXPECT_FALSE(ZQGlob::FindModule("no-such-module-zq", path));
  zqtest::TempDir dir;
  std::string fake = dir.Write("fake.so", "this is text, not a module");
  zqtest::EnvVar path_var("LD_LIBRARY_PATH", "/nonexistent:" + dir.path);
  EXPECT_TRUE(ZQGlob::FindModule("fake", path));  // ".so" is implied
  EXPECT_EQ(path, fake);
  const struct { const char *module, *error; int code; std::string mentions; } loads[] = {
      {"fake.so", "invalid ELF header", 193, fake},
      {"no-such-module-zq.so", "", 126, "no-such-module-zq.so"},
      {"libc.so.6", "undefined symbol: x", 0, "undefined symbol: x"}};
  for (const auto& l : loads) {
    EXPECT_EQ(ZQGlob::GetLoadErrorMessage(l.module, l.error, msg), l.code) << l.module;
    EXPECT_NE(msg.find(l.mentions), std::string::npos) << msg;
  }
}

TEST(GlobMisc, BuffersAndStringConversions) {
  char* buf = nullptr;
  int size = 0;
  ASSERT_TRUE(ZQGlob::growbuf(buf, size, 10) && size >= 10);
  std::memset(buf, 'x', static_cast<size_t>(size));
  int old = size;
  ASSERT_TRUE(ZQGlob::growbuf(buf, size, old + 1) && size >= 2 * old);
  EXPECT_EQ(std::string(buf, static_cast<size_t>(old)), std::string(static_cast<size_t>(old), 'x'));
  ZQGlob::freebuf(buf);
  std::basic_string<unsigned short> w;
  std::string back;
  ZQGlob::StringToWString("gr\xC3\xBC\xC3\x9F", w, ZQ_CSET_UTF8);
  EXPECT_EQ(w, (std::basic_string<unsigned short>{'g', 'r', 0xFC, 0xDF}));
  ZQGlob::WStringToString(w.c_str(), back, ZQ_CSET_ISO8859_1);
  EXPECT_EQ(back, "gr\xFC\xDF");
}

