#include "link/find_programmer.h"

#include "app/state.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;
using Icon = platform::MessageBox::Icon;

namespace {

class Discovery : public RunTest {
protected:
    Discovery() {
        state().ComPort = 7;
        state().DeviceList[1].Name = "DIP40 8K";
        state().DeviceList[1].Size = 8192;
        vm.panels = {{1, "COM"}, {2, "Device:"}, {3, "Size:"}};
    }
    void expectNotFound(const std::string& why) {
        const ShownMessage none{"Communication Error", "Cannot find device at COM 7 !",
                                Icon::Critical};
        EXPECT_EQ(vm.messages, std::vector{none}) << why;
        EXPECT_FALSE(state().ProgrammerFound) << why;
        EXPECT_FALSE(vm.port.open) << why;
        EXPECT_EQ(vm.panels[1], "COM7") << why;
        EXPECT_EQ(vm.panels[2], "Device: DIP40 8K") << why;
    }
};

} // namespace

TEST_F(Discovery, FindsTheBoxAndTellsSoBeforeThePanelsChange) {
    vm.onMessage = [&] {
        EXPECT_EQ(vm.panels[1], "COM");
        EXPECT_FALSE(state().ProgrammerFound);
    };
    FindProgrammer();
    EXPECT_EQ(vm.messages, (std::vector<ShownMessage>{
                               {"Device Found!", "Firmware: SimBox v1.00", Icon::Information}}));
    EXPECT_TRUE(state().ProgrammerFound);
    EXPECT_TRUE(vm.port.open);
    EXPECT_EQ(vm.port.commPort, 7);
    EXPECT_EQ(vm.panels[1], "COM7");
    EXPECT_EQ(vm.panels[2], "Device: DIP40 8K");
    EXPECT_EQ(vm.panels[3], "Size: 2000H");
    EXPECT_EQ(frames(), std::vector<std::string>{"00 00 00 01 49"});
    EXPECT_EQ(vm.nowMs(), 100); // the wait is fixed, however early the reply
}

TEST_F(Discovery, TakesTwelveBytesWithinHundredMillisecondsAndNothingElse) {
    for (const char* fault : {"identify:0", "identify:11", "identify:13", "late@I:101ms",
                              "torn@I:11:101ms", "double@I", "pull@I"}) {
        vm.port.Close();
        box({fault});
        vm.port.open = false;
        FindProgrammer();
        expectNotFound(fault);
    }
    box({"late@I:99ms"});
    vm.port.open = false;
    FindProgrammer();
    EXPECT_TRUE(state().ProgrammerFound);
}

TEST_F(Discovery, ShowsFirmwareByteForByte) {
    box({"status@I:001F41427F80FF3C623E0D0A"});
    vm.port.open = false;
    FindProgrammer();
    EXPECT_EQ(vm.messages.at(0).text, std::string("Firmware: \0\x1F"
                                                  "AB\x7F\xC2\x80\xC3\xBF<b>\r\n",
                                                  24));
}

TEST_F(Discovery, TellsThePortsOwnErrorAndLeavesTheDevicePanels) {
    vm.port.openError = "/dev/ttyUSB2: No such file or directory";
    FindProgrammer();
    EXPECT_EQ(vm.messages, (std::vector<ShownMessage>{
                               {"Communication Port Error",
                                "COM7, /dev/ttyUSB2: No such file or directory", Icon::Critical}}));
    EXPECT_FALSE(state().ProgrammerFound);
    EXPECT_EQ(vm.panels[1], "FAIL");
    EXPECT_EQ(vm.panels[2], "Device:");
    EXPECT_EQ(vm.panels[3], "Size:");
}

TEST_F(Discovery, KeepsARunFromStartingMeanwhile) {
    vm.at(50, [this] { run(Erase); });
    FindProgrammer();
    EXPECT_TRUE(state().ProgrammerFound);
    EXPECT_EQ(frames().size(), 1U);
    EXPECT_EQ(window.buttons, "");
}

TEST_F(Discovery, RunsAgainOnAnOpenPortAndMayLoseTheBox) {
    FindProgrammer();
    state().ComPort = 8;
    vm.port.queue = {1, 2, 3}; // left by an earlier exchange
    FindProgrammer();
    EXPECT_TRUE(state().ProgrammerFound);
    EXPECT_EQ(vm.port.commPort, 8);

    vm.port.openError = "gone";
    FindProgrammer();
    EXPECT_FALSE(state().ProgrammerFound);
    EXPECT_FALSE(vm.port.open);
}
