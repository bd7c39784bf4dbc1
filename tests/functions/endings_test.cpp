// Runs that end in other ways than plain success, and unusual sizes: what is shown, sent and
// stored.
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

#include <algorithm>

using namespace modFunc;

namespace {

using enum FunctionCode;

// What the chip holds: one byte all over or the bytes of the image, and one byte that differs.
struct Chip {
    int fill; // -1: the image
    int changedAddress = -1;
    int changedTo = 0;
};
Chip filled(int byte) {
    return {byte};
}
Chip erased(int changedAddress = -1, int changedTo = 0) {
    return {0xFF, changedAddress, changedTo};
}
Chip holdsImage(int changedAddress = -1, int changedTo = 0) {
    return {-1, changedAddress, changedTo};
}

struct Ending {
    const char* name;
    int family;
    int size;
    int pageSize;
    const char* faults;
    Chip chip;
    FunctionCode function;
    std::string line;
    int percent;
    std::size_t messages; // message boxes "Communication Error!"
    std::size_t frames;
    double ms;         // of the whole run
    int bytesRead = 0; // into the image, by Read
};

const Ending endings[] = {
    // The status of a write.
    {"WriteErrorTellsItsAddress", 1, 1024, 0, "status@W2:45012C", erased(), Program,
     "Program Error at 012C", 25, 0, 8, 2200},
    {"WriteErrorOfTheChip", 1, 1024, 0, "program-error:01FF", erased(), Program,
     "Program Error at 01FF", 25, 0, 8, 2200},
    {"WriteErrorInTwoParts", 1, 1024, 0, "status@W2:450123 torn@W2:1:300ms", erased(), Program,
     "Program Error at 0123", 25, 0, 8, 1500},
    {"StatusJustInTime", 1, 1024, 0, "torn@W2:1:999ms", erased(), Program, "Programming ...   OK!",
     100, 0, 12, 1200},
    {"AddressOfOneByte", 1, 1024, 0, "status@W2:4501", erased(), Program,
     "Programming ...   Device Fault!", 25, 1, 8, 2200},
    {"NoAddress", 1, 1024, 0, "status@W2:45", erased(), Program, "Programming ...   Device Fault!",
     25, 1, 8, 2200},
    {"UnknownStatus", 1, 1024, 0, "status@W2:00", erased(), Program,
     "Programming ...   Device Fault!", 25, 0, 8, 1200},
    {"UnknownStatusThenWritten", 1, 1024, 0, "status@W2:004E", erased(), Program,
     "Programming ...   Device Fault!", 25, 0, 8, 1200},
    {"NoStatus", 1, 1024, 0, "silent@W2", erased(), Program, "Programming ...   Device Fault!", 25,
     1, 8, 2200},
    {"StatusInTheTickOfTheTimeOut", 1, 1024, 0, "late@W2:1000ms", erased(), Program,
     "Programming ...   OK!", 100, 0, 12, 2200},
    {"NoReplyToData", 1, 1024, 0, "silent@D2", erased(), Program, "Programming ...   Device Fault!",
     25, 1, 7, 2200},
    {"NoReplyToPageData", 20, 1024, 64, "silent@D11", erased(), Program,
     "Programming ...   Device Fault!", 62, 1, 25, 2200},
    {"NoReplyToSupplies", 1, 1024, 0, "silent@V1", erased(), Program, "Programming ...   OK!", 100,
     0, 12, 2200},
    {"NoReplyToWriteSetUp", 1, 1024, 0, "silent@T1", erased(), Program, "Programming ...   OK!",
     100, 0, 12, 2200},
    {"CablePulled", 1, 1024, 0, "pull@1", erased(), Program, "Programming ...   Device Fault!", 0,
     1, 1, 6200},
    {"ChipNotErased", 1, 1024, 0, "", filled(0), Program, "Program Error at 0001", 0, 0, 6, 2200},
    // The largest devices, and devices outside the limits of the catalogue.
    {"LargestBlockDevice", 1, 65536, 0, "", erased(), Program, "Programming ...   OK!", 100, 0, 516,
     1200},
    {"LargestPageDevice", 21, 65536, 128, "", erased(), Program, "Programming ...   OK!", 100, 0,
     1028, 1200},
    {"EmptyDevice", 1, 0, 0, "", erased(), Program, "Programming ...   OK!", 100, 0, 4, 1200},
    {"NoWritePath", 40, 1000, 0, "", erased(), Program, "", 0, 0, 3, 1000},
    {"SizeNoWholeBlocks", 1, 300, 0, "", erased(), Program, "Function not supported!", 0, 0, 2,
     500},
    {"SizeBelowABlock", 30, 128, 0, "", erased(), Program, "Function not supported!", 0, 0, 2, 500},
    {"NoPageSize", 20, 1024, 0, "", erased(), Program, "Function not supported!", 0, 0, 2, 500},
    {"NegativePageSize", 20, 1024, -64, "", erased(), Program, "Function not supported!", 0, 0, 2,
     500},
    {"PageSizeNoDivisor", 20, 1024, 48, "", erased(), Program, "Function not supported!", 0, 0, 2,
     500},
    {"PageSizeAboveTheLargest", 20, 1024, 256, "", erased(), Program, "Function not supported!", 0,
     0, 2, 500},
    {"SizeNoWholePages", 21, 1000, 64, "", erased(), Program, "Function not supported!", 0, 0, 2,
     500},
    {"SizeAboveTheLargest", 1, 65792, 0, "", erased(), Read, "Function not supported!", 0, 0, 2,
     500},
    {"NegativeSize", 1, -256, 0, "", erased(), Verify, "Function not supported!", 0, 0, 2, 500},
    {"FamilyBelowTheTable", -1, 256, 0, "", erased(), Blank, "Function not supported!", 0, 0, 2,
     500},
    {"FamilyAboveTheTable", 51, 256, 0, "", erased(), Erase, "Function not supported!", 0, 0, 2,
     500},
    {"LockFamilyAboveTheTable", 51, 256, 0, "", erased(), Lock, "Function not supported!", 0, 0, 2,
     500},
    // Blocks that do not arrive, and a last partial block left out.
    {"FirstBlockSilent", 1, 1024, 0, "silent@R1", holdsImage(), Read, "Reading ...   Device Fault!",
     0, 1, 5, 1900},
    {"SecondBlockShort", 1, 1024, 0, "short@R2:259", holdsImage(), Read,
     "Reading ...   Device Fault!", 0, 1, 6, 1900, 256},
    {"FourthBlockTooLate", 1, 1024, 0, "torn@R4:100:1200ms", holdsImage(), Read,
     "Reading ...   Device Fault!", 50, 1, 8, 2100, 768},
    {"BlankBlockSilent", 1, 1024, 0, "silent@R3", erased(), Blank,
     "Blank Checking ...   Device Fault!", 25, 1, 7, 1900},
    {"SetUpSilent", 1, 1024, 0, "silent@V1 silent@S1", erased(), Blank, "Blank Checking ...   OK!",
     100, 0, 8, 2900},
    {"ReadNothing", 1, 0, 0, "", holdsImage(), Read, "Reading ...   OK!", 100, 0, 4, 900},
    {"BlankBelowABlock", 1, 255, 0, "", filled(0x3C), Blank, "Blank Checking ...   OK!", 100, 0, 4,
     900},
    {"ReadLeavesOutPartOfABlock", 1, 300, 0, "", holdsImage(), Read, "Reading ...   OK!", 100, 0, 5,
     900, 256},
    {"ReadLargest", 4, 65536, 0, "", holdsImage(), Read, "Reading ...   OK!", 100, 0, 260, 900,
     65536},
    // Wrong bytes.
    {"BlankErrorAtTheFirstByte", 1, 1024, 0, "", erased(0x0000, 0xFE), Blank, "Blank Error at 0000",
     0, 0, 5, 900},
    {"BlankErrorInTheBlock", 1, 1024, 0, "", erased(0x00A3, 0x00), Blank, "Blank Error at 00A3", 0,
     0, 5, 900},
    {"BlankErrorAfterTheDevice", 1, 1024, 0, "", erased(0x0400, 0x00), Blank,
     "Blank Checking ...   OK!", 100, 0, 8, 900},
    {"BlankErrorAtTheLastByte", 4, 65536, 0, "", erased(0xFFFF, 0x7F), Blank, "Blank Error at FFFF",
     99, 0, 260, 900},
    {"VerifyErrorAtTheFirst", 1, 1024, 0, "", holdsImage(0x0123, 0x00), Verify,
     "Verify Error at 0123", 0, 0, 6, 900},
    {"VerifyErrorAfterTheLastBlock", 1, 300, 0, "", holdsImage(0x0100, 0x00), Verify,
     "Verifying ...   OK!", 100, 0, 5, 900},
};

struct Sequence {
    const char* name;
    int family;
    int size;
    int pageSize;
    const char* faults;
    Chip chip;
    std::vector<FunctionCode> entries;
    std::string lines; // separated by " / ", empty ones at the end left out
    std::size_t messages;
    std::size_t frames;
    double ms;
};

template <class... Codes>
std::vector<FunctionCode> entries(Codes... codes) {
    return {codes...};
}

// One line for each entry, the sixth shared. Chip failures end a sequence; lost replies do not.
const Sequence sequences[] = {
    {"LieFoundByVerify", 1, 512, 0, "lie:0123", erased(), entries(Program, Verify),
     "Programming ...   OK! / Verify Error at 0123", 0, 14, 2100},
    {"LinesAndSharedLast", 1, 256, 0, "", erased(),
     entries(Blank, Program, Verify, FunctionCode(9), Erase, Blank, Lock),
     "Blank Checking ...   OK! / Programming ...   OK! / Verifying ...   OK! /  / Erasing ...OK / "
     "Locking ...   OK!",
     0, 43, 7900},
    {"EndsAtBlankError", 1, 256, 0, "", filled(0), entries(Blank, Program), "Blank Error at 0000",
     0, 5, 900},
    {"EndsAtProgramError", 1, 256, 0, "program-error:0080", erased(), entries(Program, Blank),
     "Program Error at 0080", 0, 6, 2200},
    {"EndsAtUnknownStatus", 1, 256, 0, "status@W1:00", erased(), entries(Program, Blank),
     "Programming ...   Device Fault!", 0, 6, 1200},
    {"EndsAtVerifyError", 1, 256, 0, "", filled(0), entries(Verify, Erase), "Verify Error at 0001",
     0, 5, 900},
    {"PassesALostReply", 1, 256, 0, "silent@R1", erased(), entries(Blank, Program),
     "Blank Checking ...   Device Fault! / Programming ...   OK!", 1, 11, 3100},
    {"PassesUnsupported", 20, 256, 64, "", erased(), entries(Erase, Lock, Blank),
     "Function not supported! / Function not supported! / Blank Checking ...   OK!", 0, 9, 1900},
    {"EraseOnce", 4, 256, 0, "", filled(0), entries(Erase), "Erasing ...OK", 0, 6, 1300},
    {"Empty", 1, 256, 0, "", erased(), entries(), "", 0, 0, 0},
};

class RunEnds : public RunTest {
protected:
    // Before a Read the image is EE all over.
    template <class Row>
    void play(const Row& row, FunctionCode function) {
        programmer(words(row.faults));
        device(row.family, row.size, row.pageSize);
        image();
        const Chip& chip = row.chip;
        if (chip.fill < 0)
            vm.programmer().chip().Load(state().BufferData);
        else
            vm.programmer().chip().Fill(static_cast<std::uint8_t>(chip.fill));
        if (chip.changedAddress >= 0)
            vm.programmer().chip().Set(static_cast<std::uint16_t>(chip.changedAddress),
                                       static_cast<std::uint8_t>(chip.changedTo));
        if (function == FunctionCode::Read)
            state().BufferData.assign(70001, 0xEE);
        imageBefore = state().BufferData;
        run(function);
        expectButtonsAfterRun();
    }
    void expectEnd(std::size_t messages, std::size_t frameCount, double ms) {
        EXPECT_EQ(vm.messages, std::vector<ShownMessage>(messages, communicationError()));
        EXPECT_EQ(frames().size(), frameCount);
        EXPECT_EQ(vm.nowMs() - startMs, ms);
        if (!vm.programmer().cablePulled() && frameCount > 0)
            expectPoweredDown();
    }

    Bytes imageBefore;
};

class Endings : public RunEnds, public testing::WithParamInterface<Ending> {};
class Sequences : public RunEnds, public testing::WithParamInterface<Sequence> {};

} // namespace

TEST_P(Endings, AreShownAndSent) {
    const Ending& ending = GetParam();
    play(ending, ending.function);
    EXPECT_EQ(window.lines, (std::array<std::string, messageLines>{ending.line}));
    EXPECT_TRUE((" " + window.percents).ends_with(" " + std::to_string(ending.percent)));
    expectEnd(ending.messages, ending.frames, ending.ms);
    const bool success = ending.line.ends_with("OK!");
    EXPECT_EQ(window.closed, ending.function == Read && success);
    const auto& memory = vm.programmer().chip().memory();
    if (ending.function == Program && success) {
        Bytes expected(65536, 0xFF);
        std::copy_n(imageBefore.begin(), ending.size, expected.begin());
        EXPECT_TRUE(std::ranges::equal(memory, expected));
    }
    std::copy_n(memory.begin(), ending.bytesRead, imageBefore.begin());
    EXPECT_EQ(state().BufferData, imageBefore);
}

TEST_P(Sequences, AreShownAndSent) {
    const Sequence& sequence = GetParam();
    autoSequence(sequence.entries);
    play(sequence, Auto);
    std::string shown;
    for (const std::string& line : window.lines)
        shown += line + " / ";
    EXPECT_EQ(shown.substr(0, shown.find_last_not_of(" /") + 1), sequence.lines);
    expectEnd(sequence.messages, sequence.frames, sequence.ms);
    EXPECT_EQ(state().BufferData, imageBefore);
}

const auto rowName = [](const auto& row) { return row.param.name; };
INSTANTIATE_TEST_SUITE_P(, Endings, testing::ValuesIn(endings), rowName);
INSTANTIATE_TEST_SUITE_P(, Sequences, testing::ValuesIn(sequences), rowName);
