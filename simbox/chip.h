#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace simbox {

// How the memory cells of a chip behave. It follows from the class byte of the last socket set-up.
enum class CellKind {
    Flash,    // programming can only clear bits; erase sets every byte to FF; can be locked
    PageWrite // every write replaces the byte; neither erase nor lock
};

// The chip in the socket: 64 KiB of memory and a lock. It knows no frames and no time.
class Chip {
public:
    static constexpr std::size_t sizeBytes = 65536;
    using Memory = std::array<std::uint8_t, sizeBytes>;

    // A fresh chip, every byte holding `fill`, not locked.
    explicit Chip(std::uint8_t fill);

    // The cells as they are, a lock notwithstanding. Index = chip address, 0..FFFF.
    const Memory& memory() const { return memory_; }
    bool locked() const { return locked_; }

    // Goes up with every change of memory or lock; a save is due when it has moved on.
    std::uint64_t revision() const { return revision_; }

    // Handling from outside the socket: no physics, no lock.
    void Set(std::uint16_t address, std::uint8_t value);
    void Fill(std::uint8_t value);
    // Puts `bytes` at address 0 upward; what lies behind them stays. At most sizeBytes bytes count.
    void Load(std::span<const std::uint8_t> bytes);
    void setLocked(bool locked);

    // What the box reads: the cell, or 00 from a locked flash chip.
    std::uint8_t Read(std::uint16_t address, CellKind kind) const;
    // Programs one cell. True when the cell then holds `data`; false when bits would have had to be
    // set that only an erase can set, or (cell unchanged) when a flash chip is locked.
    bool Write(std::uint16_t address, std::uint8_t data, CellKind kind);
    // Every byte FF, lock open.
    void Erase();

private:
    Memory memory_;
    bool locked_ = false;
    std::uint64_t revision_ = 0;
};

} // namespace simbox
