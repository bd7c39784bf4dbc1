// Binary files: raw bytes only.
//
// Every failure throws platform::FileError. After a failure, the file is closed, and the status bar
// and the hex view are unchanged.
#pragma once

namespace modFunc {

// Loads cdia.FileName: byte p of the file, for p from FileAddress to the end of the file, becomes
// byte p + BufferAddress of BufferData. Other bytes of BufferData keep their values. If the file
// does not exist, an empty file is created. A byte that would be stored past the end of the image
// is an error, and so is a failed read; the bytes loaded before the error stay in the image. On
// success, status bar panel 4 names the file and the hex view is reopened.
void OpenBinFile();

// Writes the first Size bytes of BufferData (Size of the selected device) over the start of
// cdia.FileName. The file is created if it does not exist and is never truncated. On success,
// status bar panel 4 names the file. A failed write may leave the file incomplete. A device larger
// than the image is an error; for a negative Size nothing is written.
void SaveBinFile();

} // namespace modFunc
