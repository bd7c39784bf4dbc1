#include "simbox/chip_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace simbox {

namespace {

namespace fs = std::filesystem;

std::string lockPath(const std::string& path) {
    return path + ".lock";
}

void replaceFile(const std::string& path, std::span<const std::uint8_t> bytes) {
    const std::string temporary = path + ".tmp";
    std::ofstream file(temporary, std::ios::binary);
    std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
    file.close();
    if (!file) {
        const std::string cause = std::strerror(errno);
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw std::runtime_error("cannot write " + temporary + ": " + cause);
    }
    fs::rename(temporary, path);
}

} // namespace

ChipFile::ChipFile(std::string path, Chip& chip) : path_(std::move(path)), chip_(chip) {
    if (!path_.empty() && fs::exists(path_)) {
        if (!fs::is_regular_file(path_))
            throw std::runtime_error(path_ + " is not a regular file");
        std::ifstream file(path_, std::ios::binary);
        const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
        if (!file)
            throw std::runtime_error("cannot read " + path_ + ": " + std::strerror(errno));
        if (bytes.size() > Chip::sizeBytes)
            throw std::runtime_error(path_ + " is longer than a chip of 65536 bytes");
        chip_.Load(bytes);
        chip_.setLocked(fs::exists(lockPath(path_)));
    }
    Save();
}

void ChipFile::Save() {
    if (!outdated())
        return;
    replaceFile(path_, chip_.memory());
    if (chip_.locked())
        replaceFile(lockPath(path_), {});
    else
        fs::remove(lockPath(path_));
    savedRevision_ = chip_.revision();
}

} // namespace simbox
