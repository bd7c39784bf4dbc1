#include "buffer/hex_editor.h"

#include "buffer/page_text.h"
#include "platform/bytes.h"

#include <gtest/gtest.h>
#include <map>

using namespace modFunc;
using enum HexEditor::Key;

namespace {

struct Caret {
    int topLine, row, digit;
    bool operator==(const Caret&) const = default;
};

struct Row {
    const char* name;
    std::int32_t size;
    Caret from;
    HexEditor::Key key; // and then
    const char* text;
    Caret to;
    std::map<std::size_t, int> changed{}; // bytes by address; all others stay A5
    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

class Editor : public testing::TestWithParam<Row> {
protected:
    Caret caret() const { return {editor.TopLine(), editor.Row(), editor.Digit()}; }

    Bytes image = Bytes(70001, 0xA5);
    HexEditor editor{8192, image};
};

} // namespace

TEST_P(Editor, FollowsKeysAndDigits) {
    const Row& row = GetParam();
    Bytes expected = image;
    for (const auto& [address, byte] : row.changed)
        expected[address] = static_cast<std::uint8_t>(byte);
    editor = HexEditor(row.size, image);
    editor.ScrollTo(row.from.topLine);
    editor.Click(row.from.row, DigitColumn(row.from.digit));
    EXPECT_EQ(caret(), row.from);
    editor.Press(row.key);
    for (const char* typed = row.text; *typed; ++typed)
        editor.Type(*typed);
    EXPECT_EQ(caret(), row.to);
    EXPECT_EQ(image, expected);
}
const Row rows[] = {
    {"LeftInAByte", 8192, {0, 0, 1}, Left, "", {0, 0, 0}},
    {"LeftOverABlank", 8192, {0, 0, 2}, Left, "", {0, 0, 1}},
    {"LeftToTheLineAbove", 8192, {0, 1, 0}, Left, "", {0, 0, 31}},
    {"LeftAtTheTop", 8192, {0, 0, 0}, Left, "", {0, 0, 0}},
    {"LeftScrolls", 8192, {1, 0, 0}, Left, "", {0, 0, 0}},
    {"Up", 8192, {0, 1, 3}, Up, "", {0, 0, 3}},
    {"UpAtTheTop", 8192, {0, 0, 31}, Up, "", {0, 0, 31}},
    {"UpScrolls", 8192, {1, 0, 5}, Up, "", {0, 0, 5}},
    {"RightOverABlank", 8192, {0, 0, 1}, Right, "", {0, 0, 2}},
    {"RightToTheNextLine", 8192, {0, 14, 31}, Right, "", {0, 15, 0}},
    {"RightScrolls", 8192, {0, 15, 31}, Right, "", {1, 15, 0}},
    {"RightAtTheEnd", 8192, {496, 15, 31}, Right, "", {496, 15, 31}},
    {"RightAtTheLastAddress", 70000, {4080, 15, 31}, Right, "", {4080, 15, 31}},
    {"RightOnOneFullPage", 256, {0, 15, 31}, Right, "", {0, 15, 31}},
    {"RightPastTheBarsRange", 264, {0, 15, 31}, Right, "", {0, 15, 31}},
    {"RightToAPartOfALine", 300, {2, 15, 31}, Right, "", {3, 15, 0}},
    {"Down", 8192, {0, 14, 30}, Down, "", {0, 15, 30}},
    {"DownScrolls", 8192, {0, 15, 30}, Down, "", {1, 15, 30}},
    {"DownAtTheEnd", 8192, {496, 15, 0}, Down, "", {496, 15, 0}},
    {"DownAtTheLastAddress", 70000, {4080, 15, 0}, Down, "", {4080, 15, 0}},
    {"DownPastTheBarsRange", 264, {0, 15, 0}, Down, "", {0, 15, 0}},
    {"DownToTheLastByte", 300, {2, 15, 23}, Down, "", {3, 15, 23}},
    {"DownPastTheLastByte", 300, {2, 15, 24}, Down, "", {2, 15, 24}},
    {"OtherKey", 8192, {5, 1, 3}, Other, "", {5, 1, 3}},
    {"HighDigit", 8192, {0, 0, 0}, Other, "1", {0, 0, 1}, {{0, 0x15}}},
    {"BothDigits", 8192, {0, 0, 0}, Other, "12", {0, 0, 2}, {{0, 0x12}}},
    {"MixedCase", 8192, {2, 1, 2}, Other, "aFB", {2, 1, 5}, {{0x31, 0xAF}, {0x32, 0xB5}}},
    {"NoDigits", 8192, {0, 0, 0}, Other, "Gg/:@`\b", {0, 0, 0}},
    {"TypingScrolls", 8192, {0, 15, 31}, Other, "00", {1, 15, 1}, {{255, 0xA0}, {256, 0x05}}},
    {"TypingAtTheEnd", 8192, {496, 15, 31}, Other, "12", {496, 15, 31}, {{8191, 0xA2}}},
    {"TypingPastTheDevice", 128, {0, 15, 30}, Other, "005", {0, 15, 31}, {{255, 0x05}}},
};
INSTANTIATE_TEST_SUITE_P(, Editor, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

TEST_F(Editor, TypesAtTheTopOfThePageAfterScrolling) {
    editor.Click(3, 12);
    editor.ScrollTo(7);
    editor.Type('1');
    EXPECT_EQ(image[0x70], 0x15);
}

TEST_F(Editor, TypesNothingPastTheEndOfTheImage) {
    HexEditor small(256, std::span(image).first(20));
    small.Click(1, 5 + 3 * 3 + 1); // the low digit of byte 19
    EXPECT_TRUE(small.Type('0'));
    EXPECT_FALSE(small.Type('0'));
    EXPECT_EQ(small.Address(), 20);
    EXPECT_EQ(image[20], 0xA5);
}

TEST_F(Editor, TakesAClickOnADigitOnly) {
    Caret onDigit{0, 15, 0};
    int column = 0;
    for (const char at : std::string("    =XX XX XX XX XX XX XX XX XX XX XX XX XX XX XX XX ") +
                             std::string(18, '.')) {
        editor.Home();
        editor.Click(-1, column);
        editor.Click(16, column);
        EXPECT_EQ(caret(), (Caret{0, 0, 0})) << column;
        editor.Click(15, column);
        EXPECT_EQ(caret(), at == 'X' ? onDigit : (Caret{0, 0, 0})) << column;
        if (at == 'X') {
            EXPECT_EQ(DigitColumn(onDigit.digit++), column);
        }
        ++column;
    }
}
