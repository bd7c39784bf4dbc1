#include "app/family_table.h"

#include "app/state.h"
#include "tests/support/table_file.h"
#include "tests/support/virtual_machine.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>

using namespace modFunc;

// All 95 bytes of every row, by offset: one wrong byte can destroy a chip.
TEST(FamilyTable, HoldsEveryByteOfEveryRow) {
    std::map<std::string, std::string> filled;
    for (const auto& cells : readTable(TEST_FILES "/app/family_rows.txt"))
        for (std::size_t group = 1; group < cells.size(); ++group)
            filled[cells[0]] += (group > 1 ? " " : "") + cells[group];
    ASSERT_EQ(filled.size(), 11U);
    ResetState();
    InitFamilyTable();
    for (std::size_t row = 0; row <= lastFamily; ++row) {
        Bytes bytes(95);
        std::memcpy(bytes.data(), &state().FamilyTable[row], bytes.size());
        const auto expected = filled.find(std::to_string(row));
        EXPECT_EQ(hexText(bytes), expected == filled.end() ? hexText(Bytes(95)) : expected->second)
            << "row " << row;
    }
}
