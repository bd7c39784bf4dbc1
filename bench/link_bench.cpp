// The link on a line without a pace: one exchange beside the least that could do the same, and the
// pauses. All on the platform that the program runs on.
#include "app/state.h"
#include "bench/answering_line.h"
#include "link/exchange.h"
#include "platform/qt/qt_machine.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <unistd.h>
#include <vector>

using namespace modFunc;

namespace {

double nowUs(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Time and processor time of one thing done again and again, in microseconds.
struct Samples {
    std::vector<double> wallUs;
    std::vector<double> processorUs;

    template <typename Action>
    void take(const Action& action) {
        const double wall = nowUs(CLOCK_MONOTONIC);
        const double processor = nowUs(CLOCK_THREAD_CPUTIME_ID);
        action();
        processorUs.push_back(nowUs(CLOCK_THREAD_CPUTIME_ID) - processor);
        wallUs.push_back(nowUs(CLOCK_MONOTONIC) - wall);
    }
};

// The program's port and timers on a line of ours.
class OpenMachine {
public:
    explicit OpenMachine(const std::string& path) {
        state().AppPath = folder_.path();
        std::filesystem::create_symlink(path, folder_.file("com5"));
        machine_.totmr.Tick = [] { totmr_Timer(); };
        machine_.cm.setSettings("57600,N,8,1");
        machine_.cm.setCommPort(5);
        machine_.cm.Open();
    }

private:
    TemporaryFolder folder_;
    QtMachine machine_{modFunc::state().AppPath};
};

// The least that sends a frame and takes its reply: write, poll, read.
class BareLine {
public:
    explicit BareLine(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK)) {}
    BareLine(const BareLine&) = delete;
    BareLine& operator=(const BareLine&) = delete;
    ~BareLine() { close(descriptor_); }

    // False when the line fails.
    bool exchange(const Bytes& frame, std::size_t replyBytes) const {
        std::array<std::uint8_t, 512> reply{};
        if (write(descriptor_, frame.data(), frame.size()) < 0)
            return false;
        for (std::size_t got = 0; got < replyBytes;) {
            pollfd line{descriptor_, POLLIN, 0};
            poll(&line, 1, replyTimeoutMs);
            const ssize_t count = read(descriptor_, reply.data(), reply.size());
            if (count <= 0)
                return false;
            got += static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    int descriptor_;
};

// Ours and the bare loop in turn, each on a line of its own.
void exchange(benchmark::State& bench, std::size_t frameBytes, std::int16_t replyBytes) {
    const AnsweringLine ourLine(frameBytes, static_cast<std::size_t>(replyBytes));
    const AnsweringLine bareLine(frameBytes, static_cast<std::size_t>(replyBytes));
    const OpenMachine machine(ourLine.path());
    const BareLine bare(bareLine.path());
    const Bytes frame(frameBytes, 0x55);
    Samples ours;
    Samples least;
    bool well = true;
    for (auto _ : bench) {
        ours.take([&] { Exchange(frame, replyBytes); });
        well = well && std::ssize(state().RxText) == replyBytes;
        least.take(
            [&] { well = well && bare.exchange(frame, static_cast<std::size_t>(replyBytes)); });
    }
    if (!well)
        bench.SkipWithError("a reply is missing");
    bench.counters["ours_us"] = median(ours.wallUs);
    bench.counters["bare_us"] = median(least.wallUs);
    bench.counters["ours_processor_us"] = median(ours.processorUs);
    bench.counters["bare_processor_us"] = median(least.processorUs);
}
BENCHMARK_CAPTURE(exchange, out10in260, 10, std::int16_t{260})->Iterations(5000);
BENCHMARK_CAPTURE(exchange, out261in1, 261, std::int16_t{1})->Iterations(5000);

// How late a pause ends, as the program waits: yielding until the timer has ticked.
void waitTimer(benchmark::State& bench) {
    QtMachine machine(modFunc::state().AppPath);
    std::vector<double> lateUs;
    for (auto _ : bench) {
        bool done = false;
        machine.tmrWait.Tick = [&] {
            done = true;
            machine.tmrWait.setEnabled(false);
        };
        const double before = nowUs(CLOCK_MONOTONIC);
        machine.tmrWait.setInterval(static_cast<int>(bench.range(0)));
        machine.tmrWait.setEnabled(true);
        while (!done)
            machine.events.Yield();
        lateUs.push_back(nowUs(CLOCK_MONOTONIC) - before -
                         static_cast<double>(bench.range(0)) * 1000);
    }
    const auto [earliest, latest] = std::ranges::minmax(lateUs);
    bench.counters["earliest_us"] = earliest;
    bench.counters["late_us"] = median(lateUs);
    bench.counters["latest_us"] = latest;
}
BENCHMARK(waitTimer)->Arg(100)->Arg(200)->Arg(500)->Iterations(3);

} // namespace
