#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// A frame from the program, as on the wire:
//
//   offset  size        field
//   0       4           length, big-endian: number of bytes after this field
//   4       1           command code
//   5       length - 1  parameters
struct Frame {
    std::int64_t arrivedUs = 0;      // when its last byte arrived
    char commandCode = 0;            // 0 for a frame of length 0
    std::vector<std::uint8_t> bytes; // the whole frame, length field included
};

constexpr std::size_t lengthFieldBytes = 4;
// Maximum length of any frame; a greater length field means that the line is out of step.
constexpr std::uint32_t maxLength = 65536;

// The length field of a frame. `frameBytes` contains at least the first four bytes.
std::uint32_t LengthOf(std::span<const std::uint8_t> frameBytes);

bool KnownCommand(char commandCode);
// Whether a frame with this command code may have this length. False for unknown codes.
bool LengthFits(char commandCode, std::size_t length);

// One direction of the line, at 10 bits per byte.
class WirePace {
public:
    // `baud` 0: bytes take no time.
    explicit WirePace(std::uint32_t baud) : byteNs_(baud == 0 ? 0 : 10'000'000'000 / baud) {}
    // Time (microseconds, rounded up) at which the last of the next `bytes` bytes has been sent.
    // The first starts at `readyUs`, or after all earlier bytes have been sent.
    std::int64_t Next(std::int64_t readyUs, std::size_t bytes);

private:
    std::int64_t byteNs_;     // nanoseconds, so that rounding does not add up over a frame
    std::int64_t freeNs_ = 0; // the line is busy until then
};

// `value` in at least `digits` hexadecimal digits.
std::string HexText(std::size_t value, int digits);

// A frame's meaning in words: "set supplies 12 0 50". "malformed" when the command code is unknown
// or the length does not fit it.
std::string DescribeFrame(std::span<const std::uint8_t> frameBytes);

// "0.001234 > 00 00 00 01 49  identify": seconds, direction, bytes (the first 16 and a count when
// there are more, "-" when there are none), meaning.
std::string TraceLine(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                      const std::string& meaning);

} // namespace simbox
