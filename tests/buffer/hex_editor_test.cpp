#include "buffer/hex_editor.h"

#include "app/state.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "tests/support/table_file.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

using namespace modFunc;

namespace {

class Editor : public testing::Test {
protected:
    Editor() {
        ResetState();
        ClearImage();
    }
    static void press(HexEditor& editor, const std::string& key) {
        static const std::map<std::string, int> arrows = {
            {"Left", KeyLeft}, {"Up", KeyUp}, {"Right", KeyRight}, {"Down", KeyDown}};
        if (arrows.contains(key))
            editor.Key(arrows.at(key));
        else if (key.starts_with("Click"))
            editor.Click(std::stoi(key.substr(5)));
        else if (key.starts_with("Line"))
            editor.ScrollTo(std::stoi(key.substr(4)));
        else
            editor.Type(key.at(0));
    }
};

// The same rules as a person would say them: a digit of a byte of the page.
struct Model {
    int size;
    int lastLine;
    int top = 0;
    int line = 0;
    int digit = 0; // 0..31 in its line

    bool scroll(int addressBelow) {
        const bool goes = addressBelow < size && top < lastLine;
        top += goes ? 1 : 0;
        return goes;
    }
    void key(int code) {
        if (code == KeyLeft && digit > 0) {
            --digit;
        } else if (code == KeyLeft && line > 0) {
            --line;
            digit = 31;
        } else if ((code == KeyLeft || code == KeyUp) && line == 0) {
            top -= top > 0 ? 1 : 0;
        } else if (code == KeyUp) {
            --line;
        } else if (code == KeyRight && digit < 31) {
            ++digit;
        } else if (code == KeyRight && (line < 15 || scroll((top + 16) * 16))) {
            line += line < 15 ? 1 : 0;
            digit = 0;
        } else if (code == KeyDown && line < 15) {
            ++line;
        } else if (code == KeyDown) {
            scroll((top + 16) * 16 + digit / 2);
        }
    }
    int index() const { return 70 + line * 71 + digit / 2 * 3 + digit % 2; }
    int address() const { return (top + line) * 16 + digit / 2; }
};

} // namespace

TEST_F(Editor, RandomKeysFollowTheModel) {
    std::mt19937 random(7);
    for (const int size : {0, 16, 128, 256, 264, 300, 1000, 4096, 65536}) {
        HexEditor editor(size);
        Model model{size, editor.LastLine()};
        int mainKey = KeyDown;
        for (int step = 0; step < 20000; ++step) {
            if (step % 100 == 0)
                mainKey = KeyLeft + static_cast<int>(random() % 4);
            if (step % 2000 == 0) {
                model = {size, editor.LastLine()};
                model.top = step % 4000 == 0 ? 0 : editor.LastLine();
                editor.ScrollTo(model.top);
            }
            const int code = random() % 3 ? mainKey : KeyLeft - 1 + static_cast<int>(random() % 6);
            editor.Key(code);
            model.key(code);
            ASSERT_EQ(editor.CaretPos(), model.index()) << size << ", " << step;
            ASSERT_EQ(editor.Address(), model.address()) << size << ", " << step;
            ASSERT_EQ(editor.TopLine(), model.top) << size << ", " << step;
        }
    }
}

// tests/buffer/keys.txt: keys, and where they lead.
TEST_F(Editor, LiteralKeysClicksAndDigits) {
    for (const auto& row : readTable(TEST_FILES "/buffer/keys.txt")) {
        SCOPED_TRACE(row.at(0) + ": " + row.at(1));
        ClearImage();
        HexEditor editor(std::stoi(row[0]));
        std::istringstream keys(row[1]);
        for (std::string key; keys >> key;)
            press(editor, key);
        const std::string address = std::to_string(editor.Address());
        EXPECT_EQ(std::to_string(editor.TopLine()) + " " + std::to_string(editor.CaretPos()) + " " +
                      address,
                  row.at(2));
        if (row.size() > 3) {
            std::string changed;
            for (std::size_t i = 0; i < state().BufferData.size(); ++i)
                if (state().BufferData[i] != 0xFF)
                    changed += (changed.empty() ? "" : " ") + std::to_string(i) + "=" +
                               std::to_string(state().BufferData[i]);
            EXPECT_EQ(changed, row[3]);
        }
    }
}
