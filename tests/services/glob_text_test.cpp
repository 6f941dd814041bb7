// Boolean words, escaping and Base64 of ZQGlob.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "services/test_util.h"
#include "zq/zqglob.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

using WStr = std::basic_string<unsigned short>;

WStr Widen(const std::string& s) { return WStr(s.begin(), s.end()); }

std::string Narrow(const WStr& w) {
  std::string s;
  for (unsigned short u : w) s += static_cast<char>(u);
  return s;
}

TEST(BoolWords, MatchWholeWordsWithAlternatingTruth) {
  struct Case {
    const char* value;
    const char* words;
    bool case_sensitive;
    int convert;  // -1 no match, else the truth ConvertBool stores
    bool str_to_bool;
  } cases[] = {
      {"TRUE", "True.False", true, -1, true},
      {"True", "True.False", true, 1, true},
      {"false", "True.False", true, -1, false},
      {"false", "True.False", false, 0, false},
      {"Tru", "True.False", false, -1, false},
      {"Truex", "True.False", false, -1, false},
      {"false", "True.False.true.false", true, 0, false},
      {"true", "True.False.true.false", true, 1, true},
      {"no", "yes.no.on.off", true, 0, false},
      {"on", "yes.no.on.off", true, 1, true},
      {"", "True.False", false, -1, false},
      {nullptr, "True.False", false, -1, false},
      {"True", "", false, -1, false},
      {"True", nullptr, false, -1, false},
  };
  for (const Case& c : cases) {
    bool out = false, untouched = true;
    bool matched = ZQGlob::ConvertBool(c.value, c.words, c.case_sensitive, out);
    EXPECT_EQ(matched, c.convert >= 0) << (c.value ? c.value : "(null)") << " in " << (c.words ? c.words : "(null)");
    if (matched) {
      EXPECT_EQ(out, c.convert == 1);
    }
    if (!matched) {
      ZQGlob::ConvertBool(c.value, c.words, c.case_sensitive, untouched);
      EXPECT_TRUE(untouched);
    }
    EXPECT_EQ(ZQGlob::StrToBool(c.value, c.words), c.str_to_bool) << (c.value ? c.value : "(null)");
  }
  EXPECT_STREQ(ZQGlob::BoolToStr(true), "True");
  EXPECT_STREQ(ZQGlob::BoolToStr(false), "False");
}

TEST(Escaping, KnownFormsAndRoundTrips) {
  struct Case {
    std::string plain, escaped;
  } cases[] = {
      {"\x07", "\\x07"},       {"\xE9", "\xE9"},       {"a\tb", "a\\tb"},
      {"\n\f\r", "\\n\\f\\r"}, {"back\\slash", "back\\\\slash"}, {"\x1f" "A", "\\x1fA"},
  };
  for (const Case& c : cases) {
    std::string out = "pre:";
    ZQGlob::EscapeString(c.plain.c_str(), out);
    EXPECT_EQ(out, "pre:" + c.escaped);
    std::string back;
    ZQGlob::UnEscapeString(c.escaped, back);
    EXPECT_EQ(back, c.plain);
  }
  // Extra forms accepted on the way back.
  struct Extra {
    const char* escaped;
    std::string plain;
  } extras[] = {
      {"\\X41\\x4", std::string("A\x04")}, {"\\65x", "Ax"},  {"\\101", "e"},
      {"\\300", std::string(1, static_cast<char>(300 % 256))}, {"\\q\\'", "q'"},
      {"\\xg", "xg"}, {"end\\", "end\\"},
  };
  for (const Extra& e : extras) {
    std::string back;
    ZQGlob::UnEscapeString(e.escaped, back);
    EXPECT_EQ(back, e.plain) << e.escaped;
    ZQString z;
    ZQGlob::UnEscapeString(e.escaped, z);
    EXPECT_EQ(std::string(z.c_str(), static_cast<size_t>(z.length())), e.plain) << e.escaped;
  }
  std::mt19937 rng(7);
  for (int round = 0; round < 200; ++round) {
    std::string plain;
    WStr wplain;
    for (int i = 0; i < 40; ++i) {
      plain += static_cast<char>(1 + rng() % 255);
      wplain += static_cast<unsigned short>(1 + rng() % 65535);
    }
    std::string esc, back;
    ZQGlob::EscapeString(plain.c_str(), esc);
    ZQGlob::UnEscapeString(esc, back);
    ASSERT_EQ(back, plain);
    ZQWString wesc, wback;
    ZQGlob::EscapeString(wplain.c_str(), wesc);
    for (long i = 0; i < wesc.length(); ++i) ASSERT_GE(wesc.c_str()[i], 32);
    ZQGlob::UnEscapeString(wesc.c_str(), wback);
    WStr got;
    wback.AssignToStd(got);
    ASSERT_EQ(got, wplain);
  }
}

// Base64 text as coreutils prints it with 72-column lines, reduced to our
// rule: a line feed only after a full 72-column line.
std::string CoreutilsBase64(const std::string& data, const zqtest::TempDir& dir) {
  std::string in = dir.File("b64.bin");
  zqtest::WriteFile(in, data);
  std::string text = zqtest::Capture("base64 -w 72 '" + in + "'");
  std::string::size_type last_line = text.rfind('\n', text.size() >= 2 ? text.size() - 2 : 0);
  std::size_t tail = text.size() - (last_line == std::string::npos ? 0 : last_line + 1);
  if (!text.empty() && tail - 1 != 72) text.pop_back();
  return text;
}

TEST(Base64, EncodesLikeCoreutilsAndDecodesBack) {
  zqtest::TempDir dir;
  std::mt19937 rng(99);
  std::vector<size_t> sizes = {0, 1, 2, 3, 53, 54, 55, 107, 108, 109, 1000, 4096};
  for (int i = 0; i < 30; ++i) sizes.push_back(rng() % 700);
  for (size_t n : sizes) {
    std::string data;
    for (size_t i = 0; i < n; ++i) data += static_cast<char>(rng());
    WStr enc;
    ZQGlob::EncodeBase64(data.empty() ? nullptr : &data[0], static_cast<unsigned>(n), enc);
    ASSERT_FALSE(enc.empty());
    ASSERT_EQ(enc.back(), 0) << "trailing zero unit";
    EXPECT_EQ(Narrow(enc.substr(0, enc.size() - 1)), CoreutilsBase64(data, dir)) << n;
    unsigned int count = 0;
    void* block = ZQGlob::DecodeBase64(enc, count);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(count, n);
    EXPECT_EQ(std::string(static_cast<char*>(block), count), data);
    ZQGlob::FreeBase64(block);
  }
}

TEST(Base64, DecodingSkipsBlanksAndRejectsStrangers) {
  struct Case {
    WStr text;
    bool ok;
    std::string bytes;
  } cases[] = {
      {Widen("QUJD"), true, "ABC"},
      {Widen("QU*D"), false, ""},
      {Widen(" Q U\r\nJ\tD "), true, "ABC"},
      {Widen("QUI="), true, "AB"},
      {Widen("QQ==garbage*"), true, "A"},
      {Widen(std::string("QUJD\0QUJD", 9)), true, "ABC"},
      {WStr{'Q', 'U', 0x141, 'D'}, false, ""},
      {WStr(), true, ""},
  };
  for (const Case& c : cases) {
    unsigned int n = 12345;
    void* block = ZQGlob::DecodeBase64(c.text, n);
    EXPECT_EQ(block != nullptr, c.ok) << Narrow(c.text);
    if (block != nullptr) {
      EXPECT_EQ(std::string(static_cast<char*>(block), n), c.bytes);
    }
    ZQGlob::FreeBase64(block);
  }
  // 16-bit strings travel as their bytes, low byte first.
  WStr units = {0x0041, 0x4243, 0xFFFF, 0x0100};
  WStr enc, back;
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
