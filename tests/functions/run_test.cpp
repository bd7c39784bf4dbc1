// A run as a whole: the frames and pauses of Read, Program, Erase and Lock on the families that
// differ in them, and what surrounds the function procedures.
#include "link/find_programmer.h"
#include "tests/support/run_fixture.h"

#include <numeric>

using namespace modFunc;

namespace {

using enum FunctionCode;

struct Path {
    const char* name;
    int family;
    FunctionCode function;
    // For each frame: the milliseconds since the previous one, the command code and the parameters
    // ("D": the number of data bytes). Then the pause after the last frame, and the percentages.
    std::string traffic;
};

const std::string powerDown = "V 00 00 00, 0 S 00, ";
const std::string erasePass = "V 4C 4D 4E, 200 S 01 6A 6B 47 48, 200 E 00, 200 E 00, 200 ";
const std::string lockPass = "V 28 29 2A, 500 S 01 6A 6B 23 24, 100 L 25 26, "
                             "100 S 01 6A 6B 2C 2D, 100 L 2E 2F, "
                             "100 S 01 6A 6B 35 36, 100 L 37 38, 100 ";

// In the family rows here, every byte except the class byte is its offset plus 10 (hexadecimal).
const Path paths[] = {
    {"ReadFamily4", 4, Read,
     "0 V 1F 20 21, 200 S 01 6A 6B 1A 1B, 200 R 00 00 00 FF 6C, 0 R 01 00 01 FF 6C, 0 " +
         powerDown + "500: 0 0 50 100"},
    {"ProgramFamily4", 4, Program,
     "0 V 16 17 18, 500 T 01 6A 6B 11 12 1A 1B, 200 D 256, 0 W 00 00 00 FF 6C 15 6D, "
     "0 D 256, 0 W 01 00 01 FF 6C 15 6D, 0 " +
         powerDown + "500: 0 0 50 100"},
    {"LockFamily4", 4, Lock,
     "0 " + lockPass + lockPass + lockPass + powerDown + "500: 0 33 66 100 33 66 100 33 66 100"},
    {"EraseFamily4", 4, Erase,
     "0 " + erasePass + powerDown + "700 " + erasePass + powerDown + "700: 0 100 100"},
    {"ProgramFamily20", 20, Program,
     "0 V 16 17 18, 500 S 03 6A 6B 1A 1B, 200 D 128, 0 W 00 00 00 7F 6C 15 80, "
     "0 D 128, 0 W 00 80 00 FF 6C 15 80, 0 D 128, 0 W 01 00 01 7F 6C 15 80, "
     "0 D 128, 0 W 01 80 01 FF 6C 15 80, 0 " +
         powerDown + "500: 0 0 25 50 75 100"},
    {"EraseFamily31", 31, Erase, "0 S 04 6A 6B 47 48, 200 E 6C, 1050 " + powerDown + "500: 0 100"},
};

class Paths : public RunTest, public testing::WithParamInterface<Path> {};

} // namespace

TEST_P(Paths, SendTheirFrames) {
    const Path& path = GetParam();
    auto* const bytes =
        reinterpret_cast<std::uint8_t*>(&state().FamilyTable.at(std::size_t(path.family)));
    std::iota(bytes, bytes + sizeof(FamilyRec) - 1, std::uint8_t{0x10});
    programmer();
    device(path.family, 512, 128);
    run({path.function});
    std::string traffic;
    std::int64_t beforeMs = 0;
    for (const simbox::Frame& frame : frames()) {
        const Bytes parameters(frame.bytes.begin() + 5, frame.bytes.end());
        traffic +=
            std::to_string(frame.arrivedUs / 1000 - beforeMs) + " " + frame.commandCode + " " +
            (frame.commandCode == 'D' ? std::to_string(parameters.size()) : hexText(parameters)) +
            ", ";
        beforeMs = frame.arrivedUs / 1000;
    }
    EXPECT_EQ(traffic + std::to_string(vm.nowUs / 1000 - beforeMs) + ":" + window.percents,
              path.traffic);
}

INSTANTIATE_TEST_SUITE_P(, Paths, testing::ValuesIn(paths), rowName);

TEST_F(RunTest, KeepsLinkAndCrashFramesWithoutItsWindowAndPowersDownAfterAnError) {
    programmer();
    device(1, 256);
    vm.actions.emplace(1000'000, [&] {
        EXPECT_TRUE(window.closed && CurrentLinkUser() == LinkUser::Run);
        EXPECT_EQ(hexText(vm.crashFrames), "00 00 00 04 56 00 00 00 00 00 00 02 53 00");
        DeviceRun(window).Run(int(Erase));
        FindProgrammer();
    });
    run({Auto, Read, Verify, Read}); // no line is drawn after the first Read has closed the window
    EXPECT_EQ(std::tuple(frames().size(), viewReopened, window.lines[1]), std::tuple(15U, 2, ""));

    vm.actions.emplace(vm.nowUs + 300'000, [] { throw std::runtime_error("anything"); });
    EXPECT_THROW(run({Blank}), std::runtime_error);
    EXPECT_TRUE(vm.crashFrames.empty() && !LinkInUse());
    EXPECT_TRUE(!vm.programmer.powered() && vm.programmer.socketReleased());
}
