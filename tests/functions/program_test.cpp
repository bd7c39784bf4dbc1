#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

using ProgramRun = RunTest;

} // namespace

TEST_F(ProgramRun, ShowsThePercentBeforeEachBlock) {
    box();
    device(20, 1024, 64);
    run(Program);
    EXPECT_EQ(window.percents,
              (std::vector{0, 0, 6, 12, 18, 25, 31, 37, 43, 50, 56, 62, 68, 75, 81, 87, 93, 100}));
    EXPECT_EQ(window.buttons, "rcRC");
}

TEST_F(ProgramRun, WritesAllOf64KiBytesErasedOnesToo) {
    for (const int family : {1, 21}) {
        box();
        device(family, 65536, 128);
        run(Program); // an image of zeros
        const auto& chip = vm.box().chip().memory();
        EXPECT_TRUE(std::equal(chip.begin(), chip.end(), state().BufferData.begin()));
        EXPECT_EQ(frames().size(), family == 1 ? 2U + 512 + 2 : 2U + 1024 + 2);
    }
    EXPECT_EQ(window.lines[0], "Programming ...   OK!");
}

TEST_F(ProgramRun, TellsEachFailureAndStopsThere) {
    struct Case {
        const char* fault;
        const char* line;
        bool message;
        int frames; // of the function, before the power-down
        double ms;
    };
    const Case cases[] = {
        {"status@W2:45012C", "Program Error at 012C", false, 6, 1000}, // all at once: waits on
        {"program-error:01FF", "Program Error at 01FF", false, 6, 1000},
        {"torn@W2:1:999ms", "Programming ...   OK!", false, 10, 0},
        {"status@W2:4501", "Programming ...   Device Fault!", true, 6, 1000},
        {"status@W2:45", "Programming ...   Device Fault!", true, 6, 1000},
        {"status@W2:00", "Programming ...   Device Fault!", false, 6, 0},
        {"status@W2:004E", "Programming ...   Device Fault!", false, 6, 0},
        {"silent@W2", "Programming ...   Device Fault!", true, 6, 1000},
        {"silent@D2", "Programming ...   Device Fault!", true, 5, 1000},
        {"silent@V1", "Programming ...   OK!", false, 10, 1000}, // paces only
        {"silent@T1", "Programming ...   OK!", false, 10, 1000},
        // A line that is dead to the end: the opening frames, one "D" and the power-down.
        {"pull@1", "Programming ...   Device Fault!", true, 1, 5000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.fault);
        box({c.fault});
        device(1, 1024);
        image();
        const double start = vm.nowMs();
        run(Program);
        EXPECT_EQ(window.lines[0], c.line);
        EXPECT_EQ(vm.messages, std::vector<ShownMessage>(c.message ? 1 : 0, communicationError()));
        EXPECT_EQ(vm.nowMs() - start, 1200 + c.ms);
        EXPECT_EQ(window.buttons, "rcRC");
        if (vm.box().cablePulled())
            continue;
        EXPECT_EQ(static_cast<int>(frames().size()), c.frames + 2);
        expectPoweredDown();
    }
}

TEST_F(ProgramRun, TakesAStatusAndItsAddressApart) {
    box({"status@W1:450123", "torn@W1:1:300ms"});
    device(1, 512);
    run(Program);
    EXPECT_EQ(window.lines[0], "Program Error at 0123");
    EXPECT_EQ(vm.nowMs(), 1200 + 300);
    EXPECT_EQ(window.percents.back(), 0);
}

TEST_F(ProgramRun, StaysPoweredWhileTheMessageWaits) {
    box({"silent@D1"});
    device(1, 512);
    vm.onMessage = [&] {
        EXPECT_EQ(window.lines[0], "Programming ...");
        EXPECT_TRUE(vm.box().powered());
        EXPECT_EQ(window.buttons, "rc");
    };
    run(Program);
    EXPECT_FALSE(vm.box().powered());
}

TEST_F(ProgramRun, RefusesDevicesOutsideTheLimitsWithoutAFrameOfItsOwn) {
    struct Case {
        int family, size, pageSize;
    };
    const Case cases[] = {{1, 300, 0},    {1, 65792, 0},   {1, -256, 0},  {-1, 256, 0},
                          {51, 256, 0},   {30, 128, 0},    {20, 1024, 0}, {20, 1024, -64},
                          {20, 1024, 48}, {20, 1024, 256}, {21, 1000, 64}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.family << ", " << c.size << ", " << c.pageSize);
        box();
        device(c.family, c.size, c.pageSize);
        run(Program);
        EXPECT_EQ(window.lines[0], "Function not supported!");
        EXPECT_EQ(frames().size(), 2U);
        expectPoweredDown();
    }
}

TEST_F(ProgramRun, FamiliesWithoutAPathGetTheirSuppliesAndNothingElse) {
    box();
    device(40, 1000);
    run(Program);
    EXPECT_EQ(frames(), (std::vector<std::string>{"00 00 00 04 56 00 00 00",
                                                  "00 00 00 04 56 00 00 00", "00 00 00 02 53 00"}));
    EXPECT_EQ(window.lines[0], "");
    EXPECT_EQ(vm.nowMs(), 500 + 500);
}
