// The state of a rich text that is being read: groups, destinations, characters. What each control
// word does to it stands in rich_text_words.cpp.
#pragma once

#include "platform/rich_text_blocks.h"
#include "platform/rich_text_tokens.h"

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace platform {

// The number of a control word.
struct RichNumber {
    int value = 0;
    bool given = false;
    bool on() const { return !given || value != 0; } // for words that switch
    int twips() const;                               // held within RichLayout's bounds
};

// Takes in the picture of one group.
class RichPictureReader {
public:
    void AddDigit(int character); // of a hexadecimal number; others are passed over
    void AddBytes(std::string_view bytes) { run_.picture += bytes; }
    // The kinds that can be shown are PNG and JPEG; other kinds have words of their own.
    void SetShowable() { showable_ = true; }
    void SetWidth(RichNumber twips) { run_.pictureWidth = twips.twips(); }
    void SetHeight(RichNumber twips) { run_.pictureHeight = twips.twips(); }
    void SetScaleX(RichNumber percent);
    void SetScaleY(RichNumber percent);
    // None if it is of another kind or empty.
    std::optional<RichRun> Take(const RichFormat& format);

private:
    RichRun run_;
    bool showable_ = false;
    int firstDigit_ = -1;
    int scaleX_ = 100;
    int scaleY_ = 100;
};

class RichTextReader {
public:
    explicit RichTextReader(std::string_view rtf) : tokens_(rtf) {}
    RichTextReader(const RichTextReader&) = delete;
    RichTextReader& operator=(const RichTextReader&) = delete;

    RichText Read();

private:
    // Where the text of a group goes.
    enum class Destination { Page, Fonts, Colours, Picture, Nowhere };

    // What a group inherits, and gives back at its end.
    struct Group : RichMark {
        Destination destination = Destination::Page;
        bool hidden = false;
        int fallbackLength = 1; // characters after a \u, for readers that do not know it
    };

    using Handler = void (*)(RichTextReader&, RichNumber);
    using Words = std::unordered_map<std::string_view, Handler>;
    static const Words& words();
    static void addDestinationWords(Words& words);
    static void addFormatWords(Words& words);
    static void addParagraphWords(Words& words);
    static void addTableWords(Words& words);

    void openGroup();
    void closeGroup();
    void enter(Destination destination);
    void word(const RichToken& token);
    void character(int byte);
    void binary(std::string_view bytes);
    void addUtf16Unit(int number);
    void addText(std::string_view text);
    void mixColour(int shift, RichNumber part);
    void endColour();

    bool readingPage() const { return groups_.back().destination == Destination::Page; }
    bool readingFonts() const { return groups_.back().destination == Destination::Fonts; }
    RichFont& tableFont();
    void setFontKind(RichFont::Kind kind);
    void setFontSymbols(bool symbols);
    RichColour colour(RichNumber index) const;
    RichFormat plainFormat() const;
    Group& group() { return groups_.back(); }

    RichTextTokens tokens_;
    RichText document_;
    RichTextBlocks blocks_{document_};
    std::vector<Group> groups_{1};
    std::size_t groupsTooDeep_ = 0;
    bool starred_ = false; // the next word opens a group that may be passed over
    int fallbackLeft_ = 0;
    int highSurrogate_ = 0; // 0: none

    int defaultFont_ = 0;
    int font_ = 0;     // entry of the font table that is being read
    RichFont leftOut_; // stands in for an entry that the table has no room for
    std::vector<RichColour> colours_;
    RichColour mixedColour_;
    RichPictureReader picture_;
    bool borderOfTable_ = false; // the border being told is a table's, not a paragraph's
};

} // namespace platform
