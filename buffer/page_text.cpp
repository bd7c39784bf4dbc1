#include "buffer/page_text.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/image.h"

#include <algorithm>
#include <cmath>

namespace modFunc {

namespace {

constexpr char heading[] = "ADDR                       HEX                            ASCII\r\n";
static_assert(sizeof heading - 1 == headingLength);

char shownCharacter(std::uint8_t byte) {
    return byte >= 32 && byte <= 127 ? static_cast<char>(byte) : '.';
}

void appendLine(std::string& text, std::int32_t address) {
    const Bytes& image = state().BufferData;
    text += HexWord(address);
    text += '=';
    const std::size_t bytesAt = text.size();
    text.resize(bytesAt + 3 * lineBytes + lineBytes, ' ');
    char* digits = text.data() + bytesAt;
    char* character = digits + 3 * lineBytes;
    for (std::int32_t index = address; index < address + lineBytes; ++index, digits += 3) {
        const std::uint8_t byte =
            index <= lastBufferIndex ? image[static_cast<std::size_t>(index)] : erasedByte;
        PutHexByte(digits, byte);
        *character++ = shownCharacter(byte);
    }
    text += "\r\n";
}

} // namespace

std::string PageText(std::int32_t topLine) {
    std::string text;
    text.reserve(pageTextLength);
    text += heading;
    for (int line = 0; line < pageLines; ++line)
        appendLine(text, (topLine + line) * lineBytes);
    return text;
}

std::int32_t LastTopLine(std::int32_t size) {
    constexpr std::int32_t lastOfFourDigits = 0x10000 / lineBytes - pageLines;
    const double lines = std::nearbyint(static_cast<double>(size) / lineBytes - pageLines);
    return std::clamp(static_cast<std::int32_t>(lines), 0, lastOfFourDigits);
}

} // namespace modFunc
