// Column-binary punch-card codecs.
//
// One card column is stored in two bytes: the low six bits of the first byte
// hold rows 12, 11, 0, 1, 2 and 3 (bit 5 to bit 0), the low six bits of the
// second byte rows 4 to 9; the top two bits of each byte are 0. A field of
// `length` bytes holds length / 2 columns, the first column first.
#ifndef ZQ_TYPES_CODEC_PUNCH_H
#define ZQ_TYPES_CODEC_PUNCH_H

#include <cstdint>

#include "types/codec_decimal.h"

namespace zq {
namespace codec {

// The 12 punch rows of one column as a mask: row 12 is bit 11, row 11 bit 10,
// row 0 bit 9, rows 1 to 9 bits 8 to 0.
uint16_t GetColumn(const uint8_t* p);
void PutColumn(uint8_t* out, uint16_t rows);

// Multi-punch: every column reads as four decimal digits, its row mask from
// 0000 to 4095, so that the whole field reads as one decimal number. Writing
// takes the digits of `text` (other characters count as 0) right-aligned in
// groups of four, one group per column; a group above 4095 keeps its low
// 12 bits. An odd last byte is written as 0.
void GetCBMultiPunch(const uint8_t* p, int length, TextBuf* out);
void PutCBMultiPunch(uint8_t* out, int length, const char* text, int n);

// Alphanumeric and numeric: every column is one character of the Hollerith
// card code (the 029 keypunch set: digits, upper-case letters, space and
// & - / . < ( + | ! $ * ) ; , % _ > ? : # @ ' = "). A column whose punches
// are not a character of the code reads as "~". Writing lays the text out
// from the first column, lower-case letters as upper case, characters
// outside the code and columns beyond the text left blank.
void GetCBAlphaNumeric(const uint8_t* p, int length, TextBuf* out);
void PutCBAlphaNumeric(uint8_t* out, int length, const char* text, int n);

// The punches of one character (0 for space and for characters outside the
// code), and the character of a punch mask (0 when none).
uint16_t HollerithPunches(char c);
char HollerithChar(uint16_t rows);

}  // namespace codec
}  // namespace zq

#endif  // ZQ_TYPES_CODEC_PUNCH_H
