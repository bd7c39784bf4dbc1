#include "app/hex_text.h"

#include <algorithm>
#include <limits>

namespace modFunc {

std::string HexByte(std::uint8_t value) {
    return {hexDigits[value >> 4], hexDigits[value & 15]};
}

namespace {
// The digits of `value`, with leading zeros if there are fewer than `minDigits`.
std::string digitsOf(std::int32_t value, std::ptrdiff_t minDigits) {
    std::array<char, 8> text;
    text.fill('0');
    auto first = text.end();
    auto rest = static_cast<std::uint32_t>(value);
    do {
        *--first = hexDigits[rest & 15];
        rest >>= 4;
    } while (rest != 0);
    return {std::min(first, text.end() - minDigits), text.end()};
}
} // namespace

std::string HexDigits(std::int32_t value) {
    return digitsOf(value, 1);
}

std::string HexWord(std::int32_t value) {
    return digitsOf(value, 4);
}

std::int32_t TolerantHex(std::string_view text) {
    constexpr std::int64_t max = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (const char character : text) {
        const int digit = HexDigitValue(character);
        if (digit < 0)
            break;
        value = value * 16 + digit;
        if (value > max)
            return static_cast<std::int32_t>(max);
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
