#include "link/exchange.h"

#include "link/frames.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

// A wait for a reply of twelve bytes: when it ends, and the state afterwards.
struct Wait {
    const char* name;
    const char* fault;
    int endsAtMs;
    bool timedOut;
    bool timerStopped;
    int waitingBytes;
};

const Wait waits[] = {
    {"Complete", "late@1:400ms", 400, false, true, 12},
    {"Silent", "silent@1", 1000, true, true, 0},
    {"Short", "short@1:5", 1000, true, true, 5},
    {"OneByteTooMany", "long@1:1", 0, false, false, 13},
    {"LastByteBeforeTheTick", "torn@1:11:999ms", 999, false, true, 12},
    {"LastByteWithTheTick", "torn@1:11:1000ms", 1000, true, true, 12},
    {"LastByteAfterTheTick", "torn@1:11:1001ms", 1000, true, true, 11},
};

class Waits : public RunTest, public testing::WithParamInterface<Wait> {};

} // namespace

TEST_P(Waits, EndByCountOrTimeOut) {
    const Wait& wait = GetParam();
    programmer(wait.fault);
    state().TimedOut = true; // from an earlier exchange
    SendAndWait(IdentifyFrame(), 12);
    EXPECT_EQ(vm.nowMs(), wait.endsAtMs);
    EXPECT_EQ(state().TimedOut, wait.timedOut);
    EXPECT_EQ(!vm.totmr.enabled, wait.timerStopped);
    EXPECT_EQ(vm.port.InBufferCount(), wait.waitingBytes);
}

INSTANTIATE_TEST_SUITE_P(, Waits, testing::ValuesIn(waits), rowName);

TEST_F(Waits, CountStaleBytes) {
    programmer("silent@1");
    vm.port.queue = {0x77};
    Exchange(IdentifyFrame(), 1);
    EXPECT_FALSE(state().TimedOut);
    EXPECT_EQ(hexText(state().RxText), "77");
    EXPECT_EQ(vm.nowMs(), 0);
}

// Every frame, built from a family whose bytes are all different.
TEST(Frames, HaveTheirBytesInOrder) {
    FamilyRec family{.SetupByte1 = 0xA1,
                     .SetupByte2 = 0xA2,
                     .ChipCode = 0xA3,
                     .WriteMode = 0xA4,
                     .ClassByte = 0xA5};
    family.Program = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
    family.Read = {0x20, 0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28};
    EXPECT_EQ(hexText(IdentifyFrame()), "00 00 00 01 49");
    EXPECT_EQ(hexText(SuppliesFrame(family.Program)), "00 00 00 04 56 16 17 18");
    EXPECT_EQ(hexText(SocketFrame(family, family.Read)), "00 00 00 06 53 A5 A1 A2 21 22");
    EXPECT_EQ(hexText(PowerDownFrames()), "00 00 00 04 56 00 00 00 00 00 00 02 53 00");
    EXPECT_EQ(hexText(WriteSocketFrame(family)), "00 00 00 08 54 A5 A1 A2 11 12 21 22");
    EXPECT_EQ(hexText(DataFrame(Bytes{0xD0, 0xD1, 0xD2})), "00 00 00 04 44 D0 D1 D2");
    EXPECT_EQ(hexText(DataFrame(Bytes(256))).substr(0, 17), "00 00 01 01 44 00");
    EXPECT_EQ(hexText(WriteBlockFrame(family, 0xFE00)), "00 00 00 08 57 FE 00 FE FF A3 15 A4");
    EXPECT_EQ(hexText(WritePageFrame(family, 0x1240, 64)), "00 00 00 08 57 12 40 12 7F A3 15 40");
    EXPECT_EQ(hexText(ReadBlockFrame(family, 0xFE00)), "00 00 00 06 52 FE 00 FE FF A3");
    EXPECT_EQ(hexText(EraseFrame(0xA3)), "00 00 00 02 45 A3");
    EXPECT_EQ(hexText(LockFrame(family.Read)), "00 00 00 03 4C 23 24");
}
