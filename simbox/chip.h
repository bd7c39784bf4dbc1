#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace simbox {

// How the memory cells of a chip behave. The class byte of the last socket set-up selects the kind.
enum class CellKind {
    Flash,    // programming can only clear bits; erase sets every byte to FF; can be locked
    PageWrite // every write replaces the byte; there is no erase and no lock
};

// The chip in the socket: 64 KiB of memory and a lock. This class depends on neither frames nor
// time.
class Chip {
public:
    static constexpr std::size_t sizeBytes = 65536;

    // A new chip, not locked, with `fill` in every byte.
    explicit Chip(std::uint8_t fill) { memory_.fill(fill); }

    // The true contents of the cells, even if the chip is locked. The index is the chip address,
    // 0..FFFF.
    const std::array<std::uint8_t, sizeBytes>& memory() const { return memory_; }
    bool locked() const { return locked_; }

    // Increases whenever the memory or the lock is written.
    std::uint64_t revision() const { return revision_; }

    // The next four functions change the chip directly, regardless of the cell kind and the lock.
    void Set(std::uint16_t address, std::uint8_t value);
    void Fill(std::uint8_t value);
    // Stores `bytes` from address 0 upward; the rest is unchanged. Bytes after the first sizeBytes
    // are ignored.
    void Load(std::span<const std::uint8_t> bytes);
    void setLocked(bool locked);

    // What the programmer reads: the cell, or 00 from a locked flash chip.
    std::uint8_t Read(std::uint16_t address, CellKind kind) const;
    // Programs one cell. Returns false, and changes nothing, for a locked flash chip. Otherwise
    // returns whether the cell now contains `data`; it does not if `data` has a bit set that only
    // an erase can set.
    bool Write(std::uint16_t address, std::uint8_t data, CellKind kind);
    // Sets every byte to FF and unlocks the chip.
    void Erase();

private:
    std::array<std::uint8_t, sizeBytes> memory_;
    bool locked_ = false;
    std::uint64_t revision_ = 0;
};

} // namespace simbox
