#include "link/find_programmer.h"

#include "app/state.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

class Discovery : public RunTest {
protected:
    Discovery() {
        state().ComPort = 7;
        state().DeviceList[1].Name = "DIP40 8K";
        state().DeviceList[1].Size = 8192;
    }
    // Message box, state and panels after discovery: of a new programmer with this fault, or of the
    // present one.
    std::string outcome(const char* fault) {
        programmer(fault);
        vm.port.open = false;
        return outcome();
    }
    std::string outcome() {
        vm.panels = {{1, "COM"}, {2, "Device:"}, {3, "Size:"}};
        FindProgrammer();
        const auto& [title, text, icon] = vm.messages.back();
        EXPECT_EQ(icon, title == "Device Found!" ? platform::MessageBox::Icon::Information
                                                 : platform::MessageBox::Icon::Critical);
        return title + " | " + text + (state().ProgrammerFound ? " | found" : " | none") +
               (vm.port.open ? ", open | " : ", closed | ") + vm.panels[1] + " | " + vm.panels[2] +
               " | " + vm.panels[3];
    }
};

const std::string found = "Device Found! | Firmware: SimBox v1.00 | found, open | COM7 | "
                          "Device: DIP40 8K | Size: 2000H";

} // namespace

TEST_F(Discovery, FindsTheProgrammerAndShowsItBeforeThePanelsChange) {
    vm.onMessage = [&] {
        EXPECT_EQ(vm.panels[1], "COM");
        EXPECT_FALSE(state().ProgrammerFound);
    };
    EXPECT_EQ(outcome(""), found);
    EXPECT_EQ(vm.port.commPort, 7);
    ASSERT_EQ(frames().size(), 1U);
    EXPECT_EQ(hexText(frames()[0].bytes), "00 00 00 01 49");
    EXPECT_EQ(vm.nowMs(), 100); // the wait is fixed, even for an early reply
}

TEST_F(Discovery, TakesTwelveBytesWithinHundredMillisecondsAndNothingElse) {
    for (const char* fault : {"identify:0", "identify:11", "identify:13", "late@I:101ms",
                              "torn@I:11:101ms", "double@I", "pull@I"})
        EXPECT_EQ(outcome(fault), "Communication Error | Cannot find device at COM 7 ! | "
                                  "none, closed | COM7 | Device: DIP40 8K | Size: 2000H")
            << fault;
    EXPECT_EQ(outcome("late@I:99ms"), found);
}

TEST_F(Discovery, ShowsFirmwareByteForByte) {
    outcome("status@I:001F41427F80FF3C623E0D0A");
    EXPECT_EQ(vm.messages.at(0).text, std::string("Firmware: \0\x1F"
                                                  "AB\x7F\xC2\x80\xC3\xBF<b>\r\n",
                                                  24));
}

TEST_F(Discovery, RunsAgainOnAnOpenPortAndMayFailToOpenIt) {
    EXPECT_EQ(outcome(""), found);
    vm.port.queue = {1, 2, 3}; // discarded before the frame is sent
    EXPECT_EQ(outcome(), found);
    vm.port.openError = "/dev/ttyUSB2: gone";
    EXPECT_EQ(outcome(), "Communication Port Error | COM7, /dev/ttyUSB2: gone | "
                         "none, closed | FAIL | Device: | Size:");
}

TEST_F(Discovery, KeepsARunFromStartingMeanwhile) {
    vm.at(50, [this] { run(Erase); });
    EXPECT_EQ(outcome(""), found);
    EXPECT_EQ(frames().size(), 1U);
    EXPECT_TRUE(window.buttons.empty());
}
