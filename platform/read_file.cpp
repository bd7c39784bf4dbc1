#include "platform/file_error.h"
#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace platform {

void RejectSpecialFile(const std::string& path) {
    std::error_code none;
    const auto status = std::filesystem::status(path, none);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw FileError(path + ": it is not a regular file.");
}

std::string ReadWholeFile(const std::string& path) {
    RejectSpecialFile(path);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    if (!file)
        throw FileError(path + ": the file cannot be opened: " + std::strerror(errno) + ".");

    // Allocate the file's size plus one byte in one step: a buffer that grows step by step would
    // take twice the memory. The extra byte is filled only if the file is over the limit or has
    // grown since its size was read.
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(path, unknown);
    std::string contents(unknown ? 1 : std::min<std::uintmax_t>(size, maxTextFileBytes) + 1, '\0');
    std::size_t length = 0;
    while (const std::size_t got =
               std::fread(contents.data() + length, 1, contents.size() - length, file.get())) {
        length += got;
        if (length > maxTextFileBytes)
            throw FileError(path + ": the file is larger than 16 MiB and not one of this program.");
        if (length == contents.size())
            contents.resize(2 * length);
    }
    if (std::ferror(file.get()))
        throw FileError(path + ": the file cannot be read: " + std::strerror(errno) + ".");
    contents.resize(length);
    return contents;
}

} // namespace platform
