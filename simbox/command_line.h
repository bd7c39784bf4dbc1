#pragma once

#include "simbox/options.h"

#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace simbox {

struct Settings {
    Options box;
    std::string linkPath;  // empty: no link
    std::string chipFile;  // empty: the chip is not kept
    std::string traceFile; // empty: no trace; "-": standard output
    bool help = false;
};

// Every option with its meaning, ready to print.
std::string HelpText();

// Reads the arguments behind the program's name. Gives the settings, or a sentence saying which
// argument is wrong and why.
std::variant<Settings, std::string> ParseCommandLine(std::span<const std::string_view> arguments);

} // namespace simbox
