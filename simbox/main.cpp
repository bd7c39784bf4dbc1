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

class StopWatch {
public:
    std::int64_t us() const {
        const auto passed = std::chrono::steady_clock::now() - start_;
        return std::chrono::duration_cast<std::chrono::microseconds>(passed).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Each line is flushed, so that a trace can be watched and survives whatever happens.
void startTrace(Programmer& box, const std::string& path, std::ofstream& file) {
    if (path == "-") {
        box.setTraceSink([](const std::string& line) { std::cout << line << std::endl; });
    } else if (!path.empty()) {
        file.open(path, std::ios::trunc);
        if (!file) {
            throw std::runtime_error("cannot write " + path);
        }
        box.setTraceSink([&file](const std::string& line) { file << line << std::endl; });
    }
}

// Keeps the chip file in step with the chip.
class ChipKeeper {
public:
    ChipKeeper(std::string path, Chip& chip) : path_(std::move(path)), chip_(chip) {
        if (!path_.empty()) {
            LoadChip(path_, chip_);
            SaveChip(path_, chip_);
        }
        savedRevision_ = chip_.revision();
    }
    bool behind() const { return !path_.empty() && chip_.revision() != savedRevision_; }
    void Update() {
        if (behind()) {
            SaveChip(path_, chip_);
            savedRevision_ = chip_.revision();
        }
    }

private:
    std::string path_;
    Chip& chip_;
    std::uint64_t savedRevision_ = 0;
};

// Saving the chip takes about a millisecond, which must not come between a frame and its reply: it
// waits until nothing is due for a while, as during the bytes of a long frame.
void serve(Programmer& box, Terminal& terminal, ChipKeeper& keeper) {
    constexpr std::int64_t quietUs = 5'000;
    const StopWatch watch;
    while (!Terminal::StopRequested() && !box.cablePulled()) {
        const auto untilNext = [&]() -> std::optional<std::int64_t> {
            const auto next = box.nextEventUs();
            return next ? std::optional(std::max<std::int64_t>(0, *next - watch.us()))
                        : std::nullopt;
        };
        auto timeoutUs = untilNext();
        if (keeper.behind() && timeoutUs && *timeoutUs > quietUs) {
            keeper.Update();
            timeoutUs = untilNext();
        }
        const bool idle = !timeoutUs;
        const auto bytes = terminal.Wait(idle && keeper.behind() ? quietUs : timeoutUs);
        if (idle && bytes.empty()) {
            keeper.Update();
        }
        box.Receive(watch.us(), bytes);
        terminal.Write(box.Take(watch.us()));
    }
    keeper.Update();
}

int run(const Settings& settings) {
    Programmer box(settings.box);
    std::ofstream traceFile;
    startTrace(box, settings.traceFile, traceFile);
    ChipKeeper keeper(settings.chipFile, box.chip());
    Terminal terminal(settings.linkPath);
    std::cout << "simbox ready: ";
    if (!settings.linkPath.empty()) {
        std::cout << settings.linkPath << " -> ";
    }
    std::cout << terminal.path() << std::endl;

    serve(box, terminal, keeper);

    for (const std::string& protocolError : box.protocolErrors()) {
        std::cerr << "simbox: protocol error: " << protocolError << "\n";
    }
    return box.protocolErrors().empty() ? 0 : statusProtocolError;
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
