#include "simbox/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace simbox {

const char* const faultHelp =
    "  silent@F         no reply to the frame\n"
    "  silent-from@F    no reply to the frame and to all later ones\n"
    "  short@F:K        reply cut to K bytes\n"
    "  long@F:K         K extra bytes behind the reply\n"
    "  late@F:Tms       reply T milliseconds late\n"
    "  torn@F:K:Tms     K bytes in time, the rest T milliseconds later\n"
    "  double@F         the reply twice\n"
    "  chatter@F:K:Tms  K bytes that nobody asked for, T milliseconds after the reply\n"
    "  status@F:HH...   these bytes (hexadecimal) in the reply's place\n"
    "  identify:K       every identify reply has K bytes\n"
    "  program-error:A  every write over chip address A (four hexadecimal digits) fails there\n"
    "  lie:A            every write leaves the byte at A out and reports success\n"
    "  pull@F           the cable is pulled when the frame is in, before its reply\n"
    "F is the frame: 7 is the 7th of all, W3 the 3rd \"W\", R every \"R\". Counting starts at 1\n"
    "and takes in every whole frame, the identify frame too.\n";

namespace {

constexpr std::uint32_t maxCount = 65536;
constexpr std::uint32_t maxDelayMs = 3'600'000;

// Arguments behind the name: F frame after '@'; behind ':' each K count, T time, H bytes, A
// address.
struct Form {
    std::string_view name;
    FaultKind kind;
    std::string_view arguments;
};

constexpr std::array<Form, 13> forms{{
    {"silent", FaultKind::Silent, "F"},
    {"silent-from", FaultKind::SilentFrom, "F"},
    {"short", FaultKind::Short, "FK"},
    {"long", FaultKind::Long, "FK"},
    {"late", FaultKind::Late, "FT"},
    {"torn", FaultKind::Torn, "FKT"},
    {"double", FaultKind::Double, "F"},
    {"chatter", FaultKind::Chatter, "FKT"},
    {"status", FaultKind::Status, "FH"},
    {"identify", FaultKind::Identify, "K"},
    {"program-error", FaultKind::ProgramError, "A"},
    {"lie", FaultKind::Lie, "A"},
    {"pull", FaultKind::Pull, "F"},
}};

template <typename Value>
bool parseNumber(std::string_view text, int base, std::uint32_t max, Value& value) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size() || number > max) {
        return false;
    }
    value = static_cast<Value>(number);
    return true;
}

bool parseFrame(std::string_view text, Fault& fault) {
    if (!text.empty() && text.front() >= 'A' && text.front() <= 'Z') {
        fault.commandCode = text.front();
        text.remove_prefix(1);
        if (text.empty()) {
            fault.number = 0;
            return true;
        }
    }
    return parseNumber(text, 10, UINT32_MAX, fault.number) && fault.number > 0;
}

bool parseDelay(std::string_view text, Fault& fault) {
    if (!text.ends_with("ms")) {
        return false;
    }
    text.remove_suffix(2);
    if (!parseNumber(text, 10, maxDelayMs, fault.delayUs)) {
        return false;
    }
    fault.delayUs *= 1000;
    return true;
}

bool parseBytes(std::string_view text, Fault& fault) {
    if (text.empty() || text.size() % 2 != 0) {
        return false;
    }
    for (; !text.empty(); text.remove_prefix(2)) {
        if (!parseNumber(text.substr(0, 2), 16, 0xFF, fault.bytes.emplace_back())) {
            return false;
        }
    }
    return true;
}

bool parseArgument(char kind, std::string_view text, Fault& fault) {
    switch (kind) {
    case 'F':
        return parseFrame(text, fault);
    case 'K':
        return parseNumber(text, 10, maxCount, fault.count);
    case 'T':
        return parseDelay(text, fault);
    case 'H':
        return parseBytes(text, fault);
    default:
        return text.size() == 4 && parseNumber(text, 16, 0xFFFF, fault.address);
    }
}

const char* argumentName(char kind) {
    switch (kind) {
    case 'F':
        return "a frame such as @7, @W3 or @R";
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

} // namespace

std::variant<Fault, std::string> ParseFault(std::string_view text) {
    const std::string_view name = text.substr(0, text.find_first_of("@:"));
    const auto* const form = std::find_if(std::begin(forms), std::end(forms),
                                          [&](const Form& f) { return f.name == name; });
    if (form == std::end(forms)) {
        return "no fault is called \"" + std::string(name) + "\"";
    }
    Fault fault;
    fault.kind = form->kind;
    std::string_view rest = text.substr(name.size());
    for (const char argument : form->arguments) {
        const char separator = argument == 'F' ? '@' : ':';
        const std::string_view value = rest.empty() ? rest : rest.substr(1, rest.find(':', 1) - 1);
        if (rest.empty() || rest.front() != separator || !parseArgument(argument, value, fault)) {
            return std::string("\"") + separator + "\" and " + argumentName(argument) + " expected";
        }
        rest.remove_prefix(1 + value.size());
    }
    if (!rest.empty()) {
        return std::string(rest) + " is too much";
    }
    return fault;
}

bool MeansFrame(const Fault& fault, char commandCode, std::uint32_t ofAll,
                std::uint32_t ofCommand) {
    switch (fault.kind) {
    case FaultKind::Identify:
        return commandCode == 'I';
    case FaultKind::ProgramError:
    case FaultKind::Lie:
        return false;
    default:
        break;
    }
    if (fault.commandCode != 0 && fault.commandCode != commandCode) {
        return false;
    }
    return fault.number == 0 || fault.number == (fault.commandCode == 0 ? ofAll : ofCommand);
}

} // namespace simbox
