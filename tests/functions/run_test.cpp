// A run as a whole: the frames and pauses of Read, Program, Erase and Lock on the families that
// differ in them, and what surrounds the function procedures.
#include "link/find_programmer.h"
#include "tests/support/run_fixture.h"

#include <stdexcept>

using namespace modFunc;

namespace {

struct Path {
    const char* name;
    int family;
    FunctionCode function;
    const char* percents;
    std::string traffic;
};

using enum FunctionCode;

const std::string powerDown = "V 00 00 00, S 00 +500";
const std::string lockPassFamily1 = "V 0C 00 32 +500, S 01 A0 3F FB C0 +100, L FF 00 +100, "
                                    "S 01 A0 3F FB 00 +100, L FF 00 +100, "
                                    "S 01 A0 3F F9 40 +100, L FF 00 +100, ";
const std::string erasePassFamily4 = "V 0C 00 41 +200, S 01 80 27 F9 08 +200, "
                                     "E 00 +200, E 00 +200, V 00 00 00, S 00 +700";

const Path paths[] = {
    {"ReadFamily1", 1, Read, "0 0 50 100",
     "V 05 00 32 +200, S 01 A0 3F F8 C0 +200, R 00 00 00 FF 08, R 01 00 01 FF 08, " + powerDown},
    {"ProgramFamily1", 1, Program, "0 0 50 100",
     "V 0C 00 32 +500, T 01 A0 3F FA C0 F8 C0 +200, D 256, W 00 00 00 FF 08 04 01, "
     "D 256, W 01 00 01 FF 08 04 01, " +
         powerDown},
    {"LockFamily1", 1, Lock, "0 33 66 100 33 66 100",
     lockPassFamily1 + lockPassFamily1 + powerDown},
    {"EraseFamily4", 4, Erase, "0 100 100", erasePassFamily4 + ", " + erasePassFamily4},
    {"ReadFamily20", 20, Read, "0 0 50 100",
     "V 00 00 00 +200, S 03 00 00 00 00 +200, R 00 00 00 FF 14, R 01 00 01 FF 14, " + powerDown},
    {"EraseFamily20", 20, Erase, "0", powerDown},
    {"ProgramFamily20", 20, Program, "0 0 25 50 75 100",
     "V 00 00 00 +500, S 03 00 00 00 00 +200, D 128, W 00 00 00 7F 14 00 80, "
     "D 128, W 00 80 00 FF 14 00 80, D 128, W 01 00 01 7F 14 00 80, "
     "D 128, W 01 80 01 FF 14 00 80, " +
         powerDown},
    {"LockFamily20", 20, Lock, "0", powerDown},
    {"EraseFamily31", 31, Erase, "0 100", "S 04 00 00 00 00 +200, E 08 +1050, " + powerDown},
    {"ProgramFamily31", 31, Program, "0 0 50 100",
     "V 00 00 00 +500, S 04 00 00 00 00 +200, D 256, W 00 00 00 FF 08 00 00, "
     "D 256, W 01 00 01 FF 08 00 00, " +
         powerDown},
    // A family without a path, and one whose row is empty: the programmer rejects its set-up.
    {"ProgramFamily45", 45, Program, "0", "V 00 00 00 +500, " + powerDown},
    {"EraseFamily45", 45, Erase, "0", powerDown},
    {"ReadFamily6", 6, Read, "0",
     "V 00 00 00 +200, S 00 00 00 00 00 +1200, R 00 00 00 FF 00 +1000, " + powerDown},
};

using Runs = RunTest;

class Paths : public RunTest, public testing::WithParamInterface<Path> {
protected:
    // The frames by command code and parameters, "D" by the number of its data bytes, each with the
    // milliseconds until the next frame or now: "S 00 +500".
    std::string traffic() {
        std::string text;
        double beforeMs = 0;
        const auto pause = [&](double untilMs) {
            if (const int ms = static_cast<int>(untilMs - beforeMs); ms > 0 && !text.empty())
                text += " +" + std::to_string(ms);
            beforeMs = untilMs;
        };
        for (const simbox::Frame& frame : frames()) {
            pause(static_cast<double>(frame.arrivedUs) / 1000);
            const Bytes parameters(frame.bytes.begin() + 5, frame.bytes.end());
            text += (text.empty() ? "" : ", ") + std::string(1, frame.commandCode) + " " +
                    (frame.commandCode == 'D' ? std::to_string(parameters.size())
                                              : hexText(parameters));
        }
        pause(vm.nowMs());
        return text;
    }
};

} // namespace

TEST_P(Paths, SendTheirFrames) {
    const Path& path = GetParam();
    programmer();
    device(path.family, 512, 128);
    image();
    if (path.function == Read || path.function == Verify)
        vm.programmer().chip().Load(state().BufferData);
    run(path.function);
    EXPECT_EQ(window.percents, path.percents);
    EXPECT_EQ(traffic(), path.traffic);
    EXPECT_EQ(vm.programmer().protocolErrors().empty(), path.family != 6);
    EXPECT_EQ(vm.programmer().chip().locked(), path.function == Lock && path.family == 1);
    expectButtonsAfterRun();
}

INSTANTIATE_TEST_SUITE_P(, Paths, testing::ValuesIn(paths), rowName);

TEST_F(Runs, TheSocketStaysPoweredWhileAMessageWaits) {
    programmer("silent@D1");
    device(1, 512);
    vm.onMessage = [&] {
        EXPECT_EQ(window.lines[0], "Programming ...");
        EXPECT_TRUE(vm.programmer().powered());
        EXPECT_EQ(window.buttons, "Run off, Close off, ");
    };
    run(Program);
    EXPECT_FALSE(vm.programmer().powered());
}

TEST_F(Runs, ARunOutlivesTheWindowThatReadCloses) {
    programmer();
    device(1, 256);
    autoSequence({Read, Verify, Read});
    std::string crashFrames;
    vm.at(1000, [&] {
        EXPECT_TRUE(window.closed && CurrentLinkUser() == LinkUser::Run);
        crashFrames = hexText(vm.port.crashFrames);
    });
    run(Auto);
    EXPECT_EQ(crashFrames, "00 00 00 04 56 00 00 00 00 00 00 02 53 00");
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
    programmer("short@R1:100", 57600);
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
