#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "platform/file_error.h"

#include <gtest/gtest.h>
#include <vector>

using namespace modFunc;

TEST(HexText, WritesFixedDigitsAndNeverCuts) {
    EXPECT_EQ(HexByte(0x0A), "0A");
    EXPECT_EQ(HexByte(255), "FF");
    EXPECT_EQ(HexWord(0), "0000");
    EXPECT_EQ(HexWord(4095), "0FFF");
    EXPECT_EQ(HexWord(65535), "FFFF");
    EXPECT_EQ(HexWord(65536), "10000");
    EXPECT_EQ(HexWord(-1), "FFFFFFFF");
    EXPECT_EQ(HexDigits(0), "0");
    EXPECT_EQ(HexDigits(8192), "2000");
}

TEST(HexText, ReadsTolerantlyFromTheLeft) {
    EXPECT_EQ(TolerantHex("12G4"), 18);
    EXPECT_EQ(TolerantHex("aF"), 175);
    EXPECT_EQ(TolerantHex(""), 0);
    EXPECT_EQ(TolerantHex("G5"), 0);
    EXPECT_EQ(TolerantHex("-1"), 0);
    EXPECT_EQ(TolerantHex("7FFFFFFF"), 2147483647);
    EXPECT_EQ(TolerantHex("80000000"), 2147483647);
    EXPECT_EQ(TolerantHex("123456789ABCDEF0123456789"), 2147483647);
}

TEST(HexText, ReadsStrictlyOneToFourDigits) {
    EXPECT_EQ(StrictHex("fFfF"), 65535);
    EXPECT_EQ(StrictHex("0"), 0);
    for (const char* refused : {"", "12345", "12G4", " 12", "0x1"})
        EXPECT_EQ(StrictHex(refused), std::nullopt) << refused;
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

TEST(DelimitedText, ErrorsNameFilePlaceAndCause) {
    struct Case {
        std::string text;
        std::string message;
    };
    const Case cases[] = {
        {"1\r\nabc\r\n", "f, line 2, item 2 (count): expected a whole number from 0 to 50, found "
                         "\"abc\"."},
        {"1,51", "f, line 1, item 2 (count): expected a whole number from 0 to 50, found \"51\"."},
        {"1\n", "f, line 2, item 2 (count): expected a whole number from 0 to 50, found the end of "
                "the file."},
        {"1\n\"2\n", "f, line 2, item 2 (count): expected a closing double quote on the same line, "
                     "found \"2\"."},
        {"1,\"2\"3", "f, line 1, item 2 (count): expected a comma or a line end behind the closing "
                     "double quote, found \"3\"."},
    };
    for (const Case& c : cases) {
        DelimitedReader reader("f", c.text);
        reader.NextString("first");
        try {
            reader.NextNumber("count", 0, 50);
            ADD_FAILURE() << c.text;
        } catch (const platform::FileError& error) {
            EXPECT_EQ(error.what(), c.message);
        }
    }
}
