// Boolean words, escaping and Base64 of ZQGlob.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "services/test_util.h"
#include "zq/zqglob.h"
#include "zq/zqwstring.h"

namespace {

using WStr = std::basic_string<unsigned short>;

WStr Widen(const std::string& s) { return WStr(s.begin(), s.end()); }

std::string Narrow(const WStr& w) { return std::string(w.begin(), w.end()); }

TEST(BoolWords, MatchWholeWordsWithAlternatingTruth) {
  // convert: -1 no match, else the truth ConvertBool stores.
  const struct { const char *value, *words; bool exact; int convert; bool str_to_bool; } cases[] = {
      {"TRUE", "True.False", true, -1, true},     {"True", "True.False", true, 1, true},
      {"false", "True.False", true, -1, false},   {"false", "True.False", false, 0, false},
      {"Tru", "True.False", false, -1, false},    {"Truex", "True.False", false, -1, false},
      {"false", "True.False.true.false", true, 0, false}, {"true", "True.False.true.false", true, 1, true},
      {"no", "yes.no.on.off", true, 0, false},    {"on", "yes.no.on.off", true, 1, true},
      {"", "True.False", false, -1, false},       {nullptr, "True.False", false, -1, false},
      {"True", nullptr, false, -1, false},
  };
  for (const auto& c : cases) {
    std::string row = std::string(c.value ? c.value : "(null)") + " in " + (c.words ? c.words : "(null)");
    for (bool before : {false, true}) {  // an unmatched word leaves the output alone
      bool out = before;
      bool matched = ZQGlob::ConvertBool(c.value, c.words, c.exact, out);
      EXPECT_EQ(matched, c.convert >= 0) << row;
      EXPECT_EQ(out, matched ? c.convert == 1 : before) << row;
    }
    EXPECT_EQ(ZQGlob::StrToBool(c.value, c.words), c.str_to_bool) << row;
  }
  EXPECT_STREQ(ZQGlob::BoolToStr(true), "True");
  EXPECT_STREQ(ZQGlob::BoolToStr(false), "False");
}

TEST(Escaping, KnownFormsAndRoundTrips) {
  // both_ways false: a form accepted only on the way back.
  const struct { std::string plain, escaped; bool both_ways; } cases[] = {
      {"\x07", "\\x07", true},        {"\xE9", "\xE9", true},        {"a\tb", "a\\tb", true},
      {"\n\f\r", "\\n\\f\\r", true}, {"back\\slash", "back\\\\slash", true},
      {"\x1f" "A", "\\x1fA", true},   {std::string("A\x04"), "\\X41\\x4", false},
      {"Ax", "\\65x", false},          {"e", "\\101", false},          {"q'", "\\q\\'", false},
      {std::string(1, static_cast<char>(300 % 256)), "\\300", false},
      {"xg", "\\xg", false},           {"end\\", "end\\", false},
  };
  for (const auto& c : cases) {
    std::string out = "pre:", back;
    ZQGlob::EscapeString(c.plain.c_str(), out);
    EXPECT_TRUE(!c.both_ways || out == "pre:" + c.escaped) << out;
    ZQGlob::UnEscapeString(c.escaped, back);
    EXPECT_EQ(back, c.plain) << c.escaped;
  }
  std::string plain, esc, back;
  for (int c = 1; c < 256; ++c) plain += static_cast<char>(c);
  ZQGlob::EscapeString(plain.c_str(), esc);
  ZQGlob::UnEscapeString(esc, back);
  EXPECT_EQ(back, plain);
  std::mt19937 rng(7);
  WStr wplain, got;
  for (int i = 0; i < 4000; ++i) wplain += static_cast<unsigned short>(1 + rng() % 65535);
  ZQWString wesc, wback;
  ZQGlob::EscapeString(wplain.c_str(), wesc);
  for (long i = 0; i < wesc.length(); ++i) ASSERT_GE(wesc.c_str()[i], 32) << "at " << i;
  ZQGlob::UnEscapeString(wesc.c_str(), wback);
  wback.AssignToStd(got);
  EXPECT_EQ(got, wplain);
}

TEST(Base64, EncodesLikeCoreutilsAndDecodesBack) {
  zqtest::TempDir dir;
  std::mt19937 rng(99);
  for (size_t n : {0, 1, 2, 3, 53, 54, 55, 107, 108, 109, 215, 216, 217, 500, 4096}) {
    std::string data;
    for (size_t i = 0; i < n; ++i) data += static_cast<char>(rng());
    // coreutils ends every line with a line feed; ours only a full 72-column one.
    ASSERT_EQ(dir.Run("base64 -w 72 '" + dir.Write("in", data) + "' > '" + dir.File("out") + "'"), 0);
    std::string want = zqtest::ReadFile(dir.File("out"));
    if (want.size() % 73 != 0) want.pop_back();
    WStr enc;
    ZQGlob::EncodeBase64(data.empty() ? nullptr : &data[0], static_cast<unsigned>(n), enc);
    ASSERT_TRUE(!enc.empty() && enc.back() == 0) << "trailing zero unit";
    EXPECT_EQ(Narrow(enc.substr(0, enc.size() - 1)), want) << n;
    unsigned int count = 0;
    void* block = ZQGlob::DecodeBase64(enc, count);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(static_cast<char*>(block), count), data);
    ZQGlob::FreeBase64(block);
  }
}

TEST(Base64, DecodingSkipsBlanksAndRejectsStrangers) {
  const struct { WStr text; bool ok; std::string bytes; } cases[] = {
      {Widen("QUJD"), true, "ABC"},          {Widen("QU*D"), false, ""},
      {Widen(" Q U\r\nJ\tD "), true, "ABC"}, {Widen("QUI="), true, "AB"},
      {Widen("QQ==garbage*"), true, "A"},    {Widen(std::string("QUJD\0QUJD", 9)), true, "ABC"},
      {WStr{'Q', 'U', 0x141, 'D'}, false, ""}, {WStr(), true, ""},
  };
  for (const auto& c : cases) {
    unsigned int n = 12345;
    void* block = ZQGlob::DecodeBase64(c.text, n);
    EXPECT_EQ(block != nullptr, c.ok) << Narrow(c.text);
    EXPECT_EQ(block != nullptr ? std::string(static_cast<char*>(block), n) : "", c.bytes);
    ZQGlob::FreeBase64(block);
  }
  // 16-bit strings travel as their bytes, low byte first.
  WStr units = {0x0041, 0x4243, 0xFFFF, 0x0100}, enc, back;
  ZQGlob::EncodeBase64(units, enc);
  EXPECT_EQ(enc, Widen(std::string("QQBDQv//AAE=", 13)));
  ZQGlob::DecodeBase64(enc, back);
  EXPECT_EQ(back, units);
  ZQGlob::DecodeBase64(Widen("QQBD"), back);  // odd byte count: last unit alone
  EXPECT_EQ(back, (WStr{0x0041, 0x0043}));
  ZQGlob::DecodeBase64(Widen("Q!"), back);
  EXPECT_TRUE(back.empty());
}

}  // namespace
