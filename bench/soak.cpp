// Many runs in one process, on real windows and a real pseudo-terminal, with faults by chance: what
// the process takes may not grow. A measurement of its own (scripts/soak.sh); it takes about a
// second and a half a run.
#include "functions/device_run.h"
#include "link/exchange.h"
#include "tests/support/fault_kinds.h"
#include "tests/windows/window_fixture.h"

#include <cstdio>
#include <malloc.h>
#include <random>
#include <unistd.h>

using namespace modFunc;

namespace {

class Soak : public Windows {
protected:
    // Looks for the box by leaving the settings, then runs a function if there is one.
    void oneRun(unsigned seed) {
        std::mt19937 random(seed);
        const auto any = [&random](std::size_t count) { return std::size_t{random() % count}; };
        QStringList faults;
        for (std::size_t left = any(3); left > 0; --left)
            faults << QStringLiteral("--fault")
                   << QString::fromStdString(
                          faultAt(faultKinds[any(faultKinds.size())], 1 + any(10)));
        constexpr std::int16_t rows[] = {1, 7, 11, 16, 21};
        state().SelectedDevice = rows[any(std::size(rows))];
        state().DeviceList[std::size_t(state().SelectedDevice)].Size = 256;
        const int code = static_cast<int>(any(DeviceRun::functions.size()));
        startBox('\xFF', faults);
        when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
        trigger("OptionsSettings");
        when("frmFunction", [this, code](QWidget& form) {
            in<QListWidget>(form, "listFunction")->setCurrentRow(code);
            runs += in<QAbstractButton>(form, "cmdRun")->isEnabled();
            click(form, "cmdRun");
            if (form.isVisible())
                click(form, "cmdClose");
        });
        trigger("DeviceFunction");
        EXPECT_FALSE(LinkInUse());
        box.terminate();
        EXPECT_TRUE(boxEnds());
    }

    struct Taken {
        std::size_t heapBytes, residentBytes;
        std::ptrdiff_t descriptors;
    };
    Taken taken() {
        messages.clear();
        machine->cm.Close();
        malloc_trim(0);
        std::size_t size = 0, resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        const std::filesystem::directory_iterator open("/proc/self/fd");
        const Taken now{mallinfo2().uordblks, resident * std::size_t(sysconf(_SC_PAGESIZE)),
                        std::distance(begin(open), end(open))};
        std::printf("%5d runs: heap %zu, resident %zu, descriptors %td\n", runs, now.heapBytes,
                    now.residentBytes, now.descriptors);
        std::fflush(stdout);
        return now;
    }

    int runs = 0;
};

} // namespace

TEST_F(Soak, WhatTheProcessTakesDoesNotGrow) {
    constexpr int warmUp = 50; // fonts, caches, the first of every window
    constexpr int longest = 1000 + warmUp;
    start(); // without a box
    Taken before{};
    unsigned seed = 0;
    for (int reported = 0; runs < longest;) {
        oneRun(++seed);
        if (runs == reported)
            continue;
        reported = runs;
        if (runs == warmUp)
            before = taken();
        else if (runs % 100 == 0 || runs == longest)
            taken();
    }
    const Taken after = taken();
    EXPECT_LT(after.heapBytes, before.heapBytes + 1'000'000);
    EXPECT_LT(after.residentBytes, before.residentBytes + 1'000'000);
    EXPECT_EQ(after.descriptors, before.descriptors);
}
