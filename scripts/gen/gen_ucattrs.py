#!/usr/bin/env python3
"""Generates the Unicode attribute table of the 16-bit units.

Usage: gen_ucattrs.py OUTPUT

One 16-bit attribute word per unit 0 to 0xFFFF, from the Unicode character
database that ships with Python (unicodedata), stored as a two-level table:
kAttrIndex[unit >> 8] selects a page of kAttrPage. Bits (the same values
as the UC_ constants of ZQGlob):
  1 upper (Lu)     2 lower (Ll)      4 title (Lt)       8 digit (Nd)
  16 space (Zs, Zl, Zp)  32 punctuation (P*)  64 alphabetic (L*)
  128 control (Cc)  256 hexadecimal digit (0-9, A-F, a-f)
  512 symbol (S*)   1024 mark (M*)   2048 number (N*)
Surrogates, private-use and unassigned units have no bits.
"""

import os
import sys
import unicodedata

BITS = {"Lu": 1 | 64, "Ll": 2 | 64, "Lt": 4 | 64, "Lm": 64, "Lo": 64,
        "Nd": 8 | 2048, "Nl": 2048, "No": 2048,
        "Zs": 16, "Zl": 16, "Zp": 16,
        "Pc": 32, "Pd": 32, "Ps": 32, "Pe": 32, "Pi": 32, "Pf": 32, "Po": 32,
        "Cc": 128,
        "Sm": 512, "Sc": 512, "Sk": 512, "So": 512,
        "Mn": 1024, "Mc": 1024, "Me": 1024}
XDIGIT = 256


def attrs(u):
    if 0xD800 <= u <= 0xDFFF:
        return 0
    value = BITS.get(unicodedata.category(chr(u)), 0)
    if chr(u) in "0123456789ABCDEFabcdef":
        value |= XDIGIT
    return value


def main(argv):
    if len(argv) != 2:
        sys.exit(__doc__)
    pages, index = [], []
    for hi in range(256):
        page = [attrs((hi << 8) | lo) for lo in range(256)]
        if page not in pages:
            pages.append(page)
        index.append(pages.index(page))
    lines = [
        "// Generated from the Unicode %s character database; do not edit."
        % unicodedata.unidata_version,
        "// Regenerate with: python3 scripts/gen/gen_ucattrs.py OUTPUT",
        "#pragma once",
        "",
        "namespace ucattrs {",
        "",
        "static const unsigned char kAttrIndex[256] = {",
    ]
    lines += ["    " + ", ".join(str(v) for v in index[i:i + 16]) + ","
              for i in range(0, 256, 16)]
    lines += ["};", "", "static const unsigned short kAttrPage[%d][256] = {" % len(pages)]
    for page in pages:
        lines.append("  {")
        lines += ["    " + ", ".join("0x%04X" % v for v in page[i:i + 16]) + ","
                  for i in range(0, 256, 16)]
        lines.append("  },")
    lines += ["};", "", "}  // namespace ucattrs", ""]
    with open(argv[1] + ".tmp", "w") as f:
        f.write("\n".join(lines))
    os.replace(argv[1] + ".tmp", argv[1])


if __name__ == "__main__":
    main(sys.argv)
