#!/usr/bin/env python3
"""Generates the EBCDIC <-> ISO-8859-1 translation tables from the C library's iconv.

Usage: gen_ebcdic.py OUTPUT

Each EBCDIC code page below holds the ISO-8859-1 repertoire, so its tables
are a bijection of the 256 byte values. A byte iconv maps outside
ISO-8859-1 (code page 285 has an overline where the others have a macron)
takes the ISO-8859-1 value that no other byte of the page reaches.
"""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import iconvtab  # noqa: E402

CODE_PAGES = [37, 273, 277, 278, 280, 284, 285, 297, 500, 871, 1047]


def page_tables(cp):
    single, leads = iconvtab.decode_table("IBM%03d" % cp)
    if leads or len(single) != 256:
        sys.exit("IBM%03d is not a complete single-byte code page" % cp)
    to_latin1 = [single[b] for b in range(256)]
    outside = [b for b in range(256) if to_latin1[b] > 0xFF]
    unused = sorted(set(range(256)) - set(v for v in to_latin1 if v <= 0xFF))
    if len(outside) != len(unused):
        sys.exit("IBM%03d does not hold the ISO-8859-1 repertoire" % cp)
    for b, v in zip(outside, unused):
        to_latin1[b] = v
    from_latin1 = [0] * 256
    for b, v in enumerate(to_latin1):
        from_latin1[v] = b
    return to_latin1, from_latin1


def rows(values):
    return "\n".join("    " + ", ".join("0x%02X" % v for v in values[i:i + 16]) + ","
                     for i in range(0, 256, 16))


def main(argv):
    if len(argv) != 2:
        sys.exit(__doc__)
    lines = [
        "// Generated from the C library's iconv converters IBM037 ... IBM1047; do not edit.",
        "// Regenerate with: python3 scripts/gen/gen_ebcdic.py OUTPUT",
        "#pragma once",
        "",
        "namespace ebcdic {",
        "",
        "constexpr int kPageCount = %d;" % len(CODE_PAGES),
        "constexpr int kPages[kPageCount] = {%s};" % ", ".join(str(cp) for cp in CODE_PAGES),
        "",
    ]
    to_all, from_all = [], []
    for cp in CODE_PAGES:
        t, f = page_tables(cp)
        to_all.append((cp, t))
        from_all.append((cp, f))
    for name, tables in (("kToLatin1", to_all), ("kFromLatin1", from_all)):
        lines.append("alignas(64) static const unsigned char %s[kPageCount][256] = {" % name)
        for cp, table in tables:
            lines += ["  {  // %d" % cp, rows(table), "  },"]
        lines += ["};", ""]
    lines += ["}  // namespace ebcdic", ""]
    with open(argv[1] + ".tmp", "w") as f:
        f.write("\n".join(lines))
    os.replace(argv[1] + ".tmp", argv[1])


if __name__ == "__main__":
    main(sys.argv)
