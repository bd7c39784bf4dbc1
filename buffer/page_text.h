// The text of the hex view: a heading and 16 lines of fixed length. Every position in it is a
// number here; no window is needed to know where a digit stands.
//
// The heading fills characters 0..64, line end included. Line L begins at 65 + 71 * L:
//
//   column      content
//   0 to 3      the line's address
//   4           "="
//   5 + 3 * b   high digit of byte b, 0..15
//   6 + 3 * b   low digit of byte b
//   7 + 3 * b   blank
//   53 + b      byte b as a character: itself for 32..127, else "."
//   69, 70      carriage return, line feed
#pragma once

#include <cstdint>
#include <string>

namespace modFunc {

inline constexpr int pageLines = 16;
inline constexpr int lineBytes = 16;
inline constexpr int pageBytes = pageLines * lineBytes;
inline constexpr int headingLength = 65;
inline constexpr int lineLength = 71;
inline constexpr int pageTextLength = headingLength + pageLines * lineLength; // 1201
inline constexpr int firstDigitColumn = 5;
inline constexpr int firstDigit = headingLength + firstDigitColumn; // index 70

// The page's 1201 characters for addresses topLine * 16 to topLine * 16 + 255. topLine is 0 to
// LastTopLine() of a device; bytes behind the end of the image show as FF.
std::string PageText(std::int32_t topLine);

// Highest line that may stand at the top of the page for a device of `size` bytes:
// size / 16 - 16 to the nearest whole number, ties to even, at least 0, and at most 4080: the
// address column has four digits.
std::int32_t LastTopLine(std::int32_t size);

} // namespace modFunc
