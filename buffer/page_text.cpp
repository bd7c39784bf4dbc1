#include "buffer/page_text.h"

#include "app/hex_text.h"

#include <algorithm>
#include <cmath>

namespace modFunc {

namespace {

constexpr char heading[] = "ADDR                       HEX                            ASCII\r\n";
constexpr std::size_t pageCharacters = 1201;
constexpr int firstDigitColumn = 5;
constexpr int byteColumns = 3; // two digits and a blank

char shownCharacter(std::uint8_t byte) {
    return byte >= 32 && byte <= 127 ? static_cast<char>(byte) : '.';
}

void appendLine(std::string& text, std::int32_t address, std::span<const std::uint8_t> image) {
    text += HexWord(address);
    text += '=';
    const std::size_t bytesAt = text.size();
    text.resize(bytesAt + byteColumns * lineBytes + lineBytes, ' ');
    char* digits = text.data() + bytesAt;
    char* character = digits + byteColumns * lineBytes;
    for (const std::uint8_t byte : image.subspan(static_cast<std::size_t>(address), lineBytes)) {
        PutHexByte(digits, byte);
        digits += byteColumns;
        *character++ = shownCharacter(byte);
    }
    text += "\r\n";
}

} // namespace

std::string PageText(std::int32_t topLine, std::span<const std::uint8_t> image) {
    std::string text;
    text.reserve(pageCharacters);
    text += heading;
    for (int line = 0; line < pageLines; ++line)
        appendLine(text, (topLine + line) * lineBytes, image);
    return text;
}

int DigitColumn(int digit) {
    return firstDigitColumn + digit / 2 * byteColumns + digit % 2;
}

std::optional<int> DigitAtColumn(int column) {
    for (int digit = 0; digit < lineDigits; ++digit)
        if (DigitColumn(digit) == column)
            return digit;
    return std::nullopt;
}

std::int32_t LastTopLine(std::int32_t size) {
    constexpr std::int32_t lastOfFourDigits = 0x10000 / lineBytes - pageLines;
    const double lines = std::nearbyint(static_cast<double>(size) / lineBytes - pageLines);
    return std::clamp(static_cast<std::int32_t>(lines), 0, lastOfFourDigits);
}

} // namespace modFunc
