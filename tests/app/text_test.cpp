#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "platform/file_error.h"

#include <gtest/gtest.h>

using namespace modFunc;

TEST(HexText, ReadingEndsAtTheFirstOtherCharacterAndAtTheLargestNumberOrIsStrict) {
    for (const auto& [text, number] :
         {std::pair("12G4", 0x12), std::pair("", 0), std::pair("7FFFFFFF", INT32_MAX),
          std::pair("80000000", INT32_MAX)})
        EXPECT_EQ(TolerantHex(text), number) << text;
    EXPECT_EQ(StrictHex("fFfF"), 0xFFFF);
    for (const char* rejected : {"", "G5", "5g", "12345"})
        EXPECT_FALSE(StrictHex(rejected)) << rejected;
}

TEST(DelimitedText, ItemsEndAtCommasAndAnyLineEnd) {
    DelimitedReader all("f",
                        "\xEF\xBB\xBFone,  two\r\n\t three x\rfour\n\n \"five, six\" \r\n,last");
    std::string items;
    while (!all.atEnd())
        items.append(all.NextString("item")) += '|';
    EXPECT_EQ(items, "one|two|three x|four||five, six||last|");
}

TEST(DelimitedText, NumbersAreDecimalAndWithinTheirRange) {
    DelimitedReader reader("f", "+5 ,-32768\n32767");
    for (const int number : {5, -32768, 32767})
        EXPECT_EQ(reader.NextInt16("a"), number);
    for (const std::string rejected : {"32768", "-32769", "5x", "x5", " ", "+-5", "- 5"})
        EXPECT_THROW(DelimitedReader("f", rejected).NextInt16("a"), platform::FileError)
            << rejected;
}
