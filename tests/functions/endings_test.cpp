// How runs end other than by plain success: what is shown and left in the chip, and when.
#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

using enum FunctionCode;

constexpr char programOk[] = "Programming ...   OK!", verifyOk[] = "Verifying ...   OK!",
               programFault[] = "Programming ...   Device Fault!", readOk[] = "Reading ...   OK!",
               readFault[] = "Reading ...   Device Fault!", blankOk[] = "Blank Checking ...   OK!",
               blankFault[] = "Blank Checking ...   Device Fault!",
               unsupported[] = "Function not supported!";

struct Ending {
    std::vector<FunctionCode> functions; // one, or Auto and the entries of its sequence
    int family, size;
    const char* faults;
    std::array<std::string, messageLines> lines;
    int percent;              // the last
    int ms;                   // of the whole run
    std::size_t messages = 0; // message boxes "Communication Error!"
    int pageSize = 64;
    int address = 0xFFFF, byte = 0xFF; // in the chip, else FF or, for Verify, as the image
};

const Ending endings[] = {
    // The status of a write.
    {{Program}, 1, 1024, "", {"Program Error at 0201"}, 50, 2200, 0, 64, 0x201, 0},
    {{Program}, 1, 1024, "status@W2:450123 torn@W2:1:300ms", {"Program Error at 0123"}, 25, 1500},
    {{Program}, 1, 1024, "status@W2:4501", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "status@W2:004E", {programFault}, 25, 1200},
    {{Program}, 1, 1024, "silent@W2", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "late@W2:1000ms", {programOk}, 100, 2200}, // with the tick of the time-out
    {{Program}, 1, 1024, "silent@D2", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "silent@V1 silent@T1", {programOk}, 100, 3200},
    {{Program}, 1, 1024, "pull@1", {programFault}, 0, 6200, 1},
    // Devices at the limits of the catalogue and outside.
    {{Program}, 21, 65536, "", {programOk}, 100, 1200},
    {{Program}, 50, 1000, "", {}, 0, 1000},
    {{Program}, 1, 300, "", {unsupported}, 0, 500},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, 0},
    {{Program}, 20, 1024, "", {programOk}, 100, 1200, 0, 1},
    {{Program}, 20, 3072, "", {unsupported}, 0, 500, 0, 48},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, 256},
    {{Program}, 21, 1000, "", {unsupported}, 0, 500},
    {{Program}, -1, 256, "", {unsupported}, 0, 500},
    {{Erase}, 51, 256, "", {unsupported}, 0, 500},
    {{Lock}, 51, 256, "", {unsupported}, 0, 500},
    {{Verify}, 1, -1, "", {unsupported}, 0, 500},
    {{Read}, 1, 65537, "", {unsupported}, 0, 500},
    {{Read}, 1, 0, "", {readOk}, 100, 900},
    {{Verify}, 1, 300, "", {verifyOk}, 100, 900, 0, 64, 0x100, 0},
    // Replies that do not arrive, wrong bytes.
    {{Read}, 1, 1024, "short@R2:259", {readFault}, 0, 1900, 1},
    {{Blank}, 1, 1000, "silent@R3", {blankFault}, 25, 1900, 1},
    {{Blank}, 1, 1024, "silent@V1 silent@S1", {blankOk}, 100, 2900},
    {{Blank}, 1, 1024, "", {blankOk}, 100, 900, 0, 64, 0x400, 0},
    {{Blank}, 4, 65536, "", {"Blank Error at FFFF"}, 99, 900, 0, 64, 0xFFFF, 0x7F},
    {{Verify}, 1, 1024, "", {"Verify Error at 0100"}, 0, 900, 0, 64, 0x100, 0},
    // One line per entry of a sequence; later entries share the sixth. Chip failures end the
    // sequence; lost replies do not, and late ones are no reply to the next entry.
    {{Auto, Blank, Program, Verify, FunctionCode(9), Erase, Blank, Lock},
     1,
     256,
     "",
     {blankOk, programOk, verifyOk, "", "Erasing ...OK", "Locking ...   OK!"},
     100,
     7900},
    {{Auto, Program, Verify, Erase},
     1,
     256,
     "lie:0023",
     {programOk, "Verify Error at 0023"},
     100,
     2100},
    {{Auto, Program, Blank}, 1, 256, "program-error:0080", {"Program Error at 0080"}, 0, 2200},
    {{Auto, Program, Blank}, 1, 256, "status@W1:00", {programFault}, 0, 1200},
    {{Auto, Blank, Program}, 1, 256, "silent@R1", {blankFault, programOk}, 100, 3100, 1},
    {{Auto, Blank, Blank},
     1,
     256,
     "late@S2:1100ms late@V3:9ms late@S3:9ms",
     {blankOk, blankOk},
     100,
     2818},
    {{Auto, Erase, Lock, Blank}, 20, 256, "", {unsupported, unsupported, blankOk}, 100, 1900},
    {{Auto, Erase}, 4, 256, "", {"Erasing ...OK"}, 100, 1300},
};

class Endings : public RunTest, public testing::WithParamInterface<Ending> {};

// "Program_1_1024_64_65535_silent_W2"
std::string nameOf(const testing::TestParamInfo<Ending>& row) {
    const Ending& e = row.param;
    std::string name = DeviceRun::functions.at(std::size_t(e.functions[0])).name;
    for (const int number : {e.family, e.size, e.pageSize, e.address})
        name += "_" + std::to_string(number);
    name += std::string("_") + e.faults;
    std::ranges::replace_if(name, [](char c) { return !std::isalnum(c); }, '_');
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
    simbox::Chip& chip = vm.programmer.chip();
    if (function == Verify)
        chip.Load(state().BufferData);
    chip.Set(std::uint16_t(ending.address), std::uint8_t(ending.byte));
    vm.onMessage = [&] { // before the line, the buttons and the supplies change
        EXPECT_TRUE(window.lines[0].ends_with(" ..."));
        EXPECT_EQ(window.buttons, "Run off, Close off, ");
        EXPECT_NE(vm.programmer.powered(), vm.programmer.cablePulled());
    };
    run(function);

    EXPECT_EQ(window.lines, ending.lines);
    EXPECT_TRUE(window.percents.ends_with(" " + std::to_string(ending.percent)));
    EXPECT_EQ(vm.messages, std::vector<std::string>(ending.messages, communicationError));
    EXPECT_EQ(vm.nowMs() - startMs, ending.ms);
    EXPECT_EQ(window.closed, window.lines[0] == readOk);
    if (window.lines[0] == programOk && function == Program) {
        EXPECT_TRUE(std::equal(chip.memory().begin(), chip.memory().begin() + ending.size,
                               state().BufferData.begin()));
    }
}

INSTANTIATE_TEST_SUITE_P(, Endings, testing::ValuesIn(endings), nameOf);
