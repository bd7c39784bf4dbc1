// Reads and replaces whole files.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Maximum size of a text file, in bytes. No file of this program comes near this limit. The limit
// keeps a disk image chosen by mistake from filling the memory.
inline constexpr std::size_t largestTextFile = 16u * 1024 * 1024;

// Throws FileError if `path` exists and is not a regular file: a device or a pipe could block the
// program.
void RejectSpecialFile(const std::string& path);

// The contents of a file, byte for byte. Throws FileError if the file cannot be opened or read or
// is larger than largestTextFile.
std::string ReadWholeFile(const std::string& path);

// Replaces the contents of the file `path`, completely or not at all: on any failure, throws
// FileError and leaves the old contents. A symbolic link stays a link; the file's permissions are
// kept. If no file can be created in the folder of `path` but the file itself is writable, the file
// is overwritten in place. A full disk then still leaves the file unchanged, but a device error may
// leave it damaged.
void ReplaceFile(const std::string& path, std::string_view contents);
// May be called from signal handlers. Removes the temporary file of a ReplaceFile call that will
// not be completed.
void RemoveTemporaryFile();

} // namespace platform
