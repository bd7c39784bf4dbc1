#include "platform/file_error.h"
#include "platform/files.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace platform {

void RefuseSpecialFile(const std::string& path) {
    std::error_code none;
    const auto status = std::filesystem::status(path, none);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw FileError(path + ": is no ordinary file");
}

std::string ReadWholeFile(const std::string& path) {
    RefuseSpecialFile(path);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    if (!file)
        throw FileError(path + ": cannot be opened: " + std::strerror(errno));

    std::string contents;
    std::array<char, 65536> part{};
    while (const std::size_t got = std::fread(part.data(), 1, part.size(), file.get())) {
        contents.append(part.data(), got);
        if (contents.size() > largestTextFile)
            throw FileError(path + ": is larger than 16 MiB and no file of this program");
    }
    if (std::ferror(file.get()))
        throw FileError(path + ": cannot be read: " + std::strerror(errno));
    return contents;
}

} // namespace platform
