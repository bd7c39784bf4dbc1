#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// A frame from the program, as it appears on the wire:
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
// Maximum value of the length field. A larger value means that the programmer no longer knows
// where a frame begins.
constexpr std::uint32_t maxLength = 65536;

// The value of a frame's length field. `frameBytes` must contain at least the first four bytes of
// the frame.
std::uint32_t LengthOf(std::span<const std::uint8_t> frameBytes);

bool KnownCommand(char commandCode);
// Whether the length field of a frame with this command code may have the value `length`. False for
// unknown command codes.
bool LengthFits(char commandCode, std::size_t length);

// One direction of the line, at 10 bits per byte.
class WirePace {
public:
    // If `baud` is 0, bytes take no time.
    explicit WirePace(std::uint32_t baud) : byteNs_(baud == 0 ? 0 : 10'000'000'000 / baud) {}
    // Reserves the line for `bytes` more bytes and returns the time (microseconds, rounded up) at
    // which the last of them has been sent. The first one starts at `readyUs`, or when all earlier
    // bytes have been sent if that is later.
    std::int64_t Next(std::int64_t readyUs, std::size_t bytes);

private:
    std::int64_t byteNs_;     // nanoseconds, so that rounding errors do not add up over a frame
    std::int64_t freeNs_ = 0; // the line is busy until this time
};

// `value` in at least `digits` hexadecimal digits.
std::string HexText(std::size_t value, int digits);

// The meaning in words of a frame of at least four bytes, for example "set supplies 12 0 50". The
// result is "malformed" if the command code is unknown or the length is wrong for this command
// code.
std::string DescribeFrame(std::span<const std::uint8_t> frameBytes);

// A line such as "0.001234 > 00 00 00 01 49  identify": seconds, direction, bytes, meaning. If
// there are more than 16 bytes, the line has the first 16 and the number of bytes; if there are no
// bytes, it has "-".
std::string TraceLine(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                      const std::string& meaning);

} // namespace simbox
