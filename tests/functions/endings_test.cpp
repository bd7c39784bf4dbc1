// How runs end: what is shown, and when.
#include "tests/support/run_fixture.h"

using namespace modFunc;

namespace {

using enum FunctionCode;

constexpr char programOk[] = "Programming ...   OK!", verifyOk[] = "Verifying ...   OK!",
               programFault[] = "Programming ...   Device Fault!", readOk[] = "Reading ...   OK!",
               blankOk[] = "Blank Checking ...   OK!", unsupported[] = "Function not supported!",
               blankFault[] = "Blank Checking ...   Device Fault!", erased[] = "Erasing ...OK",
               locked[] = "Locking ...   OK!", wrongByte[] = "Verify Error at 0100",
               lateReplies[] = "late@S2:1100ms late@V3:9ms late@S3:9ms";
const std::vector allEntries = {Auto, Blank, Program, Verify, Auto, Erase, Blank, Lock};

struct Ending {
    std::vector<FunctionCode> functions; // one, or Auto and the entries of its sequence
    int family, size;
    std::string faults;
    std::array<std::string, messageLines> lines;
    int percent, ms;          // the last percentage, and the time of the whole run
    std::size_t messages = 0; // message boxes "Communication Error!"
    int pageSize = 64;
    int byte = 0xFF, address = 0xFFFF; // one chip byte; the rest: FF or, for Verify, the image
};

const Ending endings[] = {
    // The status of a write.
    {{Program}, 1, 1024, "status@W2:450123 torn@W2:1:300ms", {"Program Error at 0123"}, 25, 1500},
    {{Program}, 1, 1024, "status@W2:450123 torn@W2:2:300ms", {"Program Error at 0123"}, 25, 2200},
    {{Program}, 1, 1024, "status@W2:4501", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "silent@W2", {programFault}, 25, 2200, 1},
    {{Program}, 1, 1024, "silent@D2", {programFault}, 25, 2200, 1},
    // The reply to the second write arrives together with the tick of the time-out.
    {{Program}, 31, 1024, "silent@V1 silent@S1 late@W2:1000ms", {programOk}, 100, 4200},
    // Devices at the limits of the device list and outside them.
    {{Program}, 50, 1000, "", {}, 0, 1000},
    {{Program}, 1, 300, "", {unsupported}, 0, 500},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, 0},
    {{Program}, 20, 1024, "", {programOk}, 100, 1200, 0, 1},
    {{Program}, 20, 3072, "", {unsupported}, 0, 500, 0, 48},
    {{Program}, 20, 1024, "", {unsupported}, 0, 500, 0, 256},
    {{Program}, 21, 1000, "", {unsupported}, 0, 500},
    {{Program}, -1, 256, "", {unsupported}, 0, 500},
    {{Erase}, 51, 256, "", {unsupported}, 0, 500},
    {{Lock}, 1, 65537, "", {unsupported}, 0, 500},
    {{Verify}, 1, -1, "", {unsupported}, 0, 500},
    {{Read}, 1, 0, "", {readOk}, 100, 900},
    {{Verify}, 1, 300, "", {verifyOk}, 100, 900, 0, 64, 0, 0x100},
    // Lost and late replies, a wrong byte, an erase of the whole chip.
    {{Read}, 1, 1000, "short@R3:259", {"Reading ...   Device Fault!"}, 25, 1900, 1},
    {{Erase}, 31, 256, "", {erased}, 100, 1750},
    {{Lock}, 1, 256, "late@S3:1050ms late@L3:50ms", {locked}, 100, 3750},
    {{Blank}, 4, 65536, "silent@V1 silent@S1", {"Blank Error at FFFF"}, 99, 2900, 0, 64, 0x7F},
    // One line per entry of a sequence; later entries share the sixth. Chip failures end the
    // sequence; lost replies do not, and late ones are no reply to the next entry.
    {allEntries, 4, 512, "", {blankOk, programOk, verifyOk, "", erased, locked}, 100, 9000},
    {{Auto, Program, Verify}, 21, 65536, "", {programOk, verifyOk}, 100, 2100},
    {{Auto, Program, Verify, Erase}, 1, 512, "lie:0100", {programOk, wrongByte}, 0, 2100},
    {{Auto, Program, Lock}, 1, 1024, "", {"Program Error at 0201"}, 50, 2200, 0, 64, 0, 0x201},
    {{Auto, Program, Lock}, 1, 1024, "status@W2:004E", {programFault}, 25, 1200},
    {{Auto, Blank, Program}, 1, 256, "silent@R1", {blankFault, programOk}, 100, 3100, 1},
    {{Auto, Blank, Blank}, 1, 256, lateReplies, {blankOk, blankOk}, 100, 2818},
    {{Auto, Erase, Lock, Blank}, 20, 256, "", {unsupported, unsupported, blankOk}, 100, 1900},
};

class Endings : public RunTest, public testing::WithParamInterface<Ending> {};

} // namespace

TEST_P(Endings, AreShownAndTakeTheirTime) {
    const Ending& ending = GetParam();
    programmer(parseFaults(ending.faults));
    device(ending.family, ending.size, ending.pageSize);
    image();
    if (ending.functions[0] == Verify)
        vm.programmer.chip().Load(imageBytes);
    vm.programmer.chip().Set(std::uint16_t(ending.address), std::uint8_t(ending.byte));
    vm.onMessage = [&] { // before the line, the buttons and the supplies change
        EXPECT_TRUE(window.lines[0].ends_with(" ..."));
        EXPECT_EQ(window.buttons, "Run off, Close off, ");
        EXPECT_TRUE(vm.programmer.powered());
    };
    run(ending.functions);

    EXPECT_EQ(window.lines, ending.lines);
    EXPECT_TRUE(window.percents.ends_with(" " + std::to_string(ending.percent)));
    const std::string message = "! Device Error: Communication Error!";
    EXPECT_EQ(vm.messages, std::vector(ending.messages, message));
    EXPECT_EQ(vm.nowUs, ending.ms * 1000);
    EXPECT_EQ(window.closed, window.lines[0] == readOk);
}

INSTANTIATE_TEST_SUITE_P(, Endings, testing::ValuesIn(endings), [](const auto& row) {
    return DeviceRun::functions.at(std::size_t(row.param.functions[0])).name +
           std::to_string(row.index);
});
