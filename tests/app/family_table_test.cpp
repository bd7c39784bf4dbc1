// Every byte of the family table and what depends on a family's number: one wrong byte can destroy
// a chip.
#include "app/family_traits.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;

// The filled rows: their ten groups, "-" for a group of zeros, and the last five bytes.
const std::map<int, std::string> rows = {
    {1, " 00FAC00000040C0032 00F8C0000000050032 00FBC0FF00000C0032 00FB00FF0000000000"
        " 00F940FF0000000000- 00F9000000000C0032 00F800000000050032-- A03F080101"},
    {2,
     " 00FAC80000000C0032 00F8C0000000050032 00FBC8FF00000C0032 00FB08FF0000000000"
     " 00F948FF0000000000 00FB40000000050032 00F9080000000C0032 00F800000000050032-- 8037080201"},
    {3, " 00FAC00000040C0032 00F8C0000000050032 00FBC0FF00000C0032 00FB00FF0000000000"
        " 00F940FF0000000000- 00F9080000000C0032 00F800000000050032-- 803F080201"},
    {4,
     " 00FAC80000000C0032 00F8C0000000050032 00FBC8FF00000C0041 00FB08FF0000000000"
     " 00F948FF0000000000 00FB40000000050032 00F9080000000C0041 00F800000000050032-- 8027040201"},
    {5, " 00FAC00000040C0032 00F8C00000000C0032 00F9400000000C0032 00F940000000000000"
        " 00F940000000000000- 00F9000000000C0032 00F800000000050032-- A03F080201"},
    {10, " 000E00000000000532 000C00000000000532 000F00000000000532 000300000000000532"
         "-- 000100000000000532 000000000000000532-- 0000080002"},
    {20, "---------- 0000140003"},
    {21, "---------- 0000150003"},
    {30, "---------- 0000070004"},
    {31, "---------- 0000080004"},
    {32, "---------- 0000090004"},
};

// For each range of families, by the last number in it: the outline (long, middle or short) and the
// command codes that Erase and Lock send.
const std::string lock2 = " VSLSLSLVSLSLSLVS", lock3 = " VSLSLSLVSLSLSLVSLSLSLVS";
const std::map<int, std::string> paths = {
    {1, " L VSEEVS" + lock2}, {2, " L VSEEVS" + lock3},
    {3, " L VSEEVS" + lock2}, {4, " L VSEEVSVSEEVS" + lock3},
    {9, " L VSEEVS" + lock2}, {19, " M VSEEVS" + lock2},
    {29, " S VS VS"},         {39, " S SEVS VS"},
    {50, " S VS VS"},
};

TEST_F(RunTest, FamiliesHaveTheirBytesAndPaths) {
    for (int family = 0; family <= lastFamily; ++family) {
        SCOPED_TRACE(family);
        const FamilyRec& row = state().FamilyTable.at(std::size_t(family));
        std::string text;
        for (std::size_t at = 0; at < sizeof row; at += 9) {
            std::string group;
            for (std::size_t i = at; i < std::min(at + 9, sizeof row); ++i)
                group += simbox::HexText(reinterpret_cast<const std::uint8_t*>(&row)[i], 2);
            text += group.find_first_not_of('0') == std::string::npos ? "-" : " " + group;
        }
        text += std::string(" ") + "LMS"[int(TraitsOf(family).outline)];
        for (const FunctionCode function : {Erase, Lock}) {
            programmer();
            device(family, 256);
            run({function});
            text += " ";
            for (const simbox::Frame& frame : frames())
                text += frame.commandCode;
        }
        EXPECT_EQ(text, (rows.contains(family) ? rows.at(family) : "-----------") +
                            paths.lower_bound(family)->second);
    }
}
