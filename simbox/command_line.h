#pragma once

#include "simbox/commands.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace simbox {

struct Settings {
    Options options;
    std::string linkPath;  // empty: no link
    std::string chipFile;  // empty: the chip's contents are not kept
    std::string traceFile; // empty: no trace; "-": standard output
    bool unthrottled = false;
    bool help = false;
};

// Every option with its meaning, ready to print.
std::string HelpText();

// Reads the arguments after the program's name. Returns the settings, or a sentence that states
// which argument is wrong and why.
std::variant<Settings, std::string> ParseCommandLine(std::span<const std::string_view> arguments);

} // namespace simbox
