// Message catalogues and source files, checked against msgfmt and msgunfmt.
#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "services/test_util.h"
#include "zq/catalog.h"

namespace {

using zqtest::TempDir;
using WStr = std::basic_string<unsigned short>;

WStr U16(const std::u16string& s) { return WStr(s.begin(), s.end()); }

const char kGermanPo[] =
    "# German messages\nmsgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
    "msgid \"Not open\"\nmsgstr \"Nicht ge\xC3\xB6" "ffnet\"\n\n"
    "#, c-format\nmsgid \"Error %d reading\"\nmsgstr \"Fehler %d beim Lesen \\\"\xE2\x82\xAC\\\"\"\n\n"
    "msgid \"one file\"\nmsgid_plural \"%d files\"\nmsgstr[0] \"eine Datei\"\nmsgstr[1] \"%d Dateien\"\n\n"
    "msgctxt \"menu\"\nmsgid \"Open\"\nmsgstr \"\xC3\x96" "ffnen\"\n\n"
    "#, fuzzy\nmsgid \"Unsure\"\nmsgstr \"Unsicher\"\n\nmsgid \"Untranslated\"\nmsgstr \"\"\n\n"
    "msgid \"Astral \xF0\x9F\x98\x80\"\nmsgstr \"Stern \xF0\x9F\x98\x80\"\n";

// Compiles kGermanPo with msgfmt and `flags` into the directory.
std::string GermanMo(const TempDir& dir, const std::string& flags = "") {
  std::string mo = dir.File("de" + flags + ".mo");
  EXPECT_EQ(dir.Run("msgfmt " + flags + " -o '" + mo + "' '" + dir.Write("de.po", kGermanPo) + "'"), 0);
  return mo;
}

TEST(MessageCatalog, ReadsWhatMsgfmtWritesInBothByteOrders) {
  TempDir dir;
  const struct { const char *id, *want; } finds[] = {
      {"Not open", "Nicht ge\xC3\xB6" "ffnet"}, {"one file", "eine Datei"},
      {"Error %d reading", "Fehler %d beim Lesen \"\xE2\x82\xAC\""}, {"menu\x04Open", "\xC3\x96" "ffnen"},
      {"Open", nullptr}, {"Unsure", nullptr}, {"Untranslated", nullptr}, {"Not here", nullptr},
      {"", nullptr}, {nullptr, nullptr}};
  for (const char* endian : {"little", "big"}) {
    ZQMessageCatalog cat;
    ASSERT_TRUE(cat.Load(GermanMo(dir, std::string("--endianness=") + endian).c_str())) << endian;
    for (const auto& f : finds) {
      const char* got = cat.Find(f.id);
      EXPECT_EQ(std::string(got ? got : "(none)"), f.want ? f.want : "(none)") << endian << " " << f.id;
    }
    EXPECT_EQ(cat.Charset(), "UTF-8");
  }
  ZQMessageCatalog cat;
  EXPECT_FALSE(cat.Load(dir.File("missing.mo").c_str()) || cat.Load(dir.File("de.po").c_str()));
  EXPECT_EQ(cat.size(), 0u);
}

TEST(MessageCatalog, RejectsTruncatedAndSurvivesCorruptFiles) {
  TempDir dir;
  std::string data = zqtest::ReadFile(GermanMo(dir));
  ZQMessageCatalog cat;
  for (size_t n = 0; n < data.size(); ++n) {
    ASSERT_FALSE(cat.LoadFromMemory(data.data(), n)) << n;  // every cut loses a terminator
  }
  ASSERT_TRUE(cat.LoadFromMemory(data.data(), data.size()));
  std::mt19937 rng(5);
  int accepted = 0;
  for (int round = 0; round < 2000; ++round) {  // random bytes, in the header half the time
    std::string bad = data;
    for (int k = 0; k < 4; ++k) {
      bad[(rng() % 2) != 0 ? rng() % 28 : rng() % bad.size()] = static_cast<char>(rng());
    }
    if (cat.LoadFromMemory(bad.data(), bad.size())) {
      ++accepted;
      cat.Find("Not open");  // lookups in an accepted catalogue stay in bounds
    }
  }
  EXPECT_LT(accepted, 2000);
}

TEST(MessageCatalog, LgettextTranslatesThroughTheProcessCatalogue) {
  TempDir dir;
  ASSERT_TRUE(LoadMessageCatalog(GermanMo(dir).c_str()));
  WStr id = U16(u"Not open"), astral = U16(u"Astral \U0001F600"), unknown = U16(u"Unknown");
  const unsigned short* t = lgettext(id.c_str());
  EXPECT_EQ(WStr(t), U16(u"Nicht ge\u00f6ffnet"));
  EXPECT_EQ(lgettext(id.c_str()), t);  // the same text every time
  EXPECT_EQ(WStr(lgettext(astral.c_str())), U16(u"Stern \U0001F600"));
  EXPECT_EQ(lgettext(unknown.c_str()), unknown.c_str());
  EXPECT_STREQ(lgettext("one file"), "eine Datei");
  EXPECT_EQ(lgettext(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_EQ(lgettext(static_cast<const unsigned short*>(nullptr)), nullptr);
  // A bad catalogue leaves every message as it is; earlier texts stay valid.
  EXPECT_FALSE(LoadMessageCatalog(dir.Write("bad.mo", std::string("\xde\x12\x04\x95garbage", 11)).c_str()));
  EXPECT_EQ(lgettext(id.c_str()), id.c_str());
  EXPECT_EQ(WStr(t), U16(u"Nicht ge\u00f6ffnet"));
  LoadMessageCatalog(nullptr);
}

// Run as a child with its own environment: the catalogue is found through
// $ZQLIB and the locale's language.
TEST(MessageCatalog, SearchChild) {
  const char* expect = getenv("ZQ_CATALOG_EXPECT");
  if (expect == nullptr) GTEST_SKIP() << "runs only as a child of SearchOrder";
  EXPECT_STREQ(lgettext("Not open"), expect);
}

TEST(MessageCatalog, SearchOrder) {
  TempDir dir;
  // Each step may first add a catalogue (in folder `make`) that translates to what it expects.
  const struct { const char *make, *lang, *expect; } steps[] = {
      {"", "de_DE.UTF-8", "Not open"}, {".", "de_DE.UTF-8", "root"}, {"", "C", "root"},
      {"de", "de_DE.UTF-8", "de"}, {"", "fr_FR.UTF-8", "root"}, {"de_DE", "de_DE.UTF-8@euro", "de_DE"},
      {"", "de_AT", "de"}, {"locale/de/LC_MESSAGES", "de_DE.UTF-8", "locale"}};
  auto child = [&](const std::string& lang, const std::string& expect) {
    return dir.Run("env -u LC_ALL -u LC_MESSAGES ZQLIB='" + dir.path + "' LANG='" + lang +
                   "' ZQ_CATALOG_EXPECT='" + expect + "' /proc/" + std::to_string(getpid()) +
                   "/exe --gtest_filter=MessageCatalog.SearchChild > /dev/null");
  };
  for (const auto& s : steps) {
    if (*s.make != 0) {
      std::string sub = dir.File(s.make);
      std::string po = dir.Write("t.po", "msgid \"Not open\"\nmsgstr \"" + std::string(s.expect) + "\"\n");
      ASSERT_EQ(dir.Run("mkdir -p '" + sub + "' && msgfmt -o '" + sub + "/messages.mo' '" + po + "'"), 0);
    }
    EXPECT_EQ(child(s.lang, s.expect), 0) << s.lang << " expects " << s.expect;
  }
  EXPECT_NE(child("de_DE.UTF-8", "wrong"), 0);  // the child really checks
}

const char kSourcePo[] =
    "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
    "# Translator comment\n#: src/a.cpp:10\n#, fuzzy, c-format\nmsgid \"A %d\"\nmsgstr \"B %d\"\n\n"
    "msgid \"\"\n\"multi\\n\"\n\"line\\ttext\"\nmsgstr \"mehr\\nzeilig \\\\ \\\"q\\\" \\101\\x42\"\n\n"
    "msgctxt \"ctx\"\nmsgid \"file\"\nmsgid_plural \"files\"\nmsgstr[0] \"Datei\"\nmsgstr[1] \"Dateien\"\n";

TEST(PoFile, ParsesWritesAndCompilesLikeGettext) {
  ZQPoFile po;
  ASSERT_TRUE(po.Parse(kSourcePo)) << po.Error();
  ASSERT_EQ(po.entries().size(), 4u);
  const ZQPoEntry& a = po.entries()[1];
  EXPECT_EQ(a.comments, (std::vector<std::string>{"# Translator comment", "#: src/a.cpp:10"}));
  EXPECT_TRUE(a.fuzzy);
  EXPECT_EQ(a.flags, std::vector<std::string>{"c-format"});
  // msgunfmt reads the same entries from msgfmt's catalogue of the source (what we
  // parse), from msgfmt's catalogue of what we write, and from the one we compile.
  TempDir dir;
  po.entries()[1].fuzzy = false;  // msgfmt leaves fuzzy entries out
  ASSERT_TRUE(po.Write(dir.File("out.po").c_str()));
  dir.Write("source.po", kSourcePo);
  dir.Write("ours.mo", po.Compile());
  ASSERT_EQ(dir.Run("cd '" + dir.path + "' && msgfmt --use-fuzzy -o source.mo source.po && "
                    "msgfmt --check-format -o out.mo out.po"), 0);
  auto by_key = [](const ZQPoFile& f) {  // msgctxt, msgid -> msgstr..., msgid_plural
    std::map<std::vector<std::string>, std::vector<std::string>> m;
    for (const ZQPoEntry& e : f.entries()) {
      m[{e.msgctxt, e.msgid}] = e.msgstr;
      m[{e.msgctxt, e.msgid}].push_back(e.msgid_plural);
    }
    return m;
  };
  for (const char* mo : {"source.mo", "out.mo", "ours.mo"}) {
    ZQPoFile back;
    ASSERT_EQ(dir.Run("msgunfmt -o '" + dir.File("back.po") + "' '" + dir.File(mo) + "'"), 0) << mo;
    ASSERT_TRUE(back.Read(dir.File("back.po").c_str())) << back.Error();
    EXPECT_EQ(by_key(back), by_key(po)) << mo;
  }
}

TEST(PoFile, ReportsSyntaxErrorsWithTheirLine) {
  const struct { const char *text, *error; } cases[] = {
      {"msgid \"a\"\n", "1: missing msgstr"}, {"msgid \"a\"\nmsgstr \"b\n", "2: unterminated string"},
      {"msgid \"a\"\nmsgstr \"b\"\nmsgstr \"c\"\n", "3: misplaced msgstr"},
      {"msgid \"a\"\nmsgstr[0] \"b\"\n", "2: msgstr[] without msgid_plural"},
      {"\"orphan\"\n", "1: string without a keyword"},
      {"msgid \"a\"\nmsgtxt \"b\"\n", "2: unknown keyword \"msgtxt\""},
      {"msgid \"a\\q\"\nmsgstr \"\"\n", "1: invalid escape sequence"},
      {"msgid \"a\" x\nmsgstr \"\"\n", "1: unexpected text after the string"}};
  for (const auto& c : cases) {
    ZQPoFile po;
    EXPECT_FALSE(po.Parse(c.text)) << c.text;
    EXPECT_EQ(po.Error(), c.error) << c.text;
    EXPECT_TRUE(po.entries().empty());
  }
  ZQPoFile po;
  EXPECT_FALSE(po.Read("/nonexistent/x.po"));
  EXPECT_TRUE(po.Parse(""));
  EXPECT_TRUE(po.entries().empty());
}

}  // namespace
