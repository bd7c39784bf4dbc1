#include "simbox/chip.h"

#include <algorithm>

namespace simbox {

Chip::Chip(std::uint8_t fill) {
    memory_.fill(fill);
}

void Chip::Set(std::uint16_t address, std::uint8_t value) {
    if (memory_[address] != value) {
        memory_[address] = value;
        ++revision_;
    }
}

void Chip::Fill(std::uint8_t value) {
    memory_.fill(value);
    ++revision_;
}

void Chip::Load(std::span<const std::uint8_t> bytes) {
    const auto used = bytes.first(std::min(bytes.size(), sizeBytes));
    std::copy(used.begin(), used.end(), memory_.begin());
    ++revision_;
}

void Chip::setLocked(bool locked) {
    if (locked_ != locked) {
        locked_ = locked;
        ++revision_;
    }
}

std::uint8_t Chip::Read(std::uint16_t address, CellKind kind) const {
    if (locked_ && kind == CellKind::Flash) {
        return 0x00;
    }
    return memory_[address];
}

bool Chip::Write(std::uint16_t address, std::uint8_t data, CellKind kind) {
    if (kind == CellKind::PageWrite) {
        Set(address, data);
        return true;
    }
    if (locked_) {
        return false;
    }
    Set(address, static_cast<std::uint8_t>(memory_[address] & data));
    return memory_[address] == data;
}

void Chip::Erase() {
    Fill(0xFF);
    setLocked(false);
}

} // namespace simbox
