// ZQEbcdic: translation between EBCDIC code pages and ISO-8859-1.
//
// Each supported EBCDIC code page holds the ISO-8859-1 repertoire, so its two
// tables are inverse permutations of the 256 byte values: translating a
// buffer there and back gives it back unchanged. Supported code pages (by
// their number): 37 (US, Canada), 273 (Germany, Austria), 277 (Denmark,
// Norway), 278 (Finland, Sweden), 280 (Italy), 284 (Spain), 285 (United
// Kingdom), 297 (France), 500 (International), 871 (Iceland), 1047 (Open
// Systems Latin-1). Code page 285's overline corresponds to the ISO-8859-1
// macron.
#ifndef ZQ_EBCDIC_H
#define ZQ_EBCDIC_H

#include "zq/export.h"

class ZQ_EXPORT ZQEbcdic {
 public:
  ZQEbcdic() = delete;

  // True when `codepage` is one of the supported EBCDIC code pages.
  static bool IsSupported(int codepage);

  // The 256-byte table from EBCDIC `codepage` to ISO-8859-1 (index: EBCDIC
  // byte), or null for an unsupported code page.
  static const unsigned char* ToISOTable(int codepage);

  // The 256-byte table from ISO-8859-1 to EBCDIC `codepage` (index:
  // ISO-8859-1 byte), or null for an unsupported code page.
  static const unsigned char* FromISOTable(int codepage);

  // Translates `n` bytes at `buf` in place from EBCDIC `codepage` to
  // ISO-8859-1. Returns false, leaving the buffer unchanged, for an
  // unsupported code page, a null buffer or a negative count.
  static bool ToISO(char* buf, int n, int codepage);

  // Translates `n` bytes at `buf` in place from ISO-8859-1 to EBCDIC
  // `codepage`; false as for ToISO.
  static bool FromISO(char* buf, int n, int codepage);
};

#endif  // ZQ_EBCDIC_H
