// Random records and random descriptors through every Input overload, and
// the values read back out through Output.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zq/decimal.h"
#include "zq/dtype.h"
#include "zq/quadword.h"
#include "zq/zqstring.h"
#include "zq/zqwstring.h"

namespace {

// Takes bytes from the front of the input.
class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : p_(data), n_(size) {}
  uint32_t Take(int bytes) {
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i) {
      v <<= 8;
      if (n_ > 0) {
        v |= *p_++;
        --n_;
      }
    }
    return v;
  }
  const uint8_t* rest() const { return p_; }
  size_t left() const { return n_; }

 private:
  const uint8_t* p_;
  size_t n_;
};

const long kSignPos[] = {1, 2, 4, 8, 16, 0, 3};
const long kSignStyle[] = {1, 2, 4, 8, 16, 32, 512, 1024, 0, 3};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in(data, size);
  const char* const* names = ZQDType::GetAllTypedefs();
  int count = 0;
  while (names[count] != nullptr) ++count;
  DATATYPE type;
  if (count == 0 || !ZQDType::TypeByName(names[in.Take(1) % count], type)) return 0;

  ZQDType t(type);
  const uint32_t flags = in.Take(2);
  // Lengths beyond the catalogue's maximum are allowed through MaxLength, as
  // a property string may do.
  if (flags & 1) t.MaxLength(64);
  t.Length(static_cast<long>(in.Take(1) % 70));
  t.MinScale(-30);
  t.MaxScale(30);
  t.Scale(static_cast<short>(static_cast<int8_t>(in.Take(1)) % 30));
  t.Signed((flags & 2) != 0);
  t.MSBFirst((flags & 4) != 0);
  t.VariableLength((flags & 8) != 0);
  t.SignPos(kSignPos[in.Take(1) % (sizeof(kSignPos) / sizeof(kSignPos[0]))]);
  t.SignStyle(kSignStyle[in.Take(1) % (sizeof(kSignStyle) / sizeof(kSignStyle[0]))]);
  t.SetPadChar(static_cast<char>(in.Take(1)));
  t.DecimalPlaces(static_cast<short>(in.Take(1) % 20));
  const long offset = static_cast<long>(in.Take(1) % 12) - 2;

  const ZQString rec(reinterpret_cast<const char*>(in.rest()), static_cast<int>(in.left()));
  ZQString text;
  short s = 0;
  long l = 0;
  ZQQuadWord q;
  double d = 0;
  ZQDecimal dec;
  t.Input(rec, offset, text);
  t.Input(rec, offset, s);
  t.Input(rec, offset, l);
  t.Input(rec, offset, q);
  t.Input(rec, offset, d);
  t.Input(rec, offset, dec);

  ZQString out;
  t.Output(out, text);
  t.Output(out, s);
  t.Output(out, l);
  t.Output(out, q);
  t.Output(out, d);
  t.Output(out, dec);
  t.Output(out, (flags & 16) != 0);

  ZQWString wide;
  for (long i = 0; i < rec.length(); ++i) {
    const unsigned short u =
        static_cast<unsigned char>(rec.c_str()[i]) | ((flags & 32) ? 0x100 : 0);
    wide.Append(&u, 1);
  }
  t.GetZone(wide, offset, d);
  t.PutZone(wide, d);
  t.GetDBNumber(wide, offset, d);
  return 0;
}
