// Rich text (RTF), read for display.
//
// Taken in is what word processors write for a guide: fonts, sizes, colours, bold, italic,
// underline; paragraphs with alignment, indents, spacing and tab stops; lists, whose numbers and
// bullets the file carries as text; tables without merged cells; PNG and JPEG pictures; the visible
// text of links. What is not known is left out. Damaged text is shown as far as it can be made out;
// time and memory grow with the text's length and no faster, up to the size of a page that a window
// can lay out at once (RichText says how large): what would come behind that is left out.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

using RichColour = std::optional<std::uint32_t>; // 0xRRGGBB; none: the page's own

struct RichFont {
    enum class Kind { Any, Serif, Sans, Fixed };
    std::string name; // may be empty
    Kind kind = Kind::Any;
    bool symbols = false; // its characters are signs, not letters
};

struct RichFormat {
    int font = 0;        // key in RichText::fonts, which need not hold it
    int halfPoints = 24; // 2..400
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    int script = 0; // above 0 raised and small, below 0 lowered and small
    RichColour colour;
    RichColour background;
    bool operator==(const RichFormat&) const = default;
};

// Text of one format, or a picture.
struct RichRun {
    RichFormat format;
    std::string text;      // UTF-8; a tab is 09, a line break 0A, other control characters none
    std::string picture;   // a whole PNG or JPEG file; then `text` is empty
    int pictureWidth = 0;  // twips; 0: as the picture says
    int pictureHeight = 0; // twips
};

// Lengths in twips, between -32000 and 32000.
struct RichLayout {
    enum class Alignment { Left, Right, Centre, Justified };
    Alignment alignment = Alignment::Left;
    int left = 0;
    int right = 0;
    int firstLine = 0; // added to `left` in the first line
    int before = 0;    // space above
    int after = 0;
    std::vector<int> tabStops; // from the page's left edge, as written; at most 32
};

struct RichParagraph {
    RichLayout layout;
    RichFormat endFormat; // gives an empty paragraph its height
    std::vector<RichRun> runs;
};

struct RichCell {
    int rightEdge = 0; // twips from the page's left edge; 0: not told
    RichColour background;
    std::vector<RichParagraph> paragraphs; // never empty
};

struct RichRow {
    int left = 0; // twips
    bool bordered = false;
    std::vector<RichCell> cells; // 1..64
};

// No more than 20000 runs, paragraphs and cells and 512 KiB of text, and hardly a piece beyond.
struct RichText {
    std::map<int, RichFont> fonts; // at most 1000, of names of about 100 bytes at most
    std::vector<std::variant<RichParagraph, RichRow>> blocks;
};

// None if `rtf` does not begin as rich text does. Everything else gives a document, be it empty.
std::optional<RichText> ReadRichText(std::string_view rtf);

} // namespace platform
