// A run as a whole: what surrounds the function procedures.
#include "link/find_programmer.h"
#include "tests/support/run_fixture.h"

#include <stdexcept>

using namespace modFunc;

using Runs = RunTest;

TEST_F(Runs, TheSocketStaysPoweredWhileAMessageWaits) {
    programmer({"silent@D1"});
    device(1, 512);
    vm.onMessage = [&] {
        EXPECT_EQ(window.lines[0], "Programming ...");
        EXPECT_TRUE(vm.programmer().powered());
        EXPECT_EQ(window.buttons, (std::vector<std::string>{"Run off", "Close off"}));
    };
    run(Program);
    EXPECT_FALSE(vm.programmer().powered());
}

TEST_F(Runs, ARunOutlivesTheWindowThatReadCloses) {
    programmer();
    device(1, 256);
    autoSequence({Read, Verify, Read});
    bool inProgressAfterClosing = false;
    const std::string powerDown = "00 00 00 04 56 00 00 00 00 00 00 02 53 00";
    vm.at(1000, [&] { EXPECT_EQ(hexText(vm.port.crashFrames), powerDown); });
    vm.at(1000,
          [&] { inProgressAfterClosing = window.closed && CurrentLinkUser() == LinkUser::Run; });
    run(Auto);
    EXPECT_TRUE(inProgressAfterClosing);
    EXPECT_FALSE(LinkInUse());
    EXPECT_EQ(frames().size(), 3U * 5);
    EXPECT_EQ(viewReopened, 2);
    EXPECT_EQ(window.lines[1], ""); // not drawn after the window has closed
    expectPoweredDown();
}

TEST_F(Runs, NeitherARunNorDiscoveryStartsInsideARun) {
    programmer();
    device(1, 256);
    vm.at(300, [&] { run(Erase); });
    vm.at(350, FindProgrammer);
    run(Blank);
    EXPECT_EQ(frames().size(), 5U);
    expectButtonsAfterRun();
    EXPECT_TRUE(vm.messages.empty());
}

TEST_F(Runs, AnErrorThatEscapesPowersTheSocketDownFirst) {
    programmer();
    device(1, 256);
    vm.at(300, [] { throw std::runtime_error("anything"); });
    EXPECT_THROW(run(Blank), std::runtime_error);
    EXPECT_TRUE(vm.port.crashFrames.empty());
    expectPoweredDown();
    EXPECT_FALSE(LinkInUse());
}

TEST_F(Runs, ALateReplyIsNoReplyToTheNextFunction) {
    programmer({"short@R1:100"}, 57600);
    device(1, 256);
    image();
    vm.programmer().chip().Load(state().BufferData);
    const Bytes whole = state().BufferData;
    std::fill_n(state().BufferData.begin(), 256, std::uint8_t{0xEE});
    autoSequence({Read, Read});
    run(Auto);
    EXPECT_EQ(window.lines[0], "Reading ...   Device Fault!");
    EXPECT_EQ(state().BufferData, whole);
}
