// ZQDType: the catalogue, assignment of a type, and the property setters.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <strings.h>

#include "types/datatype_table.h"
#include "zq/datetime.h"
#include "zq/dtype.h"
#include "zq/zqstring.h"

namespace zq {
namespace types {

#define PIC_NONE PictureSpec{kPicNone, nullptr}
#define PIC_DATE PictureSpec{kPicDate, nullptr}
#define PIC_TIME PictureSpec{kPicTime, nullptr}
#define PIC_DATETIME PictureSpec{kPicDateTime, nullptr}
#define PIC_TEXT(s) PictureSpec{kPicText, s}

const CatalogueRow kCatalogue[kCatalogueSize] = {
#define ZQ_DATATYPE(Id, Value, Name, Generic, LenDef, LenMin, LenMax, PrecDef, PrecMin, \
                    PrecMax, DecDef, DecMin, DecMax, ScaleDef, ScaleMin, ScaleMax,       \
                    Meaningful, Settable, Values, PadChar, SignPos, SignPosMask,         \
                    SignStyle, SignStyleMask, Align, AlignMask, Picture, Coupling,       \
                    SignRule, Display)                                                   \
  {ZQDT_##Id, Name, ZQDT_##Generic, LenDef, LenMin, LenMax, PrecDef, PrecMin, PrecMax,   \
   DecDef, DecMin, DecMax, ScaleDef, ScaleMin, ScaleMax, Meaningful, Settable, Values,   \
   PadChar, SignPos, SignPosMask, SignStyle, SignStyleMask, Align, AlignMask, Picture,   \
   Coupling, SignRule, Display},
#include "zq/datatype.def"
#undef ZQ_DATATYPE
};

#undef PIC_NONE
#undef PIC_DATE
#undef PIC_TIME
#undef PIC_DATETIME
#undef PIC_TEXT

namespace {

// Catalogue position of every type value 0 to 176, -1 for the gaps.
struct RowIndex {
  int16_t pos[kLastType + 1];
  RowIndex() {
    std::fill(pos, pos + kLastType + 1, static_cast<int16_t>(-1));
    for (int i = kCatalogueSize - 1; i >= 0; --i) pos[kCatalogue[i].type] = static_cast<int16_t>(i);
  }
};

const RowIndex& Index() {
  static const RowIndex index;
  return index;
}

}  // namespace

const CatalogueRow* FindRow(long t) {
  if (t < 0 || t > kLastType) return nullptr;
  int pos = Index().pos[t];
  return pos < 0 ? nullptr : &kCatalogue[pos];
}

const CatalogueRow* FindRowByName(const char* name, long n) {
  if (name == nullptr || n < 0) return nullptr;
  for (const CatalogueRow& row : kCatalogue) {
    if (static_cast<long>(std::strlen(row.name)) == n && strncasecmp(row.name, name, n) == 0)
      return &row;
  }
  return nullptr;
}

}  // namespace types
}  // namespace zq

using zq::types::CatalogueRow;
using zq::types::FindRow;

namespace {

// Bounds the mutual calls of Length and Precision when the minimum and
// maximum values set by a user leave no consistent pair.
constexpr int kMaxCouplingDepth = 16;

int32_t Clamp32(int64_t v) {
  return static_cast<int32_t>(std::min<int64_t>(INT32_MAX, std::max<int64_t>(INT32_MIN, v)));
}

// The admissible digit counts of a binary field of `len` bytes.
void BinaryDigits(int64_t len, bool is_signed, int64_t& low, int64_t& high) {
  switch (len) {
    case 1: low = 1; high = 2; break;
    case 2: low = 3; high = 4; break;
    case 3: low = 5; high = is_signed ? 6 : 7; break;
    case 5: low = 10; high = is_signed ? 11 : 12; break;
    case 6: low = 12; high = is_signed ? 12 : 13; break;
    case 7: low = 15; high = 16; break;
    case 8: low = 17; high = 18; break;
    default: low = is_signed ? 7 : 8; high = 9; break;
  }
}

// The bytes a binary field needs for `prec` digits.
int64_t BinaryLength(int64_t prec, bool is_signed) {
  if (prec >= 17) return 8;
  if (prec >= 15) return 7;
  if (prec >= 13) return 6;
  if (prec == 12) return is_signed ? 6 : 5;
  if (prec >= 10) return 5;
  if (prec >= 8) return 4;
  if (prec == 7) return is_signed ? 4 : 3;
  if (prec >= 5) return 3;
  if (prec >= 3) return 2;
  return 1;
}

bool SeparateSign(long pos) { return pos != 1 && pos != 2; }

}  // namespace

// ---- construction and assignment --------------------------------------------

ZQDType::ZQDType() : alias_(-1), picture_(-1) { *this = ZQDT_TEXT; }

ZQDType::ZQDType(DATATYPE t) : alias_(-1), picture_(-1) { *this = t; }

ZQDType::ZQDType(const ZQDType& other) = default;

ZQDType::ZQDType(ZQString& def) : alias_(-1), picture_(-1) { Read(def); }

ZQDType::~ZQDType() = default;

ZQDType& ZQDType::operator=(const ZQDType& other) = default;

ZQDType& ZQDType::operator=(ZQString& def) {
  Read(def);
  return *this;
}

ZQDType& ZQDType::operator=(DATATYPE t) {
  type_ = t;
  generic_ = ZQDT_TEXT;
  alias_ = -1;
  settable_ = meaningful_ = 0;
  values_ = 0;
  usage_ = 0;
  attributes_ = 0;
  length_ = min_length_ = max_length_ = 0;
  precision_ = min_precision_ = max_precision_ = 0;
  scale_ = min_scale_ = max_scale_ = 0;
  dec_places_ = max_dec_ = min_dec_ = 0;
  pad_char_ = ' ';
  dec_sep_ = '.';
  thsnd_sep_ = 0;
  sign_style_ = sign_style_mask_ = 0;
  sign_pos_ = 4;
  sign_pos_mask_ = 0;
  neg_type_ = neg_type_mask_ = 1;
  align_ = align_mask_ = 1;
  // The picture is deliberately not reset: a user's picture survives a
  // change of type unless the new row installs its own.
  const CatalogueRow* row = FindRow(t);
  if (row == nullptr) return *this;

  generic_ = row->generic;
  length_ = row->len_def;
  min_length_ = row->len_min;
  max_length_ = row->len_max;
  precision_ = row->prec_def;
  min_precision_ = row->prec_min;
  max_precision_ = row->prec_max;
  dec_places_ = row->dec_def;
  min_dec_ = row->dec_min;
  max_dec_ = row->dec_max;
  scale_ = row->scale_def;
  min_scale_ = row->scale_min;
  max_scale_ = row->scale_max;
  meaningful_ = row->meaningful;
  settable_ = row->settable;
  values_ = row->values;
  if (row->pad_char != 0) pad_char_ = row->pad_char;
  sign_pos_ = row->sign_pos;
  sign_pos_mask_ = row->sign_pos_mask;
  sign_style_ = row->sign_style;
  sign_style_mask_ = row->sign_style_mask;
  align_ = row->align;
  align_mask_ = row->align_mask;
  switch (row->picture.kind) {
    case zq::types::kPicText: Picture(row->picture.text); break;
    case zq::types::kPicDate: Picture(ZQDateTime::DefaultDateFormat()); break;
    case zq::types::kPicTime: Picture(ZQDateTime::DefaultTimeFormat()); break;
    case zq::types::kPicDateTime: Picture(ZQDateTime::DefaultDateTimeFormat()); break;
    case zq::types::kPicNone: break;
  }
  return *this;
}

// ---- names --------------------------------------------------------------------

const char* ZQDType::TypeNameOf(long t) {
  const CatalogueRow* row = FindRow(t);
  return row == nullptr ? nullptr : row->name;
}

bool ZQDType::TypeByName(const char* name, DATATYPE& t) {
  if (name == nullptr) return false;
  const CatalogueRow* row = zq::types::FindRowByName(name, static_cast<long>(std::strlen(name)));
  if (row == nullptr) return false;
  t = row->type;
  return true;
}

const char* ZQDType::TypeName() const {
  const char* name = TypeNameOf(type_);
  return name == nullptr ? zq::types::kCatalogue[0].name : name;
}

DATATYPE ZQDType::GenericType(DATATYPE t) {
  generic_ = t;
  return generic_;
}

const char* ZQDType::Alias() const {
  if (alias_ != -1) {
    const char* name = zq::types::AliasName(alias_);
    if (name != nullptr) return name;
  }
  return TypeName();
}

void ZQDType::Alias(const char* name) {
  alias_ = (name == nullptr || *name == '\0') ? -1 : zq::types::AliasIndex(name);
}

const char* ZQDType::Picture() const { return zq::types::PictureText(picture_); }

void ZQDType::Picture(const char* text) {
  picture_ = (text == nullptr || *text == '\0') ? -1 : zq::types::PictureIndex(text);
}

// ---- length and precision -------------------------------------------------------

int64_t ZQDType::ImpliedPrecision(int64_t l) {
  const CatalogueRow* row = FindRow(type_);
  if (row == nullptr) return 0;
  switch (row->coupling) {
    case zq::types::CPL_NONE: return 0;
    case zq::types::CPL_SAME: return l;
    case zq::types::CPL_ZONED: return SeparateSign(sign_pos_) ? l - 1 : l;
    case zq::types::CPL_PACKED: {
      // A field one digit short of full keeps its even digit count.
      int64_t p = 2 * l - 1 + (sign_pos_ == 16 ? 1 : 0);
      return precision_ == p - 1 ? p - 1 : p;
    }
    case zq::types::CPL_MAGIC: {
      int64_t p = 2 * l - 2;
      return precision_ == p - 1 ? p - 1 : p;
    }
    case zq::types::CPL_BINARY: {
      int64_t low, high;
      BinaryDigits(l, Signed(), low, high);
      return (precision_ >= low && precision_ <= high) ? precision_ : high;
    }
    case zq::types::CPL_BCD: return Signed() ? l - 1 : l;
    case zq::types::CPL_COLBIN:
      // Two bytes hold one column, so an odd length is raised first.
      if (l % 2 != 0) {
        l += 1;
        length_ = Clamp32(l);
      }
      return l / 2;
    case zq::types::CPL_PREFIX1: return l - 1;
    case zq::types::CPL_PREFIX2: return l - 2;
    case zq::types::CPL_DBASE: {
      int64_t p = l - (dec_places_ != 0 ? 1 : 0) - (Signed() ? 1 : 0);
      return p < 1 ? 1 : p;
    }
  }
  return 0;
}

int64_t ZQDType::ImpliedLength(int64_t p) const {
  const CatalogueRow* row = FindRow(type_);
  if (row == nullptr) return 0;
  switch (row->coupling) {
    case zq::types::CPL_NONE: return 0;
    case zq::types::CPL_SAME: return p;
    case zq::types::CPL_ZONED: return SeparateSign(sign_pos_) ? p + 1 : p;
    case zq::types::CPL_PACKED: return sign_pos_ == 16 ? (p + 1) / 2 : (p + 2) / 2;
    case zq::types::CPL_MAGIC: return (p + 1) / 2 + 1;
    case zq::types::CPL_BINARY: return BinaryLength(p, Signed());
    case zq::types::CPL_BCD: return Signed() ? p + 1 : p;
    case zq::types::CPL_COLBIN: return 2 * p;
    case zq::types::CPL_PREFIX1: return p + 1;
    case zq::types::CPL_PREFIX2: return p + 2;
    case zq::types::CPL_DBASE: return p + (dec_places_ != 0 ? 1 : 0) + (Signed() ? 1 : 0);
  }
  return 0;
}

long ZQDType::SetLength(int64_t n, int depth) {
  if (n < min_length_) n = min_length_;
  if (n > max_length_) n = max_length_;
  length_ = Clamp32(n);
  int64_t p = ImpliedPrecision(length_);
  if (p != 0 && p != precision_ && depth < kMaxCouplingDepth) SetPrecision(p, depth + 1);
  return length_;
}

long ZQDType::SetPrecision(int64_t n, int depth) {
  if (n < min_precision_) n = min_precision_;
  if (n > max_precision_) n = max_precision_;
  precision_ = Clamp32(n);
  long clamped = precision_;
  int64_t l = ImpliedLength(precision_);
  if (l != 0 && l != length_ && depth < kMaxCouplingDepth) SetLength(l, depth + 1);
  return clamped;
}

long ZQDType::Length(long n) { return SetLength(n, 0); }

long ZQDType::Precision(long n) { return SetPrecision(n, 0); }

void ZQDType::ReapplyLength() { SetLength(length_, 0); }

long ZQDType::MinLength(long n) { return min_length_ = Clamp32(n); }
long ZQDType::MaxLength(long n) { return max_length_ = Clamp32(n); }
long ZQDType::MinPrecision(long n) { return min_precision_ = Clamp32(n); }
long ZQDType::MaxPrecision(long n) { return max_precision_ = Clamp32(n); }

// ---- scale and decimal places --------------------------------------------------------

short ZQDType::Scale(short n) {
  if (n < min_scale_) n = min_scale_;
  if (n > max_scale_) n = max_scale_;
  return scale_ = n;
}

short ZQDType::MinScale(short n) { return min_scale_ = n; }
short ZQDType::MaxScale(short n) { return max_scale_ = n; }

short ZQDType::DecimalPlaces(short n) {
  if (n < min_dec_) n = min_dec_;
  if (n > max_dec_) n = max_dec_;
  short old = dec_places_;
  dec_places_ = n;
  // The decimal point of a dBASE number occupies a byte of the field.
  const CatalogueRow* row = FindRow(type_);
  if (row != nullptr && row->coupling == zq::types::CPL_DBASE &&
      ((old == 0 && n != 0 && precision_ > 1) || (old != 0 && n == 0)))
    ReapplyLength();
  return dec_places_;
}

short ZQDType::MinDecimalPlaces(short n) { return min_dec_ = n; }
short ZQDType::MaxDecimalPlaces(short n) { return max_dec_ = n; }

// ---- Boolean values ---------------------------------------------------------------------

namespace {

bool SetValueBit(uint16_t& word, uint16_t bit, bool b) {
  if (b) {
    word = static_cast<uint16_t>(word | bit);
  } else {
    word = static_cast<uint16_t>(word & ~bit);
  }
  return b;
}

}  // namespace

bool ZQDType::Signed(bool b) {
  bool old = Signed();
  SetValueBit(values_, ZQV_SIGNED, b);
  // A separate sign occupies a byte of the field.
  const CatalogueRow* row = FindRow(type_);
  if (row != nullptr &&
      (row->sign_rule == zq::types::SGN_ALWAYS ||
       (row->sign_rule == zq::types::SGN_SEPARATE && (sign_pos_ == 4 || sign_pos_ == 8))) &&
      ((old && !b) || (!old && b && precision_ > 1)))
    ReapplyLength();
  return b;
}

bool ZQDType::MSBFirst(bool b) { return SetValueBit(values_, ZQV_MSBFIRST, b); }

bool ZQDType::Nulls(bool b) {
  SetValueBit(values_, ZQV_NOTNULL, !b);
  return b;
}

bool ZQDType::VariableLength(bool b) {
  if (VariableLength_Settable()) SetValueBit(values_, ZQV_VARLEN, b);
  return VariableLength();
}

bool ZQDType::Identity(bool b) {
  if (Identity_Settable()) SetValueBit(values_, ZQV_VARLEN, b);
  return Identity();
}

// ---- characters -------------------------------------------------------------------------

void ZQDType::SetPadChar(char c) {
  if (PadChar_Settable()) pad_char_ = static_cast<unsigned char>(c);
}

void ZQDType::SetPadChar(const char* text) {
  if (!PadChar_Settable()) return;
  if (text == nullptr || *text == ' ') {
    pad_char_ = ' ';
  } else if (*text == '\0') {
    pad_char_ = 0;
  } else {
    ZQString src(text);
    ZQString token;
    token.Extract(src);
    pad_char_ = static_cast<unsigned char>(token[0L]);
  }
}

char* ZQDType::GetPadChar(char* buf) const {
  // Quoted and escaped, so that a blank, a quote or a zero byte survive
  // being written into a property string and read back.
  char c = static_cast<char>(pad_char_ & 0xFF);
  ZQString one(&c, 1);
  ZQString out;
  one.Print(out, true);
  std::memcpy(buf, out.c_str(), static_cast<size_t>(out.length()) + 1);
  return buf;
}

unsigned short ZQDType::DecimalSeparator(unsigned short c) {
  if (DecimalSeparator_Settable()) dec_sep_ = c;
  return dec_sep_;
}

unsigned short ZQDType::ThousandSeparator(unsigned short c) {
  if (ThousandSeparator_Settable()) thsnd_sep_ = c;
  return thsnd_sep_;
}

// ---- coded properties, usage, attributes -------------------------------------------------

long ZQDType::SignStyle(long v) { return sign_style_ = static_cast<int32_t>(v); }
long ZQDType::SignStyleMask(long m) { return sign_style_mask_ = static_cast<int32_t>(m); }
long ZQDType::SignPos(long v) { return sign_pos_ = static_cast<int32_t>(v); }
long ZQDType::SignPosMask(long m) { return sign_pos_mask_ = static_cast<int32_t>(m); }
long ZQDType::NegType(long v) { return neg_type_ = static_cast<int32_t>(v); }
long ZQDType::NegTypeMask(long m) { return neg_type_mask_ = static_cast<int32_t>(m); }
long ZQDType::Align(long v) { return align_ = static_cast<int32_t>(v); }
long ZQDType::AlignMask(long m) { return align_mask_ = static_cast<int32_t>(m); }

short ZQDType::Usage(short u) { return usage_ = u; }

bool ZQDType::AutoInc(bool b) { return SetValueBit(attributes_, ZQA_AUTOINC, b); }
bool ZQDType::Currency(bool b) { return SetValueBit(attributes_, ZQA_CURRENCY, b); }
bool ZQDType::Display(bool b) { return SetValueBit(attributes_, ZQA_DISPLAY, b); }
bool ZQDType::RowVersion(bool b) { return SetValueBit(attributes_, ZQA_ROWVERSION, b); }

// ---- code tables ----------------------------------------------------------------------------

namespace {

struct Code {
  long value;
  const char* key;
  const char* text;
};

const Code kNegStyles[] = {
    {1, "ibm", "IBM"},
    {2, "mfcobol", "Micro Focus"},
    {4, "wang", "Wang"},
    {8, "unisys", "UniSys"},
    {16, "rmcobol", "Ryand McFarland"},
    {32, "cr", "Credit/Debit [123CR/123DB]"},
    {64, "db", "Credit/Debit [123DB/123CR]"},
    {128, "parens", "Negative values in parens [(123)/123]"},
    {256, "angle", "Negative values in angle brackets [<123>/123]"},
    {512, "separate", "Sign separate [-123/123]"},
    {1024, "acucobol", "Acucobol-85"},
    {0, nullptr, nullptr}};

const Code kNegTypes[] = {
    {1, "normal", "Leading sign [-123/123]"},
    {2, "mlast", "Trailing sign [123-/123]"},
    {4, "cr", "Credit/Debit [123CR/123DB]"},
    {8, "db", "Credit/Debit [123DB/123CR]"},
    {16, "parens", "Negative values in parens [(123)/123]"},
    {32, "angle", "Negative values in angle brackets [<123>/123]"},
    {0, nullptr, nullptr}};

const Code kNegPositions[] = {
    {1, "osfirst", "Leading"},
    {2, "oslast", "Trailing"},
    {4, "first", "Leading Separate"},
    {8, "last", "Trailing Separate"},
    {16, "none", "None"},
    {0, nullptr, nullptr}};

const Code kAlignments[] = {
    {1, "left", "Left"},
    {2, "right", "Right"},
    {4, "center", "Center"},
    {8, "decimal", "Decimal"},
    {16, "general", "General"},
    {0, nullptr, nullptr}};

long CodeValue(const Code* table, const char* text) {
  if (text == nullptr) return 0;
  for (; table->key != nullptr; ++table) {
    if (strcasecmp(table->key, text) == 0 || strcasecmp(table->text, text) == 0)
      return table->value;
  }
  return 0;
}

const char* CodeText(const Code* table, long v, bool display) {
  for (; table->key != nullptr; ++table) {
    if (table->value == v) return display ? table->text : table->key;
  }
  return nullptr;
}

}  // namespace

long ZQDType::CharToNegstyle(const char* text) { return CodeValue(kNegStyles, text); }
long ZQDType::CharToNegtype(const char* text) { return CodeValue(kNegTypes, text); }
long ZQDType::CharToNegpos(const char* text) { return CodeValue(kNegPositions, text); }
long ZQDType::CharToAlign(const char* text) { return CodeValue(kAlignments, text); }

const char* ZQDType::NegstyleToChar(long v, bool display) {
  return CodeText(kNegStyles, v, display);
}
const char* ZQDType::NegtypeToChar(long v, bool display) {
  return CodeText(kNegTypes, v, display);
}
const char* ZQDType::NegposToChar(long v, bool display) {
  return CodeText(kNegPositions, v, display);
}
const char* ZQDType::AlignToChar(long v, bool display) {
  return CodeText(kAlignments, v, display);
}
