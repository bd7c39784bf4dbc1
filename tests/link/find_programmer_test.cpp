#include "link/find_programmer.h"

#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

struct Discovery : RunTest {
    // The message box, the state and the panels after discovery of a programmer with this fault, on
    // an open port with stale bytes.
    std::string outcome(const char* fault) {
        programmer(fault);
        vm.queue = {1, 2, 3};
        vm.panels = {{1, "COM"}, {2, "Device:"}, {3, "Size:"}};
        state().ComPort = 7;
        device(1, 8192);
        state().DeviceList[1].Name = "DIP40 8K";
        FindProgrammer();
        return vm.messages[0] + (state().ProgrammerFound ? " | found, " : " | none, ") +
               (vm.open ? "open | " : "closed | ") + vm.panels[1] + " | " + vm.panels[2] + " | " +
               vm.panels[3];
    }
};

const std::string found = "Device Found!: Firmware: SimBox v1.00 | found, open | COM7 | "
                          "Device: DIP40 8K | Size: 2000H";

} // namespace

TEST_F(Discovery, ShowsTheProgrammerBeforeThePanelsChangeAndLetsNoRunStart) {
    vm.onMessage = [&] { // panels and state are still the earlier ones
        EXPECT_EQ(vm.panels[1], "COM");
        EXPECT_EQ(state().ProgrammerFound, !vm.openError.empty());
    };
    vm.actions.emplace(50'000, [this] { DeviceRun(window).Run(int(Erase)); });
    EXPECT_EQ(outcome(""), found);
    EXPECT_EQ(vm.commPort, 7);
    EXPECT_EQ(vm.nowMs(), 100); // the wait is fixed, even for an early reply
    ASSERT_EQ(frames().size(), 1U);
    EXPECT_EQ(hexText(frames()[0].bytes), "00 00 00 01 49");

    vm.openError = "/dev/ttyUSB2: gone";
    EXPECT_EQ(outcome(""), "! Communication Port Error: COM7, /dev/ttyUSB2: gone | "
                           "none, closed | FAIL | Device: | Size:");
}

TEST_F(Discovery, TakesTwelveBytesWithinHundredMillisecondsByteForByte) {
    for (const char* fault : {"identify:11", "identify:13", "late@I:101ms"})
        EXPECT_EQ(outcome(fault), "! Communication Error: Cannot find device at COM 7 ! | "
                                  "none, closed | COM7 | Device: DIP40 8K | Size: 2000H")
            << fault;
    EXPECT_EQ(outcome("late@I:99ms"), found);
    outcome("status@I:011F41427F80FF3C623E0D0A");
    EXPECT_EQ(vm.messages[0], "Device Found!: Firmware: \x01\x1F"
                              "AB\x7F\xC2\x80\xC3\xBF<b>\r\n");
}
