// The text of the hex view: a heading and 16 rows. A row has a fixed length and shows 16 bytes:
//
//   column      content
//   0 to 3      the row's address
//   4           "="
//   5 + 3 * b   high digit of byte b, 0..15
//   6 + 3 * b   low digit of byte b
//   7 + 3 * b   blank
//   53 + b      byte b as a character if it is 32..127, otherwise "."
//   69, 70      carriage return, line feed
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace modFunc {

inline constexpr int pageLines = 16;
inline constexpr int lineBytes = 16;
inline constexpr int lineDigits = 2 * lineBytes;

// The 1201 characters of the page that shows addresses topLine * 16 to topLine * 16 + 255. The
// image must be large enough to include these addresses. topLine is 0 to LastTopLine() of a device.
std::string PageText(std::int32_t topLine, std::span<const std::uint8_t> image);

// The column of digit number `digit` (0..31) in its row. Digit 2 * b is the high digit of byte b.
int DigitColumn(int digit);
// The number of the digit at a column; nullopt if there is no digit of a byte at that column.
std::optional<int> DigitAtColumn(int column);

// Highest line that may be at the top of the page for a device of `size` bytes: size / 16 - 16,
// rounded to the nearest integer (ties to even), at least 0 and, since the address column has four
// digits, at most 4080.
std::int32_t LastTopLine(std::int32_t size);

} // namespace modFunc
