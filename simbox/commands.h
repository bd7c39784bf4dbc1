#pragma once

#include "simbox/chip.h"
#include "simbox/options.h"
#include "simbox/wire.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// What goes back to the program for one frame.
struct Reply {
    std::vector<std::uint8_t> bytes; // at least one, faults aside
    std::string meaning;             // for the trace
    std::int64_t delayUs = 0;        // from the frame's arrival to the reply's start
    // From this index on the bytes come `gapUs` after the ones before; past the end: no gap.
    std::size_t gapIndex = SIZE_MAX;
    std::int64_t gapUs = 0;
};

// Either a reply, or why the frame is refused.
struct Outcome {
    std::optional<Reply> reply;
    std::string protocolError; // empty when there is a reply
};

// What the box does on a frame, without line and time: the supplies, the socket, the data held for
// the next write, and the chip. Refuses what the protocol does not allow at that moment; a refused
// frame changes nothing.
//
// Classes, from the class byte of the last set-up: 1, 2 and 4 are flash, 3 are page devices.
class Commands {
public:
    explicit Commands(const Options& options);

    Outcome Run(const Frame& frame);

    Chip& chip() { return chip_; }
    // The last "V" was not all zero.
    bool powered() const { return powered_; }
    bool socketReleased() const { return setUp_ == SetUp::None; }

private:
    enum class SetUp { None, Plain, ForWriting };
    using Parameters = std::span<const std::uint8_t>;

    Outcome identify() const;
    Outcome setSupplies(Parameters p);
    Outcome setUpSocket(char commandCode, Parameters p);
    Outcome loadData(Parameters p);
    Outcome writeBlock(Parameters p);
    Outcome readBlock(Parameters p) const;
    Outcome erase(Parameters p);
    Outcome lockStep();

    std::string whyNotNow(char commandCode) const;
    std::string whyNoWrite(Parameters p) const;
    bool lowClass() const { return class_ == 1 || class_ == 2; }
    CellKind cells() const { return class_ == 3 ? CellKind::PageWrite : CellKind::Flash; }
    std::optional<std::uint16_t> program(std::uint16_t first);
    bool faultAt(FaultKind kind, std::uint16_t address) const;

    std::string firmware_;
    std::int64_t writeTimeUs_;
    std::vector<Fault> addressFaults_; // ProgramError and Lie
    Chip chip_;
    bool powered_ = false;
    SetUp setUp_ = SetUp::None;
    std::uint8_t class_ = 0;         // 1..4 while the socket is set up
    std::vector<std::uint8_t> held_; // data of a "D" that waits for its "W"
    int lockSteps_ = 0;              // of a pass of three; "V" and erase begin anew
    bool freshSetUp_ = false;        // no lock step since the last "S"
};

} // namespace simbox
