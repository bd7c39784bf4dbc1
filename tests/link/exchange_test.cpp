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
    EXPECT_EQ(vm.InBufferCount(), wait.waitingBytes);
}

INSTANTIATE_TEST_SUITE_P(, Waits, testing::ValuesIn(waits), rowName);
