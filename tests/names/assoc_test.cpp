// Association tables and the keyword scanner.
#include "zq/assoc.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "zq/zqstring.h"

namespace {

// Exposes the protected engine for inspection.
class Table : public ASSOCIATION_BASE {
 public:
  explicit Table(unsigned int capacity) : ASSOCIATION_BASE(sizeof(int), capacity) {}
  Table(const char* const* keys, const int* values, unsigned int n)
      : ASSOCIATION_BASE(keys, values, sizeof(int), n) {}
  using ASSOCIATION_BASE::capacity_;
  using ASSOCIATION_BASE::first;
  using ASSOCIATION_BASE::next;
  using ASSOCIATION_BASE::operator!;
  using ASSOCIATION_BASE::size;
  int Insert(const char* k, int v) { return insert(k, &v); }
  int Remove(const char* k) { return remove(k); }
  int* Find(const char* k) const { return static_cast<int*>(find(k)); }
  int* Ref(const char* k) { return static_cast<int*>(reference(k)); }
  std::vector<std::string> Keys() {
    std::vector<std::string> keys;
    for (const char* k = first(); k != nullptr; k = next()) keys.push_back(k);
    return keys;
  }
};

TEST(Association, RandomOperationsMatchUnorderedMap) {
  std::vector<std::string> pool;
  for (int i = 0; i < 300; ++i) pool.push_back("key" + std::to_string(i * 7919 % 1000));
  std::mt19937 rng(12345);
  for (unsigned int start_capacity : {1u, 3u, 64u}) {
    Table table(start_capacity);
    std::unordered_map<std::string, int> model;
    for (int step = 0; step < 20000; ++step) {
      const std::string& key = pool[rng() % pool.size()];
      int op = static_cast<int>(rng() % 4);
      if (op == 0) {
        int v = static_cast<int>(rng());
        ASSERT_EQ(table.Insert(key.c_str(), v), 1);
        model[key] = v;
      } else if (op == 1) {
        ASSERT_EQ(table.Remove(key.c_str()), model.erase(key) ? 1 : 0);
      } else if (op == 2) {
        int* v = table.Find(key.c_str());
        auto it = model.find(key);
        ASSERT_EQ(v != nullptr, it != model.end()) << key;
        if (v != nullptr) {
          ASSERT_EQ(*v, it->second);
        }
      } else {
        int* v = table.Ref(key.c_str());
        ASSERT_NE(v, nullptr);
        auto it = model.emplace(key, 0).first;
        ASSERT_EQ(*v, it->second);
      }
      ASSERT_EQ(table.size(), model.size());
    }
    std::vector<std::string> keys = table.Keys();
    std::set<std::string> seen(keys.begin(), keys.end());
    EXPECT_EQ(keys.size(), seen.size());
    EXPECT_EQ(seen.size(), model.size());
    for (const auto& kv : model) EXPECT_TRUE(seen.count(kv.first)) << kv.first;
  }
}

TEST(Association, SlotsAndGrowth) {
  Table t(4);
  const char* keys[] = {"a", "b", "c", "d", "e"};
  for (int i = 0; i < 4; ++i) t.Insert(keys[i], i);
  EXPECT_EQ(t.capacity_, 4u);
  t.Insert("a", 42);  // overwrite: no growth, same count
  EXPECT_EQ(t.size(), 4u);
  EXPECT_EQ(*t.Find("a"), 42);
  t.Insert(keys[4], 4);
  EXPECT_EQ(t.capacity_, 8u);
  EXPECT_EQ(t.Keys(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
  // Removing a middle slot moves the last key into it.
  EXPECT_EQ(t.Remove("b"), 1);
  EXPECT_EQ(t.Keys(), (std::vector<std::string>{"a", "e", "c", "d"}));
  EXPECT_EQ(*t.Find("e"), 4);
  EXPECT_EQ(t.Find("b"), nullptr);
  EXPECT_EQ(t.Remove("b"), 0);
  // reference of an absent key inserts a zero value.
  int* z = t.Ref("zz");
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(*z, 0);
  EXPECT_EQ(t.size(), 5u);
  // Null keys never match and are never stored.
  EXPECT_EQ(t.Insert(nullptr, 1), 0);
  EXPECT_EQ(t.Find(nullptr), nullptr);
  EXPECT_EQ(t.Ref(nullptr), nullptr);
  EXPECT_EQ(t.Remove(nullptr), 0);
  EXPECT_FALSE(!t);
}

TEST(Association, KeysAreTheCallersAndCopiesAreDeep) {
  std::string k1 = "alpha", k2 = "beta";
  const char* keys[] = {k1.c_str(), k2.c_str()};
  int values[] = {1, 2};
  Table t(keys, values, 2);
  EXPECT_EQ(t.size(), 2u);
  EXPECT_EQ(*t.Find("beta"), 2);
  // The table holds the caller's pointer, not a copy of the text.
  EXPECT_EQ(t.first(), k1.c_str());
  Table copy(t);
  copy.Insert("gamma", 3);
  *copy.Find("alpha") = 10;
  EXPECT_EQ(*t.Find("alpha"), 1);
  EXPECT_EQ(t.Find("gamma"), nullptr);
  EXPECT_EQ(copy.first(), k1.c_str());
  t = copy;
  EXPECT_EQ(*t.Find("alpha"), 10);
  EXPECT_EQ(t.size(), 3u);
  ASSOCIATION<double> typed(2);
  typed.insert("pi", 3.25);
  EXPECT_EQ(*typed.find("pi"), 3.25);
  EXPECT_EQ(typed(""), 0);
}

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
