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
    // Discovery of a programmer with these faults: the message box, the state, the panels.
    std::string outcome(const std::vector<std::string>& faults = {}) {
        programmer(faults);
        vm.port.open = false;
        return outcomeOfThisOne();
    }
    std::string outcomeOfThisOne() {
        vm.panels = {{1, "COM"}, {2, "Device:"}, {3, "Size:"}};
        FindProgrammer();
        const ShownMessage& message = vm.messages.back();
        const bool critical = message.icon == platform::MessageBox::Icon::Critical;
        return (critical ? "(!) " : "(i) ") + message.title + " | " + message.text + " | " +
               (state().ProgrammerFound ? "found" : "none") +
               (vm.port.open ? ", open | " : ", closed | ") + vm.panels[1] + " | " + vm.panels[2] +
               " | " + vm.panels[3];
    }
};

const std::string found = "(i) Device Found! | Firmware: SimBox v1.00 | found, open | COM7 | "
                          "Device: DIP40 8K | Size: 2000H";

} // namespace

TEST_F(Discovery, FindsTheProgrammerAndShowsItBeforeThePanelsChange) {
    vm.onMessage = [&] {
        EXPECT_EQ(vm.panels[1], "COM");
        EXPECT_FALSE(state().ProgrammerFound);
    };
    EXPECT_EQ(outcome(), found);
    EXPECT_EQ(vm.port.commPort, 7);
    EXPECT_EQ(frames(), std::vector<std::string>{"00 00 00 01 49"});
    EXPECT_EQ(vm.nowMs(), 100); // the wait is fixed, however early the reply
}

TEST_F(Discovery, TakesTwelveBytesWithinHundredMillisecondsAndNothingElse) {
    for (const char* fault : {"identify:0", "identify:11", "identify:13", "late@I:101ms",
                              "torn@I:11:101ms", "double@I", "pull@I"})
        EXPECT_EQ(outcome({fault}), "(!) Communication Error | Cannot find device at COM 7 ! | "
                                    "none, closed | COM7 | Device: DIP40 8K | Size: 2000H")
            << fault;
    EXPECT_EQ(outcome({"late@I:99ms"}), found);
}

TEST_F(Discovery, ShowsFirmwareByteForByte) {
    outcome({"status@I:001F41427F80FF3C623E0D0A"});
    EXPECT_EQ(vm.messages.at(0).text, std::string("Firmware: \0\x1F"
                                                  "AB\x7F\xC2\x80\xC3\xBF<b>\r\n",
                                                  24));
}

TEST_F(Discovery, RunsAgainOnAnOpenPortAndMayFailToOpenIt) {
    EXPECT_EQ(outcome(), found);
    vm.port.staleAtOpen = {1, 2, 3}; // read away before the frame is sent
    EXPECT_EQ(outcomeOfThisOne(), found);
    vm.port.openError = "/dev/ttyUSB2: gone";
    EXPECT_EQ(outcomeOfThisOne(), "(!) Communication Port Error | COM7, /dev/ttyUSB2: gone | "
                                  "none, closed | FAIL | Device: | Size:");
}

TEST_F(Discovery, KeepsARunFromStartingMeanwhile) {
    vm.at(50, [this] { run(Erase); });
    EXPECT_EQ(outcome(), found);
    EXPECT_EQ(frames().size(), 1U);
    EXPECT_TRUE(window.buttons.empty());
}
