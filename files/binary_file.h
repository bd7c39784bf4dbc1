// Binary files: raw bytes only.
//
// Every failure throws platform::FileError; the file is closed, status bar and hex view are
// unchanged.
#pragma once

namespace modFunc {

// Loads cdia.FileName: byte p of the file, for p from FileAddress to its end, becomes byte p +
// BufferAddress of BufferData. A missing file is created empty. Bytes outside the file's range keep
// their values. A byte past the end of the image is an error; the bytes before it stay stored. Then
// status bar panel 4 names the file and the hex view is reopened.
void OpenBinFile();

// Writes the selected device's bytes over the first Size bytes of cdia.FileName, which is created
// if it does not exist and never truncated. Then status bar panel 4 names the file. A failed write
// may leave the file incomplete.
void SaveBinFile();

} // namespace modFunc
