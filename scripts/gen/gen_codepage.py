#!/usr/bin/env python3
"""Generates the conversion tables of one code page from the C library's iconv.

Usage: gen_codepage.py ICONV_NAME NAMESPACE OUTPUT [--own-values]

The output is a C++ header defining, inside namespace NAMESPACE:
  kMaxBytes          1 or 2, the longest byte sequence of a character;
  kSingle[256]       unit of each byte that is a character alone, 0xFFFF if
                     it is not (a lead byte or an invalid byte);
  kLeadRow[256]      row of kDouble for each byte; row 0 (every byte that
                     is no lead byte) holds no characters;
  kDouble[][256]     unit of lead row + trail byte, 0xFFFF if invalid;
  kMultiRanges[][2]  the bytes that are no character alone (lead bytes and
                     invalid bytes) as ranges lo, hi, kMultiRangeCount of
                     them, for classifying a block of bytes at once;
  kRevIndex[256]     page of kRevPage holding units with this high byte;
  kRevPage[][256]    bytes of each unit (lead << 8 | trail for two bytes),
                     0 when the unit has no form (unit 0 is byte 0).
Each byte sequence and each unit is converted on its own, so a code page
whose iconv decoder combines a letter with a following mark (CP1255,
CP1258) maps every byte to its own unit, and precomposed letters that iconv
encodes as letter plus mark have no form here.
--own-values maps the bytes the code page leaves unassigned to the unit of
the same value, in both directions.
"""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import iconvtab  # noqa: E402

INVALID = 0xFFFF


def rows(values, per_line=16, fmt="0x%04X"):
    out = []
    for i in range(0, len(values), per_line):
        out.append("    " + ", ".join(fmt % v for v in values[i:i + per_line]) + ",")
    return "\n".join(out)


def generate(iconv_name, namespace, own_values):
    single, leads = iconvtab.decode_table(iconv_name)
    max_bytes = 2 if leads else 1
    encode = iconvtab.encode_table(iconv_name, max_bytes)
    if own_values:
        for b in range(256):
            if b not in single and b not in leads:
                single[b] = b
                encode.setdefault(b, b)

    k_single = [single.get(b, INVALID) for b in range(256)]
    lead_list = sorted(leads)
    k_lead_row = [0] * 256
    k_double = [[INVALID] * 256]
    for i, lead in enumerate(lead_list):
        k_lead_row[lead] = i + 1
        k_double.append([leads[lead].get(t, INVALID) for t in range(256)])

    multi_ranges = []
    for b in range(256):
        if k_single[b] != INVALID:
            continue
        if multi_ranges and multi_ranges[-1][1] == b - 1:
            multi_ranges[-1][1] = b
        else:
            multi_ranges.append([b, b])

    pages = [[0] * 256]  # page 0: no unit of this high byte has a form
    k_rev_index = [0] * 256
    for hi in range(256):
        page = [encode.get((hi << 8) | lo, 0) for lo in range(256)]
        if any(page):
            k_rev_index[hi] = len(pages)
            pages.append(page)

    script = "scripts/gen/gen_codepage.py"
    args = "%s %s OUTPUT%s" % (iconv_name, namespace, " --own-values" if own_values else "")
    lines = [
        "// Generated from the C library's iconv converter \"%s\"; do not edit." % iconv_name,
        "// Regenerate with: python3 %s %s" % (script, args),
        "#pragma once",
        "",
        "namespace %s {" % namespace,
        "",
        "constexpr int kMaxBytes = %d;" % max_bytes,
        "",
        "alignas(64) static const unsigned short kSingle[256] = {",
        rows(k_single),
        "};",
        "",
        "static const unsigned char kLeadRow[256] = {",
        rows(k_lead_row, fmt="%d"),
        "};",
        "",
        "static const unsigned short kDouble[%d][256] = {" % len(k_double),
    ]
    for row in k_double:
        lines += ["  {", rows(row), "  },"]
    lines += [
        "};",
        "",
        "constexpr int kMultiRangeCount = %d;" % len(multi_ranges),
        "",
        "constexpr unsigned char kMultiRanges[%d][2] = {" % max(1, len(multi_ranges)),
        "    " + ", ".join("{0x%02X, 0x%02X}" % (lo, hi) for lo, hi in multi_ranges or [(0, 0)]) + ",",
        "};",
        "",
        "static const unsigned char kRevIndex[256] = {",
        rows(k_rev_index, fmt="%d"),
        "};",
        "",
        "static const unsigned short kRevPage[%d][256] = {" % len(pages),
    ]
    for page in pages:
        lines += ["  {", rows(page), "  },"]
    lines += ["};", "", "}  // namespace %s" % namespace, ""]
    return "\n".join(lines)


def main(argv):
    if len(argv) < 4:
        sys.exit(__doc__)
    text = generate(argv[1], argv[2], "--own-values" in argv[4:])
    with open(argv[3] + ".tmp", "w") as f:
        f.write(text)
    os.replace(argv[3] + ".tmp", argv[3])


if __name__ == "__main__":
    main(sys.argv)
