#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "platform/file_error.h"

#include <gtest/gtest.h>
#include <vector>

using namespace modFunc;

TEST(HexText, FillsToFourDigitsAndNeverTruncates) {
    EXPECT_EQ(HexByte(0x0A) + HexWord(0) + HexWord(4095) + HexWord(65536), "0A00000FFF10000");
    EXPECT_EQ(HexWord(-1), "FFFFFFFF");
    EXPECT_EQ(HexDigits(0) + " " + HexDigits(8192), "0 2000");
}

TEST(HexText, TolerantReadingEndsAtTheFirstOtherCharacterAndAtTheLargestNumber) {
    for (const auto& [text, number] :
         {std::pair("aF", 0xAF), std::pair("12G4", 0x12), std::pair("0x1", 0), std::pair("-1", 0),
          std::pair("", 0), std::pair("12345", 0x12345), std::pair("7FFFFFFF", 2147483647),
          std::pair("80000000", 2147483647), std::pair("123456789ABCDEF0123456789", 2147483647)})
        EXPECT_EQ(TolerantHex(text), number) << text;
}

TEST(HexText, StrictReadingTakesOneToFourDigits) {
    EXPECT_EQ(StrictHex("0"), 0);
    EXPECT_EQ(StrictHex("fFfF"), 0xFFFF);
    for (const char* rejected : {"", "G5", "-1", "12G4", "1 2", "0x1", "12345"})
        EXPECT_FALSE(StrictHex(rejected)) << rejected;
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

    for (const char* rejected : {"32768", "-32769", "5x", "x5", "", " ", "0x10", "1.5", "\"5\"",
                                 "99999999999999999999", "+-5", "- 5"})
        EXPECT_THROW(DelimitedReader("f", std::string(rejected) + "\n").NextInt16("a"),
                     platform::FileError)
            << rejected;
}
