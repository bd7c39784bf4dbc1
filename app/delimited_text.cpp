#include "app/delimited_text.h"

#include "platform/file_error.h"

#include <charconv>
#include <utility>

namespace modFunc {

namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}
bool isLineEnd(char character) {
    return character == '\r' || character == '\n';
}

// How an error message shows the item: in double quotes, truncated if it is long. An item that
// contains a zero byte is described instead.
std::string shown(std::string_view item) {
    std::size_t maxBytes = 40;
    if (item.find('\0') != std::string_view::npos) // a zero byte would truncate the message
        return "a zero byte, so the file is not plain text";
    if (item.size() <= maxBytes)
        return "\"" + std::string(item) + "\"";
    while (maxBytes > 0 && (item[maxBytes] & 0xC0) == 0x80) // inside a UTF-8 character
        --maxBytes;
    return "\"" + std::string(item.substr(0, maxBytes)) + "...\"";
}

} // namespace

DelimitedReader::DelimitedReader(std::string fileName, std::string text)
    : fileName_(std::move(fileName)), text_(std::move(text)) {
    // Some editors begin a file with a byte order mark; it is not part of the first item.
    constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
    if (text_.starts_with(utf8Mark))
        position_ = utf8Mark.size();
}

void DelimitedReader::skipBlanks() {
    while (!atEnd() && isBlank(text_[position_]))
        ++position_;
}

void DelimitedReader::passSeparator() {
    if (atEnd())
        return;
    const char separator = text_[position_++];
    if (separator == ',')
        return;
    if (separator == '\r' && !atEnd() && text_[position_] == '\n')
        ++position_;
    ++line_;
}

std::string_view DelimitedReader::quotedItem(std::string_view meaning) {
    const std::size_t first = ++position_;
    while (!atEnd() && text_[position_] != '"' && !isLineEnd(text_[position_]))
        ++position_;
    const auto item = std::string_view(text_).substr(first, position_ - first);
    if (atEnd() || text_[position_] != '"')
        fail(meaning, "a closing double quote on the same line", shown(item));
    ++position_;
    skipBlanks();
    if (!atEnd() && text_[position_] != ',' && !isLineEnd(text_[position_]))
        fail(meaning, "a comma or a line end after the closing double quote",
             shown(std::string_view(text_).substr(position_, 1)));
    return item;
}

std::string_view DelimitedReader::nextItem(std::string_view meaning, const std::string& expected) {
    ++item_;
    itemLine_ = line_;
    if (atEnd())
        fail(meaning, expected, "the end of the file");
    skipBlanks();
    quoted_ = !atEnd() && text_[position_] == '"';
    std::string_view item;
    if (quoted_) {
        item = quotedItem(meaning);
    } else {
        const std::size_t first = position_;
        while (!atEnd() && text_[position_] != ',' && !isLineEnd(text_[position_]))
            ++position_;
        item = std::string_view(text_).substr(first, position_ - first);
    }
    passSeparator();
    return item;
}

std::string_view DelimitedReader::NextString(std::string_view meaning) {
    return nextItem(meaning, "a text");
}

std::int32_t DelimitedReader::NextNumber(std::string_view meaning, std::int32_t min,
                                         std::int32_t max) {
    const std::string expected =
        "a whole number from " + std::to_string(min) + " to " + std::to_string(max);
    const bool firstOfLine = item_ == 0 || isLineEnd(text_[position_ - 1]);
    const std::string_view item = nextItem(meaning, expected);
    std::string_view digits = item;
    while (!digits.empty() && isBlank(digits.back()))
        digits.remove_suffix(1);
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);

    std::int32_t value = 0;
    const char* const begin = digits.data();
    const char* const end = begin + digits.size();
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (!quoted_ && item.empty())
        fail(meaning, expected,
             firstOfLine && text_[position_ - 1] != ',' ? "an empty line" : "an empty item");
    if (quoted_ || error != std::errc{} || stop != end || value < min || value > max)
        fail(meaning, expected, (quoted_ ? "the quoted text " : "") + shown(item));
    return value;
}

std::int16_t DelimitedReader::NextInt16(std::string_view meaning, std::int16_t min,
                                        std::int16_t max) {
    return static_cast<std::int16_t>(NextNumber(meaning, min, max));
}

void DelimitedReader::Reject(std::string_view meaning, const std::string& expected,
                             std::string_view item) const {
    fail(meaning, expected, shown(item));
}

void DelimitedReader::fail(std::string_view meaning, const std::string& expected,
                           const std::string& found) const {
    throw platform::FileError(fileName_ + ", line " + std::to_string(itemLine_) + ", item " +
                              std::to_string(item_) + " (" + std::string(meaning) +
                              "): the program expects " + expected + " but finds " + found + ".");
}

std::string DelimitedLine(std::int32_t number) {
    return std::to_string(number) + "\r\n";
}

std::string DelimitedLine(const std::string& text) {
    return "\"" + text + "\"\r\n";
}

} // namespace modFunc
