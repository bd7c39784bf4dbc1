#include "simbox/command_line.h"

#include <charconv>
#include <optional>

namespace simbox {

namespace {

constexpr std::size_t firmwareLength = 12;
constexpr std::uint32_t maxBaud = 4'000'000;
constexpr std::uint32_t maxWriteTimeUs = 60'000'000;

std::optional<std::uint32_t> number(std::string_view text, int base, std::uint32_t max) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || value > max) {
        return std::nullopt;
    }
    return value;
}

bool takesValue(std::string_view option) {
    return option == "--link" || option == "--chip" || option == "--trace" || option == "--baud" ||
           option == "--write-time" || option == "--fill" || option == "--firmware" ||
           option == "--fault";
}

// Puts one option's value in its place; an error text when the value does not do.
std::string takeText(std::string_view option, std::string_view value, Settings& settings) {
    if (option == "--firmware") {
        settings.box.firmware = value;
        return value.size() == firmwareLength ? "" : "12 characters expected";
    }
    if (option == "--fault") {
        const auto fault = ParseFault(value);
        if (const auto* error = std::get_if<std::string>(&fault)) {
            return *error;
        }
        settings.box.faults.push_back(std::get<Fault>(fault));
        return "";
    }
    if (value.empty()) {
        return "a path expected";
    }
    (option == "--link"   ? settings.linkPath
     : option == "--chip" ? settings.chipFile
                          : settings.traceFile) = value;
    return "";
}

std::string takeValue(std::string_view option, std::string_view value, Settings& settings) {
    if (option == "--baud") {
        const auto baud = number(value, 10, maxBaud);
        settings.box.baud = baud.value_or(0);
        return baud && *baud > 0 ? "" : "a number from 1 to 4000000 expected";
    }
    if (option == "--write-time") {
        const auto timeUs = number(value, 10, maxWriteTimeUs);
        settings.box.writeTimeUs = timeUs.value_or(0);
        return timeUs ? "" : "microseconds from 0 to 60000000 expected";
    }
    if (option == "--fill") {
        const auto fill = number(value, 16, 0xFF);
        settings.box.fill = static_cast<std::uint8_t>(fill.value_or(0));
        return fill ? "" : "a byte in hexadecimal expected";
    }
    return takeText(option, value, settings);
}

} // namespace

std::string HelpText() {
    return std::string(
               "simbox: a simulated device programmer on a pseudo-terminal\n"
               "\n"
               "  --link PATH      symbolic link to make to the terminal\n"
               "  --chip FILE      keep the chip in FILE (64 KiB, plain bytes) and FILE.lock\n"
               "  --trace FILE     write every frame, reply and protocol error to FILE; - for the\n"
               "                   standard output\n"
               "  --baud N         pace of the line, 57600 if not given\n"
               "  --no-pace        bytes take no time on the line\n"
               "  --write-time US  microseconds from a write frame to its reply, 0 if not given\n"
               "  --fill HH        every byte of a fresh chip, A5 if not given\n"
               "  --firmware TEXT  identify text, 12 characters\n"
               "  --fault TEXT     a fault (see below), may be given again and again\n"
               "  --help           this text\n"
               "\n"
               "Faults:\n") +
           faultHelp +
           "\n"
           "It runs until it is told to end (SIGTERM, SIGINT, SIGHUP) or its cable is pulled.\n"
           "Status: 0 well, 1 the terminal or a file failed, 2 wrong option, 3 nonsense was\n"
           "received (see the trace, lines with !).\n";
}

std::variant<Settings, std::string> ParseCommandLine(std::span<const std::string_view> arguments) {
    Settings settings;
    bool paced = true;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string_view option = arguments[index];
        if (option == "--help") {
            settings.help = true;
        } else if (option == "--no-pace") {
            paced = false;
        } else if (!takesValue(option)) {
            return "unknown option \"" + std::string(option) + "\"";
        } else if (++index == arguments.size()) {
            return std::string(option) + ": value missing";
        } else if (const auto error = takeValue(option, arguments[index], settings);
                   !error.empty()) {
            return std::string(option) + " \"" + std::string(arguments[index]) + "\": " + error;
        }
    }
    if (!paced) {
        settings.box.baud = 0;
    }
    return settings;
}

} // namespace simbox
