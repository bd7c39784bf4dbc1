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
    EXPECT_EQ(frames(), (std::vector<std::string>{
                            "00 00 00 04 56 05 00 32", "00 00 00 06 53 01 A0 3F F8 C0",
                            "00 00 00 06 52 00 00 00 FF 08", "00 00 00 06 52 01 00 01 FF 08",
                            "00 00 00 06 52 02 00 02 FF 08", "00 00 00 06 52 03 00 03 FF 08",
                            "00 00 00 04 56 00 00 00", "00 00 00 02 53 00"}));
    EXPECT_EQ(vm.nowMs(), 200 + 200 + 500);
    EXPECT_EQ(times()[1], 200);
    EXPECT_EQ(bytesRead(), 1024);
    EXPECT_EQ(window.percents, (std::vector{0, 0, 25, 50, 75, 100}));
    EXPECT_EQ(window.lines[0], "Reading ...   OK!");
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

TEST_F(Runs, EraseTakesTwoPassesOnFamilyFourFromRunAlone) {
    const std::vector<std::string> pass = {
        "00 00 00 04 56 0C 00 41", "00 00 00 06 53 01 80 27 F9 08", "00 00 00 02 45 00",
        "00 00 00 02 45 00",       "00 00 00 04 56 00 00 00",       "00 00 00 02 53 00"};
    box();
    vm.box().chip().fill(0);
    device(4, 512);
    run(Erase);
    auto twice = pass;
    twice.insert(twice.end(), pass.begin(), pass.end());
    EXPECT_EQ(frames(), twice);
    EXPECT_EQ(times()[6] - times()[5], 500 + 200);
    EXPECT_EQ(vm.nowMs(), 2 * (800 + 500 + 200));
    EXPECT_EQ(window.lines[0], "Erasing ...OK");
    EXPECT_EQ(vm.box().chip().memory()[511], 0xFF);

    box();
    autoSequence({Erase});
    run(Auto);
    EXPECT_EQ(frames(), pass);
}

TEST_F(Runs, SerialEraseWaitsForTheSecondAnswerAndOnceMore) {
    box();
    device(31, 1024);
    const double start = vm.nowMs();
    run(Erase);
    EXPECT_EQ(frames(),
              (std::vector<std::string>{"00 00 00 06 53 04 00 00 00 00", "00 00 00 02 45 08",
                                        "00 00 00 04 56 00 00 00", "00 00 00 02 53 00"}));
    EXPECT_EQ(vm.nowMs() - start, 200 + 50 + 1000 + 500);
    EXPECT_EQ(window.lines[0], "Erasing ...OK");
}

TEST_F(Runs, LockSendsItsStepsInTwoOrThreePasses) {
    box();
    device(1, 1024);
    run(Lock);
    const auto all = frames();
    EXPECT_EQ((std::vector(all.begin(), all.begin() + 7)),
              (std::vector<std::string>{"00 00 00 04 56 0C 00 32", "00 00 00 06 53 01 A0 3F FB C0",
                                        "00 00 00 03 4C FF 00", "00 00 00 06 53 01 A0 3F FB 00",
                                        "00 00 00 03 4C FF 00", "00 00 00 06 53 01 A0 3F F9 40",
                                        "00 00 00 03 4C FF 00"}));
    EXPECT_EQ(all.size(), 14U + 2);
    EXPECT_EQ(vm.nowMs(), 2 * (500 + 600) + 500);
    EXPECT_EQ(window.percents, (std::vector{0, 33, 66, 100, 33, 66, 100}));
    EXPECT_EQ(window.lines[0], "Locking ...   OK!");
    EXPECT_TRUE(vm.box().chip().locked());

    for (const int family : {2, 4}) {
        box();
        device(family, 1024);
        run(Lock);
        EXPECT_EQ(frames().size(), 21U + 2);
    }
    for (const int code : {Erase, Lock}) {
        box();
        device(20, 1024, 64);
        run(code);
        EXPECT_EQ(window.lines[0], "Function not supported!");
        EXPECT_EQ(frames().size(), 2U);
    }
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
