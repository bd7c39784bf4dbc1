// The syntax of rich text: tokens and characters. Knows no word's meaning.
#pragma once

#include <string>
#include <string_view>

namespace platform {

struct RichToken {
    enum class Kind {
        OpenGroup,
        CloseGroup,
        Word,      // a control word, or a control sign as a word of one character
        Character, // one byte of text, plain or in hexadecimal
        Binary,    // bytes that follow no syntax
        End,
    };
    Kind kind = Kind::End;
    std::string_view text; // Word: its name without the backslash; Binary: the bytes
    int number = 0;        // Word: its number, at most 2000000000 either way; Character: the byte
    bool numbered = false; // Word: a number was given
};

// Cuts the file into tokens. Any bytes will do; each is looked at a fixed number of times.
class RichTextTokens {
public:
    explicit RichTextTokens(std::string_view rtf) : rest_(rtf) {}
    // The next token; Kind::End once the file has ended. Line ends and other control characters
    // are passed over.
    RichToken Next();

private:
    RichToken afterBackslash();
    RichToken hexadecimalCharacter();
    RichToken word();

    std::string_view rest_;
};

// 0..15, or -1 if `c` is no hexadecimal digit.
int HexadecimalDigit(int c);

// The character of a byte in code page 1252, or in a font of signs. U+FFFD for what is none,
// control characters among them.
char32_t RichCharacter(int byte, bool symbols);

// U+FFFD for what is no character.
std::string Utf8(char32_t code);

} // namespace platform
