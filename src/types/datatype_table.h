// The type catalogue as data: one row per storage format, expanded from
// zq/datatype.def, and the lookups over it.
#ifndef ZQ_TYPES_DATATYPE_TABLE_H
#define ZQ_TYPES_DATATYPE_TABLE_H

#include <cstdint>

#include "zq/dtype.h"

namespace zq {
namespace types {

// How a new length implies a precision and a new precision a length.
enum Coupling : uint8_t {
  CPL_NONE,     // fixed length and precision
  CPL_SAME,     // precision = length
  CPL_ZONED,    // one byte less when the sign is separate
  CPL_PACKED,   // two digits a byte, one nibble for the sign
  CPL_MAGIC,    // two digits a byte after a one-byte header
  CPL_BINARY,   // the binary digit and length tables
  CPL_BCD,      // one digit a byte, a byte for the sign
  CPL_COLBIN,   // two bytes a column, even lengths only
  CPL_PREFIX1,  // one byte of terminator or length prefix
  CPL_PREFIX2,  // two bytes of length prefix
  CPL_DBASE     // a byte for the point and a byte for the sign
};

// When a change of signedness re-applies the length.
enum SignRule : uint8_t {
  SGN_NONE,
  SGN_ALWAYS,    // every change
  SGN_SEPARATE   // only while the sign position is separate (4 or 8)
};

// How CalculateDisplayLength measures the type.
enum DisplayRule : uint8_t {
  DSP_NUMBER,   // precision, plus point and sign
  DSP_TEXT,     // precision
  DSP_DATE,
  DSP_TIME,
  DSP_DATETIME,
  DSP_BOOLEAN
};

enum PictureKind : uint8_t { kPicNone, kPicText, kPicDate, kPicTime, kPicDateTime };

struct PictureSpec {
  PictureKind kind;
  const char* text;
};

struct CatalogueRow {
  DATATYPE type;
  const char* name;
  DATATYPE generic;
  int32_t len_def, len_min, len_max;
  int32_t prec_def, prec_min, prec_max;
  int16_t dec_def, dec_min, dec_max;
  int16_t scale_def, scale_min, scale_max;
  uint32_t meaningful;
  uint32_t settable;
  uint16_t values;
  uint16_t pad_char;  // 0 keeps the reset pad character
  int32_t sign_pos, sign_pos_mask;
  int32_t sign_style, sign_style_mask;
  int32_t align, align_mask;
  PictureSpec picture;
  Coupling coupling;
  SignRule sign_rule;
  DisplayRule display;
};

constexpr int kCatalogueSize = 73;
constexpr long kLastType = 176;

// The rows in catalogue order.
extern const CatalogueRow kCatalogue[kCatalogueSize];

// The row of type value `t`, or null when `t` is not a type.
const CatalogueRow* FindRow(long t);

// The row whose display name equals `name` without regard to case, or null.
const CatalogueRow* FindRowByName(const char* name, long n);

// Process-wide registries of pictures and aliases, each under its own lock.
// An index is found or added for a text; -1 when the registry is full.
int16_t PictureIndex(const char* text);
// The text of a picture index, or null for -1 or an unknown index.
const char* PictureText(int16_t index);
int16_t AliasIndex(const char* name);
// The name of an alias index ("" when the entry has none), null for -1.
const char* AliasName(int16_t index);

}  // namespace types
}  // namespace zq

#endif  // ZQ_TYPES_DATATYPE_TABLE_H
