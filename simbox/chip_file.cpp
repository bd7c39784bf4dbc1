#include "simbox/chip_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace simbox {

namespace {

std::string lockPath(const std::string& path) {
    return path + ".lock";
}

void writeWhole(const std::string& path, std::span<const std::uint8_t> bytes) {
    const std::string temporary = path + ".tmp";
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    for (const std::uint8_t value : bytes) {
        file.put(static_cast<char>(value));
    }
    file.close();
    if (!file) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw std::runtime_error("cannot write " + temporary);
    }
    std::filesystem::rename(temporary, path);
}

} // namespace

void LoadChip(const std::string& path, Chip& chip) {
    if (!std::filesystem::exists(path)) {
        return;
    }
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    if (content.size() > Chip::sizeBytes) {
        throw std::runtime_error(path + " is longer than a chip of 65536 bytes");
    }
    chip.Load(std::vector<std::uint8_t>(content.begin(), content.end()));
    chip.setLocked(std::filesystem::exists(lockPath(path)));
}

void SaveChip(const std::string& path, const Chip& chip) {
    writeWhole(path, chip.memory());
    if (chip.locked()) {
        writeWhole(lockPath(path), {});
    } else {
        std::filesystem::remove(lockPath(path));
    }
}

} // namespace simbox
