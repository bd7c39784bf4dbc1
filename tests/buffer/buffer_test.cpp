// The page's text, the checksum, and the rules of the hex view.
#include "app/state.h"
#include "buffer/hex_editor.h"
#include "buffer/image.h"
#include "buffer/page_text.h"

#include <gtest/gtest.h>

using namespace modFunc;
using enum HexEditor::Key;

namespace {

// A key and then typed digits, from a caret position; the new position and the changed byte.
struct Step {
    const char* name;
    std::int32_t size, top, row, digit;
    HexEditor::Key key;
    const char* typed;
    int toTop, toRow, toDigit, changed = 70000, byte = 0xA5;
};
struct Editor : testing::TestWithParam<Step> {};
const Step steps[] = {
    {"LeftInAByte", 8192, 0, 0, 1, Left, "", 0, 0, 0},
    {"LeftToTheLineAbove", 8192, 0, 1, 0, Left, "", 0, 0, 31},
    {"LeftAtTheTop", 8192, 0, 0, 0, Left, "", 0, 0, 0},
    {"LeftScrolls", 8192, 1, 0, 0, Left, "", 0, 0, 0},
    {"Up", 8192, 0, 1, 3, Up, "", 0, 0, 3},
    {"UpScrolls", 8192, 1, 0, 5, Up, "", 0, 0, 5},
    {"RightToTheNextLine", 8192, 0, 14, 31, Right, "", 0, 15, 0},
    {"RightScrolls", 8192, 0, 15, 31, Right, "", 1, 15, 0},
    {"RightAtTheEnd", 8192, 496, 15, 31, Right, "", 496, 15, 31},
    {"RightPastTheBarsRange", 264, 0, 15, 31, Right, "", 0, 15, 31},
    {"Down", 8192, 0, 14, 30, Down, "", 0, 15, 30},
    {"DownScrolls", 8192, 0, 15, 30, Down, "", 1, 15, 30},
    {"DownAtTheEnd", 8192, 496, 15, 0, Down, "", 496, 15, 0},
    {"DownToTheLastByte", 300, 2, 15, 23, Down, "", 3, 15, 23},
    {"DownPastTheLastByte", 300, 2, 15, 24, Down, "", 2, 15, 24},
    {"OtherKey", 8192, 5, 1, 3, Other, "Gg/:@`\b", 5, 1, 3},
    {"BothDigits", 8192, 2, 1, 2, Other, "aF", 2, 1, 4, 0x31, 0xAF},
    {"LowDigitScrolls", 8192, 0, 15, 31, Other, "B", 1, 15, 0, 255, 0xAB},
    {"TypingAtTheEnd", 8192, 496, 15, 31, Other, "12", 496, 15, 31, 8191, 0xA2},
};
const auto nameOf = [](const auto& row) { return row.param.name; };

} // namespace

// Of an image of FF with a 0 at byte 256, taken as far as the image reaches.
TEST(DeviceSize, DecidesChecksumAndLastTopLine) {
    ResetState();
    ClearImage();
    state().BufferData[256] = 0;
    state().SelectedDevice = 1;
    const auto expect = [](std::int32_t size, std::int32_t checkSum, std::int32_t lastTopLine) {
        state().DeviceList[1].Size = size;
        ComputeCheckSum();
        EXPECT_EQ(state().BufferCheckSum, checkSum) << size;
        EXPECT_EQ(LastTopLine(size), lastTopLine) << size;
    };
    expect(-2147483647, 0, 0);
    expect(257, 65280, 0);
    expect(264, 1529, 0); // ties are rounded to even
    expect(280, 5609, 2);
    expect(65536, 65281, 4080);
    expect(2147483647, 24208, 4080);
}

INSTANTIATE_TEST_SUITE_P(, Editor, testing::ValuesIn(steps), nameOf);
TEST_P(Editor, FollowsKeysAndDigits) {
    const Step& step = GetParam();
    Bytes image(70001, 0xA5), expected = image;
    expected[step.changed] = static_cast<std::uint8_t>(step.byte);
    HexEditor editor(step.size, image);
    editor.Click(4, DigitColumn(7));
    editor.ScrollTo(step.top);
    EXPECT_EQ(editor.Address(), step.top * 16) << "the caret is at the top of the page";
    editor.Click(step.row, DigitColumn(step.digit));
    editor.Press(step.key);
    for (const char* typed = step.typed; *typed; ++typed)
        editor.Type(*typed);
    EXPECT_EQ(editor.TopLine(), step.toTop);
    EXPECT_EQ(editor.Row() * 100 + editor.Digit(), step.toRow * 100 + step.toDigit);
    EXPECT_EQ(image, expected);
}

TEST(HexEditor, TakesAClickOnADigitOnly) {
    Bytes image(256);
    HexEditor editor(256, image);
    int digits = 0;
    for (int column = 0; column < 72; ++column) {
        editor.Home();
        editor.Click(-1, column);
        editor.Click(16, column);
        EXPECT_EQ(editor.Row() + editor.Digit(), 0) << column;
        editor.Click(15, column);
        const bool onDigit = editor.Row() == 15;
        EXPECT_EQ(editor.Digit(), onDigit ? digits++ : 0) << column;
    }
    EXPECT_EQ(digits, 32);
}

TEST(PageText, HasFixedPositions) {
    Bytes image(70001, 0xFF);
    std::ranges::copy(Bytes{31, 32, 126, 127, 128, 0}, image.begin() + 0xFF0);
    image[70000] = 0x5A;
    const std::string page = PageText(0xFF, image);
    EXPECT_EQ(page.size(), 1201U);
    EXPECT_EQ(page.substr(0, 65),
              "ADDR                       HEX                            ASCII\r\n");
    EXPECT_EQ(page.substr(65, 71),
              "0FF0=1F 20 7E 7F 80 00 FF FF FF FF FF FF FF FF FF FF . ~\x7F............\r\n");
    EXPECT_EQ(page.substr(65 + 71, 8), "1000=FF ");
    EXPECT_EQ(PageText(4375, image).substr(65, 72), // the image ends after its first byte
              "11170=5A FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF Z...............\r\n");
}
