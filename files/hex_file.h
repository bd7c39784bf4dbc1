// Intel HEX, the 16-bit subset: data records and one end record.
//
// A record's text, positions counted from 1; a position behind the end of the line is an empty
// field, which reads as 0 in tolerant fields:
//
//   1         start mark, not looked at
//   2-3       byte count, tolerant hexadecimal, 0..51
//   4-7       address, strict hexadecimal
//   8-9       record type, tolerant hexadecimal; any but 0 ends the data
//   10 on     data, two characters a byte, tolerant hexadecimal
//   last two  check byte: all bytes of the line sum to 0 modulo 256
#pragma once

#include <string>

namespace modFunc {

// Loads cdia.FileName into BufferData. The whole file is read and tested first; only then are its
// bytes placed, each at its address + BufferAddress, those below FileAddress left out. Bytes that
// no record touches keep their value. Then status bar panel 4 names the file and the hex view is
// shown anew.
//
// A wrong check byte and a missing end record show a message box and change nothing. Everything
// else that fails throws platform::FileError, with BufferData unchanged, but for a byte whose
// target lies behind the image: what was placed before it stays.
void OpenHexFile();

// The selected device's bytes in records of 16, blank or not, and an end record, each line ended by
// CR LF; a last record that the Size does not fill takes its tail from the image. Throws
// platform::FileError for a device larger than the image.
std::string HexFileText();

// Writes that text to cdia.FileName, in the place of an existing file, whole or not at all. Then
// status bar panel 4 names the file. Every failure throws platform::FileError.
void SaveHexFile();

// The type that frmFileLoad proposes: the name's last three letters are "HEX" or "hex".
bool LooksLikeHexFile(const std::string& fileName);

} // namespace modFunc
