#include "app/family_table.h"

#include "app/state.h"
#include "tests/support/virtual_machine.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>

using namespace modFunc;

// All 95 bytes of every row, by offset: one wrong byte can destroy a chip.
TEST(FamilyTable, HoldsEveryByteOfEveryRow) {
    const std::map<std::size_t, std::string> filled = {
        {1, "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C0 FF 00 00 0C 00 32 "
            "00 FB 00 FF 00 00 00 00 00 00 F9 40 FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 F9 00 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 A0 3F 08 01 01"},
        {2, "00 FA C8 00 00 00 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C8 FF 00 00 0C 00 32 "
            "00 FB 08 FF 00 00 00 00 00 00 F9 48 FF 00 00 00 00 00 00 FB 40 00 00 00 05 00 32 "
            "00 F9 08 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 80 37 08 02 01"},
        {3, "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C0 FF 00 00 0C 00 32 "
            "00 FB 00 FF 00 00 00 00 00 00 F9 40 FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 F9 08 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 80 3F 08 02 01"},
        {4, "00 FA C8 00 00 00 0C 00 32 00 F8 C0 00 00 00 05 00 32 00 FB C8 FF 00 00 0C 00 41 "
            "00 FB 08 FF 00 00 00 00 00 00 F9 48 FF 00 00 00 00 00 00 FB 40 00 00 00 05 00 32 "
            "00 F9 08 00 00 00 0C 00 41 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 80 27 04 02 01"},
        {5, "00 FA C0 00 00 04 0C 00 32 00 F8 C0 00 00 00 0C 00 32 00 F9 40 00 00 00 0C 00 32 "
            "00 F9 40 00 00 00 00 00 00 00 F9 40 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 F9 00 00 00 00 0C 00 32 00 F8 00 00 00 00 05 00 32 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00 00 00 00 A0 3F 08 02 01"},
        {10, "00 0E 00 00 00 00 00 05 32 00 0C 00 00 00 00 00 05 32 00 0F 00 00 00 00 00 05 32 "
             "00 03 00 00 00 00 00 05 32 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
             "00 01 00 00 00 00 00 05 32 00 00 00 00 00 00 00 05 32 00 00 00 00 00 00 00 00 00 "
             "00 00 00 00 00 00 00 00 00 00 00 08 00 02"},
    };
    const std::map<std::size_t, std::string> serial = {
        {20, "14 00 03"}, {21, "15 00 03"}, {30, "07 00 04"}, {31, "08 00 04"}, {32, "09 00 04"}};
    ResetState();
    InitFamilyTable();
    for (std::size_t row = 0; row <= lastFamily; ++row) {
        Bytes bytes(sizeof(FamilyRec));
        std::memcpy(bytes.data(), &state().FamilyTable[row], bytes.size());
        std::string expected = hexText(Bytes(bytes.size()));
        if (filled.contains(row))
            expected = filled.at(row);
        else if (serial.contains(row)) // zeros up to the chip code
            expected = hexText(Bytes(92)) + " " + serial.at(row);
        EXPECT_EQ(hexText(bytes), expected) << "row " << row;
    }
}
