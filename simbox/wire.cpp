#include "simbox/wire.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace simbox {

namespace {

constexpr std::size_t tracedBytes = 16;

std::string hex(std::uint8_t value) {
    std::array<char, 3> text{};
    std::snprintf(text.data(), text.size(), "%02X", value);
    return text.data();
}

std::string hexList(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t value : bytes) {
        if (!text.empty()) {
            text += ' ';
        }
        text += hex(value);
    }
    return text;
}

// The first four parameters of "W" and "R": first and last address, high byte first.
std::string addressRange(std::span<const std::uint8_t> p) {
    return hex(p[0]) + hex(p[1]) + "-" + hex(p[2]) + hex(p[3]);
}

std::string number(std::size_t value) {
    return std::to_string(value);
}

std::string describeSetUp(char commandCode, std::span<const std::uint8_t> p) {
    if (p.size() == 1) {
        return p[0] == 0 ? "release socket" : "release socket with class " + number(p[0]);
    }
    const std::string start = commandCode == 'T' ? "set up socket for writing" : "set up socket";
    const std::string common =
        start + " class " + number(p[0]) + " set-up " + hexList(p.subspan(1, 2));
    if (commandCode == 'S') {
        return common + " pins " + hexList(p.subspan(3, 2));
    }
    return common + " write pins " + hexList(p.subspan(3, 2)) + " read pins " +
           hexList(p.subspan(5, 2));
}

} // namespace

std::uint32_t LengthOf(std::span<const std::uint8_t> frameBytes) {
    std::uint32_t length = 0;
    for (const std::uint8_t value : frameBytes.first(lengthFieldBytes)) {
        length = length << 8U | value;
    }
    return length;
}

bool KnownCommand(char commandCode) {
    return std::string("IVSTDWREL").find(commandCode) != std::string::npos;
}

bool LengthFits(char commandCode, std::size_t length) {
    switch (commandCode) {
    case 'I':
        return length == 1;
    case 'E':
        return length == 2;
    case 'L':
        return length == 3;
    case 'V':
        return length == 4;
    case 'R':
        return length == 6;
    case 'T':
    case 'W':
        return length == 8;
    case 'S':
        return length == 2 || length == 6;
    case 'D': // a page of 1 to 254 bytes, or a block of 256
        return (length >= 2 && length <= 255) || length == 257;
    default:
        return false;
    }
}

// 10 bits a byte, in nanoseconds, so that rounding does not add up over a frame.
WirePace::WirePace(std::uint32_t baud) : byteNs_(baud == 0 ? 0 : 10'000'000'000 / baud) {}

std::int64_t WirePace::Next(std::int64_t readyUs, std::size_t bytes) {
    freeNs_ = std::max(freeNs_, readyUs * 1000) + byteNs_ * static_cast<std::int64_t>(bytes);
    return (freeNs_ + 999) / 1000;
}

std::string DescribeFrame(std::span<const std::uint8_t> frameBytes) {
    if (frameBytes.size() <= lengthFieldBytes) {
        return "unknown";
    }
    const char commandCode = static_cast<char>(frameBytes[lengthFieldBytes]);
    const auto p = frameBytes.subspan(lengthFieldBytes + 1);
    if (!LengthFits(commandCode, p.size() + 1)) {
        return "unknown";
    }
    switch (commandCode) {
    case 'I':
        return "identify";
    case 'V':
        return "set supplies " + number(p[0]) + " " + number(p[1]) + " " + number(p[2]);
    case 'S':
    case 'T':
        return describeSetUp(commandCode, p);
    case 'D':
        return "load " + number(p.size()) + " bytes";
    case 'W':
        return "write block " + addressRange(p) + " chip code " + number(p[4]) + " option " +
               number(p[5]) + " mode " + number(p[6]);
    case 'R':
        return "read block " + addressRange(p) + " chip code " + number(p[4]);
    case 'E':
        return "erase " + hex(p[0]);
    default:
        return "lock step " + hexList(p);
    }
}

std::string TraceLine(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                      const std::string& meaning) {
    std::array<char, 40> start{};
    std::snprintf(start.data(), start.size(), "%lld.%06lld %c ",
                  static_cast<long long>(timeUs / 1'000'000),
                  static_cast<long long>(timeUs % 1'000'000), direction);
    std::string line = start.data();
    line += bytes.empty() ? "-" : hexList(bytes.first(std::min(bytes.size(), tracedBytes)));
    if (bytes.size() > tracedBytes) {
        line += " ... (" + number(bytes.size()) + " bytes)";
    }
    return line + "  " + meaning;
}

} // namespace simbox
