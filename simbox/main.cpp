#include "simbox/chip_file.h"
#include "simbox/command_line.h"
#include "simbox/programmer.h"
#include "simbox/terminal_posix.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace {

using namespace simbox;

constexpr int statusFailed = 1;
constexpr int statusWrongOption = 2;
constexpr int statusProtocolError = 3;

// Saving the chip takes about a millisecond, which must not delay a reply. While the line is
// served, the chip is therefore saved only when the line has been quiet for `quietUs` and no event
// is due for the next `quietUs`. The completion of a frame that is still on the wire is such an
// event.
void serve(Programmer& programmer, Terminal& terminal, ChipFile& chipFile) {
    constexpr std::int64_t quietUs = 5'000;
    const auto start = std::chrono::steady_clock::now();
    const auto nowUs = [start] {
        return std::chrono::duration_cast<std::chrono::microseconds>(
                   std::chrono::steady_clock::now() - start)
            .count();
    };
    while (!Terminal::StopRequested() && !programmer.cablePulled()) {
        std::optional<std::int64_t> timeoutUs;
        if (const auto next = programmer.nextEventUs())
            timeoutUs = std::max<std::int64_t>(0, *next - nowUs());
        const bool saveNext = chipFile.outdated() && timeoutUs.value_or(INT64_MAX) > 2 * quietUs;
        const auto bytes = terminal.Wait(saveNext ? quietUs : timeoutUs);
        if (saveNext && bytes.empty())
            chipFile.Save();
        programmer.Receive(nowUs(), bytes);
        terminal.Write(programmer.Take(nowUs()));
    }
    chipFile.Save();
}

int run(const Settings& settings) {
    Programmer programmer(settings.options);
    std::ofstream traceFile;
    if (!settings.traceFile.empty()) {
        const bool toConsole = settings.traceFile == "-";
        if (!toConsole)
            traceFile.open(settings.traceFile);
        if (!traceFile)
            throw std::runtime_error("cannot write " + settings.traceFile);
        std::ostream& out = toConsole ? std::cout : traceFile;
        // Each line is flushed, so that a trace can be watched and survives a crash.
        programmer.setTraceSink([&out](const std::string& line) {
            out << line << '\n' << std::flush;
        });
    }
    ChipFile chipFile(settings.chipFile, programmer.chip());
    Terminal terminal(settings.linkPath);
    std::cout << "simbox ready: ";
    if (!settings.linkPath.empty())
        std::cout << settings.linkPath << " -> ";
    std::cout << terminal.path() << '\n' << std::flush;

    serve(programmer, terminal, chipFile);

    for (const std::string& error : programmer.protocolErrors())
        std::cerr << "simbox: protocol error: " << error << "\n";
    if (!traceFile)
        throw std::runtime_error("cannot write " + settings.traceFile);
    return programmer.protocolErrors().empty() ? 0 : statusProtocolError;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + std::min(argc, 1), argv + argc);
    const auto settings = ParseCommandLine(arguments);
    if (const auto* error = std::get_if<std::string>(&settings)) {
        std::cerr << "simbox: " << *error << "\n";
        return statusWrongOption;
    }
    if (std::get<Settings>(settings).help) {
        std::cout << HelpText();
        return 0;
    }
    try {
        return run(std::get<Settings>(settings));
    } catch (const std::exception& error) {
        std::cerr << "simbox: " << error.what() << "\n";
        return statusFailed;
    }
}
