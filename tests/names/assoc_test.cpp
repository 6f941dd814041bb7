// Association tables and the keyword scanner.
#include "zq/assoc.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "zq/zqstring.h"

namespace {

using Table = ASSOCIATION<int>;

std::vector<std::string> Keys(Table& t) {
  std::vector<std::string> keys;
  for (const char* k = t.first(); k != nullptr; k = t.next()) keys.push_back(k);
  return keys;
}

TEST(Association, RandomOperationsMatchUnorderedMap) {
  // The table keeps the caller's key pointers, so the key texts live in a pool.
  std::vector<std::string> pool;
  for (int i = 0; i < 300; ++i) pool.push_back("key" + std::to_string(i * 7919 % 1000));
  std::mt19937 rng(12345);
  for (unsigned int start_capacity : {1u, 3u, 64u}) {
    Table table(start_capacity);
    std::unordered_map<std::string, int> model;
    for (int step = 0; step < 20000; ++step) {
      const std::string& key = pool[rng() % pool.size()];
      unsigned op = rng() % 4;
      if (op == 0) {
        int v = static_cast<int>(rng());
        ASSERT_EQ(table.insert(key.c_str(), v), 1);
        model[key] = v;
      } else if (op == 1) {
        ASSERT_EQ(table.remove(key.c_str()), model.erase(key) ? 1 : 0);
      } else {
        // Find answers null for an absent key; reference inserts it as zero.
        int* v = op == 2 ? table.find(key.c_str()) : table.reference(key.c_str());
        auto it = op == 2 ? model.find(key) : model.emplace(key, 0).first;
        ASSERT_EQ(v != nullptr, it != model.end()) << key;
        ASSERT_EQ(v ? *v : 0, v ? it->second : 0) << key;
      }
      ASSERT_EQ(table.size(), model.size());
    }
    // Iteration visits every key exactly once.
    std::vector<std::string> keys = Keys(table);
    std::unordered_map<std::string, int> seen;
    for (const std::string& k : keys) seen[k] = *table.find(k.c_str());
    EXPECT_EQ(keys.size(), model.size());
    EXPECT_EQ(seen, model);
  }
}

TEST(Association, SlotsGrowthAndCopies) {
  Table t(4);
  for (const char* k : {"a", "b", "c", "d"}) t.insert(k, *k);
  t.insert("a", 42);  // overwrite: no growth, same count
  EXPECT_EQ(t.capacity(), 4u);
  EXPECT_EQ(t.size(), 4u);
  t.insert("e", 'e');
  EXPECT_EQ(t.capacity(), 8u);
  // Removing a middle slot moves the last key into it.
  EXPECT_EQ(t.remove("b"), 1);
  EXPECT_EQ(t.remove("b"), 0);
  EXPECT_EQ(Keys(t), (std::vector<std::string>{"a", "e", "c", "d"}));
  EXPECT_EQ(*t.find("a"), 42);
  EXPECT_TRUE(!t.insert(nullptr, 1) && !t.find(nullptr) && !t.reference(nullptr) &&
              !t.remove(nullptr) && !t(nullptr))
      << "a null key matched or was stored";

  // Tables hold the caller's key pointers; copies share those, not the values.
  std::string k1 = "alpha";
  const char* keys[] = {k1.c_str(), "beta"};
  int values[] = {1, 2};
  Table src(keys, values, 2);
  Table copy(src);
  copy.insert("gamma", 3);
  *copy.find("alpha") = 10;
  EXPECT_EQ(src.first(), k1.c_str());
  EXPECT_EQ(copy.first(), k1.c_str());
  EXPECT_EQ(*src.find("alpha"), 1);
  EXPECT_EQ(src("gamma"), 0);
  src = copy;
  EXPECT_EQ(*src.find("alpha"), 10);
  EXPECT_EQ(*src.find("beta"), 2);
  EXPECT_EQ(src.size(), 3u);
}

TEST(NextKeyword, WalksKeywordsByTheTextRules) {
  // keywords: each keyword found, then "|"; rest: the text from the position
  // the final (false) call leaves behind.
  std::string big(5000, 'k');
  struct Case {
    std::string text, keywords, rest;
  } cases[] = {
      {"a;b = 1", "b|", "1"},
      {"length =\t 10; scale=2", "length|scale|", "2"},
      {"ab\n.x=1", "", "ab\n.x=1"},
      {"a\n# c=1\nd=2", "d|", "2"},
      {"\n# only a comment", "", ""},  // the restart point moves past comments
      {"=x = v", "=x|", "v"},
      {"key\t= v", "", "key\t= v"},
      {"a b = c", "a b|", "c"},
      {"no keyword here", "", "no keyword here"},
      {"type=Text; " + big + " = 7;\n# note=1\nlast=\n.after=1", "type|" + big + "|last|",
       "\n.after=1"},
  };
  for (const Case& c : cases) {
    ZQString text(c.text.c_str());
    // Exactly as long as the text: a sanitizer build catches any overrun.
    std::vector<char> buf(c.text.size() + 1);
    std::string found, keyword;
    while (NextKeyword(buf.data(), text)) found += std::string(buf.data()) + "|";
    EXPECT_EQ(found, c.keywords) << c.text;
    EXPECT_EQ(c.text.substr(static_cast<std::size_t>(text.Tell())), c.rest) << c.text;
    text.Rewind();
    for (found.clear(); NextKeyword(keyword, text);) found += keyword + "|";
    EXPECT_EQ(found, c.keywords) << "into a std::string: " << c.text;
  }
}

TEST(FindKeyword, IgnoresCaseAndAnswersMinusOneOtherwise) {
  const char* list[] = {"text", "date", "Time", nullptr};
  EXPECT_EQ(FindKeyword(list, "DATE"), 1);
  EXPECT_EQ(FindKeyword(list, "time"), 2);
  EXPECT_EQ(FindKeyword(list, "dat"), -1);
  EXPECT_EQ(FindKeyword(list, nullptr), -1);
  EXPECT_EQ(FindKeyword(nullptr, "date"), -1);
}

}  // namespace
