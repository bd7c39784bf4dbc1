// Intel HEX, the 16-bit subset: data records and one end record.
//
// A record's text, positions counted from 1. A position past the end of the line is an empty field,
// which a tolerant field reads as 0:
//
//   1         start mark, ignored
//   2-3       byte count, tolerant hexadecimal, 0..51
//   4-7       address, strict hexadecimal
//   8-9       record type, tolerant hexadecimal; any other than 0 ends the data
//   10 on     data, two characters a byte, tolerant hexadecimal
//   last two  check byte: all bytes of the line sum to 0 modulo 256
#pragma once

#include <string>

namespace modFunc {

enum class HexResult { Complete, WrongCheckSum, NoEndRecord };

// Parses the text of a file into State::HexRecords and HexRecordCount. Throws platform::FileError,
// whose message begins with `fileName`, for a malformed record or more than 10000 records.
HexResult ReadHexText(const std::string& fileName, std::string text);

// Loads cdia.FileName into BufferData. The whole file is read and checked first; only then are its
// bytes stored, each at its address + BufferAddress, except those below FileAddress. Bytes without
// a record keep their values. Then status bar panel 4 names the file and the hex view is reopened.
//
// A wrong check byte and a missing end record show a message box and change nothing. Every other
// failure throws platform::FileError with BufferData unchanged, except a byte past the end of the
// image: the bytes before it stay stored.
void OpenHexFile();

// The selected device's bytes in records of 16, erased bytes included, and an end record, each line
// ended by CR LF. A partial last record is filled up from the image. Throws platform::FileError for
// a device larger than the image.
std::string HexFileText();

// Replaces cdia.FileName with that text, completely or not at all. Then status bar panel 4 names
// the file. Every failure throws platform::FileError.
void SaveHexFile();

// The type that frmFileLoad proposes: true (Intel HEX) if the name ends in "HEX" or "hex".
bool LooksLikeHexFile(const std::string& fileName);

} // namespace modFunc
