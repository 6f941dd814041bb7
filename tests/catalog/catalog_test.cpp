// Compiled catalogues made by msgfmt, lgettext, and message source files
// checked against msgfmt and msgunfmt.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "services/test_util.h"
#include "zq/catalog.h"

namespace {

using zqtest::ReadFile;
using zqtest::TempDir;

using WStr = std::basic_string<unsigned short>;

WStr U16(const char16_t* s) {
  WStr w;
  for (; *s != 0; ++s) w += static_cast<unsigned short>(*s);
  return w;
}

// One entry a line.
const char kGermanPo[] =
    "# German messages\nmsgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
    "msgid \"Not open\"\nmsgstr \"Nicht ge\xC3\xB6" "ffnet\"\n\n"
    "#, c-format\nmsgid \"Error %d reading from file\"\n"
    "msgstr \"Fehler %d beim Lesen \\\"\xE2\x82\xAC\\\"\"\n\n"
    "msgid \"one file\"\nmsgid_plural \"%d files\"\n"
    "msgstr[0] \"eine Datei\"\nmsgstr[1] \"%d Dateien\"\n\n"
    "msgctxt \"menu\"\nmsgid \"Open\"\nmsgstr \"\xC3\x96" "ffnen\"\n\n"
    "#, fuzzy\nmsgid \"Unsure\"\nmsgstr \"Unsicher\"\n\n"
    "msgid \"Untranslated\"\nmsgstr \"\"\n\n"
    "msgid \"Astral \xF0\x9F\x98\x80\"\nmsgstr \"Stern \xF0\x9F\x98\x80\"\n";

// Compiles kGermanPo with msgfmt and `flags` into the directory.
std::string GermanMo(const TempDir& dir, const std::string& flags = "") {
  std::string mo = dir.File("de" + flags + ".mo");
  std::string po = dir.Write("de.po", kGermanPo);
  EXPECT_EQ(TempDir::Run("msgfmt " + flags + " -o '" + mo + "' '" + po + "'"), 0);
  return mo;
}

void CheckGerman(const ZQMessageCatalog& cat) {
  EXPECT_STREQ(cat.Find("Not open"), "Nicht ge\xC3\xB6" "ffnet");
  EXPECT_STREQ(cat.Find("Error %d reading from file"), "Fehler %d beim Lesen \"\xE2\x82\xAC\"");
  EXPECT_STREQ(cat.Find("one file"), "eine Datei");
  EXPECT_STREQ(cat.Find("menu\x04Open"), "\xC3\x96" "ffnen");
  EXPECT_EQ(cat.Find("Open"), nullptr);
  EXPECT_EQ(cat.Find("Unsure"), nullptr);
  EXPECT_EQ(cat.Find("Untranslated"), nullptr);
  EXPECT_EQ(cat.Find("Not in the catalogue"), nullptr);
  EXPECT_EQ(cat.Find(""), nullptr);
  EXPECT_EQ(cat.Find(nullptr), nullptr);
  EXPECT_EQ(cat.Charset(), "UTF-8");
}

TEST(MessageCatalog, ReadsWhatMsgfmtWritesInBothByteOrders) {
  TempDir dir;
  for (const char* endian : {"little", "big"}) {
    ZQMessageCatalog cat;
    ASSERT_TRUE(cat.Load(GermanMo(dir, std::string("--endianness=") + endian).c_str())) << endian;
    CheckGerman(cat);
  }
  ZQMessageCatalog cat;
  EXPECT_FALSE(cat.Load(dir.File("missing.mo").c_str()));
  EXPECT_FALSE(cat.Load(dir.File("de.po").c_str()));
  EXPECT_EQ(cat.size(), 0u);
}

TEST(MessageCatalog, RejectsTruncatedAndSurvivesCorruptFiles) {
  TempDir dir;
  std::string data = ReadFile(GermanMo(dir));
  ZQMessageCatalog cat;
  for (size_t n = 0; n < data.size(); ++n) {
    // Every cut loses the terminator of the last string at least.
    ASSERT_FALSE(cat.LoadFromMemory(data.data(), n)) << n;
  }
  ASSERT_TRUE(cat.LoadFromMemory(data.data(), data.size()));
  std::mt19937 rng(5);
  int accepted = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string bad = data;
    for (int k = 0; k < 1 + static_cast<int>(rng() % 4); ++k) {
      size_t at = (rng() % 2) != 0 ? rng() % 28 : rng() % bad.size();  // header or anywhere
      bad[at] = static_cast<char>(rng());
    }
    if (cat.LoadFromMemory(bad.data(), bad.size())) {
      ++accepted;
      for (const char* id : {"Not open", "one file", "Open"}) cat.Find(id);
    }
  }
  EXPECT_LT(accepted, 3000);
}

TEST(MessageCatalog, LgettextTranslatesThroughTheProcessCatalogue) {
  TempDir dir;
  ASSERT_TRUE(LoadMessageCatalog(GermanMo(dir).c_str()));
  WStr id = U16(u"Not open");
  const unsigned short* t = lgettext(id.c_str());
  EXPECT_EQ(WStr(t), U16(u"Nicht ge\u00f6ffnet"));
  EXPECT_EQ(lgettext(id.c_str()), t);  // the same text every time
  WStr astral = U16(u"Astral \U0001F600");
  EXPECT_EQ(WStr(lgettext(astral.c_str())), U16(u"Stern \U0001F600"));
  WStr unknown = U16(u"Unknown message");
  EXPECT_EQ(lgettext(unknown.c_str()), unknown.c_str());
  EXPECT_STREQ(lgettext("one file"), "eine Datei");
  EXPECT_EQ(lgettext(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_EQ(lgettext(static_cast<const unsigned short*>(nullptr)), nullptr);
  // A bad catalogue leaves every message as it is; earlier texts stay valid.
  std::string bad = dir.Write("bad.mo", std::string("\xde\x12\x04\x95garbage", 11));
  EXPECT_FALSE(LoadMessageCatalog(bad.c_str()));
  EXPECT_EQ(lgettext(id.c_str()), id.c_str());
  EXPECT_EQ(WStr(t), U16(u"Nicht ge\u00f6ffnet"));
  LoadMessageCatalog(nullptr);
}

// Run in a child process with its own environment: the catalogue is found
// through $ZQLIB and the locale's language.
TEST(MessageCatalog, SearchChild) {
  const char* expect = getenv("ZQ_CATALOG_EXPECT");
  if (expect == nullptr) GTEST_SKIP() << "runs only as a child of SearchOrder";
  EXPECT_STREQ(lgettext("Not open"), expect);
}

TEST(MessageCatalog, SearchOrder) {
  TempDir dir;
  auto make = [&](const std::string& sub, const std::string& text) {
    TempDir::Run("mkdir -p '" + dir.File(sub) + "'");
    std::string po = dir.Write("tmp.po", "msgid \"Not open\"\nmsgstr \"" + text + "\"\n");
    ASSERT_EQ(TempDir::Run("msgfmt -o '" + dir.File(sub + "/messages.mo") + "' '" + po + "'"), 0);
  };
  auto child = [&](const std::string& lang, const std::string& expect) {
    return TempDir::Run("env -u LC_ALL -u LC_MESSAGES ZQLIB='" + dir.path() + "' LANG='" + lang +
                        "' ZQ_CATALOG_EXPECT='" + expect + "' /proc/" + std::to_string(getpid()) +
                        "/exe --gtest_filter=MessageCatalog.SearchChild > /dev/null");
  };
  EXPECT_EQ(child("de_DE.UTF-8", "Not open"), 0);  // no catalogue: identity
  make(".", "root");
  EXPECT_EQ(child("de_DE.UTF-8", "root"), 0);
  EXPECT_EQ(child("C", "root"), 0);
  make("de", "de");
  EXPECT_EQ(child("de_DE.UTF-8", "de"), 0);
  EXPECT_EQ(child("fr_FR.UTF-8", "root"), 0);
  make("de_DE", "de_DE");
  EXPECT_EQ(child("de_DE.UTF-8@euro", "de_DE"), 0);
  EXPECT_EQ(child("de_AT", "de"), 0);
  make("locale/de/LC_MESSAGES", "locale de");
  EXPECT_EQ(child("de_DE.UTF-8", "locale de"), 0);
  EXPECT_NE(child("de_DE.UTF-8", "wrong"), 0);  // the child really checks
}

const char kSourcePo[] =
    "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
    "# Translator comment\n#: src/a.cpp:10\n#, fuzzy, c-format\nmsgid \"A %d\"\nmsgstr \"B %d\"\n\n"
    "msgid \"\"\n\"multi\\n\"\n\"line\\ttext\"\n"
    "msgstr \"mehr\\nzeilig \\\\ \\\"q\\\" \\101\\x42\"\n\n"
    "msgctxt \"ctx\"\nmsgid \"file\"\nmsgid_plural \"files\"\n"
    "msgstr[0] \"Datei\"\nmsgstr[1] \"Dateien\"\n";

TEST(PoFile, ParsesWritesAndCompilesLikeGettext) {
  ZQPoFile po;
  ASSERT_TRUE(po.Parse(kSourcePo)) << po.Error();
  ASSERT_EQ(po.entries().size(), 4u);
  EXPECT_EQ(po.entries()[0].msgid, "");
  const ZQPoEntry& a = po.entries()[1];
  EXPECT_EQ(a.comments, (std::vector<std::string>{"# Translator comment", "#: src/a.cpp:10"}));
  EXPECT_TRUE(a.fuzzy);
  EXPECT_EQ(a.flags, std::vector<std::string>{"c-format"});
  EXPECT_EQ(po.entries()[2].msgid, "multi\nline\ttext");
  EXPECT_EQ(po.entries()[2].msgstr[0], "mehr\nzeilig \\ \"q\" AB");
  EXPECT_EQ(po.entries()[3].msgctxt, "ctx");
  EXPECT_EQ(po.entries()[3].msgstr, (std::vector<std::string>{"Datei", "Dateien"}));

  // What we write, msgfmt accepts, and its catalogue holds our entries.
  TempDir dir;
  po.entries()[1].fuzzy = false;
  ASSERT_TRUE(po.Write(dir.File("out.po").c_str()));
  ASSERT_EQ(TempDir::Run("msgfmt --check-format -o '" + dir.File("out.mo") + "' '" +
                         dir.File("out.po") + "'"),
            0);
  ZQMessageCatalog cat;
  ASSERT_TRUE(cat.Load(dir.File("out.mo").c_str()));
  EXPECT_STREQ(cat.Find("A %d"), "B %d");
  EXPECT_STREQ(cat.Find("multi\nline\ttext"), "mehr\nzeilig \\ \"q\" AB");
  EXPECT_STREQ(cat.Find("ctx\x04" "file"), "Datei");
  ZQPoFile again;
  ASSERT_TRUE(again.Read(dir.File("out.po").c_str())) << again.Error();
  EXPECT_EQ(again.Format(), po.Format());

  // What we compile, msgunfmt reads back to the same entries.
  std::string ours = dir.Write("ours.mo", po.Compile());
  ASSERT_EQ(TempDir::Run("msgunfmt -o '" + dir.File("back.po") + "' '" + ours + "'"), 0);
  ZQPoFile back;
  ASSERT_TRUE(back.Read(dir.File("back.po").c_str())) << back.Error();
  auto by_key = [](const ZQPoFile& f) {  // msgctxt, msgid -> msgid_plural, msgstr...
    std::map<std::vector<std::string>, std::vector<std::string>> m;
    for (const ZQPoEntry& e : f.entries()) {
      m[{e.msgctxt, e.msgid}] = e.msgstr;
      m[{e.msgctxt, e.msgid}].push_back(e.msgid_plural);
    }
    return m;
  };
  EXPECT_EQ(back.entries().size(), 4u);
  EXPECT_EQ(by_key(back), by_key(po));
}

TEST(PoFile, ReportsSyntaxErrorsWithTheirLine) {
  struct Case {
    const char* text;
    const char* error;
  } cases[] = {
      {"msgid \"a\"\n", "1: missing msgstr"},
      {"msgid \"a\"\nmsgstr \"b\n", "2: unterminated string"},
      {"msgid \"a\"\nmsgstr \"b\"\nmsgstr \"c\"\n", "3: misplaced msgstr"},
      {"msgid \"a\"\nmsgstr[0] \"b\"\n", "2: msgstr[] without msgid_plural"},
      {"\"orphan\"\n", "1: string without a keyword"},
      {"msgid \"a\"\nmsgtxt \"b\"\n", "2: unknown keyword \"msgtxt\""},
      {"msgid \"a\\q\"\nmsgstr \"\"\n", "1: invalid escape sequence"},
      {"msgid \"a\" x\nmsgstr \"\"\n", "1: unexpected text after the string"},
  };
  for (const Case& c : cases) {
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
