// The page's text, the checksum, hexadecimal text, and the rules of the hex view.
#include "app/hex_text.h"
#include "buffer/hex_editor.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "tests/support/run_fixture.h"

using namespace modFunc;
using enum HexEditor::Key;

// The image is FF except for a 0 at byte 256. For a larger device, the sum ends with the image.
TEST(DeviceSize, DecidesChecksumAndLastTopLine) {
    ResetState();
    ClearImage();
    state().BufferData[256] = 0;
    for (const auto& [size, sumAndLine] :
         {std::pair(-2147483647, std::pair(0, 0)), std::pair(257, std::pair(65280, 0)),
          std::pair(264, std::pair(1529, 0)), // ties are rounded to even
          std::pair(280, std::pair(5609, 2)), std::pair(2147483647, std::pair(24208, 4080))}) {
        state().DeviceList[0].Size = size;
        ComputeCheckSum();
        EXPECT_EQ(std::pair(state().BufferCheckSum, LastTopLine(size)), sumAndLine) << size;
    }
}

// The caret can reach every digit of the page. The page scrolls down only if the device has the
// byte below the caret and the range of the scroll bar allows it.
TEST(HexEditor, FollowsKeysAndDigits) {
    Bytes image(304, 0xA5);
    HexEditor editor(300, image);
    const auto after = [&](int top, int row, int digit, std::vector<HexEditor::Key> keys) {
        editor.ScrollTo(top);
        editor.Click(row, DigitColumn(digit));
        for (const HexEditor::Key key : keys)
            editor.Press(key);
        return std::tuple(editor.TopLine(), editor.Row(), editor.Digit());
    };
    EXPECT_EQ(after(0, 0, 0, {Left, Up, Other}), std::tuple(0, 0, 0));
    EXPECT_EQ(after(0, 1, 0, {Left, Right, Right, Right, Left, Down, Up}), std::tuple(0, 1, 1));
    EXPECT_EQ(after(3, 0, 1, {Up, Left, Left}), std::tuple(1, 0, 0));
    EXPECT_EQ(after(0, 15, 31, {Right}), std::tuple(1, 15, 0));
    EXPECT_EQ(after(2, 15, 23, {Down}), std::tuple(3, 15, 23));
    EXPECT_EQ(after(2, 15, 24, {Down}), std::tuple(2, 15, 24)); // the last line has 12 bytes
    EXPECT_EQ(after(3, 15, 31, {Right, Down}), std::tuple(3, 15, 31));
    for (const auto& [row, column] : {std::pair(2, 4), std::pair(2, 7), std::pair(2, 52),
                                      std::pair(-1, 5), std::pair(16, 5)}) // no digits
        editor.Click(row, column);
    EXPECT_EQ(editor.Address(), 303);

    editor.ScrollTo(2);
    for (const char typed : std::string("Gg/:@`\baF"))
        editor.Type(typed);
    EXPECT_TRUE(editor.Type('B'));
    EXPECT_EQ(std::tuple(image[0x20], image[0x21], std::ranges::count(image, 0xA5)),
              std::tuple(0xAF, 0xB5, 302));
    editor = HexEditor(264, image);
    EXPECT_EQ(after(0, 15, 31, {Right}), std::tuple(0, 15, 31));
}

TEST(PageText, HasFixedPositions) {
    Bytes image(70001, 0xFF);
    std::ranges::copy(Bytes{31, 32, 126, 127, 128, 0}, image.begin() + 0xFF0);
    EXPECT_EQ(PageText(0xFF, image).substr(0, 65 + 71 + 8),
              "ADDR                       HEX                            ASCII\r\n"
              "0FF0=1F 20 7E 7F 80 00 FF FF FF FF FF FF FF FF FF FF . ~\x7F............\r\n"
              "1000=FF ");
}

TEST(HexText, TolerantReadingStopsAtTheFirstOtherCharacterAndStrictReadingRejectsIt) {
    EXPECT_EQ(std::pair(TolerantHex("12G4"), TolerantHex("80000000")), std::pair(0x12, INT32_MAX));
    EXPECT_EQ(StrictHex("fFfF"), 0xFFFF);
    for (const char* rejected : {"", "G5", "5g", "12345"})
        EXPECT_FALSE(StrictHex(rejected)) << rejected;
}
