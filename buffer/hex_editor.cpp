#include "buffer/hex_editor.h"

#include "app/hex_text.h"
#include "buffer/page_text.h"

namespace modFunc {

namespace {
constexpr int lastRow = pageLines - 1;
constexpr int lastDigit = lineDigits - 1;
} // namespace

HexEditor::HexEditor(std::int32_t size, std::span<std::uint8_t> image)
    : size_(size), lastLine_(LastTopLine(size)), image_(image) {}

std::int32_t HexEditor::Address() const {
    return (topLine_ + row_) * lineBytes + digit_ / 2;
}

void HexEditor::ScrollTo(std::int32_t topLine) {
    topLine_ = topLine;
    Home();
}

void HexEditor::Home() {
    row_ = 0;
    digit_ = 0;
}

void HexEditor::Click(int row, int column) {
    const auto digit = DigitAtColumn(column);
    if (!digit || row < 0 || row > lastRow)
        return;
    row_ = row;
    digit_ = *digit;
}

void HexEditor::Press(Key key) {
    switch (key) {
    case Key::Left:
        return left();
    case Key::Up:
        return up();
    case Key::Right:
        return right();
    case Key::Down:
        return down();
    case Key::Other:
        break;
    }
}

bool HexEditor::Type(char character) {
    const int value = HexDigitValue(character);
    if (value < 0)
        return false;
    std::uint8_t& byte = image_[static_cast<std::size_t>(Address())];
    const bool high = digit_ % 2 == 0;
    byte = static_cast<std::uint8_t>(high ? byte % 16 + value * 16 : byte / 16 * 16 + value);
    right();
    return true;
}

// From the first digit of the page, the caret moves to the first digit of the line above, not to
// its last digit.
void HexEditor::left() {
    if (digit_ > 0) {
        --digit_;
    } else if (row_ > 0) {
        --row_;
        digit_ = lastDigit;
    } else if (topLine_ > 0) {
        --topLine_;
    }
}

void HexEditor::up() {
    if (row_ > 0)
        --row_;
    else if (topLine_ > 0)
        --topLine_;
}

void HexEditor::right() {
    if (digit_ < lastDigit) {
        ++digit_;
    } else if (row_ < lastRow) {
        ++row_;
        digit_ = 0;
    } else if (scrollDown(0)) {
        digit_ = 0;
    }
}

void HexEditor::down() {
    if (row_ < lastRow)
        ++row_;
    else
        scrollDown(digit_ / 2);
}

bool HexEditor::scrollDown(int byte) {
    if ((topLine_ + pageLines) * lineBytes + byte >= size_ || topLine_ >= lastLine_)
        return false;
    ++topLine_;
    return true;
}

} // namespace modFunc
