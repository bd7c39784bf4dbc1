#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace simbox {

// The kinds of fault. In brackets: the fields of Fault that the kind uses in addition to those that
// select a frame. A late reply delays those after it, because the line keeps the order. A rejected
// frame has no reply that a fault could change.
enum class FaultKind {
    Silent,       // no reply to the frame, which is carried out all the same
    SilentFrom,   // as Silent, for that frame and every later one
    Short,        // reply truncated to `count` bytes (0: silence) [count]
    Long,         // `count` extra bytes EE after the reply [count]
    Late,         // the reply starts `delayUs` later [delayUs]
    Split,        // `count` bytes in time, the rest `delayUs` later [count, delayUs]
    Double,       // the whole reply twice, end to end
    Chatter,      // `count` unrequested bytes EE, `delayUs` after the reply [count, delayUs]
    Status,       // `bytes` instead of the reply, whatever the frame did [bytes]
    Identify,     // the reply is `count` bytes: truncated, or padded with EE [count]
    ProgramError, // every write across `address` stops there and reports it [address, no frame]
    Lie, // every write across `address` skips that byte and reports success [address, no frame]
    Pull // the cable is pulled when the frame has arrived; the frame is not executed
};

struct Fault {
    FaultKind kind = FaultKind::Silent;
    // Selects the frame: `number` counts from 1, either all frames (commandCode 0) or those with
    // this command code. Every whole frame counts, rejected ones included. Number 0 selects all of
    // them.
    char commandCode = 0;
    std::uint32_t number = 1;
    std::uint32_t count = 0;         // bytes
    std::int64_t delayUs = 0;        // microseconds, not negative
    std::uint16_t address = 0;       // chip address
    std::vector<std::uint8_t> bytes; // at least one for Status
};

// Reads the text form, for instance "late@I1:101ms" (FaultHelp lists all of them).
// Returns the fault, or what is wrong with the text.
std::variant<Fault, std::string> ParseFault(std::string_view text);

// One line for each form of a fault's text.
std::string FaultHelp();

// One line of a help text: what the user types, at most 15 characters, and its meaning.
std::string HelpLine(std::string_view text, std::string_view meaning);

// Reads a number from 0 to `max`, digits only. False for any other text.
template <typename Value>
bool ParseNumber(std::string_view text, int base, std::uint32_t max, Value& value) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    value = static_cast<Value>(number);
    return error == std::errc() && end == text.data() + text.size() && number <= max;
}

} // namespace simbox
