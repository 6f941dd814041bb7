// ZQDType: the descriptor of one field of a foreign record, and DATATYPE,
// the catalogue of the 73 storage formats it can describe.
//
// A descriptor holds the field's type, its length, precision, scale and
// decimal places (each with a minimum and a maximum), its sign conventions,
// byte order, alignment, pad character, separators and picture. Assigning a
// type installs that type's catalogue defaults. Every property has a
// settable bit (may a user change it) and a meaningful bit (does it apply to
// this type). A descriptor is written to text and read back as a property
// string (Print, the ZQString constructor, Define).
#ifndef ZQ_DTYPE_H
#define ZQ_DTYPE_H

#include <cstdint>
#include <string>

#include "zq/export.h"

class ZQString;
class ZQWString;
class ZQDecimal;
class ZQQuadWord;
class ZQDateTime;

// The storage formats. Values 0 to 12 are the generic types; 98 to 176 the
// specific encodings. Values not listed are not types.
enum DATATYPE : int {
#define ZQ_DATATYPE(Id, Value, ...) ZQDT_##Id = Value,
#include "zq/datatype.def"
#undef ZQ_DATATYPE
};

// Property bits of the settable and meaningful flag words.
enum ZQDTPROP : uint32_t {
  ZQP_MSBFIRST = 1u << 0,
  ZQP_SIGNED = 1u << 1,
  ZQP_VARLEN = 1u << 2,
  ZQP_PADCHAR = 1u << 3,
  ZQP_DECIMAL = 1u << 4,
  ZQP_SIGNSTYLE = 1u << 5,
  ZQP_SIGNPOS = 1u << 6,
  ZQP_PICTURE = 1u << 7,
  ZQP_SCALE = 1u << 8,
  ZQP_PRECISION = 1u << 9,
  ZQP_LENGTH = 1u << 10,
  ZQP_ALIGN = 1u << 11,
  ZQP_DECSEP = 1u << 12,
  ZQP_THSNDSEP = 1u << 13,
  ZQP_NEGTYPE = 1u << 14,
  ZQP_NULLS = 1u << 15,
  ZQP_IDENTITY = 1u << 16
};

// Bits of the 16-bit value word. Nulls are allowed while ZQV_NOTNULL is
// clear; ZQV_VARLEN is shared by VariableLength and Identity.
enum ZQDTVALUE : uint16_t {
  ZQV_MSBFIRST = 1u << 0,
  ZQV_SIGNED = 1u << 1,
  ZQV_NOTNULL = 1u << 3,
  ZQV_VARLEN = 1u << 4
};

// Bits of the 16-bit attribute word.
enum ZQDTATTR : uint16_t {
  ZQA_AUTOINC = 1u << 0,
  ZQA_CURRENCY = 1u << 1,
  ZQA_DISPLAY = 1u << 2,
  ZQA_ROWVERSION = 1u << 3
};

class ZQ_EXPORT ZQDType {
 public:
  // A "Text" descriptor with no alias and no picture.
  ZQDType();
  // A descriptor of type `t` with its catalogue defaults.
  ZQDType(DATATYPE t);
  ZQDType(const ZQDType& other);
  // A descriptor read from a property string, from the cursor of `def`.
  ZQDType(ZQString& def);
  virtual ~ZQDType();

  ZQDType& operator=(const ZQDType& other);
  // Resets and installs the catalogue row of `t`; the picture survives
  // unless the row installs one.
  ZQDType& operator=(DATATYPE t);
  // Replaces this descriptor by one read from a property string.
  ZQDType& operator=(ZQString& def);
  // Quotes `text` as a property string (unless it starts with a quote) and
  // reads it.
  void Define(const char* text);
  // Appends the property string of this descriptor to `out`.
  void Print(ZQString& out) const;

  // ---- type --------------------------------------------------------------
  DATATYPE Type() const { return type_; }
  operator DATATYPE() const { return type_; }
  // Display name of the type; "Text" for a value that is not a type.
  const char* TypeName() const;
  DATATYPE GenericType() const { return generic_; }
  DATATYPE GenericType(DATATYPE t);
  // Both forms compare the types only.
  bool operator==(DATATYPE t) const { return type_ == t; }
  bool operator!=(DATATYPE t) const { return type_ != t; }
  bool operator==(const ZQDType& o) const { return type_ == o.type_; }
  bool operator!=(const ZQDType& o) const { return type_ != o.type_; }
  // The 73 display names in catalogue order, ending with a null pointer.
  static const char* const* GetAllTypedefs();
  // Display name of a type value, or null when the value is not a type.
  static const char* TypeNameOf(long t);
  // Type whose display name equals `name` without regard to case; false
  // when there is none.
  static bool TypeByName(const char* name, DATATYPE& t);

  // ---- alias and picture (process-wide registries) -----------------------
  // The alias name, or the type name when there is none.
  const char* Alias() const;
  // Null or empty removes the alias; otherwise finds or adds it.
  void Alias(const char* name);
  // The picture text, or null when there is none.
  const char* Picture() const;
  // Null or empty removes the picture; otherwise finds or adds it.
  void Picture(const char* text);

  // ---- length, precision, scale, decimal places --------------------------
  long Length() const { return length_; }
  // Clamps, stores, and brings the precision in step; returns the length.
  long Length(long n);
  long MinLength() const { return min_length_; }
  long MinLength(long n);
  long MaxLength() const { return max_length_; }
  long MaxLength(long n);
  long Precision() const { return precision_; }
  // Clamps, stores, and brings the length in step; returns the precision.
  long Precision(long n);
  long MinPrecision() const { return min_precision_; }
  long MinPrecision(long n);
  long MaxPrecision() const { return max_precision_; }
  long MaxPrecision(long n);
  short Scale() const { return scale_; }
  // Clamps to the minimum and maximum scale.
  short Scale(short n);
  short MinScale() const { return min_scale_; }
  short MinScale(short n);
  short MaxScale() const { return max_scale_; }
  short MaxScale(short n);
  short DecimalPlaces() const { return dec_places_; }
  // Clamps to the minimum and maximum decimal places.
  short DecimalPlaces(short n);
  short MinDecimalPlaces() const { return min_dec_; }
  short MinDecimalPlaces(short n);
  short MaxDecimalPlaces() const { return max_dec_; }
  short MaxDecimalPlaces(short n);

  // ---- Boolean values ----------------------------------------------------
  bool MSBFirst() const { return (values_ & ZQV_MSBFIRST) != 0; }
  bool MSBFirst(bool b);
  bool Signed() const { return (values_ & ZQV_SIGNED) != 0; }
  bool Signed(bool b);
  bool Nulls() const { return (values_ & ZQV_NOTNULL) == 0; }
  bool Nulls(bool b);
  bool VariableLength() const { return (values_ & ZQV_VARLEN) != 0; }
  // Stored only when variable length is settable.
  bool VariableLength(bool b);
  // The same stored bit as VariableLength.
  bool Identity() const { return (values_ & ZQV_VARLEN) != 0; }
  // Stored only when identity is settable.
  bool Identity(bool b);
  // Byte order of this machine: least-significant byte first.
  static bool NativeMSBFirst() { return false; }

  // ---- characters --------------------------------------------------------
  unsigned short PadChar() const { return pad_char_; }
  // Stored only when the pad character is settable.
  void SetPadChar(char c);
  // Only when settable: null or a leading blank gives a space, an empty
  // text gives 0, otherwise the first character of the unquoted text.
  void SetPadChar(const char* text);
  // Writes the pad character as a quoted, escaped text to `buf` (room for
  // 8 bytes); returns `buf`.
  char* GetPadChar(char* buf) const;
  unsigned short DecimalSeparator() const { return dec_sep_; }
  unsigned short DecimalSeparator(unsigned short c);
  // 0 means no thousand separator.
  unsigned short ThousandSeparator() const { return thsnd_sep_; }
  unsigned short ThousandSeparator(unsigned short c);

  // ---- coded properties (values are single bits; masks are sets) ---------
  long SignStyle() const { return sign_style_; }
  long SignStyle(long v);
  long SignStyleMask() const { return sign_style_mask_; }
  long SignStyleMask(long m);
  long SignPos() const { return sign_pos_; }
  long SignPos(long v);
  long SignPosMask() const { return sign_pos_mask_; }
  long SignPosMask(long m);
  long NegType() const { return neg_type_; }
  long NegType(long v);
  long NegTypeMask() const { return neg_type_mask_; }
  long NegTypeMask(long m);
  long Align() const { return align_; }
  long Align(long v);
  long AlignMask() const { return align_mask_; }
  long AlignMask(long m);

  // ---- usage and attributes ----------------------------------------------
  short Usage() const { return usage_; }
  short Usage(short u);
  bool AutoInc() const { return (attributes_ & ZQA_AUTOINC) != 0; }
  bool AutoInc(bool b);
  bool Currency() const { return (attributes_ & ZQA_CURRENCY) != 0; }
  bool Currency(bool b);
  bool Display() const { return (attributes_ & ZQA_DISPLAY) != 0; }
  bool Display(bool b);
  bool RowVersion() const { return (attributes_ & ZQA_ROWVERSION) != 0; }
  bool RowVersion(bool b);

  // ---- settable and meaningful bits --------------------------------------
#define ZQ_DTYPE_FLAGS(Name, Bit)                                     \
  bool Name##_Settable() const { return (settable_ & (Bit)) != 0; }   \
  bool Name##_Settable(bool b) { return SetBit(settable_, Bit, b); }  \
  bool Name##_Meaningful() const { return (meaningful_ & (Bit)) != 0; } \
  void Name##_NotMeaningful() { meaningful_ &= ~static_cast<uint32_t>(Bit); }
  ZQ_DTYPE_FLAGS(MSBFirst, ZQP_MSBFIRST)
  ZQ_DTYPE_FLAGS(Signed, ZQP_SIGNED)
  ZQ_DTYPE_FLAGS(VariableLength, ZQP_VARLEN)
  ZQ_DTYPE_FLAGS(PadChar, ZQP_PADCHAR)
  ZQ_DTYPE_FLAGS(DecimalPlaces, ZQP_DECIMAL)
  ZQ_DTYPE_FLAGS(SignStyle, ZQP_SIGNSTYLE)
  ZQ_DTYPE_FLAGS(SignPos, ZQP_SIGNPOS)
  ZQ_DTYPE_FLAGS(Picture, ZQP_PICTURE)
  ZQ_DTYPE_FLAGS(Scale, ZQP_SCALE)
  ZQ_DTYPE_FLAGS(Precision, ZQP_PRECISION)
  ZQ_DTYPE_FLAGS(Length, ZQP_LENGTH)
  ZQ_DTYPE_FLAGS(Align, ZQP_ALIGN)
  ZQ_DTYPE_FLAGS(DecimalSeparator, ZQP_DECSEP)
  ZQ_DTYPE_FLAGS(ThousandSeparator, ZQP_THSNDSEP)
  ZQ_DTYPE_FLAGS(NegType, ZQP_NEGTYPE)
  ZQ_DTYPE_FLAGS(Nulls, ZQP_NULLS)
  ZQ_DTYPE_FLAGS(Identity, ZQP_IDENTITY)
#undef ZQ_DTYPE_FLAGS
  // Sets or clears the meaningful bit of Nulls; returns the new state.
  bool Nulls_Meaningful(bool b) { return SetBit(meaningful_, ZQP_NULLS, b); }
  void ThousandSeparator_SetMeaningful() { meaningful_ |= ZQP_THSNDSEP; }
  void Identity_SetMeaningful() { meaningful_ |= ZQP_IDENTITY; }
  // The raw flag words (bits ZQP_*), for tools that copy descriptors.
  uint32_t SettableFlags() const { return settable_; }
  uint32_t MeaningfulFlags() const { return meaningful_; }

  // ---- code tables -------------------------------------------------------
  // Value of the first row whose key word or display text equals `text`
  // without regard to case; 0 when none does.
  static long CharToNegstyle(const char* text);
  static long CharToNegtype(const char* text);
  static long CharToNegpos(const char* text);
  static long CharToAlign(const char* text);
  // Display text (`display` true) or key word of a value; null if unknown.
  static const char* NegstyleToChar(long v, bool display);
  static const char* NegtypeToChar(long v, bool display);
  static const char* NegposToChar(long v, bool display);
  static const char* AlignToChar(long v, bool display);

  // ---- display -----------------------------------------------------------
  // Number of characters a value of this type takes when displayed.
  long CalculateDisplayLength() const;

#include "zq/dtype/engine.inc"

 private:
  static bool SetBit(uint32_t& word, uint32_t bit, bool b) {
    if (b) {
      word |= bit;
    } else {
      word &= ~bit;
    }
    return b;
  }
  // Reads a property string from `def` into this descriptor.
  void Read(ZQString& def);
  // Applies one "key=value" or flag clause of a property string.
  void ApplyClause(const ZQString& clause);
  // Re-applies the current length after a change that moves the precision.
  void ReapplyLength();
  // Length and precision setters; `depth` bounds their mutual calls when
  // user-set bounds leave no consistent pair.
  long SetLength(int64_t n, int depth);
  long SetPrecision(int64_t n, int depth);
  // The precision a length implies (0: none); may raise an odd length.
  int64_t ImpliedPrecision(int64_t length);
  // The length a precision implies (0: none).
  int64_t ImpliedLength(int64_t precision) const;

  DATATYPE type_;
  DATATYPE generic_;
  int32_t length_;
  int32_t min_length_;
  int32_t max_length_;
  int32_t precision_;
  int32_t min_precision_;
  int32_t max_precision_;
  int16_t scale_;
  int16_t min_scale_;
  int16_t max_scale_;
  uint16_t pad_char_;
  uint16_t dec_sep_;
  uint16_t thsnd_sep_;
  int16_t dec_places_;
  int16_t max_dec_;
  int16_t min_dec_;
  int16_t alias_;
  int16_t picture_;
  uint32_t settable_;
  uint32_t meaningful_;
  uint16_t values_;
  int16_t usage_;
  uint16_t attributes_;
  int32_t sign_style_;
  int32_t sign_style_mask_;
  int32_t sign_pos_;
  int32_t sign_pos_mask_;
  int32_t neg_type_;
  int32_t neg_type_mask_;
  int32_t align_;
  int32_t align_mask_;
};

#endif  // ZQ_DTYPE_H
