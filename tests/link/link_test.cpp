// Discovery, and how waits for replies end.
#include "link/find_programmer.h"
#include "link/frames.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;

// The port number, a fault, and what is then shown. The message box opens before the state and the
// panels change. The port was open and had stale bytes.
TEST_F(RunTest, DiscoveryTakesTwelveBytesWithinHundredMillisecondsByteForByteAndLetsNoRunStart) {
    const std::string found = "Device Found!: Firmware: ",
                      panels = "COM7 Device: DIP40 8K Size: 2000H",
                      none = "! Communication Error: Cannot find device at COM 7 ! none closed ";
    const std::vector<std::tuple<std::int16_t, std::string, std::string>> cases = {
        {7, "", found + "SimBox v1.00 found open " + panels},
        {7, "late@I:99ms", found + "SimBox v1.00 found open " + panels},
        {7, "late@I:101ms", none + panels},
        {7, "identify:11", none + panels},
        {7, "identify:13", none + panels},
        {7, "status@I:011F41427F80FF3C623E0D0A",
         found + "\x01\x1F" + "AB\x7F\xC2\x80\xC3\xBF<b>\r\n found open " + panels},
        {16, "",
         "! Communication Port Error: COM16, /dev/ttyUSB2: gone none closed FAIL Device: Size:"},
    };
    device(1, 8192);
    for (const auto& [port, fault, expected] : cases) {
        programmer(parseFaults(fault));
        vm.queue = {1, 2, 3};
        vm.panels = {{1, "COM"}, {2, "Device:"}, {3, "Size:"}};
        vm.onMessage = [this, before = state().ProgrammerFound] {
            EXPECT_EQ(std::tuple(vm.panels[1], state().ProgrammerFound), std::tuple("COM", before));
        };
        vm.nowUs = 0;
        vm.actions.emplace(50'000, [this] { DeviceRun(window).Run(int(Erase)); });
        state().ComPort = port;
        FindProgrammer();
        EXPECT_EQ(vm.messages[0] + (state().ProgrammerFound ? " found " : " none ") +
                      (vm.open ? "open " : "closed ") + vm.panels[1] + " " + vm.panels[2] + " " +
                      vm.panels[3],
                  expected);
        EXPECT_EQ(vm.nowUs, port == 7 ? 100'000 : 0); // fixed, even for an early reply
    }
}

// A wait for a reply of twelve bytes: when it ends, and the state afterwards.
TEST_F(RunTest, WaitsEndByCountOrTimeOut) {
    for (const auto& [fault, endsAtMs, timedOut, timerStopped, waitingBytes] :
         {std::tuple("long@1:1", 0, false, false, 13),
          std::tuple("torn@1:11:999ms", 999, false, true, 12), // before, with and after the tick
          std::tuple("torn@1:11:1000ms", 1000, true, true, 12),
          std::tuple("torn@1:11:1001ms", 1000, true, true, 11)}) {
        programmer(parseFaults(fault));
        vm.nowUs = 0;
        state().TimedOut = true; // from an earlier exchange
        SendAndWait(IdentifyFrame(), 12);
        EXPECT_EQ(std::tuple(vm.nowUs / 1000, state().TimedOut, vm.totmr.dueUs == never,
                             vm.InBufferCount()),
                  std::tuple(endsAtMs, timedOut, timerStopped, waitingBytes))
            << fault;
    }
}
