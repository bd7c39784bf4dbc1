#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace simbox {

// The kinds of fault. In brackets: the fields of Fault that the kind uses in addition to those that
// select a frame; "no frame" means that the kind ignores the fields that select a frame. A late
// reply delays the replies after it, because the line keeps their order. A rejected frame has no
// reply that a fault could change. The reply to an erase of a class 4 chip contains a pause of its
// own; the delays of Split and Chatter replace this pause.
enum class FaultKind {
    Silent,       // no reply to the frame, which is still executed
    SilentFrom,   // like Silent; applies to that frame and every later one
    Short,        // reply truncated to `count` bytes (0: silence) [count]
    Long,         // `count` extra bytes EE after the reply [count]
    Late,         // the reply starts `delayUs` later [delayUs]
    Split,        // `count` bytes on time, the rest `delayUs` later [count, delayUs]
    Double,       // the whole reply twice, without a gap
    Chatter,      // `count` unrequested bytes EE, `delayUs` after the reply [count, delayUs]
    Status,       // `bytes` instead of the reply, whatever the frame did [bytes]
    Identify,     // the reply has `count` bytes: truncated, or padded with EE [count]
    ProgramError, // every write that includes `address` fails there [address, no frame]
    Lie,          // every write skips the byte at `address` and reports success [address, no frame]
    Pull          // the cable is pulled when the frame has arrived; the frame is not executed
};

struct Fault {
    FaultKind kind = FaultKind::Silent;
    // `commandCode` and `number` select the frame. `number` counts complete frames from 1,
    // including rejected ones: all frames if commandCode is 0, otherwise only frames with this
    // command code. Number 0 selects every such frame.
    char commandCode = 0;
    std::uint32_t number = 1;
    std::uint32_t count = 0;         // bytes
    std::int64_t delayUs = 0;        // microseconds, not negative
    std::uint16_t address = 0;       // chip address
    std::vector<std::uint8_t> bytes; // at least one for Status
};

// Reads the text form of a fault, for instance "late@I1:101ms" (FaultHelp lists all forms).
// Returns the fault, or what is wrong with the text.
std::variant<Fault, std::string> ParseFault(std::string_view text);

// One line for each form of a fault's text, then an explanation of the frame argument F.
std::string FaultHelp();

// One line of a help text: what the user types, at most 15 characters, and its meaning.
std::string HelpLine(std::string_view text, std::string_view meaning);

// Reads a number from 0 to `max`, digits only. Returns false for any other text; `value` is then
// undefined.
template <typename Value>
bool ParseNumber(std::string_view text, int base, std::uint32_t max, Value& value) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    value = static_cast<Value>(number);
    return error == std::errc() && end == text.data() + text.size() && number <= max;
}

} // namespace simbox
