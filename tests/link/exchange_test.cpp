#include "link/exchange.h"

#include "app/state.h"
#include "link/frames.h"
#include "tests/support/run_fixture.h"

#include <numeric>

using namespace modFunc;

namespace {

class Exchanges : public RunTest {
protected:
    const FamilyRec& family(std::size_t number) { return state().FamilyTable.at(number); }
    Bytes page(std::size_t bytes) { return Bytes(bytes, 0x5A); }
};

} // namespace

TEST_F(Exchanges, FramesCarryTheirFamilysBytes) {
    struct Case {
        Bytes frame;
        const char* bytes;
    };
    const Case cases[] = {
        {IdentifyFrame(), "00 00 00 01 49"},
        {SuppliesFrame(family(1).Program), "00 00 00 04 56 0C 00 32"},
        {SuppliesFrame(family(5).Read), "00 00 00 04 56 0C 00 32"},
        {SuppliesFrame(family(4).Erase), "00 00 00 04 56 0C 00 41"},
        {SuppliesFrame(family(10).Lock1), "00 00 00 04 56 00 05 32"},
        {SuppliesOffFrame(), "00 00 00 04 56 00 00 00"},
        {SocketFrame(family(1), family(1).Read), "00 00 00 06 53 01 A0 3F F8 C0"},
        {SocketFrame(family(4), family(4).Erase), "00 00 00 06 53 01 80 27 F9 08"},
        {SocketFrame(family(31), family(31).Read), "00 00 00 06 53 04 00 00 00 00"},
        {ReleaseFrame(), "00 00 00 02 53 00"},
        {WriteSocketFrame(family(2)), "00 00 00 08 54 01 80 37 FA C8 F8 C0"},
        {WriteBlockFrame(family(1), 0x100), "00 00 00 08 57 01 00 01 FF 08 04 01"},
        {WriteBlockFrame(family(30), 0), "00 00 00 08 57 00 00 00 FF 07 00 00"},
        {WriteBlockFrame(family(4), 0xFF00), "00 00 00 08 57 FF 00 FF FF 04 00 02"},
        {WritePageFrame(family(20), 0x80, 64), "00 00 00 08 57 00 80 00 BF 14 00 40"},
        {WritePageFrame(family(21), 0xFF80, 128), "00 00 00 08 57 FF 80 FF FF 15 00 80"},
        {ReadBlockFrame(family(1), 0x200), "00 00 00 06 52 02 00 02 FF 08"},
        {ReadBlockFrame(family(4), 0xFF00), "00 00 00 06 52 FF 00 FF FF 04"},
        {EraseFrame(0), "00 00 00 02 45 00"},
        {EraseFrame(family(31).ChipCode), "00 00 00 02 45 08"},
        {LockFrame(family(1).Lock2), "00 00 00 03 4C FF 00"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(hexText(c.frame), c.bytes);

    EXPECT_EQ(DataFrame(page(256)).size(), 261U);
    EXPECT_EQ(hexText(DataFrame(page(256))).substr(0, 17), "00 00 01 01 44 5A");
    EXPECT_EQ(hexText(DataFrame(page(64))).substr(0, 17), "00 00 00 41 44 5A");
    EXPECT_EQ(hexText(DataFrame(page(128))).substr(0, 17), "00 00 00 81 44 5A");
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
