#include "platform/rich_text_tokens.h"

#include <algorithm>
#include <cstdint>

namespace platform {

namespace {

constexpr int largestNumber = 2'000'000'000;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// What code page 1252 holds at 80 to 9F; 0 where it holds nothing.
constexpr char32_t upperControls[] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

template <class Predicate>
std::size_t countLeading(std::string_view text, Predicate isPart) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPart) -
                                    text.begin());
}

RichToken character(char c) {
    return {RichToken::Kind::Character, {}, static_cast<unsigned char>(c), false};
}

RichToken sign(std::string_view name) {
    return {RichToken::Kind::Word, name, 0, false};
}

} // namespace

int HexadecimalDigit(int c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

char32_t RichCharacter(int byte, bool symbols) {
    if (symbols) {
        // The signs that lists are made with, in the two common fonts of signs.
        switch (byte) {
        case 0x6C:
        case 0xB7:
            return U'\u2022'; // bullet
        case 0x6E:
        case 0xA7:
            return U'\u25AA'; // small square
        case 0xD8:
            return U'\u27A2'; // arrowhead
        case 0xFC:
            return U'\u2713'; // check mark
        default:
            break;
        }
    }
    if (byte < ' ' || byte == 0x7F)
        return U'\uFFFD';
    if (byte >= 0x80 && byte <= 0x9F) {
        const char32_t code = upperControls[byte - 0x80];
        return code ? code : U'\uFFFD';
    }
    return static_cast<char32_t>(byte);
}

std::string Utf8(char32_t code) {
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        code = 0xFFFD;
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    const auto following = [&](int shift) { return byte(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80)
        return {byte(code)};
    if (code < 0x800)
        return {byte(0xC0 | (code >> 6)), following(0)};
    if (code < 0x10000)
        return {byte(0xE0 | (code >> 12)), following(6), following(0)};
    return {byte(0xF0 | (code >> 18)), following(12), following(6), following(0)};
}

RichToken RichTextTokens::Next() {
    while (!rest_.empty()) {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        switch (c) {
        case '{':
            return {RichToken::Kind::OpenGroup, {}, 0, false};
        case '}':
            return {RichToken::Kind::CloseGroup, {}, 0, false};
        case '\t':
            return sign("tab");
        case '\\':
            if (!rest_.empty())
                return afterBackslash();
            break;
        default:
            if (static_cast<unsigned char>(c) >= ' ')
                return character(c);
        }
    }
    return {};
}

RichToken RichTextTokens::afterBackslash() {
    const char c = rest_.front();
    if (isLetter(c))
        return word();
    const std::string_view name = rest_.substr(0, 1);
    rest_.remove_prefix(1);
    switch (c) {
    case '\\':
    case '{':
    case '}':
        return character(c);
    case '\'':
        return hexadecimalCharacter();
    case '\t':
        return sign("tab");
    case '\r':
    case '\n':
        return sign("par");
    default:
        return sign(name);
    }
}

// Digits that are none stand for nothing, and what stands in their place is read as it is.
RichToken RichTextTokens::hexadecimalCharacter() {
    if (rest_.size() < 2)
        return sign("'");
    const int high = HexadecimalDigit(rest_[0]);
    const int low = HexadecimalDigit(rest_[1]);
    if (high < 0 || low < 0)
        return sign("'");
    rest_.remove_prefix(2);
    return {RichToken::Kind::Character, {}, high * 16 + low, false};
}

RichToken RichTextTokens::word() {
    RichToken token{RichToken::Kind::Word, rest_.substr(0, countLeading(rest_, isLetter)), 0,
                    false};
    rest_.remove_prefix(token.text.size());

    const bool negative = rest_.size() > 1 && rest_[0] == '-' && isDigit(rest_[1]);
    if (negative)
        rest_.remove_prefix(1);
    const std::string_view digits = rest_.substr(0, countLeading(rest_, isDigit));
    rest_.remove_prefix(digits.size());
    std::int64_t number = 0;
    for (const char digit : digits)
        number = std::min<std::int64_t>(number * 10 + (digit - '0'), largestNumber);
    token.number = static_cast<int>(negative ? -number : number);
    token.numbered = !digits.empty();

    // One blank belongs to the word.
    if (!rest_.empty() && rest_.front() == ' ')
        rest_.remove_prefix(1);

    if (token.text == "bin") {
        token.kind = RichToken::Kind::Binary;
        token.text = rest_.substr(0, static_cast<std::size_t>(std::max(token.number, 0)));
        rest_.remove_prefix(token.text.size());
    }
    return token;
}

} // namespace platform
