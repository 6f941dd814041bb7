#!/usr/bin/env python3
"""Writes the sample record files that COBOL cannot express, and the CSV each
should decode to.

The bytes are built here from the published layouts of each format (IBM
hexadecimal and VAX floating point, BCD, overpunched zoned digits, Btrieve and
Magic PC dates, EBCDIC and Shift_JIS text) with Python's own struct and codec
modules, independently of the library, so decoding them is a real check.

Usage: gen_samples.py [OUTPUT_DIR]   (default: this script's folder)
"""
import datetime
import math
import os
import struct
import sys

# The library counts days from 1 January of year 1 in the calendar in use at
# the time (Julian before September 1752); for later dates that is Python's
# proleptic Gregorian ordinal plus 2.
DAY_OFFSET = 2
MAGIC_BASE = 693962


def day_number(d):
    return d.toordinal() + DAY_OFFSET


def ibm_float(v, length):
    """IBM hexadecimal float: sign, excess-64 exponent of 16, fraction."""
    if v == 0:
        return bytes(length)
    sign = 0x80 if v < 0 else 0
    m = abs(v)
    e = 0
    while m >= 1:
        m /= 16
        e += 1
    while m < 1 / 16:
        m *= 16
        e -= 1
    bits = 8 * (length - 1)
    frac = int(m * (1 << bits))
    assert frac / (1 << bits) == m, "value not exact in this IBM float"
    return bytes([sign | (e + 64)]) + frac.to_bytes(length - 1, "big")


def vax_float(v, length):
    """VAX F (4 bytes) or D (8 bytes): 16-bit words, low byte first."""
    if v == 0:
        return bytes(length)
    sign = 1 if v < 0 else 0
    m, e = math.frexp(abs(v))  # m in [0.5, 1)
    fbits = 23 if length == 4 else 55
    frac = int((m * 2 - 1) * (1 << fbits))
    assert (1 + frac / (1 << fbits)) / 2 == m
    word = (sign << (length * 8 - 1)) | ((e + 128) << fbits) | frac
    be = word.to_bytes(length, "big")
    return b"".join(be[i + 1:i + 2] + be[i:i + 1] for i in range(0, length, 2))


def bcd(v_cents, length):
    """Signed BCD, one digit a byte, sign byte last (0x0C or 0x0D)."""
    digits = str(abs(v_cents)).rjust(length - 1, "0")
    return bytes(int(c) for c in digits) + bytes([0x0D if v_cents < 0 else 0x0C])


def zoned_ibm(v, length):
    """Zoned digits with the sign overpunched on the last one, IBM style."""
    digits = str(abs(v)).rjust(length, "0")
    last = int(digits[-1])
    punch = ("}JKLMNOPQR" if v < 0 else "{ABCDEFGHI")[last]
    return (digits[:-1] + punch).encode("ascii")


def zoned_leading_mf(v, length):
    """Zoned digits with the sign on the first digit, negative as 0x70+d."""
    digits = str(abs(v)).rjust(length, "0")
    first = digits[0] if v >= 0 else chr(0x70 + int(digits[0]))
    return (first + digits[1:]).encode("latin-1")


def fmt_scaled(v, scale):
    s = "-" if v < 0 else ""
    t = str(abs(v)).rjust(scale + 1, "0")
    return s + t[:-scale] + "." + t[-scale:]


def csv_cell(s):
    if any(c in s for c in ',"\r\n'):
        return '"' + s.replace('"', '""') + '"'
    return s


def write(out_dir, name, records, header, rows):
    with open(os.path.join(out_dir, name + ".dat"), "wb") as f:
        for r in records:
            f.write(r)
    with open(os.path.join(out_dir, name + ".expected.csv"), "w", newline="") as f:
        f.write(",".join(header) + "\r\n")
        for row in rows:
            f.write(",".join(csv_cell(c) for c in row) + "\r\n")


def mixed(out_dir):
    header = ["int-lsb", "int-msb", "short", "int24", "zoned-ibm", "zoned-lead", "bcd",
              "ibm4", "ibm8", "vaxf", "vaxd", "ieee4", "btr-date", "btr-time", "magic-date"]
    samples = [
        (1, 1, 1, 1, 125, 42, 1234, 1.0, 1.0, 1.0, 1.0, 0.5,
         datetime.date(1999, 12, 31), (13, 45, 30), datetime.date(2024, 2, 29)),
        (-2, -2, -32768, -8388608, -120, -7, -1250, -118.625, 0.15625, -0.75, 1234.5, -2.25,
         datetime.date(1700, 3, 1), (0, 0, 1), datetime.date(1901, 1, 1)),
        (2147483647, -2147483648, 32767, 8388607, 0, 99999, 0, 0.0, -3.5, 1024.0, -0.001953125,
         3.0e10 + 0.0, None, None, None),
    ]
    records, rows = [], []
    for s in samples:
        (il, im, sh, i24, zi, zl, bc, i4, i8, vf, vd, f4, bd, bt, md) = s
        rec = struct.pack("<i", il) + struct.pack(">i", im) + struct.pack("<h", sh)
        rec += (i24 & 0xFFFFFF).to_bytes(3, "little")
        rec += zoned_ibm(zi, 5) + zoned_leading_mf(zl, 5) + bcd(bc, 6)
        rec += ibm_float(i4, 4) + ibm_float(i8, 8) + vax_float(vf, 4) + vax_float(vd, 8)
        rec += struct.pack("<f", f4)
        rec += bytes([bd.day, bd.month]) + struct.pack("<h", bd.year) if bd else bytes(4)
        rec += bytes([0, bt[2], bt[1], bt[0]]) if bt else bytes(4)
        rec += struct.pack("<i", day_number(md) - MAGIC_BASE) if md else bytes(4)
        records.append(rec)
        rows.append([str(il), str(im), str(sh), str(i24), str(zi), str(zl), fmt_scaled(bc, 2),
                     repr_num(i4, single=True), repr_num(i8), repr_num(vf, single=True), repr_num(vd), repr_num(f4, single=True),
                     bd.isoformat() if bd else "",
                     "%02d:%02d:%02d" % bt if bt else "",
                     md.isoformat() if md else ""])
    write(out_dir, "mixed", records, header, rows)


def repr_num(v, single=False):
    """Shortest text that reads back as the same double (or single), without
    an exponent for moderate magnitudes, as zqrec prints it."""
    same = (lambda t: struct.pack("<f", float(t)) == struct.pack("<f", v)) if single else \
        (lambda t: float(t) == v)
    for p in range(1, 18):
        t = "%.*g" % (p, v)
        if same(t):
            break
    if "e" not in t:
        return t
    mant, exp = t.split("e")
    sign = "-" if mant.startswith("-") else ""
    digits = mant.lstrip("-").replace(".", "")
    point = int(exp) + 1
    if int(exp) < -7 or int(exp) > 20:
        return t
    if point <= 0:
        return sign + "0." + "0" * -point + digits
    if point >= len(digits):
        return sign + digits + "0" * (point - len(digits))
    return sign + digits[:point] + "." + digits[point:]


def zoned_ebcdic(v, length):
    """Mainframe zoned decimal: digits F0-F9, the last digit's zone C or D."""
    digits = str(abs(v)).rjust(length, "0")
    body = bytes(0xF0 + int(c) for c in digits[:-1])
    return body + bytes([(0xD0 if v < 0 else 0xC0) + int(digits[-1])])


def text(out_dir):
    header = ["code", "name-ebcdic", "amount-ebcdic", "city-sjis"]
    samples = [(1, "Müller & Söhne", 123456, "東京"), (2, 'He said "no", twice', -5, "大阪市北区"),
               (3, "", 0, "ｶﾀｶﾅ"), (4, "line\nbreak", -9999999, "Kyoto, 京都")]
    records, rows = [], []
    for code, name, amount, city in samples:
        n = name.encode("cp037").ljust(24, "\x40".encode("latin-1"))
        c = city.encode("shift_jis").ljust(16, b" ")
        records.append(struct.pack(">h", code) + n + zoned_ebcdic(amount, 7) + c)
        rows.append([str(code), name, fmt_scaled(amount, 2), city])
    write(out_dir, "text", records, header, rows)


if __name__ == "__main__":
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    mixed(out)
    text(out)
