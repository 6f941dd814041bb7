// zqrec: decodes legacy record files to CSV or JSON Lines and encodes them
// back. Declarations shared by the tool's source files.
#ifndef ZQREC_ZQREC_H
#define ZQREC_ZQREC_H

#include <cstdint>
#include <string>
#include <vector>

#include "zq/dtype.h"

namespace zqrec {

// Exit codes of the tool.
enum ExitCode { kExitOk = 0, kExitData = 2, kExitUsage = 3, kExitIo = 4 };

// How the bytes of a field become a value.
enum class Kind {
  kPacked,    // packed decimal digits, exact
  kZoned,     // zoned (display) digits with a sign convention, exact
  kBcd,       // one digit per byte, exact
  kInteger,   // binary integers of 1 to 8 bytes, exact with the scale
  kFloat,     // binary floating-point formats, shortest round-trip text
  kDate,      // day numbers printed by the field's picture
  kTime,      // seconds past midnight printed by the field's picture
  kText,      // characters in the field's code page, as UTF-8
  kHex        // uninterpreted bytes, as hexadecimal
};

// A text code page: an EBCDIC table pair, or a library code set.
struct CodePage {
  std::string name = "ISO-8859-1";
  int ebcdic = 0;          // EBCDIC code page number, 0 when not EBCDIC
  int cset = 1;            // ZQ_CSET when not EBCDIC
  const unsigned char* to_iso = nullptr;
  const unsigned char* from_iso = nullptr;
  unsigned char space = 0x20;
};

// Looks up an encoding name ("cp037", "IBM-1047", "Shift_JIS", "UTF-8",
// "ISO-8859-1", ...); false with `error` set when it is not known.
bool FindCodePage(const std::string& name, CodePage* cp, std::string* error);

struct Field {
  std::string name;
  ZQDType type;       // the descriptor as written in the layout
  ZQDType raw;        // the same with scale 0: reads the stored integer
  Kind kind = Kind::kText;
  int offset = 0;     // byte offset in the record
  int length = 0;     // stored bytes
  int scale = 0;      // implied decimal places of the stored integer
  bool has_codepage = false;  // the layout named an encoding for it
  CodePage cp;
  std::string picture;        // date or time mask
  int line = 0;               // layout line, for messages
};

struct Layout {
  std::string path;
  std::vector<Field> fields;
  int record_length = 0;      // bytes per record (fields plus filler)
  int fields_length = 0;      // bytes covered by the fields
  unsigned char filler = 0x20;
  bool any_ebcdic = false;
};

// Reads a layout file; false with `error` holding "file:line:col: message".
bool LoadLayout(const std::string& path, Layout* layout, std::string* error);

// Checks a property string and builds the descriptor; on failure `error`
// names what was expected and `column` (0-based, within `text`) where.
bool ParseProperties(const std::string& text, ZQDType* type, size_t* column,
                     std::string* error);

// Gives each text field without an encoding of its own the code page `cp`.
void ApplyDefaultCodePage(Layout* layout, const CodePage& cp);

// Decodes one field of `rec` into `out` (appended: UTF-8 text or a number);
// `is_null` is set for an empty date or time. False with `error` when the
// bytes are not valid for the type.
bool DecodeField(const Field& f, const class ZQString& rec, std::string* out,
                 bool* is_null, std::string* error);

// Encodes `text` into the field's bytes, appended to `out`. False with
// `error` when the text is not a value the field can hold.
bool EncodeField(const Field& f, const std::string& text, class ZQString* out,
                 std::string* error);

// "12 3A 5C" for the bytes.
std::string HexBytes(const unsigned char* p, size_t n);

// True when the field's kind prints a JSON number.
inline bool IsNumeric(Kind k) {
  return k == Kind::kPacked || k == Kind::kZoned || k == Kind::kBcd ||
         k == Kind::kInteger || k == Kind::kFloat;
}

}  // namespace zqrec

#endif  // ZQREC_ZQREC_H
