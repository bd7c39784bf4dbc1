// Formats and parses hexadecimal text.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace modFunc {

inline constexpr char hexDigits[] = "0123456789ABCDEF";

// The value of each character as a hexadecimal digit; -1 if the character is not a digit.
inline constexpr std::array<std::int8_t, 256> hexDigitValues = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t value = 0; value < 16; ++value) {
        const char digit = hexDigits[value];
        values[static_cast<std::uint8_t>(digit)] = value;
        if (value >= 10)
            values[static_cast<std::uint8_t>(digit - 'A' + 'a')] = value;
    }
    return values;
}();

// The value of one digit, 0..15; -1 if the character is not a digit. Inline, because reading an
// Intel HEX file calls it for every digit.
inline int HexDigitValue(char character) {
    return hexDigitValues[static_cast<std::uint8_t>(character)];
}

// Writes the value as two upper-case digits to at[0] and at[1].
inline void PutHexByte(char* at, std::uint8_t value) {
    at[0] = hexDigits[value >> 4];
    at[1] = hexDigits[value & 15];
}

// The value as exactly two upper-case digits.
std::string HexByte(std::uint8_t value);

// The value in upper-case digits, at least four, with leading zeros if needed. A value of 65536 or
// above has more than four digits. A negative value is shown as the eight digits of its two's
// complement.
std::string HexWord(std::int32_t value);

// The value in upper-case digits without leading zeros; "0" for 0.
std::string HexDigits(std::int32_t value);

// Tolerant parsing: reads digits of either case from the left up to the first character that is not
// a digit. The result is 0 if there are no digits. A value above 2147483647 becomes 2147483647.
std::int32_t TolerantHex(std::string_view text);

// Strict parsing: the whole text must be one to four digits of either case; otherwise the result is
// nullopt.
std::optional<std::int32_t> StrictHex(std::string_view text);

} // namespace modFunc
