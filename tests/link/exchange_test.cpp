#include "link/exchange.h"

#include "app/state.h"
#include "link/frames.h"
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

using namespace modFunc;

using Exchanges = RunTest;

TEST_F(Exchanges, WaitReplyEndsByCountOrByTheSecond) {
    for (const auto& row : readTable(TEST_FILES "/link/waits.txt")) {
        SCOPED_TRACE(row.at(0));
        box({row[0]});
        state().TimedOut = true; // left by an earlier exchange
        const double start = vm.nowMs();
        SendAndWait(IdentifyFrame(), 12);
        EXPECT_EQ(vm.nowMs() - start, std::stod(row.at(1)));
        EXPECT_EQ(state().TimedOut, row.at(2) == "yes");
        EXPECT_EQ(!vm.totmr.enabled, row.at(3) == "yes");
        EXPECT_EQ(vm.port.InBufferCount(), std::stoi(row.at(4)));
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
