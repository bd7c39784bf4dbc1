// Reads and replaces whole files.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// No text file of this program comes near this limit. The limit prevents a disk image that was
// chosen by mistake from filling the memory.
inline constexpr std::size_t maxTextFileBytes = 16u * 1024 * 1024;

// Throws FileError if `path` exists and is not a regular file: a device or a pipe could block the
// program.
void RejectSpecialFile(const std::string& path);

// The contents of a file, byte for byte. Throws FileError if the file is not a regular file, cannot
// be opened or read, or is larger than maxTextFileBytes.
std::string ReadWholeFile(const std::string& path);

// Replaces the contents of the file `path`. On failure, throws FileError and leaves the old
// contents, except as stated below. A symbolic link stays a link; the permissions, the group and
// the owner of the file are kept if the system allows it. A missing file is created. A file without
// write permission is rejected, and so is a path that exists but is not a regular file. If no file
// can be created in the folder of `path` but the file itself is writable, the file is overwritten
// in place. In that case a full disk leaves the file unchanged only if the file system can reserve
// space, and a device error or the termination of the process may leave the file incomplete.
void ReplaceFile(const std::string& path, std::string_view contents);
// May be called from signal handlers. Removes the temporary file of a ReplaceFile call that will
// not be completed.
void RemoveTemporaryFile();

} // namespace platform
