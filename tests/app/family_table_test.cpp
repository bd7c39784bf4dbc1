// Every byte of the family table: one wrong byte can destroy a chip.
#include "app/family_traits.h"
#include "tests/support/run_fixture.h"

#include <algorithm>
#include <cstring>

using namespace modFunc;

namespace {

// The filled rows of the family table: their bytes, in blocks of function bytes and the last five,
// and the command codes that Erase and Lock send.
struct Row {
    std::size_t family;
    const char* erase;
    const char* lock;
    std::string lastBytes;
    std::string functionBytes = ""; // from offset 0 on; the rest are 00
};

const Row rows[] = {
    {1, "VSEEVS", "VSLSLSLVSLSLSLVS", "A0 3F 08 01 01",
     "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C0 FF 00 00 0C 00 32 "
     "00 FB 00 FF 00 00 00 00 00 00 F9 40 FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 F9 00 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00"},
    {2, "VSEEVS", "VSLSLSLVSLSLSLVSLSLSLVS", "80 37 08 02 01",
     "00 FA C8 00 00 00 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C8 FF 00 00 0C 00 32 "
     "00 FB 08 FF 00 00 00 00 00 00 F9 48 FF 00 00 00 00 00 00 FB 40 00 00 00 05 00 32 "
     "00 F9 08 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00"},
    {3, "VSEEVS", "VSLSLSLVSLSLSLVS", "80 3F 08 02 01",
     "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C0 FF 00 00 0C 00 32 "
     "00 FB 00 FF 00 00 00 00 00 00 F9 40 FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 F9 08 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00"},
    {4, "VSEEVSVSEEVS", "VSLSLSLVSLSLSLVSLSLSLVS", "80 27 04 02 01",
     "00 FA C8 00 00 00 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C8 FF 00 00 0C 00 41 "
     "00 FB 08 FF 00 00 00 00 00 00 F9 48 FF 00 00 00 00 00 00 FB 40 00 00 00 05 00 32 "
     "00 F9 08 00 00 00 0C 00 41 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00"},
    {5, "VSEEVS", "VSLSLSLVSLSLSLVS", "A0 3F 08 02 01",
     "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 0C 00 32 00 F9 40 00 00 00 0C 00 32 "
     "00 F9 40 00 00 00 00 00 00 00 F9 40 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 F9 00 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00"},
    {10, "VSEEVS", "VSLSLSLVSLSLSLVS", "00 00 08 00 02",
     "00 0E 00 00 00 00 00 05 32 00 0C 00 00 00 00 00 05 32 00 0F 00 00 00 00 00 05 32 "
     "00 03 00 00 00 00 00 05 32 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 01 00 00 00 00 00 05 32 00 00 00 00 00 00 00 05 32 00 00 00 00 00 00 00 00 00"},
    {20, "VS", "VS", "00 00 14 00 03"},
    {21, "VS", "VS", "00 00 15 00 03"},
    {30, "SEVS", "VS", "00 00 07 00 04"},
    {31, "SEVS", "VS", "00 00 08 00 04"},
    {32, "SEVS", "VS", "00 00 09 00 04"},
};

class Families : public RunTest {
protected:
    std::string commandCodesOf(FunctionCode function, std::size_t family) {
        programmer();
        device(static_cast<int>(family), 256, 128);
        run(function);
        std::string codes;
        for (const simbox::Frame& frame : frames())
            codes += frame.commandCode;
        return codes;
    }
};

} // namespace

TEST_F(Families, HaveTheirBytesAndPasses) {
    for (std::size_t family = 0; family <= lastFamily; ++family) {
        const auto* const row = std::ranges::find(rows, family, &Row::family);
        std::string expected;
        if (row != std::end(rows)) {
            EXPECT_EQ(commandCodesOf(Erase, family), row->erase) << family;
            EXPECT_EQ(commandCodesOf(Lock, family), row->lock) << family;
            expected = row->functionBytes;
        }
        for (std::size_t at = (expected.size() + 1) / 3; at < 90; ++at)
            expected += expected.empty() ? "00" : " 00";
        expected += row == std::end(rows) ? " 00 00 00 00 00" : " " + row->lastBytes;
        Bytes bytes(95);
        std::memcpy(bytes.data(), &state().FamilyTable[family], bytes.size());
        EXPECT_EQ(hexText(bytes), expected) << family;
    }
}

TEST(FamilyTraits, OutlineByNumber) {
    EXPECT_EQ(TraitsOf(9).outline, ChipOutline::Long);
    EXPECT_EQ(TraitsOf(10).outline, ChipOutline::Middle);
    EXPECT_EQ(TraitsOf(19).outline, ChipOutline::Middle);
    EXPECT_EQ(TraitsOf(20).outline, ChipOutline::Short);
}
