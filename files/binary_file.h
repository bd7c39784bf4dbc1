// Binary files: a file is its bytes.
//
// Every failure throws platform::FileError, with the file closed and status bar and hex view as
// they were.
#pragma once

namespace modFunc {

// Loads cdia.FileName: the file's byte p, for p from FileAddress to its end, goes to BufferData
// p + BufferAddress. A name that does not exist becomes an empty file. What the file does not reach
// keeps its value; what would go behind the image is dropped with an error, what was stored before
// it stays. Then status bar panel 4 names the file and the hex view is shown anew.
void OpenBinFile();

// Writes the selected device's bytes over the first Size bytes of cdia.FileName, which is made when
// there is none and never cut. Then status bar panel 4 names the file. A failed write may leave the
// file short.
void SaveBinFile();

} // namespace modFunc
