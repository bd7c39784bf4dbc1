#include "buffer/hex_editor.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/page_text.h"

namespace modFunc {

namespace {

constexpr int digitColumns = 47; // column of the blank behind byte 15, within the hex area
constexpr int lowestLineDigit = firstDigit + (pageLines - 1) * lineLength; // index 1135
// From the blank behind byte 15 to the first digit of the next line; and from the "=" of a line
// back to the last digit of the line above.
constexpr int lineWrap = lineLength - digitColumns; // 24

// Column within the hex area: 0 on the first digit of a line, remainder 2 by 3 on a blank.
int columnOf(int index) {
    return (index - headingLength) % lineLength - firstDigitColumn;
}

bool isBlank(int column) {
    return column % 3 == 2;
}

} // namespace

HexEditor::HexEditor(std::int32_t size)
    : size_(size), lastLine_(LastTopLine(size)), caretPos_(firstDigit) {}

std::int32_t HexEditor::Address() const {
    const int line = (caretPos_ - headingLength) / lineLength;
    return (topLine_ + line) * lineBytes + columnOf(caretPos_) / 3;
}

void HexEditor::ScrollTo(std::int32_t topLine) {
    topLine_ = topLine;
    Home();
}

void HexEditor::Home() {
    caretPos_ = firstDigit;
}

void HexEditor::Click(int index) {
    const int column = columnOf(index);
    if (column >= 0 && column <= digitColumns && !isBlank(column))
        caretPos_ = index;
}

void HexEditor::Key(int keyCode) {
    switch (keyCode) {
    case KeyLeft:
        return left();
    case KeyUp:
        return up();
    case KeyRight:
        return right();
    case KeyDown:
        return down();
    default:
        break;
    }
}

bool HexEditor::Type(char character) {
    const int digit = HexDigitValue(character);
    if (digit < 0)
        return false;
    std::uint8_t& byte = state().BufferData.at(static_cast<std::size_t>(Address()));
    const bool high = columnOf(caretPos_) % 3 == 0;
    byte = static_cast<std::uint8_t>(high ? byte % 16 + digit * 16 : byte / 16 * 16 + digit);
    right();
    return true;
}

void HexEditor::left() {
    --caretPos_;
    const int column = columnOf(caretPos_);
    if (column >= 0) {
        if (isBlank(column))
            --caretPos_;
        return;
    }
    caretPos_ -= lineWrap;
    if (caretPos_ >= firstDigit)
        return;
    // Off the page: the first digit of the line above, not its last.
    Home();
    if (topLine_ > 0)
        --topLine_;
}

void HexEditor::up() {
    if (caretPos_ - lineLength >= headingLength)
        caretPos_ -= lineLength;
    else if (topLine_ > 0)
        --topLine_;
}

void HexEditor::right() {
    ++caretPos_;
    const int column = columnOf(caretPos_);
    if (column < digitColumns) {
        if (isBlank(column))
            ++caretPos_;
        return;
    }
    caretPos_ += lineWrap;
    if (caretPos_ <= pageTextLength)
        return;
    if (memoryBelow((topLine_ + pageLines) * lineBytes)) {
        ++topLine_;
        caretPos_ = lowestLineDigit;
    } else {
        caretPos_ -= lineWrap + 1;
    }
}

void HexEditor::down() {
    if (caretPos_ + lineLength <= pageTextLength)
        caretPos_ += lineLength;
    else if (memoryBelow((topLine_ + pageLines) * lineBytes + columnOf(caretPos_) / 3))
        ++topLine_;
}

// The device has a byte at this address of the line below the page, and the bar goes that far.
bool HexEditor::memoryBelow(std::int32_t address) const {
    return address < size_ && topLine_ < lastLine_;
}

} // namespace modFunc
