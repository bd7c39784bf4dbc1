// Whole files, read and replaced.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// No file of this program's text formats comes near this; it keeps an endless device file or a
// wrongly picked disk image from filling the memory.
inline constexpr std::size_t largestTextFile = 16u * 1024 * 1024;

// Throws FileError for a path that is there and no ordinary file: a device or a pipe would keep the
// program waiting.
void RefuseSpecialFile(const std::string& path);

// The contents of a file, byte for byte. Throws FileError when it cannot be opened or read, or is
// larger than largestTextFile.
std::string ReadWholeFile(const std::string& path);

// Puts `contents` in the place of the file `path`, whole or not at all: on any failure FileError
// is thrown and what was there stays. A symbolic link stays a link; permissions are kept.
void ReplaceFile(const std::string& path, std::string_view contents);

} // namespace platform
