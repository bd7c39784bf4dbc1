// Hexadecimal text, in and out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace modFunc {

// The value as exactly two upper-case digits.
std::string HexByte(std::uint8_t value);

// The value in upper-case digits, filled with "0" to at least four and never cut: five digits from
// 65536 up, eight digits of two's complement for a negative value.
std::string HexWord(std::int32_t value);

// The value in upper-case digits without leading zeros; 0 for 0.
std::string HexDigits(std::int32_t value);

// Tolerant reading: the digits from the left, either case, up to the first character that is none;
// no digit at all gives 0. A value that does not fit 31 bits is taken as 2147483647.
std::int32_t TolerantHex(std::string_view text);

// Strict reading: the whole text is one to four digits, either case; nothing otherwise.
std::optional<std::int32_t> StrictHex(std::string_view text);

// The value of one digit, 0..15, or -1.
int HexDigitValue(char character);

} // namespace modFunc
