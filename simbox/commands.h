#pragma once

#include "simbox/chip.h"
#include "simbox/faults.h"
#include "simbox/wire.h"

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace simbox {

struct Options {
    std::uint32_t baud = 57600;            // 0: unthrottled
    std::string firmware = "SimBox v1.00"; // identify reply; the program expects 12 bytes
    std::int64_t writeTimeUs = 0;          // from a "W" frame's arrival to the start of its reply
    std::uint8_t fill = 0xA5;              // every byte of a new chip
    std::vector<Fault> faults;             // several may apply to one frame, in this order
};

// The reply to one frame.
struct Reply {
    std::vector<std::uint8_t> bytes; // at least one, unless a fault removes them
    std::string meaning;             // for the trace
    std::int64_t delayUs = 0;        // from the frame's arrival to the reply's start
    // The line pauses for `gapUs` before the byte at this index. If the index is past the end,
    // there is no gap.
    std::size_t gapIndex = SIZE_MAX;
    std::int64_t gapUs = 0;
};

// Thrown when a frame is rejected. what() is the reason.
struct ProtocolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Executes frames. Keeps the state of the supplies and the socket, the data held for the next
// write, and the chip. Does not deal with the line and reads no clock; delays are part of a Reply.
//
// The class byte of the last socket set-up selects the class of the chip: classes 1, 2 and 4 are
// flash, class 3 is a page device.
class Commands {
public:
    explicit Commands(const Options& options);

    // Throws ProtocolError, with nothing changed, for a malformed frame and for one that the
    // protocol does not allow at that moment.
    Reply Run(const Frame& frame);

    Chip& chip() { return chip_; }
    // True if any parameter of the last "V" was not zero.
    bool powered() const { return powered_; }
    bool socketReleased() const { return setUp_ == SetUp::None; }

private:
    enum class SetUp { None, Plain, ForWriting };
    using Parameters = std::span<const std::uint8_t>;

    void check(char commandCode, Parameters parameters) const;
    void setSupplies(Parameters p);
    void setUpSocket(char commandCode, std::uint8_t classByte);
    Reply writeBlock(std::uint16_t first);
    Reply readBlock(std::uint16_t first) const;
    Reply erase();
    void lockStep();

    bool class1Or2() const { return class_ == 1 || class_ == 2; }
    CellKind cells() const { return class_ == 3 ? CellKind::PageWrite : CellKind::Flash; }
    std::optional<std::uint16_t> program(std::uint16_t first);
    bool faultAt(FaultKind kind, std::uint16_t address) const;

    Options options_; // of its faults, only those with an address are used here
    Chip chip_;
    bool powered_ = false;
    SetUp setUp_ = SetUp::None;
    std::uint8_t class_ = 0;         // 1..4 while the socket is set up
    std::vector<std::uint8_t> held_; // data of a "D" that waits for its "W"
    int lockSteps_ = 0;       // steps done in the current pass of three; "V" and "E" set this to 0
    bool freshSetUp_ = false; // no lock step since the last "S" or "T"
};

} // namespace simbox
