#include "platform/rich_text_reader.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

// Every group costs a copy of its state, and some files open thousands without closing any: the
// groups below this one share its state.
constexpr std::size_t deepestGroup = 250;

constexpr std::size_t mostFonts = 1000;
constexpr std::size_t longestFontName = 100;
constexpr std::size_t mostColours = 1000;

constexpr std::string_view beginning = "{\\rtf";
constexpr int firstHighSurrogate = 0xD800;
constexpr int firstLowSurrogate = 0xDC00;
constexpr int lastLowSurrogate = 0xDFFF;
constexpr int replacement = 0xFFFD;

} // namespace

int RichNumber::twips() const {
    return std::clamp(value, -32000, 32000);
}

void RichPictureReader::AddDigit(int character) {
    const int digit = HexadecimalDigit(character);
    if (digit < 0)
        return;
    if (firstDigit_ >= 0)
        run_.picture.push_back(static_cast<char>(firstDigit_ * 16 + digit));
    firstDigit_ = firstDigit_ < 0 ? digit : -1;
}

void RichPictureReader::SetScaleX(RichNumber percent) {
    scaleX_ = std::clamp(percent.value, 1, 1000);
}

void RichPictureReader::SetScaleY(RichNumber percent) {
    scaleY_ = std::clamp(percent.value, 1, 1000);
}

std::optional<RichRun> RichPictureReader::Take(const RichFormat& format) {
    if (!showable_ || run_.picture.empty())
        return {};
    run_.format = format;
    run_.pictureWidth = RichNumber{run_.pictureWidth * scaleX_ / 100}.twips();
    run_.pictureHeight = RichNumber{run_.pictureHeight * scaleY_ / 100}.twips();
    return std::move(run_);
}

RichText RichTextReader::Read() {
    for (;;) {
        const RichToken token = tokens_.Next();
        const bool brace =
            token.kind == RichToken::Kind::OpenGroup || token.kind == RichToken::Kind::CloseGroup;
        if (brace)
            fallbackLeft_ = 0;
        else if (fallbackLeft_ > 0 && token.kind != RichToken::Kind::End) {
            --fallbackLeft_;
            continue;
        }
        switch (token.kind) {
        case RichToken::Kind::OpenGroup:
            openGroup();
            break;
        case RichToken::Kind::CloseGroup:
            closeGroup();
            break;
        case RichToken::Kind::Word:
            word(token);
            break;
        case RichToken::Kind::Character:
            character(token.number);
            break;
        case RichToken::Kind::Binary:
            binary(token.text);
            break;
        case RichToken::Kind::End:
            blocks_.EndAll(group());
            return std::move(document_);
        }
    }
}

void RichTextReader::openGroup() {
    starred_ = false;
    if (groups_.size() < deepestGroup)
        groups_.push_back(group());
    else
        ++groupsTooDeep_;
}

void RichTextReader::closeGroup() {
    starred_ = false;
    if (groupsTooDeep_ > 0) {
        --groupsTooDeep_;
        return;
    }
    // A brace too many: what follows is read in the outermost group.
    if (groups_.size() == 1)
        return;
    const bool wasPicture = group().destination == Destination::Picture;
    groups_.pop_back();
    if (!wasPicture || !readingPage() || group().hidden)
        return;
    if (std::optional<RichRun> picture = picture_.Take(group().format))
        blocks_.AddPicture(std::move(*picture));
}

// Nothing leads out of what is not seen but the end of its group.
void RichTextReader::enter(Destination destination) {
    if (group().destination != Destination::Nowhere)
        group().destination = destination;
}

void RichTextReader::character(int byte) {
    starred_ = false;
    switch (group().destination) {
    case Destination::Page: {
        const auto font = document_.fonts.find(group().format.font);
        const bool symbols = font != document_.fonts.end() && font->second.symbols;
        addText(Utf8(RichCharacter(byte, symbols)));
        break;
    }
    case Destination::Fonts:
        if (std::string& name = tableFont().name; byte != ';' && name.size() < longestFontName)
            name += Utf8(RichCharacter(byte, false));
        break;
    case Destination::Colours:
        if (byte == ';')
            endColour();
        break;
    case Destination::Picture:
        picture_.AddDigit(byte);
        break;
    case Destination::Nowhere:
        break;
    }
}

void RichTextReader::binary(std::string_view bytes) {
    if (group().destination == Destination::Picture)
        picture_.AddBytes(bytes);
}

RichFont& RichTextReader::tableFont() {
    auto& fonts = document_.fonts;
    return fonts.size() < mostFonts || fonts.contains(font_) ? fonts[font_] : leftOut_;
}

void RichTextReader::setFontKind(RichFont::Kind kind) {
    if (readingFonts())
        tableFont().kind = kind;
}

void RichTextReader::setFontSymbols(bool symbols) {
    if (readingFonts())
        tableFont().symbols = symbols;
}

// Characters above FFFF come in two halves, each written as a number of 16 bits with a sign.
void RichTextReader::addUtf16Unit(int number) {
    fallbackLeft_ = group().fallbackLength;
    if (!readingPage())
        return;
    const int unit = number < 0 ? number + 0x10000 : number;
    const int high = std::exchange(highSurrogate_, 0);
    if (unit >= firstLowSurrogate && unit <= lastLowSurrogate && high) {
        const int code = 0x10000 + (high - firstHighSurrogate) * 0x400 + unit - firstLowSurrogate;
        addText(Utf8(static_cast<char32_t>(code)));
    } else if (unit >= firstHighSurrogate && unit < firstLowSurrogate) {
        highSurrogate_ = unit;
    } else if (unit >= 0xF020 && unit <= 0xF0FF) {
        addText(Utf8(RichCharacter(unit - 0xF000, true))); // the range of fonts of signs
    } else {
        const bool control = unit < ' ' || (unit >= 0x7F && unit <= 0x9F);
        addText(Utf8(static_cast<char32_t>(control ? replacement : unit)));
    }
}

void RichTextReader::addText(std::string_view text) {
    highSurrogate_ = 0;
    if (readingPage() && !group().hidden)
        blocks_.AddText(text, group().format);
}

void RichTextReader::mixColour(int shift, RichNumber part) {
    const auto value = static_cast<std::uint32_t>(std::clamp(part.value, 0, 255));
    mixedColour_ = (mixedColour_.value_or(0) & ~(0xFFu << shift)) | value << shift;
}

// An entry without parts is the page's own colour.
void RichTextReader::endColour() {
    const RichColour colour = std::exchange(mixedColour_, {});
    if (colours_.size() < mostColours)
        colours_.push_back(colour);
}

RichColour RichTextReader::colour(RichNumber index) const {
    const auto i = static_cast<std::size_t>(std::max(index.value, 0));
    return i < colours_.size() ? colours_[i] : RichColour();
}

RichFormat RichTextReader::plainFormat() const {
    RichFormat plain;
    plain.font = defaultFont_;
    return plain;
}

std::optional<RichText> ReadRichText(std::string_view rtf) {
    if (rtf.substr(0, beginning.size()) != beginning)
        return {};
    return RichTextReader(rtf).Read();
}

} // namespace platform
