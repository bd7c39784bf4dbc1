// Intel HEX, the 16-bit subset: data records and one end record.
//
// The text of a record, with positions counted from 1. A field past the end of the line is empty.
// Tolerant and strict hexadecimal are explained in app/hex_text.h; an empty tolerant field has the
// value 0.
//
//   1         start mark, ignored
//   2-3       byte count, tolerant hexadecimal, 0..51
//   4-7       address, strict hexadecimal
//   8-9       record type, tolerant hexadecimal; any value except 0 ends the data
//   10 on     data, two characters per byte, tolerant hexadecimal
//   last two  check byte: all bytes of a data record sum to 0 modulo 256; not checked in the record
//             that ends the data
#pragma once

#include <string>

namespace modFunc {

enum class HexResult { Complete, WrongCheckSum, NoEndRecord };

// Parses the text of a file, up to the record that ends the data, into State::HexRecords. Sets
// HexRecordCount if the result is Complete. A malformed record, or more than 10000 records, throws
// platform::FileError with a message that begins with `fileName`.
HexResult ReadHexText(const std::string& fileName, std::string text);

// Loads cdia.FileName into BufferData. All data records are read and checked first; only then are
// their bytes stored, each at its address + BufferAddress. Bytes at addresses below FileAddress are
// not stored. Bytes of BufferData for which the file has no data keep their values. On success,
// status bar panel 4 names the file and the hex view is reopened.
//
// A wrong check byte or a missing end record shows a message box and leaves BufferData, the status
// bar and the hex view unchanged. Every other failure throws platform::FileError. BufferData is
// then unchanged, unless the failure is a byte past the end of the image: the bytes before it stay
// stored.
void OpenHexFile();

// The first Size bytes of BufferData (Size of the selected device) in records of 16 bytes, followed
// by an end record; each line ends with CR LF. Erased bytes are included. If Size is not a multiple
// of 16, the last record is filled up with the next bytes of the image. Throws platform::FileError
// for a device larger than the image. Addresses from 65536 on do not fit in a record's four digits;
// they are written with five.
std::string HexFileText();

// Writes HexFileText() to cdia.FileName, using platform::ReplaceFile. Then status bar panel 4 names
// the file. Every failure throws platform::FileError.
void SaveHexFile();

// The file type that frmFileLoad proposes: true (Intel HEX) if the name ends in "HEX" or "hex".
bool LooksLikeHexFile(const std::string& fileName);

} // namespace modFunc
