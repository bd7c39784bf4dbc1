#include "app/family_traits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

#include <algorithm>
#include <cstring>
#include <map>

using namespace modFunc;

namespace {

class Families : public RunTest {
protected:
    Families() {
        for (const auto& row : readTable(TEST_FILES "/app/family_rows.txt"))
            rows[std::stoul(row.at(0))][row.at(1)] = row.at(2);
    }
    std::string commandCodesOf(FunctionCode function, std::size_t family) {
        programmer();
        device(static_cast<int>(family), 256, 128);
        run(function);
        std::string codes;
        for (const simbox::Frame& frame : vm.programmer().frames())
            codes += static_cast<char>(frame.bytes[4]);
        return codes;
    }
    std::map<std::size_t, std::map<std::string, std::string>> rows;
};

} // namespace

// One wrong byte can destroy a chip.
TEST_F(Families, EveryByteOfEveryRow) {
    for (std::size_t family = 0; family <= lastFamily; ++family) {
        Bytes expected(95);
        for (const auto& [offset, bytes] : rows[family]) {
            if (offset == "Erase" || offset == "Lock")
                continue;
            std::size_t at = std::stoul(offset);
            for (const std::string& byte : words(bytes))
                expected.at(at++) = static_cast<std::uint8_t>(std::stoi(byte, nullptr, 16));
        }
        Bytes bytes(95);
        std::memcpy(bytes.data(), &state().FamilyTable[family], bytes.size());
        EXPECT_EQ(hexText(bytes), hexText(expected)) << "family " << family;
    }
}

TEST_F(Families, PassesOfEraseAndLock) {
    for (std::size_t family = 0; family <= lastFamily; ++family) {
        if (state().FamilyTable[family].ClassByte == 0)
            continue;
        EXPECT_EQ(commandCodesOf(Erase, family), rows[family]["Erase"]) << "family " << family;
        EXPECT_EQ(commandCodesOf(Lock, family), rows[family]["Lock"]) << "family " << family;
    }
}

TEST(FamilyTraits, OutlineByNumber) {
    EXPECT_EQ(TraitsOf(9).outline, ChipOutline::Long);
    EXPECT_EQ(TraitsOf(10).outline, ChipOutline::Middle);
    EXPECT_EQ(TraitsOf(19).outline, ChipOutline::Middle);
    EXPECT_EQ(TraitsOf(20).outline, ChipOutline::Short);
}
