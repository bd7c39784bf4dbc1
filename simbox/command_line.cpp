#include "simbox/command_line.h"

#include <algorithm>
#include <functional>

namespace simbox {

namespace {

constexpr std::size_t firmwareLength = 12;

// Stores an option's value; returns what is wrong with it, or an empty string.
using Taker = std::function<std::string(std::string_view)>;

struct Option {
    std::string_view text; // name and value as in the help, or the name alone
    std::string_view meaning;
    Taker take;
};

Taker path(std::string& target) {
    return [&target](std::string_view value) {
        target = value;
        return value.empty() ? "a path expected" : "";
    };
}

Taker flag(bool& target) {
    return [&target](std::string_view) {
        target = true;
        return "";
    };
}

template <typename Value>
Taker number(Value& target, int base, std::uint32_t min, std::uint32_t max, const char* error) {
    return [=, &target](std::string_view value) {
        return ParseNumber(value, base, max, target) && target >= min ? "" : error;
    };
}

Taker fault(std::vector<Fault>& faults) {
    return [&faults](std::string_view value) {
        const auto parsed = ParseFault(value);
        if (const auto* error = std::get_if<std::string>(&parsed))
            return *error;
        faults.push_back(std::get<Fault>(parsed));
        return std::string();
    };
}

Taker firmware(std::string& target) {
    return [&target](std::string_view value) {
        target = value;
        return value.size() == firmwareLength ? "" : "12 bytes expected";
    };
}

std::vector<Option> optionsFor(Settings& s) {
    return {
        {"--link PATH", "create the symbolic link PATH to the pseudo-terminal", path(s.linkPath)},
        {"--chip FILE", "keep the chip's contents in FILE and its lock state in FILE.lock",
         path(s.chipFile)},
        {"--trace FILE", "trace frames, replies and protocol errors to FILE (-: stdout)",
         path(s.traceFile)},
        {"--baud N", "speed of the line, default 57600",
         number(s.options.baud, 10, 1, 4'000'000, "a number from 1 to 4000000 expected")},
        {"--no-pace", "unthrottled: bytes take no time on the line", flag(s.unthrottled)},
        {"--write-time US", "microseconds from a write frame to its reply, default 0",
         number(s.options.writeTimeUs, 10, 0, 60'000'000,
                "microseconds from 0 to 60000000 expected")},
        {"--fill HH", "value of every byte not loaded with --chip, default A5",
         number(s.options.fill, 16, 0, 0xFF, "a byte in hexadecimal expected")},
        {"--firmware TEXT", "firmware text, 12 bytes", firmware(s.options.firmware)},
        {"--fault TEXT", "inject a fault (see below); can be repeated", fault(s.options.faults)},
        {"--help", "print this text and exit", flag(s.help)},
    };
}

} // namespace

std::string HelpText() {
    Settings unused;
    std::string text = "simbox: a simulated device programmer on a pseudo-terminal\n\n";
    for (const Option& option : optionsFor(unused))
        text += HelpLine(option.text, option.meaning);
    return text + "\nFaults:\n" + FaultHelp() +
           "\nsimbox runs until it receives SIGTERM, SIGINT or SIGHUP, or until the fault \"pull\" "
           "occurs.\nExit status: 0 success, 1 error of the pseudo-terminal or of a file, 2 "
           "invalid option,\n3 protocol errors (in the trace, the lines with !).\n";
}

std::variant<Settings, std::string> ParseCommandLine(std::span<const std::string_view> arguments) {
    Settings settings;
    const std::vector<Option> options = optionsFor(settings);
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        std::string name(arguments[index]);
        const auto option = std::find_if(options.begin(), options.end(), [&](const Option& o) {
            return o.text.substr(0, o.text.find(' ')) == name;
        });
        if (option == options.end())
            return "unknown option \"" + name + "\"";
        const bool hasValue = option->text != name;
        if (hasValue && ++index == arguments.size())
            return name + ": value missing";
        if (const std::string error = option->take(arguments[index]); !error.empty())
            return name.append(" \"").append(arguments[index]).append("\": ").append(error);
    }
    if (settings.unthrottled)
        settings.options.baud = 0;
    return settings;
}

} // namespace simbox
