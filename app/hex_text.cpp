#include "app/hex_text.h"

#include <array>
#include <limits>

namespace modFunc {

namespace {
constexpr char digits[] = "0123456789ABCDEF";

// By character code; -1 for what is no digit. A table, since files of a hundred thousand digits are
// read through it.
constexpr std::array<std::int8_t, 256> digitValues = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t value = 0; value < 16; ++value) {
        const char digit = digits[value];
        values[static_cast<std::uint8_t>(digit)] = value;
        if (value >= 10)
            values[static_cast<std::uint8_t>(digit - 'A' + 'a')] = value;
    }
    return values;
}();
} // namespace

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
    return digitValues[static_cast<std::uint8_t>(character)];
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
