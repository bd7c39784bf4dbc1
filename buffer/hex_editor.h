// The rules of the hex view: where the caret can be and what keys, clicks and digits do. No pixels
// and no text positions (those are in buffer/page_text.h): the window converts and draws.
#pragma once

#include <cstdint>
#include <span>

namespace modFunc {

class HexEditor {
public:
    // What a key does, whatever its modifiers. Other only shows the caret again.
    enum class Key { Other, Left, Up, Right, Down };

    // Starts at the top of `image`, for a device of `size` bytes. The image must outlive the
    // editor.
    HexEditor(std::int32_t size, std::span<std::uint8_t> image);

    // The 16-byte line at the top of the page, 0..LastLine().
    std::int32_t TopLine() const { return topLine_; }
    // Range of the scroll bar.
    std::int32_t LastLine() const { return lastLine_; }
    // The caret: row of the page, 0..15, and digit of the row, 0..31.
    int Row() const { return row_; }
    int Digit() const { return digit_; }
    // Address of the byte under the caret.
    std::int32_t Address() const;

    // Puts a line, 0..LastLine(), at the top; the caret goes to the first digit of the page.
    void ScrollTo(std::int32_t topLine);
    // The caret goes to the first digit of the page.
    void Home();
    // A click on a row and column of the page's text; row -1 is the heading. The caret goes there
    // if it is a digit of a byte, and stays otherwise.
    void Click(int row, int column);
    void Press(Key key);
    // Stores a typed hexadecimal digit of either case in the image, moves the caret one digit on
    // and returns true. Any other character, and a digit past the end of the image, changes nothing
    // and returns false.
    bool Type(char character);

private:
    void left();
    void up();
    void right();
    void down();
    // Scrolls down by one line if the device has the byte at offset `byte` of the line below the
    // page and the scroll bar's range allows it.
    bool scrollDown(int byte);

    std::int32_t size_;
    std::int32_t lastLine_;
    std::span<std::uint8_t> image_;
    std::int32_t topLine_ = 0;
    int row_ = 0;
    int digit_ = 0;
};

} // namespace modFunc
