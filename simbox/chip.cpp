#include "simbox/chip.h"

#include <algorithm>

namespace simbox {

void Chip::Set(std::uint16_t address, std::uint8_t value) {
    memory_[address] = value;
    ++revision_;
}

void Chip::Fill(std::uint8_t value) {
    memory_.fill(value);
    ++revision_;
}

void Chip::Load(std::span<const std::uint8_t> bytes) {
    std::copy_n(bytes.begin(), std::min(bytes.size(), sizeBytes), memory_.begin());
    ++revision_;
}

void Chip::setLocked(bool locked) {
    locked_ = locked;
    ++revision_;
}

std::uint8_t Chip::Read(std::uint16_t address, CellKind kind) const {
    return locked_ && kind == CellKind::Flash ? 0x00 : memory_[address];
}

bool Chip::Write(std::uint16_t address, std::uint8_t data, CellKind kind) {
    if (kind == CellKind::Flash && locked_)
        return false;
    Set(address, kind == CellKind::Flash ? memory_[address] & data : data);
    return memory_[address] == data;
}

void Chip::Erase() {
    Fill(0xFF);
    setLocked(false);
}

} // namespace simbox
