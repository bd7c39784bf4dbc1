#include "simbox/faults.h"

#include <algorithm>
#include <array>

namespace simbox {

namespace {

using enum FaultKind;

constexpr std::uint32_t maxCount = 65536;
constexpr std::uint32_t maxDelayMs = 3'600'000;

// In `text` the character after each separator is the kind of argument: F frame, K count of bytes,
// T time, H bytes, A address.
struct Form {
    std::string_view text;
    FaultKind kind;
    std::string_view meaning;
};

constexpr std::array<Form, 13> forms{{
    {"silent@F", Silent, "no reply to the frame"},
    {"silent-from@F", SilentFrom, "no reply to the frame or to any later frame"},
    {"short@F:K", Short, "reply truncated to K bytes"},
    {"long@F:K", Long, "K extra bytes after the reply"},
    {"late@F:Tms", Late, "reply T milliseconds late"},
    {"torn@F:K:Tms", Split, "split reply: K bytes on time, the rest T milliseconds later"},
    {"double@F", Double, "the reply twice"},
    {"chatter@F:K:Tms", Chatter, "K unrequested bytes, T milliseconds after the reply"},
    {"status@F:HH...", Status, "these bytes (hexadecimal) instead of the reply"},
    {"identify:K", Identify, "every identify reply has K bytes"},
    {"program-error:A", ProgramError,
     "every write that includes chip address A (4 hex digits) fails there"},
    {"lie:A", Lie, "every write that includes A skips the byte there but reports success"},
    {"pull@F", Pull, "the cable is pulled after the frame and before its reply"},
}};

bool parseFrame(std::string_view text, Fault& fault) {
    if (!text.empty() && text.front() >= 'A' && text.front() <= 'Z') {
        fault.commandCode = text.front();
        fault.number = 0;
        if (text.size() == 1)
            return true;
        text.remove_prefix(1);
    }
    return ParseNumber(text, 10, UINT32_MAX, fault.number) && fault.number > 0;
}

bool parseDelay(std::string_view text, Fault& fault) {
    if (!text.ends_with("ms") ||
        !ParseNumber(text.substr(0, text.size() - 2), 10, maxDelayMs, fault.delayUs))
        return false;
    fault.delayUs *= 1000;
    return true;
}

bool parseBytes(std::string_view text, Fault& fault) {
    for (; text.size() >= 2; text.remove_prefix(2)) {
        if (!ParseNumber(text.substr(0, 2), 16, 0xFF, fault.bytes.emplace_back()))
            return false;
    }
    return text.empty() && !fault.bytes.empty();
}

bool parseArgument(char kind, std::string_view text, Fault& fault) {
    switch (kind) {
    case 'F':
        return parseFrame(text, fault);
    case 'K':
        return ParseNumber(text, 10, maxCount, fault.count);
    case 'T':
        return parseDelay(text, fault);
    case 'H':
        return parseBytes(text, fault);
    default:
        return text.size() == 4 && ParseNumber(text, 16, 0xFFFF, fault.address);
    }
}

std::string argumentName(char kind) {
    switch (kind) {
    case 'F':
        return "a frame such as 7, W3 or R";
    case 'K':
        return "a count of bytes, 0 to 65536";
    case 'T':
        return "a time such as 300ms, at most an hour";
    case 'H':
        return "bytes of two hexadecimal digits each";
    default:
        return "a chip address of four hexadecimal digits";
    }
}

// Removes the leading argument with its separator, such as ":3", from `rest` and returns it.
std::string_view takeArgument(std::string_view& rest) {
    const std::string_view argument = rest.substr(0, rest.find(':', 1));
    rest.remove_prefix(argument.size());
    return argument;
}

} // namespace

std::variant<Fault, std::string> ParseFault(std::string_view text) {
    const std::string_view name = text.substr(0, text.find_first_of("@:"));
    const auto* const form = std::find_if(forms.begin(), forms.end(), [name](const Form& f) {
        return f.text.substr(0, f.text.find_first_of("@:")) == name;
    });
    if (form == forms.end())
        return "unknown fault \"" + std::string(name) + "\"";
    Fault fault;
    fault.kind = form->kind;
    if (fault.kind == Identify)
        parseFrame("I", fault);
    std::string_view expected = form->text.substr(name.size());
    std::string_view rest = text.substr(name.size());
    while (!expected.empty()) {
        const std::string_view pattern = takeArgument(expected);
        const std::string_view found = takeArgument(rest);
        if (!found.starts_with(pattern[0]) || !parseArgument(pattern[1], found.substr(1), fault))
            return std::string("\"") + pattern[0] + "\" and " + argumentName(pattern[1]) +
                   " expected";
    }
    if (!rest.empty())
        return "unexpected \"" + std::string(rest) + "\" at the end";
    return fault;
}

std::string FaultHelp() {
    std::string text;
    for (const Form& form : forms)
        text += HelpLine(form.text, form.meaning);
    return text +
           "F selects frames: 7 is the 7th frame, W3 the 3rd \"W\" frame, R every \"R\" frame. "
           "Counting\nstarts at 1 and includes every complete frame, even the identify frame.\n";
}

std::string HelpLine(std::string_view text, std::string_view meaning) {
    constexpr std::size_t width = 17;
    return "  " + std::string(text) + std::string(width - text.size(), ' ') + std::string(meaning) +
           "\n";
}

} // namespace simbox
