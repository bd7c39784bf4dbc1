#include "buffer/hex_editor.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "tests/support/table_file.h"

#include <cctype>
#include <gtest/gtest.h>
#include <random>

using namespace modFunc;

namespace {

class Editor : public testing::Test {
protected:
    Editor() { ResetState(); }
    static void press(HexEditor& editor, const std::string& key) {
        if (key.starts_with("Key"))
            editor.Key(std::stoi(key.substr(3)));
        else if (key.starts_with("Click"))
            editor.Click(std::stoi(key.substr(5)));
        else if (key.starts_with("Line"))
            editor.ScrollTo(std::stoi(key.substr(4)));
        else if (key.size() > 1)
            editor.Key(key == "Left" ? 37 : key == "Up" ? 38 : key == "Right" ? 39 : 40);
        else
            editor.Type(key[0]);
    }
};

} // namespace

// tests/buffer/keys.txt: keys, and where they lead.
TEST_F(Editor, KeysClicksAndDigitsDoAsTold) {
    for (const auto& row : readTable(TEST_FILES "/buffer/keys.txt")) {
        SCOPED_TRACE(row.at(0) + ": " + row.at(1));
        ClearImage();
        HexEditor editor(std::stoi(row[0]));
        for (const std::string& key : words(row[1]))
            press(editor, key);
        EXPECT_EQ(std::to_string(editor.TopLine()) + " " + std::to_string(editor.CaretPos()) + " " +
                      std::to_string(editor.Address()),
                  row.at(2));
        std::string changed;
        for (std::size_t i = 0; i < state().BufferData.size(); ++i)
            if (state().BufferData[i] != 0xFF)
                changed += " " + std::to_string(i) + "=" + std::to_string(state().BufferData[i]);
        EXPECT_EQ(changed, row.size() > 3 ? " " + row[3] : "");
    }
}

// Wherever the keys lead, the page shows the byte that the caret is told to stand on.
TEST_F(Editor, TheCaretNeverLeavesTheDigitsOfItsAddress) {
    auto& bytes = state().BufferData;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    std::mt19937 random(7);
    for (const int size : {0, 16, 128, 256, 264, 300, 1000, 4096, 65536}) {
        HexEditor editor(size);
        for (int step = 0; step < 4000; ++step) {
            if (step % 500 == 0)
                editor.ScrollTo(step % 1000 == 0 ? 0 : editor.LastLine());
            editor.Key(KeyLeft + static_cast<int>((step / 100 + random() % 2) % 4));
            const auto at = static_cast<std::size_t>(editor.CaretPos());
            const std::string page = PageText(editor.TopLine());
            const std::string byte = HexByte(bytes[static_cast<std::size_t>(editor.Address())]);
            ASSERT_EQ(page.substr((at - 65) / 71 * 71 + 65, 3),
                      HexWord(editor.Address()).substr(0, 3));
            ASSERT_TRUE(page.substr(at, 3) == byte + " " || page.substr(at - 1, 3) == byte + " ")
                << size << ", " << step;
            ASSERT_LE(editor.TopLine(), editor.LastLine());
        }
    }
}
