// What each control word does.
#include "shell/help/rich_text_reader.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

using R = RichTextReader;

constexpr qsizetype maxTabStops = 32;
constexpr std::size_t maxCells = 64; // in a row
// Maximum for \uc, the number of characters skipped after each \u. Without it, a damaged file with
// a large number there could hide most of its text.
constexpr int maxFallback = 16;
// Qt prints a warning for a font of size 0. A subscript is two thirds the size of the text, so it
// would have size 0 if the text size were 1.
constexpr int minPixelSize = 2;
constexpr int maxPixelSize = 96;
constexpr int twipsPerHalfPoint = 10;
// Maximum margins in pixels. They leave about 250 pixels for the text.
constexpr int maxLeft = 300;
constexpr int maxRight = 100;

constexpr auto normal = QTextCharFormat::AlignNormal;
constexpr auto raised = QTextCharFormat::AlignSuperScript;
constexpr auto lowered = QTextCharFormat::AlignSubScript;

// The tables are built at first use, not before main(), where a lack of memory could not be
// reported.

// Groups that are not shown even if the file does not mark them as optional.
const std::unordered_set<std::string_view>& unseenGroups() {
    static const std::unordered_set<std::string_view> table = {
        "annotation", "atnauthor", "atnid",      "comment",      "filetbl",  "fldinst",
        "footer",     "footerf",   "footerl",    "footerr",      "footnote", "generator",
        "header",     "headerf",   "headerl",    "headerr",      "info",     "listtable",
        "objdata",    "pntxta",    "nonshppict", "nonesttables", "pntxtb",   "listoverridetable",
        "revtbl",     "rsidtbl",   "stylesheet", "tc",           "template", "xe"};
    return table;
}

// Control words for single characters. A table inside a table is shown as text: each of its cells
// ends with a tab.
const std::unordered_map<std::string_view, char16_t>& characters() {
    static const std::unordered_map<std::string_view, char16_t> table = {
        {"tab", u'\t'},         {"line", u'\u2028'},      {"~", u'\u00A0'},
        {"_", u'\u2011'},       {"-", u'\u00AD'},         {"emdash", u'\u2014'},
        {"endash", u'\u2013'},  {"bullet", u'\u2022'},    {"lquote", u'\u2018'},
        {"rquote", u'\u2019'},  {"ldblquote", u'\u201C'}, {"rdblquote", u'\u201D'},
        {"emspace", u'\u2003'}, {"enspace", u'\u2002'},   {"nestcell", u'\t'}};
    return table;
}

// Control words that are treated like another control word.
const std::unordered_map<std::string_view, std::string_view>& synonyms() {
    static const std::unordered_map<std::string_view, std::string_view> table = {
        {"sect", "par"},       {"deleted", "v"},      {"cb", "highlight"},     {"uld", "ul"},
        {"uldash", "ul"},      {"uldb", "ul"},        {"ulth", "ul"},          {"ulw", "ul"},
        {"ulwave", "ul"},      {"brdrth", "brdrs"},   {"brdrdb", "brdrs"},     {"brdrdot", "brdrs"},
        {"brdrdash", "brdrs"}, {"brdrhair", "brdrs"}, {"chcbpat", "highlight"}};
    return table;
}

} // namespace

void RichTextReader::word(std::string_view name, Number number) {
    if (name == "bin") {
        const auto bytes = rest_.substr(0, static_cast<std::size_t>(std::max(number.value, 0)));
        rest_.remove_prefix(bytes.size());
        if (group().destination == Destination::Picture)
            picture_.digits += QByteArray(bytes.data(), qsizetype(bytes.size())).toHex();
        return;
    }
    if (fallbackLeft_ > 0) {
        --fallbackLeft_;
        return;
    }
    // Groups marked \* may be skipped. Of these, only \shppict, the newer form of a picture, is
    // read.
    const bool starred = std::exchange(starred_, name == "*");
    if ((starred && name != "shppict") || unseenGroups().contains(name))
        enter(Destination::Nowhere);
    if (group().destination == Destination::Nowhere)
        return;
    if (const auto synonym = synonyms().find(name); synonym != synonyms().end())
        name = synonym->second;
    if (const auto handler = handlers().find(name); handler != handlers().end())
        handler->second(*this, number);
    else if (const auto character = characters().find(name); character != characters().end())
        addUtf16(character->second);
}

const RichTextReader::Handlers& RichTextReader::handlers() {
    static const Handlers table = {
        // Font and colour tables; pictures; characters.
        {"fonttbl", [](R& r, Number) { r.enter(Destination::Fonts); }},
        {"froman", [](R& r, Number) { r.fontEntry().serif = true; }},
        {"fmodern", [](R& r, Number) { r.fontEntry().fixed = true; }},
        {"fcharset", [](R& r, Number n) { r.fontEntry().symbols = n.value == 2; }},
        {"deff",
         [](R& r, Number n) { r.text().setProperty(fontProperty, r.defaultFont_ = n.value); }},
        {"colortbl", [](R& r, Number) { r.enter(Destination::Colours); }},
        {"red", [](R& r, Number n) { r.mixedColour_.setRed(std::clamp(n.value, 0, 255)); }},
        {"green", [](R& r, Number n) { r.mixedColour_.setGreen(std::clamp(n.value, 0, 255)); }},
        {"blue", [](R& r, Number n) { r.mixedColour_.setBlue(std::clamp(n.value, 0, 255)); }},
        {"pict", [](R& r, Number) { r.enter(Destination::Picture); }},
        {"picwgoal", [](R& r, Number n) { r.picture_.size.setWidth(n.Pixels()); }},
        {"pichgoal", [](R& r, Number n) { r.picture_.size.setHeight(n.Pixels()); }},
        {"picscalex",
         [](R& r, Number n) { r.picture_.scale.setWidth(std::clamp(n.value, 1, 999)); }},
        {"picscaley",
         [](R& r, Number n) { r.picture_.scale.setHeight(std::clamp(n.value, 1, 999)); }},
        {"uc",
         [](R& r, Number n) { r.group().fallbackLength = std::clamp(n.value, 0, maxFallback); }},
        {"u", [](R& r, Number n) { r.addUnicode(n.value); }},

        // Text.
        {"plain", [](R& r, Number) { r.plain(); }},
        {"f", [](R& r, Number n) { r.text().setProperty(fontProperty, r.fontKey_ = n.value); }},
        {"fs",
         [](R& r, Number n) {
             const int size = std::clamp(n.Pixels(twipsPerHalfPoint), minPixelSize, maxPixelSize);
             r.text().setProperty(QTextFormat::FontPixelSize, size);
         }},
        {"b", [](R& r, Number n) { r.text().setFontWeight(n.On() ? QFont::Bold : QFont::Normal); }},
        {"i", [](R& r, Number n) { r.text().setFontItalic(n.On()); }},
        {"ul", [](R& r, Number n) { r.text().setFontUnderline(n.On()); }},
        {"ulnone", [](R& r, Number) { r.text().setFontUnderline(false); }},
        {"strike", [](R& r, Number n) { r.text().setFontStrikeOut(n.On()); }},
        {"super", [](R& r, Number n) { r.text().setVerticalAlignment(n.On() ? raised : normal); }},
        {"sub", [](R& r, Number n) { r.text().setVerticalAlignment(n.On() ? lowered : normal); }},
        {"nosupersub", [](R& r, Number) { r.text().setVerticalAlignment(normal); }},
        {"cf", [](R& r, Number n) { r.setColour(QTextFormat::ForegroundBrush, n.value); }},
        {"highlight", [](R& r, Number n) { r.setColour(QTextFormat::BackgroundBrush, n.value); }},
        {"v", [](R& r, Number n) { r.group().hidden = n.On(); }},

        // Paragraphs.
        {"par", [](R& r, Number) { r.end(HelpPage::Part::Paragraph); }},
        {"pard", [](R& r, Number) { r.group().paragraph = {}; }},
        {"ql", [](R& r, Number) { r.block().setAlignment(Qt::AlignLeft | Qt::AlignAbsolute); }},
        {"qr", [](R& r, Number) { r.block().setAlignment(Qt::AlignRight | Qt::AlignAbsolute); }},
        {"qc", [](R& r, Number) { r.block().setAlignment(Qt::AlignHCenter); }},
        {"qj", [](R& r, Number) { r.block().setAlignment(Qt::AlignJustify); }},
        {"li", [](R& r, Number n) { r.block().setLeftMargin(std::min(n.Pixels(), maxLeft)); }},
        {"ri", [](R& r, Number n) { r.block().setRightMargin(std::min(n.Pixels(), maxRight)); }},
        {"fi", [](R& r, Number n) { r.block().setTextIndent(n.Pixels()); }},
        {"sb", [](R& r, Number n) { r.block().setTopMargin(std::max(n.Pixels(), 0)); }},
        {"sa", [](R& r, Number n) { r.block().setBottomMargin(std::max(n.Pixels(), 0)); }},
        {"tx",
         [](R& r, Number n) {
             if (QList<int>& stops = r.group().paragraph.tabStops; stops.size() < maxTabStops)
                 stops.append(n.Pixels());
         }},

        // Tables. Borders described between \trowd and \pard belong to the row.
        {"trowd",
         [](R& r, Number) {
             r.page_.row = {};
             r.cell_ = {};
             r.group().paragraph.describesRow = true;
         }},
        {"trleft", [](R& r, Number n) { r.page_.row.left = n.Pixels(); }},
        {"brdrs", [](R& r, Number) { r.page_.row.bordered |= r.group().paragraph.describesRow; }},
        {"clcbpat", [](R& r, Number n) { r.cell_.background = r.colours_.value(n.value); }},
        {"cellx",
         [](R& r, Number n) {
             r.cell_.rightEdge = n.Pixels();
             if (r.page_.row.cells.size() < maxCells)
                 r.page_.row.cells.push_back(std::exchange(r.cell_, {}));
         }},
        {"intbl", [](R& r, Number) { r.group().paragraph.inTable = true; }},
        {"cell", [](R& r, Number) { r.end(HelpPage::Part::Cell); }},
        {"row", [](R& r, Number) { r.end(HelpPage::Part::Row); }},
    };
    return table;
}
