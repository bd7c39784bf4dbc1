#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "platform/file_error.h"
#include "tests/support/table_file.h"

#include <gtest/gtest.h>
#include <vector>

using namespace modFunc;

TEST(HexText, FillsToFourDigitsAndNeverCuts) {
    EXPECT_EQ(HexByte(0x0A) + HexWord(0) + HexWord(4095) + HexWord(65536), "0A00000FFF10000");
    EXPECT_EQ(HexWord(-1), "FFFFFFFF");
    EXPECT_EQ(HexDigits(0) + " " + HexDigits(8192), "0 2000");
}

TEST(HexText, IsReadTolerantlyOrStrictly) {
    for (const auto& row : readTable(TEST_FILES "/app/hex_text.txt")) {
        EXPECT_EQ(TolerantHex(row.at(0)), std::stoi(row.at(1))) << row[0];
        const auto strict = StrictHex(row[0]);
        EXPECT_EQ(strict ? std::to_string(*strict) : "refused", row.at(2)) << row[0];
    }
}

TEST(DelimitedText, ItemsEndAtCommasAndAnyLineEnd) {
    DelimitedReader all("f",
                        "\xEF\xBB\xBFone,  two\r\n\t three x\rfour\n\n \"five, six\" \r\n,last");
    std::vector<std::string> items;
    while (!all.atEnd())
        items.emplace_back(all.NextString("item"));
    EXPECT_EQ(items, (std::vector<std::string>{"one", "two", "three x", "four", "", "five, six", "",
                                               "last"}));
}

TEST(DelimitedText, NumbersAreDecimalAndWithinTheirRange) {
    DelimitedReader reader("f", "+5 ,-32768\n32767");
    EXPECT_EQ(reader.NextInt16("a"), 5);
    EXPECT_EQ(reader.NextInt16("b"), -32768);
    EXPECT_EQ(reader.NextInt16("c"), 32767);

    for (const char* refused : {"32768", "-32769", "5x", "x5", "", " ", "0x10", "1.5", "\"5\"",
                                "99999999999999999999", "+-5", "- 5"})
        EXPECT_THROW(DelimitedReader("f", std::string(refused) + "\n").NextInt16("a"),
                     platform::FileError)
            << refused;
}
