// Every encoding module against the C library's iconv, over all single
// bytes, all two-byte sequences of its lead bytes and all 16-bit units.
#include <dlfcn.h>
#include <errno.h>
#include <iconv.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zq/encmodule.h"

namespace {

struct ModuleCase {
  const char* word;
  const char* iconv_name;
  int max_bytes;
  bool composing;  // iconv's decoder combines base letters and marks
};

const ModuleCase kModules[] = {
    {"8859-2", "ISO-8859-2", 1, false}, {"8859-3", "ISO-8859-3", 1, false},
    {"8859-4", "ISO-8859-4", 1, false}, {"8859-5", "ISO-8859-5", 1, false},
    {"8859-6", "ISO-8859-6", 1, false}, {"8859-7", "ISO-8859-7", 1, false},
    {"8859-8", "ISO-8859-8", 1, false}, {"8859-9", "ISO-8859-9", 1, false},
    {"cp1250", "CP1250", 1, false},     {"cp1251", "CP1251", 1, false},
    {"cp1253", "CP1253", 1, false},     {"cp1254", "CP1254", 1, false},
    {"cp1255", "CP1255", 1, true},      {"cp1256", "CP1256", 1, false},
    {"cp1257", "CP1257", 1, false},     {"cp1258", "CP1258", 1, true},
    {"shiftjis", "SHIFT_JIS", 2, false}, {"cp932", "CP932", 2, false},
    {"cp936", "CP936", 2, false},       {"cp949", "CP949", 2, false},
    {"cp950", "CP950", 2, false},
};

void PrintTo(const ModuleCase& c, std::ostream* os) { *os << c.word; }

// One iconv descriptor answering one complete input at a time.
class Iconv {
 public:
  Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  ~Iconv() {
    if (ok()) iconv_close(cd_);
  }
  bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

  // Converts all of `in`; false when iconv rejects it. `err` gets errno.
  bool Convert(const std::string& in, std::string* out, int* err = nullptr) {
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);
    std::vector<char> buf(in.size() * 8 + 16);
    char* ip = const_cast<char*>(in.data());
    size_t il = in.size();
    char* op = buf.data();
    size_t ol = buf.size();
    bool good = iconv(cd_, &ip, &il, &op, &ol) != static_cast<size_t>(-1) &&
                iconv(cd_, nullptr, nullptr, &op, &ol) != static_cast<size_t>(-1);
    if (err != nullptr) *err = good ? 0 : errno;
    out->assign(buf.data(), op - buf.data());
    return good && il == 0;
  }

 private:
  iconv_t cd_;
};

// The BMP code points of UCS-4LE text; false if any lies beyond.
bool Units(const std::string& ucs4, std::vector<unsigned short>* units) {
  units->clear();
  for (size_t i = 0; i + 4 <= ucs4.size(); i += 4) {
    uint32_t cp;
    std::memcpy(&cp, ucs4.data() + i, 4);
    if (cp > 0xFFFF) return false;
    units->push_back(static_cast<unsigned short>(cp));
  }
  return true;
}

std::string Ucs4(const std::vector<unsigned short>& units) {
  std::string out;
  for (unsigned short u : units) {
    uint32_t cp = u;
    out.append(reinterpret_cast<const char*>(&cp), 4);
  }
  return out;
}

struct Module {
  void* handle = nullptr;
  zq_mbtowc_fn mbtowc;
  zq_mbstowcs_fn mbstowcs;
  zq_wctomb_fn wctomb;
  zq_wcstombs_fn wcstombs;
  zq_mblen_fn mblen;
  zq_isleadbyte_fn isleadbyte;
  zq_mbcurmax_fn mbcurmax;
};

bool Open(const char* word, Module* m) {
  std::string path = std::string(ZQ_BINARY_DIR) + "/lib/zqenc" + word + ".so";
  m->handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m->handle == nullptr) return false;
  m->mbtowc = reinterpret_cast<zq_mbtowc_fn>(dlsym(m->handle, "zq_mbtowc"));
  m->mbstowcs = reinterpret_cast<zq_mbstowcs_fn>(dlsym(m->handle, "zq_mbstowcs"));
  m->wctomb = reinterpret_cast<zq_wctomb_fn>(dlsym(m->handle, "zq_wctomb"));
  m->wcstombs = reinterpret_cast<zq_wcstombs_fn>(dlsym(m->handle, "zq_wcstombs"));
  m->mblen = reinterpret_cast<zq_mblen_fn>(dlsym(m->handle, "zq_mblen"));
  m->isleadbyte = reinterpret_cast<zq_isleadbyte_fn>(dlsym(m->handle, "zq_isleadbyte"));
  m->mbcurmax = reinterpret_cast<zq_mbcurmax_fn>(dlsym(m->handle, "zq_mbcurmax"));
  return m->mbtowc && m->mbstowcs && m->wctomb && m->wcstombs && m->mblen &&
         m->isleadbyte && m->mbcurmax;
}

class EncodingModule : public ::testing::TestWithParam<ModuleCase> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Open(GetParam().word, &m_)) << dlerror();
    ASSERT_TRUE(decode_.ok() && encode_.ok());
  }
  void TearDown() override {
    if (m_.handle != nullptr) dlclose(m_.handle);
  }

  // What iconv makes of `bytes`: true and the unit when it is exactly one
  // BMP character.
  bool OracleDecode(const std::string& bytes, unsigned short* u, int* err) {
    std::string out;
    std::vector<unsigned short> units;
    if (!decode_.Convert(bytes, &out, err)) return false;
    if (!Units(out, &units) || units.size() != 1) return false;
    *u = units[0];
    return true;
  }

  Module m_;
  Iconv decode_{"UCS-4LE", GetParam().iconv_name};
  Iconv encode_{GetParam().iconv_name, "UCS-4LE"};
};

TEST_P(EncodingModule, DecodesEveryByteSequenceLikeIconv) {
  const ModuleCase& c = GetParam();
  EXPECT_EQ(m_.mbcurmax(), c.max_bytes);
  std::vector<int> leads;
  for (int b = 1; b < 256; ++b) {
    std::string one(1, static_cast<char>(b));
    unsigned short want = 0, got = 0;
    int err = 0;
    bool valid = OracleDecode(one, &want, &err);
    int len = m_.mbtowc(&got, one.data(), 1);
    SCOPED_TRACE(::testing::Message() << "byte 0x" << std::hex << b);
    if (valid) {
      EXPECT_EQ(len, 1);
      EXPECT_EQ(got, want);
      EXPECT_EQ(m_.mblen(one.data(), 1), 1);
      EXPECT_FALSE(m_.isleadbyte(b));
    } else {
      EXPECT_EQ(len, -1);
      EXPECT_EQ(m_.mblen(one.data(), 1), -1);
      // iconv reports a lead byte alone as an incomplete sequence.
      EXPECT_EQ(m_.isleadbyte(b) != 0, err == EINVAL);
      if (err == EINVAL) leads.push_back(b);
    }
  }
  EXPECT_EQ(leads.empty(), c.max_bytes == 1);
  size_t pairs = 0;
  for (int lead : leads) {
    for (int trail = 0; trail < 256; ++trail) {
      const char seq[3] = {static_cast<char>(lead), static_cast<char>(trail), 0};
      std::string bytes(seq, 2);
      unsigned short want = 0, got = 0;
      int err = 0;
      bool valid = trail != 0 && OracleDecode(bytes, &want, &err);
      SCOPED_TRACE(::testing::Message() << "bytes 0x" << std::hex << lead << " 0x" << trail);
      EXPECT_EQ(m_.mbtowc(&got, seq, 2), valid ? 2 : -1);
      if (valid) {
        EXPECT_EQ(got, want);
        ++pairs;
      }
      EXPECT_EQ(m_.mblen(seq, 2), valid ? 2 : -1);
      EXPECT_EQ(m_.mbtowc(&got, seq, 1), -1);  // cut short
    }
  }
  if (c.max_bytes == 2) {
    EXPECT_GT(pairs, 5000u);
  }
}

TEST_P(EncodingModule, EncodesEveryUnitLikeIconv) {
  const ModuleCase& c = GetParam();
  int mapped = 0;
  for (uint32_t u = 1; u <= 0xFFFF; ++u) {
    std::string want;
    bool valid = false;
    if (u < 0xD800 || u > 0xDFFF) {
      valid = encode_.Convert(Ucs4({static_cast<unsigned short>(u)}), &want) &&
              !want.empty() && static_cast<int>(want.size()) <= c.max_bytes;
    }
    char got[4] = {0, 0, 0, 0};
    int len = m_.wctomb(got, static_cast<unsigned short>(u));
    if (valid) {
      ++mapped;
      ASSERT_EQ(std::string(got, len > 0 ? len : 0), want) << "unit 0x" << std::hex << u;
    } else {
      ASSERT_EQ(len, -1) << "unit 0x" << std::hex << u;
    }
  }
  EXPECT_GT(mapped, 100);
  char zero = 'x';
  EXPECT_EQ(m_.wctomb(&zero, 0), 1);
  EXPECT_EQ(zero, '\0');
}

// The string routines agree with iconv over a text of every character.
TEST_P(EncodingModule, ConvertsWholeTextsLikeIconv) {
  const ModuleCase& c = GetParam();
  std::string text;
  std::vector<unsigned short> units;
  for (int b = 1; b < 256; ++b) {
    unsigned short u;
    char one = static_cast<char>(b);
    if (m_.mbtowc(&u, &one, 1) == 1) {
      text += one;
      units.push_back(u);
    } else if (m_.isleadbyte(b)) {
      for (int t = 1; t < 256; ++t) {
        const char seq[2] = {one, static_cast<char>(t)};
        if (m_.mbtowc(&u, seq, 2) == 2) {
          text.append(seq, 2);
          units.push_back(u);
        }
      }
    }
  }
  if (!c.composing) {
    std::string ucs4;
    std::vector<unsigned short> want;
    ASSERT_TRUE(decode_.Convert(text, &ucs4));
    ASSERT_TRUE(Units(ucs4, &want));
    EXPECT_EQ(want, units);
  }

  std::vector<unsigned short> out(units.size() + 1, 0xAAAA);
  EXPECT_EQ(m_.mbstowcs(nullptr, text.c_str(), 0), units.size());
  ASSERT_EQ(m_.mbstowcs(out.data(), text.c_str(), out.size()), units.size());
  EXPECT_EQ(out.back(), 0);
  out.pop_back();
  EXPECT_EQ(out, units);

  // A short destination is filled exactly and not passed.
  std::vector<unsigned short> small(11, 0xAAAA);
  EXPECT_EQ(m_.mbstowcs(small.data(), text.c_str(), 10), 10u);
  EXPECT_EQ(small[10], 0xAAAA);

  // Back to bytes: the same text where iconv encodes each unit alike.
  std::vector<unsigned short> zunits = units;
  zunits.push_back(0);
  std::string back(text.size() + 1, '\x55');
  EXPECT_EQ(m_.wcstombs(nullptr, zunits.data(), 0), text.size());
  ASSERT_EQ(m_.wcstombs(&back[0], zunits.data(), back.size()), text.size());
  EXPECT_EQ(back.back(), '\0');
  back.pop_back();
  std::string want;
  ASSERT_TRUE(encode_.Convert(Ucs4(units), &want));
  EXPECT_EQ(back, want);

  // A character is never split at the end of the destination.
  if (c.max_bytes == 2) {
    const unsigned short two[] = {zunits[units.size() - 1], zunits[units.size() - 1], 0};
    char buf[4] = {1, 1, 1, 1};
    char single[3] = {};
    int len = m_.wctomb(single, two[0]);
    ASSERT_EQ(len, 2);
    EXPECT_EQ(m_.wcstombs(buf, two, 3), 2u);
    EXPECT_EQ(buf[2], 1);
  }
}

TEST_P(EncodingModule, RejectsWhatIconvRejects) {
  // An invalid byte or a unit without a form stops the string routines.
  int bad_byte = -1;
  for (int b = 1; b < 256 && bad_byte < 0; ++b) {
    char one = static_cast<char>(b);
    unsigned short u;
    if (m_.mbtowc(&u, &one, 1) == -1 && !m_.isleadbyte(b)) bad_byte = b;
  }
  if (bad_byte >= 0) {
    std::string text = "ab";
    text += static_cast<char>(bad_byte);
    unsigned short out[8];
    int err = 0;
    std::string ignored;
    EXPECT_FALSE(decode_.Convert(text, &ignored, &err));
    EXPECT_EQ(m_.mbstowcs(out, text.c_str(), 8), ZQ_ENCODING_ERROR);
    EXPECT_EQ(m_.mbstowcs(nullptr, text.c_str(), 0), ZQ_ENCODING_ERROR);
  }
  // A lead byte right before the end of the text is cut short.
  for (int b = 1; b < 256; ++b) {
    if (!m_.isleadbyte(b)) continue;
    const char text[] = {'a', static_cast<char>(b), 0};
    unsigned short out[4];
    EXPECT_EQ(m_.mbstowcs(out, text, 4), ZQ_ENCODING_ERROR);
    break;
  }
  const unsigned short no_form[] = {'a', 0xFFFF, 0};  // a noncharacter
  char out[8];
  std::string ignored;
  ASSERT_FALSE(encode_.Convert(Ucs4({0xFFFF}), &ignored));
  EXPECT_EQ(m_.wcstombs(out, no_form, sizeof(out)), ZQ_ENCODING_ERROR);
  EXPECT_EQ(m_.wctomb(out, 0xD800), -1);
  EXPECT_EQ(m_.isleadbyte(-1), 0);
  EXPECT_EQ(m_.isleadbyte(256), 0);
  EXPECT_EQ(m_.mbtowc(nullptr, nullptr, 0), 0);
  EXPECT_EQ(m_.mblen("a", 0), -1);
}

INSTANTIATE_TEST_SUITE_P(AllModules, EncodingModule, ::testing::ValuesIn(kModules),
                         [](const ::testing::TestParamInfo<ModuleCase>& info) {
                           std::string name = info.param.word;
                           for (char& ch : name) {
                             if (ch == '-') ch = '_';
                           }
                           return name;
                         });

}  // namespace
