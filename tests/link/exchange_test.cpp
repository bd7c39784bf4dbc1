#include "link/exchange.h"

#include "app/state.h"
#include "link/frames.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

class Exchanges : public RunTest {
protected:
    const FamilyRec& family(std::size_t number) { return state().FamilyTable.at(number); }
};

} // namespace

// Addresses at the ends; tests/functions/wire_table.txt has the frames of every family.
TEST_F(Exchanges, FramesReachTheLastAddress) {
    EXPECT_EQ(hexText(ReadBlockFrame(family(4), 0xFF00)), "00 00 00 06 52 FF 00 FF FF 04");
    EXPECT_EQ(hexText(WriteBlockFrame(family(4), 0xFF00)), "00 00 00 08 57 FF 00 FF FF 04 00 02");
    EXPECT_EQ(hexText(WritePageFrame(family(20), 0x80, 64)), "00 00 00 08 57 00 80 00 BF 14 00 40");
    EXPECT_EQ(hexText(WritePageFrame(family(21), 0xFF80, 128)),
              "00 00 00 08 57 FF 80 FF FF 15 00 80");
    EXPECT_EQ(hexText(DataFrame(Bytes(256, 0x5A))).substr(0, 17), "00 00 01 01 44 5A");
    EXPECT_EQ(hexText(DataFrame(Bytes(128, 0x5A))).substr(0, 17), "00 00 00 81 44 5A");
}

TEST_F(Exchanges, WaitReplyEndsByCountOrByTheSecond) {
    struct Case {
        const char* fault;
        double endsMs;
        bool timedOut;
        bool timerStopped;
        int waiting;
    };
    const Case cases[] = {
        {"late@1:400ms", 400, false, true, 12},    // all of it: back at once
        {"silent@1", 1000, true, true, 0},         // nothing
        {"short@1:5", 1000, true, true, 5},        // too little: stays on the port
        {"long@1:1", 0, false, false, 13},         // too much: the timer runs on
        {"torn@1:11:999ms", 999, false, true, 12}, // one line, sharp on both sides
        {"torn@1:11:1001ms", 1000, true, true, 11},
        {"torn@1:11:1000ms", 1000, true, true, 12}, // in the turn of the tick: a time-out
    };
    for (const Case& c : cases) {
        box({c.fault});
        state().TimedOut = true; // left by an earlier exchange
        const double start = vm.nowMs();
        SendAndWait(IdentifyFrame(), 12);
        EXPECT_EQ(vm.nowMs() - start, c.endsMs) << c.fault;
        EXPECT_EQ(state().TimedOut, c.timedOut) << c.fault;
        EXPECT_EQ(!vm.totmr.enabled, c.timerStopped) << c.fault;
        EXPECT_EQ(vm.port.InBufferCount(), c.waiting) << c.fault;
        vm.port.Close();
        vm.totmr.setEnabled(false);
    }
}

TEST_F(Exchanges, StaleBytesCountForTheNextWait) {
    box({"silent@1"});
    vm.port.queue = {0x77};
    Exchange(IdentifyFrame(), 1);
    EXPECT_FALSE(state().TimedOut);
    EXPECT_EQ(hexText(state().RxText), "77");
    EXPECT_EQ(vm.nowMs(), 0);
}
