// The block paths of the UTF-8 and code-page routines against the same routines
// fed one character at a time, all bounds at guard pages so overruns fault.
#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "text/helpers.h"
#include "zq/zqglob.h"

namespace {

using Bytes = std::basic_string<unsigned char>;
using Units = std::basic_string<unsigned short>;

// One character's result (negative: an error) and output.
template <typename Out>
struct Piece {
  int result;
  Out out;
};
template <typename Out>
using Pieces = std::vector<Piece<Out>>;

// Each sequence of `in` decoded alone by the buffer routine.
Pieces<Units> DecodeBySequence(const Bytes& in) {
  Pieces<Units> pieces;
  for (size_t i = 0; i < in.size();) {
    size_t len = std::min<size_t>(ZQGlob::BytesInUTF8(in[i]), in.size() - i);
    unsigned short u[3];
    int r = ZQGlob::UTF8ToUnicode(in.data() + i, static_cast<int>(len), u, 3);
    pieces.push_back({r, Units(u, std::max(r, 0))});
    if (r < 0) break;
    i += len;
  }
  return pieces;
}

// Each unit encoded alone, or a surrogate pair by iconv.
Pieces<Bytes> EncodeBySequence(const Units& in) {
  static zqtest::Iconv pair_to_utf8("UTF-8", "UTF-16LE");
  Pieces<Bytes> pieces;
  for (size_t i = 0; i < in.size(); ++i) {
    unsigned char seq[8];
    if (in[i] < 0xD800 || in[i] > 0xDBFF) {
      int r = ZQGlob::UnicodeToUTF8(in[i], seq);
      pieces.push_back({r, Bytes(seq, r)});
    } else if (i + 1 < in.size() && in[i + 1] >= 0xDC00 && in[i + 1] <= 0xDFFF) {
      std::string b = pair_to_utf8(zqtest::LE(in.substr(i++, 2)));
      pieces.push_back({4, Bytes(b.begin(), b.end())});
    } else {  // a lone high surrogate
      pieces.push_back({-1, {}});
      break;
    }
  }
  return pieces;
}

// Each character of zero-terminated `text` through MBtoWC.
Pieces<Units> DecodeByCharacter(const std::string& text, ZQ_CSET cs) {
  Pieces<Units> pieces;
  unsigned short u = 0;
  for (const char* p = text.c_str(); *p != 0;) {
    int len = ZQGlob::MBtoWC(&u, p, -1, cs);
    pieces.push_back({len < 0 ? -1 : 1, Units(1, u)});
    if (len < 0) break;
    p += len;
  }
  return pieces;
}

// The output before the first failure.
template <typename Out>
int Reach(const Pieces<Out>& pieces) {
  int n = 0;
  for (size_t i = 0; i < pieces.size() && pieces[i].result >= 0; ++i) n += pieces[i].out.size();
  return n;
}

// The buffer routines' contract: the first error, or -2 when the output and
// terminator (both appended to `out`) do not fit `cap`.
template <typename Out>
int Join(const Pieces<Out>& pieces, int cap, Out* out) {
  for (const auto& p : pieces) {
    if (p.result < 0) return p.result;
    if (static_cast<int>(out->size() + p.out.size()) + 1 > cap) return -2;
    *out += p.out;
  }
  *out += typename Out::value_type(0);
  return static_cast<int>(out->size()) - 1;
}

// The code-set routines' contract: -1 for a bad character met (decoding stops
// looking once full); output ends before a character that does not fit; zero if room.
template <typename Out>
int JoinUpTo(const Pieces<Out>& pieces, size_t n, Out* out) {
  const bool decoding = sizeof(typename Out::value_type) == 2;
  for (const auto& p : pieces) {
    if (decoding && out->size() >= n) return static_cast<int>(out->size());
    if (p.result < 0) return -1;
    if (out->size() + p.out.size() > n) return static_cast<int>(out->size());
    *out += p.out;
  }
  int count = static_cast<int>(out->size());
  if (out->size() < n) *out += typename Out::value_type(0);
  return count;
}

// `call` on guarded `in` and `cap` guarded elements of output gives `want_n`
// and, on success, `want` followed by untouched elements.
template <typename In, typename Out, typename F>
void Compare(const In& in, int cap, Out want, int want_n, F call) {
  using O = typename Out::value_type;
  const O fill = static_cast<O>(0x55AA);
  O* out = reinterpret_cast<O*>(zqtest::GuardedEnd(1)) - cap;
  std::fill(out, out + cap, fill);
  const auto* p = zqtest::PutGuarded(0, in.data(), in.size());
  ASSERT_EQ(call(p, out), want_n) << testing::PrintToString(in) << " cap " << cap;
  if (want_n < 0) return;
  want.resize(cap, fill);
  ASSERT_EQ(Out(out, cap), want) << testing::PrintToString(in) << " cap " << cap;
}

// Both routines of one direction (`zin`: `in` up to its first zero, kept).
template <typename In, typename Out, typename Buffer, typename CodeSet>
void CheckBoth(const In& in, const Pieces<Out>& pieces, const In& zin,
               const Pieces<Out>& z_pieces, std::vector<int> caps, Buffer buffer,
               CodeSet code_set) {
  for (int need : {Reach(pieces), Reach(z_pieces)}) {
    caps.insert(caps.end(), {need + 1, need, need - 1});
  }
  for (int cap : caps) {
    if (cap < 1) continue;
    Out want;
    int want_n = Join(pieces, cap, &want);
    Compare(in, cap, want, want_n, [&](auto p, auto out) { return buffer(p, out, cap); });
    want.clear();
    want_n = JoinUpTo(z_pieces, cap, &want);
    Compare(zin, cap, want, want_n, [&](auto p, auto out) { return code_set(p, out, cap); });
  }
}

void CheckDecode(const Bytes& in, std::vector<int> caps) {
  const Bytes z = in.substr(0, in.find(static_cast<unsigned char>(0)));
  CheckBoth(in, DecodeBySequence(in), z + static_cast<unsigned char>(0), DecodeBySequence(z), caps,
            [&](const unsigned char* p, unsigned short* out, int cap) {
              return ZQGlob::UTF8ToUnicode(p, static_cast<int>(in.size()), out, cap);
            },
            [](const unsigned char* p, unsigned short* out, int cap) {
              return ZQGlob::MBStoWCS(out, reinterpret_cast<const char*>(p), cap, ZQ_CSET_UTF8);
            });
}

void CheckEncode(const Units& in, std::vector<int> caps) {
  const Units z = in.substr(0, in.find(static_cast<unsigned short>(0)));
  CheckBoth(in, EncodeBySequence(in), z + static_cast<unsigned short>(0), EncodeBySequence(z), caps,
            [&](const unsigned short* p, unsigned char* out, int cap) {
              return ZQGlob::UnicodeToUTF8(p, static_cast<int>(in.size()), out, cap);
            },
            [](const unsigned short* p, unsigned char* out, int cap) {
              return ZQGlob::WCStoMBS(reinterpret_cast<char*>(out), p, cap, ZQ_CSET_UTF8);
            });
}

// Pieces of UTF-8 input, well-formed (the first three) and not.
const Bytes kOddPieces[] = {
    {0xC3, 0xA9}, {0xE6, 0x97, 0xA5}, {0xF0, 0x9F, 0x98, 0x80}, {0x80}, {0xC3, 0x41},
    {0xE2, 0x41, 0x82}, {0xC0, 0x80}, {0xF4, 0x90, 0x80, 0x80}, {0xF8, 0x88, 0x80, 0x80, 0x80},
    {0xFF}, {0xC2}, {0xE1, 0x80}, {0x00}};
const Units kUnitPieces[] = {{0xE9}, {0x65E5}, {0x7FF}, {0x800}, {0xFFFF}, {0xDC00},
                             {0xD83D, 0xDE00}, {0xDBFF, 0xDFFF}, {0xD800}, {0xD83D, 'a'},
                             {0x0000}, {0x80}};

// One piece after every length of ASCII text, followed by every length of
// mixed text (cut anywhere, so ending in odd sequences too).
TEST(BlockPathsTest, Utf8OnePieceAnywhere) {
  Bytes mixed;
  for (int k = 0; mixed.size() < 80; ++k) mixed += Bytes(k % 5, 'y') + kOddPieces[k % 3];
  for (const Bytes& piece : kOddPieces) {
    for (size_t before = 0; before < 72; ++before) {
      for (size_t after = 0; after < 80; after += (after < 40 ? 1 : 7)) {
        Bytes in = Bytes(before, 'x') + piece + mixed.substr(0, after);
        CheckDecode(in, {static_cast<int>(in.size()) + 1});
        if (HasFatalFailure()) return;
      }
    }
  }
  for (const Units& piece : kUnitPieces) {
    for (size_t before = 0; before < 24; ++before) {
      for (size_t after = 0; after < 24; ++after) {
        Units in = Units(before, 'x') + piece + Units(after, after % 3 ? 0x4E2D : 0xE9);
        CheckEncode(in, {static_cast<int>(in.size()) * 3 + 1});
        if (HasFatalFailure()) return;
      }
    }
  }
}

// Module code pages: valid text of characters iconv knows with a piece, valid
// or not, at every position of the first blocks and at every distance to the end.
TEST(BlockPathsTest, CodePageOnePieceAnywhere) {
  const std::pair<ZQ_CSET, const char*> sets[] = {
      {ZQ_CSET_SHIFTJIS, "SHIFT_JIS"}, {ZQ_CSET_CP932, "CP932"}, {ZQ_CSET_CP936, "CP936"},
      {ZQ_CSET_CP949, "CP949"}, {ZQ_CSET_CP950, "CP950"}, {ZQ_CSET_CP1250, "CP1250"},
      {ZQ_CSET_ISO8859_6, "ISO-8859-6"}};
  for (const auto& set : sets) {
    const ZQ_CSET cs = set.first;
    SCOPED_TRACE(set.second);
    zqtest::Iconv decode("UTF-16LE", set.second);
    std::vector<std::string> valid, probes;
    for (int b = 1; b < 256; ++b) {
      for (int t = 0; t < 256; ++t) {  // t = 0: the byte alone
        std::string ch(1, static_cast<char>(b)), got;
        if (t > 0) ch += static_cast<char>(t);
        if (decode.Convert(ch, &got) && got.size() == 2) {
          valid.push_back(ch);
          if (t == 0) break;
        } else if (t % 37 == 0 && probes.size() < 34) {
          probes.push_back(ch);
        }
      }
    }
    ASSERT_FALSE(valid.empty());
    std::mt19937 rng(3);
    std::string base;
    while (base.size() < 150) base += valid[rng() % valid.size()];
    for (int k = 0; k < 6; ++k) probes.push_back(valid[rng() % valid.size()]);
    auto check = [&](const std::string& text, int cap) {
      const auto pieces = DecodeByCharacter(text, cs);
      const int need = Reach(pieces);
      for (int n : {cap, need, need - 1}) {
        if (n < 1) continue;
        Units want;
        int want_n = JoinUpTo(pieces, n, &want);
        Compare(std::string(text.c_str(), text.size() + 1), n, want, want_n,
            [&](const char* p, unsigned short* out) { return ZQGlob::MBStoWCS(out, p, n, cs); });
      }
    };
    for (const std::string& probe : probes) {
      for (size_t at = 0; at < 140; ++at) {
        check(base.substr(0, at) + probe + base.substr(at, 70), 300);
      }
      for (size_t tail = 0; tail < 80; ++tail) check(base.substr(0, 100 + tail) + probe, 300);
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
