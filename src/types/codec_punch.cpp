// Column-binary punch-card codecs.
#include "types/codec_punch.h"

#include <cstring>

namespace zq {
namespace codec {
namespace {

// Row masks.
constexpr uint16_t kR12 = 1 << 11;
constexpr uint16_t kR11 = 1 << 10;
constexpr uint16_t kR0 = 1 << 9;
constexpr uint16_t Row(int d) { return static_cast<uint16_t>(1 << (9 - d)); }  // rows 1-9

struct Special {
  char c;
  uint16_t rows;
};

// Characters beyond digits and letters: a zone punch (or none) with 8 and a
// digit row, and the three single-zone characters.
const Special kSpecials[] = {
    {'&', kR12},
    {'-', kR11},
    {'/', kR0 | Row(1)},
    {'.', kR12 | Row(8) | Row(3)},
    {'<', kR12 | Row(8) | Row(4)},
    {'(', kR12 | Row(8) | Row(5)},
    {'+', kR12 | Row(8) | Row(6)},
    {'|', kR12 | Row(8) | Row(7)},
    {'!', kR11 | Row(8) | Row(2)},
    {'$', kR11 | Row(8) | Row(3)},
    {'*', kR11 | Row(8) | Row(4)},
    {')', kR11 | Row(8) | Row(5)},
    {';', kR11 | Row(8) | Row(6)},
    {',', kR0 | Row(8) | Row(3)},
    {'%', kR0 | Row(8) | Row(4)},
    {'_', kR0 | Row(8) | Row(5)},
    {'>', kR0 | Row(8) | Row(6)},
    {'?', kR0 | Row(8) | Row(7)},
    {':', Row(8) | Row(2)},
    {'#', Row(8) | Row(3)},
    {'@', Row(8) | Row(4)},
    {'\'', Row(8) | Row(5)},
    {'=', Row(8) | Row(6)},
    {'"', Row(8) | Row(7)},
};

}  // namespace

uint16_t GetColumn(const uint8_t* p) {
  return static_cast<uint16_t>(((p[0] & 0x3F) << 6) | (p[1] & 0x3F));
}

void PutColumn(uint8_t* out, uint16_t rows) {
  out[0] = static_cast<uint8_t>((rows >> 6) & 0x3F);
  out[1] = static_cast<uint8_t>(rows & 0x3F);
}

uint16_t HollerithPunches(char c) {
  if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  if (c == '0') return kR0;
  if (c >= '1' && c <= '9') return Row(c - '0');
  if (c >= 'A' && c <= 'I') return kR12 | Row(c - 'A' + 1);
  if (c >= 'J' && c <= 'R') return kR11 | Row(c - 'J' + 1);
  if (c >= 'S' && c <= 'Z') return kR0 | Row(c - 'S' + 2);
  for (const Special& s : kSpecials) {
    if (s.c == c) return s.rows;
  }
  return 0;
}

char HollerithChar(uint16_t rows) {
  if (rows == 0) return ' ';
  if (rows == kR0) return '0';
  for (int d = 1; d <= 9; ++d) {
    if (rows == Row(d)) return static_cast<char>('0' + d);
    if (rows == (kR12 | Row(d))) return static_cast<char>('A' + d - 1);
    if (rows == (kR11 | Row(d))) return static_cast<char>('J' + d - 1);
    if (d >= 2 && rows == (kR0 | Row(d))) return static_cast<char>('S' + d - 2);
  }
  for (const Special& s : kSpecials) {
    if (s.rows == rows) return s.c;
  }
  return 0;
}

void GetCBMultiPunch(const uint8_t* p, int length, TextBuf* out) {
  out->clear();
  const int cols = length > 0 ? length / 2 : 0;
  char* d = out->Reserve(static_cast<size_t>(cols) * 4);
  for (int i = 0; i < cols; ++i) {
    unsigned v = GetColumn(p + 2 * i);
    for (int k = 3; k >= 0; --k) {
      d[4 * i + k] = static_cast<char>('0' + v % 10);
      v /= 10;
    }
  }
  out->Resize(static_cast<size_t>(cols) * 4);
}

void PutCBMultiPunch(uint8_t* out, int length, const char* text, int n) {
  if (length <= 0) return;
  std::memset(out, 0, length);
  const int cols = length / 2;
  if (n < 0) n = text != nullptr ? static_cast<int>(std::strlen(text)) : 0;
  int pos = n;  // characters of the text still to place, from the right
  for (int col = cols - 1; col >= 0 && pos > 0; --col) {
    unsigned v = 0;
    const int from = pos >= 4 ? pos - 4 : 0;
    for (int k = from; k < pos; ++k) {
      const char c = text[k];
      v = v * 10 + ((c >= '0' && c <= '9') ? c - '0' : 0);
    }
    pos = from;
    PutColumn(out + 2 * col, static_cast<uint16_t>(v & 0x0FFF));
  }
}

void GetCBAlphaNumeric(const uint8_t* p, int length, TextBuf* out) {
  out->clear();
  const int cols = length > 0 ? length / 2 : 0;
  char* d = out->Reserve(cols);
  for (int i = 0; i < cols; ++i) {
    const char c = HollerithChar(GetColumn(p + 2 * i));
    d[i] = c != 0 ? c : '~';
  }
  out->Resize(cols);
}

void PutCBAlphaNumeric(uint8_t* out, int length, const char* text, int n) {
  if (length <= 0) return;
  std::memset(out, 0, length);
  const int cols = length / 2;
  if (n < 0) n = text != nullptr ? static_cast<int>(std::strlen(text)) : 0;
  for (int i = 0; i < cols && i < n; ++i) {
    PutColumn(out + 2 * i, HollerithPunches(text[i]));
  }
}

}  // namespace codec
}  // namespace zq
