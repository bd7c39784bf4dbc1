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

    // A new chip, not locked, with `fill` in every byte.
    explicit Chip(std::uint8_t fill) { memory_.fill(fill); }

    // The cells as they are, whether locked or not. Index = chip address, 0..FFFF.
    const std::array<std::uint8_t, sizeBytes>& memory() const { return memory_; }
    bool locked() const { return locked_; }

    // Increases whenever memory or lock is written.
    std::uint64_t revision() const { return revision_; }

    // Changes from outside the socket, whatever the cell kind and the lock.
    void Set(std::uint16_t address, std::uint8_t value);
    void Fill(std::uint8_t value);
    // Puts `bytes` at address 0 upward; the rest is unchanged. Only the first sizeBytes bytes
    // count.
    void Load(std::span<const std::uint8_t> bytes);
    void setLocked(bool locked);

    // What the programmer reads: the cell, or 00 from a locked flash chip.
    std::uint8_t Read(std::uint16_t address, CellKind kind) const;
    // Programs one cell. True when the cell then contains `data`; false when that would set bits,
    // which only an erase can, or (cell unchanged) when a flash chip is locked.
    bool Write(std::uint16_t address, std::uint8_t data, CellKind kind);
    // Every byte FF, not locked.
    void Erase();

private:
    std::array<std::uint8_t, sizeBytes> memory_;
    bool locked_ = false;
    std::uint64_t revision_ = 0;
};

} // namespace simbox
