// How runs end other than by plain success: what is shown, stored and left in the chip, and when.
#include "tests/support/run_fixture.h"

#include <algorithm>

using namespace modFunc;

namespace {

using enum FunctionCode;

constexpr char programOk[] = "Programming ...   OK!";
constexpr char programFault[] = "Programming ...   Device Fault!";
constexpr char readOk[] = "Reading ...   OK!";
constexpr char readFault[] = "Reading ...   Device Fault!";
constexpr char blankOk[] = "Blank Checking ...   OK!";
constexpr char blankFault[] = "Blank Checking ...   Device Fault!";
constexpr char verifyOk[] = "Verifying ...   OK!";
constexpr char erased[] = "Erasing ...OK";
constexpr char locked[] = "Locking ...   OK!";
constexpr char unsupported[] = "Function not supported!";

// The one byte by which the chip differs from the image (Read, Verify) or from FF (the others).
struct OtherByte {
    int address = -1;
    int value = 0;
};

struct Ending {
    std::vector<FunctionCode> functions; // one, or Auto and the entries of its sequence
    int family;
    int size;
    const char* faults;
    std::vector<std::string> lines; // without empty lines at the end
    int percent;
    int ms;           // of the whole run
    int messages = 0; // message boxes "Communication Error!"
    OtherByte other = {};
    int pageSize = 64;
};

const std::vector<FunctionCode> allFunctions = {Auto,  Blank, Program, Verify, FunctionCode(9),
                                                Erase, Blank, Lock};

const Ending endings[] = {
    // The status of a write.
    {{Program}, 1, 1024, "status@W2:45012C", {"Program Error at 012C"}, 25, 2200},
    {{Program}, 1, 1024, "program-error:01FF", {"Program Error at 01FF"}, 25, 2200},
    {{Program}, 1, 1024, "", {"Program Error at 0201"}, 50, 2200, 0, {0x201, 0}},
    {{Program}, 1, 1024, "status@W2:450123 torn@W2:1:300ms", {"Program Error at 0123"}, 25, 1500},
    {{Program}, 1, 1024, "torn@W2:1:999ms", {programOk}, 100, 1200},
    {{Program}, 1, 1024, "status@W2:4501", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "status@W2:45", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "status@W2:00", {programFault}, 25, 1200},
    {{Program}, 1, 1024, "status@W2:004E", {programFault}, 25, 1200},
    {{Program}, 1, 1024, "silent@W2", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "late@W2:1000ms", {programOk}, 100, 2200}, // arrives with the tick of the
                                                                    // time-out
    {{Program}, 1, 1024, "silent@D2", {programFault}, 25, 2200, 1},
    {{Program}, 20, 1024, "silent@D11", {programFault}, 62, 2200, 1},
    {{Program}, 1, 1024, "silent@V1", {programOk}, 100, 2200},
    {{Program}, 1, 1024, "silent@T1", {programOk}, 100, 2200},
    {{Program}, 1, 1024, "pull@1", {programFault}, 0, 6200, 1},
    // The smallest and largest devices, and those outside the limits of the catalogue.
    {{Program}, 1, 65536, "", {programOk}, 100, 1200},
    {{Program}, 21, 65536, "", {programOk}, 100, 1200},
    {{Program}, 1, 0, "", {programOk}, 100, 1200},
    {{Program}, 40, 1000, "", {}, 0, 1000},
    {{Program}, 1, 300, "", {unsupported}, 0, 500},
    {{Program}, 30, 128, "", {unsupported}, 0, 500},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, {}, 0},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, {}, -64},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, {}, 48},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, {}, 256},
    {{Program}, 20, 1024, "", {programOk}, 100, 1200, 0, {}, 1},
    {{Program}, 21, 1000, "", {unsupported}, 0, 500},
    {{Read}, 1, 65792, "", {unsupported}, 0, 500},
    {{Verify}, 1, -256, "", {unsupported}, 0, 500},
    {{Blank}, -1, 256, "", {unsupported}, 0, 500},
    {{Erase}, 51, 256, "", {unsupported}, 0, 500},
    {{Lock}, 51, 256, "", {unsupported}, 0, 500},
    {{Read}, 1, 0, "", {readOk}, 100, 900},
    {{Read}, 1, 300, "", {readOk}, 100, 900},
    {{Read}, 4, 65536, "", {readOk}, 100, 900},
    {{Blank}, 1, 255, "", {blankOk}, 100, 900},
    // Blocks that do not arrive.
    {{Read}, 1, 1024, "silent@R1", {readFault}, 0, 1900, 1},
    {{Read}, 1, 1024, "short@R2:259", {readFault}, 0, 1900, 1},
    {{Read}, 1, 1024, "torn@R4:100:1200ms", {readFault}, 50, 2100, 1},
    {{Blank}, 1, 1024, "silent@R3", {blankFault}, 25, 1900, 1},
    {{Blank}, 1, 1024, "silent@V1 silent@S1", {blankOk}, 100, 2900},
    // Wrong bytes.
    {{Blank}, 1, 1024, "", {"Blank Error at 0000"}, 0, 900, 0, {0, 0xFE}},
    {{Blank}, 1, 1024, "", {blankOk}, 100, 900, 0, {0x400, 0}},
    {{Blank}, 4, 65536, "", {"Blank Error at FFFF"}, 99, 900, 0, {0xFFFF, 0x7F}},
    {{Verify}, 1, 1024, "", {"Verify Error at 0123"}, 0, 900, 0, {0x123, 0}},
    {{Verify}, 1, 300, "", {verifyOk}, 100, 900, 0, {0x100, 0}},
    // One line per entry of a sequence; later entries share the sixth. Chip failures end the
    // sequence; lost replies do not.
    {allFunctions, 1, 256, "", {blankOk, programOk, verifyOk, "", erased, locked}, 100, 7900},
    {{Auto, Program, Verify}, 1, 256, "lie:0023", {programOk, "Verify Error at 0023"}, 100, 2100},
    {{Auto, Program, Blank, Erase}, 1, 256, "", {programOk, "Blank Error at 0000"}, 100, 2100},
    {{Auto, Program, Blank}, 1, 256, "program-error:0080", {"Program Error at 0080"}, 0, 2200},
    {{Auto, Program, Blank}, 1, 256, "status@W1:00", {programFault}, 0, 1200},
    {{Auto, Verify, Erase}, 1, 256, "", {"Verify Error at 0000"}, 0, 900, 0, {0, 1}},
    {{Auto, Blank, Program}, 1, 256, "silent@R1", {blankFault, programOk}, 100, 3100, 1},
    {{Auto, Erase, Lock, Blank}, 20, 256, "", {unsupported, unsupported, blankOk}, 100, 1900},
    {{Auto, Erase}, 4, 256, "", {erased}, 100, 1300},
    {{Auto}, 1, 256, "", {}, 0, 0},
};

class Endings : public RunTest, public testing::WithParamInterface<Ending> {};

// "Program_1_1024_silent_W2_0_64"
std::string nameOf(const testing::TestParamInfo<Ending>& row) {
    const Ending& e = row.param;
    std::string name;
    for (const FunctionCode code : e.functions)
        name += code > Auto ? "None" : DeviceRun::functions.at(std::size_t(code)).name;
    for (const int number : {e.family, e.size, e.other.value, e.pageSize})
        name += "_" + std::to_string(number);
    std::ranges::replace_if(name += e.faults, [](char c) { return !std::isalnum(c); }, '_');
    return name;
}

} // namespace

TEST_P(Endings, AreShownAndSent) {
    const Ending& ending = GetParam();
    const FunctionCode function = ending.functions[0];
    programmer(ending.faults);
    device(ending.family, ending.size, ending.pageSize);
    image();
    autoSequence({ending.functions.begin() + 1, ending.functions.end()});
    simbox::Chip& chip = vm.programmer().chip();
    if (function == Read || function == Verify)
        chip.Load(state().BufferData);
    if (ending.other.address >= 0)
        chip.Set(std::uint16_t(ending.other.address), std::uint8_t(ending.other.value));
    if (function == Read)
        state().BufferData.assign(70001, 0xEE);
    Bytes expected = state().BufferData;
    run(function);

    std::array<std::string, messageLines> lines;
    std::ranges::copy(ending.lines, lines.begin());
    EXPECT_EQ(window.lines, lines);
    EXPECT_TRUE((" " + window.percents).ends_with(" " + std::to_string(ending.percent)));
    EXPECT_EQ(vm.messages, std::vector(std::size_t(ending.messages), communicationError));
    EXPECT_EQ(vm.nowMs() - startMs, ending.ms);
    EXPECT_EQ(window.closed, lines[0] == readOk);
    expectButtonsAfterRun();
    if (!vm.programmer().cablePulled() && !frames().empty())
        expectPoweredDown();
    if (function == Program && lines[0] == programOk) {
        EXPECT_TRUE(
            std::equal(expected.begin(), expected.begin() + ending.size, chip.memory().begin()));
    }
    if (lines[0] == readOk)
        std::copy_n(chip.memory().begin(), ending.size / 256 * 256, expected.begin());
    EXPECT_TRUE(lines[0] == readFault || state().BufferData == expected);
}

INSTANTIATE_TEST_SUITE_P(, Endings, testing::ValuesIn(endings), nameOf);
