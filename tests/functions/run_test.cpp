// What lies around the function procedures, and the functions that read.
#include "tests/support/run_fixture.h"

#include <stdexcept>

using namespace modFunc;

namespace {

class Runs : public RunTest {
protected:
    void chipHolds(std::uint8_t seed) {
        for (int address = 0; address < 65536; ++address)
            vm.box().chip().set(static_cast<std::uint16_t>(address),
                                static_cast<std::uint8_t>(seed + address * 3 + address / 256));
    }
    // How many bytes of the image, from address 0 on, are the chip's.
    int bytesRead() {
        const auto& chip = vm.box().chip().memory();
        const Bytes& bytes = state().BufferData;
        return static_cast<int>(std::mismatch(chip.begin(), chip.end(), bytes.begin()).first -
                                chip.begin());
    }
};

} // namespace

TEST_F(Runs, ReadTakesTheWholeChipThenClosesItsWindowAndShowsTheData) {
    box();
    chipHolds(1);
    device(1, 1024);
    run(Read);
    EXPECT_EQ(bytesRead(), 1024);
    EXPECT_TRUE(window.closed);
    EXPECT_EQ(viewReopened, 1);
    EXPECT_EQ(window.buttons, "rc"); // the window is gone before they come back
}

TEST_F(Runs, ReadLeavesOutALastPartialBlock) {
    struct Case {
        int size, frames, bytes, lastPercent;
    };
    // Of the percentages only the loop's last is told; 100 follows it.
    for (const Case& c :
         {Case{0, 0, 0, 0}, Case{255, 0, 0, 0}, Case{256, 1, 256, 0}, Case{300, 1, 256, 0},
          Case{640, 2, 512, 50}, Case{896, 3, 768, 50}, Case{65536, 256, 65536, 99}}) {
        SCOPED_TRACE(c.size);
        box();
        chipHolds(1);
        state().BufferData.assign(70001, 0);
        device(4, c.size);
        run(Read);
        EXPECT_EQ(static_cast<int>(frames().size()), 4 + c.frames);
        EXPECT_EQ(bytesRead(), c.bytes);
        EXPECT_EQ(window.percents.end()[-2], c.lastPercent);
        EXPECT_EQ(window.percents.back(), 100);
        EXPECT_TRUE(window.closed);
    }
}

TEST_F(Runs, ReadKeepsFinishedBlocksWhenABlockDoesNotCome) {
    for (const std::string fault : {"silent@R", "short@R", "torn@R"}) {
        for (const int block : {1, 2, 4}) {
            SCOPED_TRACE(fault + std::to_string(block));
            box({fault + std::to_string(block) +
                 (fault == "short@R"  ? ":259"
                  : fault == "torn@R" ? ":100:1200ms"
                                      : "")});
            chipHolds(static_cast<std::uint8_t>(block));
            device(1, 1024);
            state().BufferData.assign(70001, 0xEE);
            viewReopened = 0;
            run(Read);
            EXPECT_EQ(bytesRead(), (block - 1) * 256);
            EXPECT_EQ(state().BufferData[static_cast<std::size_t>(block - 1) * 256 + 1], 0xEE);
            EXPECT_EQ(window.lines[0], "Reading ...   Device Fault!");
            EXPECT_EQ(vm.messages, std::vector{communicationError()});
            EXPECT_FALSE(window.closed);
            EXPECT_EQ(viewReopened, 0);
            EXPECT_EQ(window.buttons, "rcRC");
            expectPoweredDown();
        }
    }
}

TEST_F(Runs, BlankCheckAndVerifyNameTheFirstWrongByte) {
    struct Case {
        int code;
        int address; // of the byte that is wrong, -1 for none
        const char* line;
        int lastPercent;
    };
    const Case cases[] = {
        {Blank, -1, "Blank Checking ...   OK!", 100}, {Blank, 0, "Blank Error at 0000", 0},
        {Blank, 163, "Blank Error at 00A3", 0},       {Blank, 0x3FF, "Blank Error at 03FF", 50},
        {Verify, -1, "Verifying ...   OK!", 100},     {Verify, 0x123, "Verify Error at 0123", 0},
        {Verify, 0x400, "Verifying ...   OK!", 100}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        box();
        device(1, 1024);
        state().BufferData.assign(70001, 0xFF);
        if (c.address >= 0)
            vm.box().chip().set(static_cast<std::uint16_t>(c.address), 0xFE);
        run(c.code);
        EXPECT_EQ(window.lines[0], c.line);
        EXPECT_EQ(window.percents.back(), c.lastPercent);
        EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
        EXPECT_EQ(viewReopened, 0);
        expectPoweredDown();
    }
}

TEST_F(Runs, AnAutoEntryErasesOnceWhereRunErasesTwice) {
    device(4, 512);
    box();
    vm.box().chip().fill(0);
    autoSequence({Erase});
    run(Auto);
    EXPECT_EQ(frames().size(), 6U);
    EXPECT_EQ(window.lines[0], "Erasing ...OK");
    EXPECT_EQ(vm.box().chip().memory()[511], 0xFF);
}

TEST_F(Runs, LockLocksTheChip) {
    device(1, 1024);
    box();
    run(Lock);
    EXPECT_TRUE(vm.box().chip().locked());
}

TEST_F(Runs, AutoWritesOneLineAnEntryAndSharesTheSixth) {
    box();
    device(1, 256);
    image();
    autoSequence({Blank, Program, Verify, 9, Erase, Blank, Lock});
    run(Auto);
    const std::array<std::string, 6> expected = {"Blank Checking ...   OK!",
                                                 "Programming ...   OK!",
                                                 "Verifying ...   OK!",
                                                 "",
                                                 "Erasing ...OK",
                                                 "Locking ...   OK!"};
    EXPECT_EQ(window.lines, expected);
}

TEST_F(Runs, AutoStopsAtAChipFailureAndGoesOnAfterALostReply) {
    autoSequence({Blank, Program});
    device(1, 256);
    box();
    vm.box().chip().fill(0);
    run(Auto);
    EXPECT_EQ(window.lines[0], "Blank Error at 0000");
    EXPECT_EQ(window.lines[1], "");

    for (const char* fault : {"program-error:0080", "status@W1:00"}) {
        box({fault});
        autoSequence({Program, Blank});
        run(Auto);
        EXPECT_EQ(window.lines[1], "") << fault;
        expectPoweredDown();
    }

    autoSequence({Blank, Program});
    box({"silent@R1"});
    run(Auto);
    EXPECT_EQ(window.lines[0], "Blank Checking ...   Device Fault!");
    EXPECT_EQ(window.lines[1], "Programming ...   OK!");

    box();
    autoSequence({});
    run(Auto);
    EXPECT_TRUE(frames().empty());
    EXPECT_EQ(window.buttons, "rcRC");
}

TEST_F(Runs, ARunOutlivesTheWindowThatReadCloses) {
    box();
    chipHolds(5);
    device(1, 256);
    autoSequence({Read, Verify, Read});
    bool underWayAfterClosing = false;
    vm.at(1000, [&] { underWayAfterClosing = window.closed && DeviceRun::UnderWay(); });
    run(Auto);
    EXPECT_TRUE(underWayAfterClosing);
    EXPECT_FALSE(DeviceRun::UnderWay());
    EXPECT_EQ(frames().size(), 3U * 5);
    EXPECT_EQ(viewReopened, 2);
    EXPECT_EQ(window.lines[1], ""); // nobody sees what comes after
    expectPoweredDown();
}

TEST_F(Runs, NoSecondRunStartsInsideARun) {
    box();
    device(1, 256);
    vm.at(300, [&] { run(Erase); });
    run(Blank);
    EXPECT_EQ(frames().size(), 5U);
    EXPECT_EQ(window.buttons, "rcRC");
}

TEST_F(Runs, AnErrorThatEscapesPowersTheSocketDownFirst) {
    box();
    device(1, 256);
    vm.at(300, [] { throw std::runtime_error("anything"); });
    EXPECT_THROW(run(Blank), std::runtime_error);
    expectPoweredDown();
    EXPECT_FALSE(DeviceRun::UnderWay());
}

TEST_F(Runs, AnUnknownEntryRunsNothing) {
    box();
    run(-1);
    run(7);
    EXPECT_TRUE(frames().empty());
    EXPECT_EQ(window.buttons, "rcRCrcRC");
}
