"""Reads code-page mappings out of the C library's iconv converters.

Shared by the table generators: each mapping is asked of glibc's iconv(3)
once, at build time, through ctypes, so the generated tables hold exactly
what the system converter does.
"""

import ctypes
import ctypes.util
import errno
import struct

_libc = ctypes.CDLL(ctypes.util.find_library("c"), use_errno=True)
_libc.iconv_open.restype = ctypes.c_void_p
_libc.iconv_open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
_libc.iconv.restype = ctypes.c_size_t
_libc.iconv.argtypes = [ctypes.c_void_p,
                        ctypes.POINTER(ctypes.c_char_p),
                        ctypes.POINTER(ctypes.c_size_t),
                        ctypes.POINTER(ctypes.c_char_p),
                        ctypes.POINTER(ctypes.c_size_t)]
_libc.iconv_close.argtypes = [ctypes.c_void_p]

_ERROR = ctypes.c_size_t(-1).value


class Converter:
    """One iconv descriptor; convert() answers one complete input."""

    def __init__(self, to_code, from_code):
        self.cd = _libc.iconv_open(to_code.encode(), from_code.encode())
        if self.cd is None or self.cd == ctypes.c_void_p(-1).value:
            raise SystemExit("iconv cannot convert %s to %s" % (from_code, to_code))
        self.out = ctypes.create_string_buffer(64)

    def convert(self, data):
        """Returns (output bytes, errno or 0, input bytes consumed)."""
        _libc.iconv(self.cd, None, None, None, None)  # reset the state
        inbuf = ctypes.create_string_buffer(data, len(data))
        inptr = ctypes.c_char_p(ctypes.addressof(inbuf))
        inleft = ctypes.c_size_t(len(data))
        outptr = ctypes.c_char_p(ctypes.addressof(self.out))
        outleft = ctypes.c_size_t(len(self.out))
        err = 0
        if _libc.iconv(self.cd, ctypes.byref(inptr), ctypes.byref(inleft),
                       ctypes.byref(outptr), ctypes.byref(outleft)) == _ERROR:
            err = ctypes.get_errno()
        if err == 0:
            # Flush characters a composing decoder may still hold back.
            if _libc.iconv(self.cd, None, None, ctypes.byref(outptr),
                           ctypes.byref(outleft)) == _ERROR:
                err = ctypes.get_errno()
        produced = len(self.out) - outleft.value
        return self.out.raw[:produced], err, len(data) - inleft.value

    def close(self):
        _libc.iconv_close(self.cd)


def _one_unit(out):
    """The single BMP code point in UCS-4LE output, or None."""
    if len(out) != 4:
        return None
    (cp,) = struct.unpack("<I", out)
    if cp > 0xFFFF or 0xD800 <= cp <= 0xDFFF:
        return None
    return cp


def decode_table(name):
    """Byte sequences of a code page to units.

    Returns (single, leads): single maps byte -> unit for bytes that form a
    character alone; leads maps lead byte -> {trail: unit} for two-byte
    characters. Sequences that decode to anything but one BMP code point are
    left out.
    """
    cv = Converter("UCS-4LE", name)
    single, lead_bytes = {}, []
    for b in range(256):
        out, err, used = cv.convert(bytes([b]))
        if err == 0 and used == 1:
            cp = _one_unit(out)
            if cp is not None:
                single[b] = cp
        elif err == errno.EINVAL:
            lead_bytes.append(b)
    leads = {}
    for lead in lead_bytes:
        row = {}
        for trail in range(256):
            out, err, used = cv.convert(bytes([lead, trail]))
            if err == 0 and used == 2:
                cp = _one_unit(out)
                if cp is not None:
                    row[trail] = cp
        leads[lead] = row
    cv.close()
    return single, leads


def encode_table(name, max_bytes):
    """Units to byte sequences: unit -> int (bytes big-endian) for every BMP
    unit iconv maps to at most max_bytes bytes."""
    cv = Converter(name, "UCS-4LE")
    table = {}
    for u in range(1, 0x10000):
        if 0xD800 <= u <= 0xDFFF:
            continue
        out, err, _ = cv.convert(struct.pack("<I", u))
        if err == 0 and 1 <= len(out) <= max_bytes:
            table[u] = int.from_bytes(out, "big")
    cv.close()
    return table
