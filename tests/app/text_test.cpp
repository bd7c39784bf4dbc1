#include "app/delimited_text.h"
#include "app/hex_text.h"
#include "platform/file_error.h"

#include <gtest/gtest.h>

using namespace modFunc;

TEST(HexText, ReadingEndsAtTheFirstOtherCharacterAndAtTheLargestNumberOrIsStrict) {
    EXPECT_EQ(std::pair(TolerantHex("12G4"), TolerantHex("80000000")), std::pair(0x12, INT32_MAX));
    EXPECT_EQ(StrictHex("fFfF"), 0xFFFF);
    for (const char* rejected : {"", "G5", "5g", "12345"})
        EXPECT_FALSE(StrictHex(rejected)) << rejected;
}

TEST(DelimitedText, ItemsEndAtCommasAndAnyLineEndAndNumbersAreDecimalAndWithinTheirRange) {
    DelimitedReader all(
        "f", "\xEF\xBB\xBF+5 ,-32768\n32767\none,  two\r\n\t a b\rc\n\n \"d, e\" \r\n,f");
    for (const int number : {5, -32768, 32767})
        EXPECT_EQ(all.NextInt16("a"), number);
    std::string items;
    while (!all.atEnd())
        items.append(all.NextString("item")) += '|';
    EXPECT_EQ(items, "one|two|a b|c||d, e||f|");
    for (const std::string text : {"32768", "-32769", "5x", "x5", " ", "+-5", "- 5"})
        EXPECT_THROW(DelimitedReader("f", text).NextInt16("a"), platform::FileError) << text;
}
