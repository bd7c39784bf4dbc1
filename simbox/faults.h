#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace simbox {

// What goes wrong. The fields of Fault that a kind uses stand in brackets. A reply that is held up
// holds up those behind it: the line keeps the order. A refused frame has no reply to spoil.
enum class FaultKind {
    Silent,       // no reply to the frame; it is carried out all the same       [code, number]
    SilentFrom,   // as Silent, for that frame and every later one               [code, number]
    Short,        // reply truncated to `count` bytes (0 is silence)             [+ count]
    Long,         // `count` extra bytes EE after the reply                      [+ count]
    Late,         // the reply starts `delayUs` later                            [+ delayUs]
    Torn,         // `count` bytes in time, the rest `delayUs` later             [+ count, delayUs]
    Double,       // the whole reply twice, end to end                           [code, number]
    Chatter,      // `count` bytes EE that nobody asked for, `delayUs` after the reply [+ both]
    Status,       // `bytes` in the reply's place, whatever the frame did        [+ bytes]
    Identify,     // every identify reply is `count` bytes: truncated, or filled with EE  [count]
    ProgramError, // every write over `address` stops there and reports it       [address]
    Lie,          // every write over `address` leaves that byte out and says it is good [address]
    Pull          // the cable goes when the frame is in; it is not carried out  [code, number]
};

struct Fault {
    FaultKind kind = FaultKind::Silent;
    // Which frame: the number-th, from 1, of all frames (command code 0) or of those with this
    // command code. Every whole frame counts, the identify frame and refused ones included. Number
    // 0: every one.
    char commandCode = 0;
    std::uint32_t number = 1;
    std::uint32_t count = 0;         // bytes
    std::int64_t delayUs = 0;        // microseconds, not negative
    std::uint16_t address = 0;       // chip address
    std::vector<std::uint8_t> bytes; // at least one for Status
};

// One line for each form of a fault's text, for a help text.
extern const char* const faultHelp;

// Reads the text form, for instance "late@I1:101ms" (faultHelp lists all of them).
// Gives the fault, or what is wrong with the text.
std::variant<Fault, std::string> ParseFault(std::string_view text);

// Whether a fault that names a frame means this one, which is number `ofAll` of all frames and
// number `ofCommand` of those with its command code. False for the kinds that name an address.
bool MeansFrame(const Fault& fault, char commandCode, std::uint32_t ofAll, std::uint32_t ofCommand);

} // namespace simbox
