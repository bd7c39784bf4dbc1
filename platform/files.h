// Whole files, read and replaced.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// No file of this program's text formats comes near this; it keeps an endless device file or a
// wrongly picked disk image from filling the memory.
inline constexpr std::size_t largestTextFile = 16u * 1024 * 1024;

// Throws FileError for a path that exists and is not a regular file: a device or a pipe would
// keep the program waiting.
void RejectSpecialFile(const std::string& path);

// The contents of a file, byte for byte. Throws FileError when it cannot be opened or read, or is
// larger than largestTextFile.
std::string ReadWholeFile(const std::string& path);

// Replaces the contents of the file `path`, whole or not at all: on any failure FileError is thrown
// and the old contents stay. A symbolic link stays a link; permissions are kept. Where no file can
// be created beside one that may be written, that is overwritten: a full disk still changes
// nothing, but an error of the device may leave it damaged.
void ReplaceFile(const std::string& path, std::string_view contents);
// For signal handlers: removes the temporary file of a ReplaceFile that the process will not
// finish.
void RemoveTemporaryFile();

} // namespace platform
