// The rules of the hex view: where the caret may stand, what the keys, clicks and digits do. All
// numbers; the window maps them to its text box and draws.
//
// The caret is one selected digit of the page's text (buffer/page_text.h) and always stands on one.
#pragma once

#include <cstdint>

namespace modFunc {

// Key codes that act. The others only show the caret again.
enum KeyCode { KeyLeft = 37, KeyUp = 38, KeyRight = 39, KeyDown = 40 };

class HexEditor {
public:
    // At the top of the image, for a device of `size` bytes.
    explicit HexEditor(std::int32_t size);

    // The 16-byte line at the top of the page, 0..LastLine().
    std::int32_t TopLine() const { return topLine_; }
    // Range of the scroll bar.
    std::int32_t LastLine() const { return lastLine_; }
    // Index of the caret in the page's text.
    int CaretPos() const { return caretPos_; }
    // Address of the byte under the caret.
    std::int32_t Address() const;

    // Puts a line, 0..LastLine(), at the top; the caret goes to the first digit of the page.
    void ScrollTo(std::int32_t topLine);
    // The caret goes to the first digit of the page.
    void Home();
    // A click on the character at `index`: the caret goes there if it is a digit of a byte, and
    // stays otherwise.
    void Click(int index);
    // A key, whatever its modifiers.
    void Key(int keyCode);
    // A typed character. A hexadecimal digit of either case goes into BufferData, and the caret
    // one digit on; true then. Anything else does nothing.
    bool Type(char character);

private:
    void left();
    void up();
    void right();
    void down();
    bool memoryBelow(std::int32_t address) const;

    std::int32_t size_;
    std::int32_t lastLine_;
    std::int32_t topLine_ = 0;
    int caretPos_;
};

} // namespace modFunc
