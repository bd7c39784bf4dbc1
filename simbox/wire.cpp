#include "simbox/wire.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace simbox {

namespace {

// The length field of a frame is from `minLength` to `maxLength`, or `otherLength`.
struct Form {
    char commandCode;
    std::size_t minLength;
    std::size_t maxLength;
    std::size_t otherLength;
};

constexpr std::array<Form, 9> forms{{
    {'I', 1, 1, 1},
    {'V', 4, 4, 4},
    {'S', 6, 6, 2}, // set up, or release
    {'T', 8, 8, 8},
    {'D', 2, 255, 257}, // a page of 1 to 254 bytes, or a block of 256
    {'W', 8, 8, 8},
    {'R', 6, 6, 6},
    {'E', 2, 2, 2},
    {'L', 3, 3, 3},
}};

std::string hexList(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t value : bytes)
        text += (text.empty() ? "" : " ") + HexText(value, 2);
    return text;
}

std::string describeSetUp(char commandCode, std::span<const std::uint8_t> p) {
    if (p.size() == 1)
        return p[0] == 0 ? "release socket" : "release socket with class " + std::to_string(p[0]);
    const std::string common =
        " class " + std::to_string(p[0]) + " set-up " + hexList(p.subspan(1, 2));
    if (commandCode == 'S')
        return "set up socket" + common + " pins " + hexList(p.subspan(3));
    return "set up socket for writing" + common + " write pins " + hexList(p.subspan(3, 2)) +
           " read pins " + hexList(p.subspan(5));
}

} // namespace

std::uint32_t LengthOf(std::span<const std::uint8_t> frameBytes) {
    std::uint32_t length = 0;
    for (const std::uint8_t value : frameBytes.first(lengthFieldBytes))
        length = length << 8U | value;
    return length;
}

bool KnownCommand(char commandCode) {
    return std::any_of(forms.begin(), forms.end(),
                       [commandCode](const Form& f) { return f.commandCode == commandCode; });
}

bool LengthFits(char commandCode, std::size_t length) {
    return std::any_of(forms.begin(), forms.end(), [=](const Form& f) {
        return f.commandCode == commandCode &&
               ((length >= f.minLength && length <= f.maxLength) || length == f.otherLength);
    });
}

std::int64_t WirePace::Next(std::int64_t readyUs, std::size_t bytes) {
    freeNs_ = std::max(freeNs_, readyUs * 1000) + byteNs_ * static_cast<std::int64_t>(bytes);
    return (freeNs_ + 999) / 1000;
}

std::string HexText(std::size_t value, int digits) {
    std::array<char, 20> text{};
    std::snprintf(text.data(), text.size(), "%0*zX", digits, value);
    return text.data();
}

std::string DescribeFrame(std::span<const std::uint8_t> frameBytes) {
    const auto content = frameBytes.subspan(lengthFieldBytes);
    if (content.empty() || !LengthFits(static_cast<char>(content[0]), content.size()))
        return "malformed";
    const char commandCode = static_cast<char>(content[0]);
    const auto p = content.subspan(1);
    const auto number = [p](std::size_t index) { return std::to_string(p[index]); };
    const auto addressRange = [p] { // first and last address, two bytes each, high byte first
        return HexText(p[0], 2) + HexText(p[1], 2) + "-" + HexText(p[2], 2) + HexText(p[3], 2);
    };
    switch (commandCode) {
    case 'I':
        return "identify";
    case 'V':
        return "set supplies " + number(0) + " " + number(1) + " " + number(2);
    case 'S':
    case 'T':
        return describeSetUp(commandCode, p);
    case 'D':
        return "load " + std::to_string(p.size()) + " bytes";
    case 'W':
        return "write block " + addressRange() + " chip code " + number(4) + " option " +
               number(5) + " mode " + number(6);
    case 'R':
        return "read block " + addressRange() + " chip code " + number(4);
    case 'E':
        return "erase " + HexText(p[0], 2);
    default:
        return "lock step " + hexList(p);
    }
}

std::string TraceLine(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                      const std::string& meaning) {
    constexpr std::size_t maxBytes = 16;
    std::array<char, 40> start{};
    std::snprintf(start.data(), start.size(), "%lld.%06lld %c ",
                  static_cast<long long>(timeUs / 1'000'000),
                  static_cast<long long>(timeUs % 1'000'000), direction);
    std::string line = start.data();
    line += bytes.empty() ? "-" : hexList(bytes.first(std::min(bytes.size(), maxBytes)));
    if (bytes.size() > maxBytes)
        line += " ... (" + std::to_string(bytes.size()) + " bytes)";
    return line + "  " + meaning;
}

} // namespace simbox
