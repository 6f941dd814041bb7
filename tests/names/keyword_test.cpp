#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zq/assoc.h"
#include "zq/zqstring.h"

namespace {

TEST(NextKeyword, ScansKeywordsByTheTextRules) {
  struct Case {
    const char* text;
    long start;
    bool found;
    const char* keyword;
    const char* rest;  // text from the position left behind
  } cases[] = {
      {"a;b = 1", 0, true, "b", "1"},
      {"x=1\n", 0, true, "x", "1\n"},
      {"length =\t 10; scale=2", 0, true, "length", "10; scale=2"},
      {"1; scale=2", 0, true, "scale", "2"},
      {"; key = v", 0, true, "key", "v"},
      {"\n.x=1", 0, false, "", "\n.x=1"},
      {"ab\n.x=1", 0, false, "", "ab\n.x=1"},
      {"a\n# c=1\nd=2", 0, true, "d", "2"},
      {"\n# only a comment", 0, false, "", ""},  // restart moves past comments
      {"=x; k = v", 0, true, "k", "v"},
      {"=x = v", 0, true, "=x", "v"},
      {"key\t= v", 0, false, "", "key\t= v"},
      {"no keyword here", 0, false, "", "no keyword here"},
      {"", 0, false, "", ""},
      {"p=1;q=2", 2, true, "q", "2"},
      {"a b = c", 0, true, "a b", "c"},
  };
  for (const Case& c : cases) {
    ZQString text(c.text);
    text.Seek(c.start);
    std::vector<char> buf(std::string(c.text).size() + 1, '#');
    bool found = NextKeyword(buf.data(), text);
    EXPECT_EQ(found, c.found) << c.text;
    if (found) {
      EXPECT_STREQ(buf.data(), c.keyword) << c.text;
    }
    EXPECT_EQ(std::string(c.text).substr(static_cast<std::size_t>(text.Tell())), c.rest) << c.text;
  }
}

TEST(NextKeyword, WalksAllClausesAndFitsTheTextSizedBuffer) {
  std::string big(5000, 'k');
  std::string src = "type=Text; " + big + " = 7;\n# note=1\nlast=\n.after=1";
  ZQString text(src.c_str());
  std::vector<std::string> seen;
  // Exactly text.length() + 1 bytes: a sanitizer build catches any overrun.
  std::vector<char> buf(static_cast<std::size_t>(text.length()) + 1);
  while (NextKeyword(buf.data(), text)) seen.push_back(buf.data());
  EXPECT_EQ(seen, (std::vector<std::string>{"type", big, "last"}));
  std::string kw;
  text.Rewind();
  EXPECT_TRUE(NextKeyword(kw, text));
  EXPECT_EQ(kw, "type");
}

TEST(FindKeyword, IgnoresCaseAndAnswersMinusOneOtherwise) {
  const char* list[] = {"text", "date", "Time", nullptr};
  EXPECT_EQ(FindKeyword(list, "DATE"), 1);
  EXPECT_EQ(FindKeyword(list, "time"), 2);
  EXPECT_EQ(FindKeyword(list, "dat"), -1);
  EXPECT_EQ(FindKeyword(list, ""), -1);
  EXPECT_EQ(FindKeyword(list, nullptr), -1);
  EXPECT_EQ(FindKeyword(nullptr, "date"), -1);
}

}  // namespace
