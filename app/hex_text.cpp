#include "app/hex_text.h"

#include <limits>

namespace modFunc {

namespace {
constexpr char digits[] = "0123456789ABCDEF";
}

std::string HexByte(std::uint8_t value) {
    return {digits[value >> 4], digits[value & 15]};
}

std::string HexDigits(std::int32_t value) {
    std::string text;
    auto rest = static_cast<std::uint32_t>(value);
    do {
        text.insert(text.begin(), digits[rest & 15]);
        rest >>= 4;
    } while (rest != 0);
    return text;
}

std::string HexWord(std::int32_t value) {
    std::string text = HexDigits(value);
    if (text.size() < 4)
        text.insert(0, 4 - text.size(), '0');
    return text;
}

int HexDigitValue(char character) {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

std::int32_t TolerantHex(std::string_view text) {
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (const char character : text) {
        const int digit = HexDigitValue(character);
        if (digit < 0)
            break;
        value = value * 16 + digit;
        if (value > largest)
            return static_cast<std::int32_t>(largest);
    }
    return static_cast<std::int32_t>(value);
}

std::optional<std::int32_t> StrictHex(std::string_view text) {
    if (text.empty() || text.size() > 4)
        return std::nullopt;
    for (const char character : text)
        if (HexDigitValue(character) < 0)
            return std::nullopt;
    return TolerantHex(text);
}

} // namespace modFunc
