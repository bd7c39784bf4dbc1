// The rules of the hex view: where the caret can be and what keys, clicks and digits do. Nothing
// here depends on pixels: the window draws, and it converts pixels to rows and columns. Columns are
// numbered as in buffer/page_text.h; row 0 is the first row below the heading.
#pragma once

#include <cstdint>
#include <span>

namespace modFunc {

class HexEditor {
public:
    // The keys that move the caret, with or without modifiers. Other is any other key; Press()
    // ignores it.
    enum class Key { Other, Left, Up, Right, Down };

    // Starts at the top of `image`, for a device of `size` bytes. The image must contain every byte
    // of the page at LastLine() and outlive the editor.
    HexEditor(std::int32_t size, std::span<std::uint8_t> image);

    // The 16-byte line at the top of the page, 0..LastLine().
    std::int32_t TopLine() const { return topLine_; }
    // Highest value of the scroll bar, whose range starts at 0.
    std::int32_t LastLine() const { return lastLine_; }
    // The caret: row of the page, 0..15, and digit of the row, 0..31.
    int Row() const { return row_; }
    int Digit() const { return digit_; }
    // Address of the byte under the caret.
    std::int32_t Address() const;

    // Puts line `topLine`, which must be 0..LastLine(), at the top of the page and the caret on the
    // first digit of the page.
    void ScrollTo(std::int32_t topLine);
    // Puts the caret on the first digit of the page.
    void Home();
    // A click on a row and column of the page's text; row -1 is the heading. If there is a digit of
    // a byte at that position, the caret goes there; otherwise it does not move.
    void Click(int row, int column);
    // Moves the caret. A move past the start or end of the page scrolls the page by one line if
    // possible; after such a scroll, Left and Right put the caret on the first digit of the new
    // line.
    void Press(Key key);
    // Stores a typed hexadecimal digit of either case in the image, moves the caret as Key::Right
    // does and returns true. For any other character, changes nothing and returns false.
    bool Type(char character);

private:
    void left();
    void up();
    void right();
    void down();
    // Scrolls down by one line and returns true if the device has a byte at offset `byte` in the
    // line below the page and the scroll bar is not at its end. Otherwise returns false.
    bool scrollDown(int byte);

    std::int32_t size_;
    std::int32_t lastLine_;
    std::span<std::uint8_t> image_;
    std::int32_t topLine_ = 0;
    int row_ = 0;
    int digit_ = 0;
};

} // namespace modFunc
