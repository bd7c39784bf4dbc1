#include "platform/rich_text_reader.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace platform {

namespace {

// Each paragraph and group carries a copy of them.
constexpr std::size_t mostTabStops = 32;
// A larger number would only serve to hide the rest of a damaged file.
constexpr int longestFallback = 16;

// Groups that are no part of the page, beside those that the file itself marks as such.
const std::unordered_set<std::string_view>& unseenGroups() {
    static const std::unordered_set<std::string_view> names = {
        "annotation",
        "atnauthor",
        "atnid",
        "comment",
        "filetbl",
        "fldinst",
        "footer",
        "footerf",
        "footerl",
        "footerr",
        "footnote",
        "generator",
        "header",
        "headerf",
        "headerl",
        "headerr",
        "info",
        "listtable",
        "objdata",
        "pntxta",
        "nonshppict",
        "nonesttables",
        "listoverridetable",
        "pntxtb",
        "revtbl",
        "rsidtbl",
        "stylesheet",
        "tc",
        "template",
        "xe",
    };
    return names;
}

const std::unordered_map<std::string_view, std::string_view>& signs() {
    static const std::unordered_map<std::string_view, std::string_view> texts = {
        {"tab", "\t"},           {"line", "\n"},
        {"~", "\u00A0"},         {"_", "\u2011"},
        {"-", "\u00AD"},         {"emdash", "\u2014"},
        {"endash", "\u2013"},    {"bullet", "\u2022"},
        {"lquote", "\u2018"},    {"rquote", "\u2019"},
        {"ldblquote", "\u201C"}, {"rdblquote", "\u201D"},
        {"emspace", "\u2003"},   {"enspace", "\u2002"},
        {"nestcell", "\t"}, // a table inside a table is shown as lines of text
    };
    return texts;
}

} // namespace

void RichTextReader::word(const RichToken& token) {
    const bool starred = std::exchange(starred_, false);
    if (token.text == "*") {
        starred_ = true;
        return;
    }
    // Of what may be passed over only the newer form of a picture is wanted.
    if ((starred && token.text != "shppict") || unseenGroups().contains(token.text)) {
        enter(Destination::Nowhere);
        return;
    }
    if (group().destination == Destination::Nowhere)
        return;
    if (const auto handler = words().find(token.text); handler != words().end())
        handler->second(*this, {token.number, token.numbered});
    else if (const auto sign = signs().find(token.text); sign != signs().end())
        addText(sign->second);
}

const RichTextReader::Words& RichTextReader::words() {
    static const Words all = [] {
        Words words;
        addDestinationWords(words);
        addFormatWords(words);
        addParagraphWords(words);
        addTableWords(words);
        return words;
    }();
    return all;
}

void RichTextReader::addDestinationWords(Words& words) {
    using R = RichTextReader;
    using N = RichNumber;
    const auto add = [&](std::string_view name, Handler handler) { words[name] = handler; };
    add("fonttbl", [](R& r, N) { r.enter(Destination::Fonts); });
    add("fswiss", [](R& r, N) { r.setFontKind(RichFont::Kind::Sans); });
    add("froman", [](R& r, N) { r.setFontKind(RichFont::Kind::Serif); });
    add("fmodern", [](R& r, N) { r.setFontKind(RichFont::Kind::Fixed); });
    add("fcharset", [](R& r, N n) { r.setFontSymbols(n.value == 2); });
    add("deff", [](R& r, N n) { r.group().format.font = r.defaultFont_ = n.value; });

    add("colortbl", [](R& r, N) { r.enter(Destination::Colours); });
    add("red", [](R& r, N n) { r.mixColour(16, n); });
    add("green", [](R& r, N n) { r.mixColour(8, n); });
    add("blue", [](R& r, N n) { r.mixColour(0, n); });

    add("pict", [](R& r, N) {
        r.enter(Destination::Picture);
        r.picture_ = {};
    });
    add("pngblip", [](R& r, N) { r.picture_.SetShowable(); });
    add("jpegblip", [](R& r, N) { r.picture_.SetShowable(); });
    add("picwgoal", [](R& r, N n) { r.picture_.SetWidth(n); });
    add("pichgoal", [](R& r, N n) { r.picture_.SetHeight(n); });
    add("picscalex", [](R& r, N n) { r.picture_.SetScaleX(n); });
    add("picscaley", [](R& r, N n) { r.picture_.SetScaleY(n); });

    add("uc",
        [](R& r, N n) { r.group().fallbackLength = std::clamp(n.value, 0, longestFallback); });
    add("u", [](R& r, N n) { r.addUtf16Unit(n.value); });
}

void RichTextReader::addFormatWords(Words& words) {
    using R = RichTextReader;
    using N = RichNumber;
    const auto add = [&](std::string_view name, Handler handler) { words[name] = handler; };
    add("plain", [](R& r, N) {
        r.group().format = r.plainFormat();
        r.group().hidden = false;
    });
    add("f", [](R& r, N n) {
        if (r.readingFonts())
            r.font_ = n.value;
        else
            r.group().format.font = n.value;
    });
    add("fs", [](R& r, N n) { r.group().format.halfPoints = std::clamp(n.value, 2, 400); });
    add("b", [](R& r, N n) { r.group().format.bold = n.on(); });
    add("i", [](R& r, N n) { r.group().format.italic = n.on(); });
    for (const char* name : {"ul", "uld", "uldash", "uldb", "ulth", "ulw", "ulwave"})
        add(name, [](R& r, N n) { r.group().format.underline = n.on(); });
    add("ulnone", [](R& r, N) { r.group().format.underline = false; });
    add("strike", [](R& r, N n) { r.group().format.strikeOut = n.on(); });
    add("super", [](R& r, N n) { r.group().format.script = n.on() ? 1 : 0; });
    add("sub", [](R& r, N n) { r.group().format.script = n.on() ? -1 : 0; });
    add("nosupersub", [](R& r, N) { r.group().format.script = 0; });
    add("cf", [](R& r, N n) { r.group().format.colour = r.colour(n); });
    for (const char* name : {"cb", "chcbpat", "highlight"})
        add(name, [](R& r, N n) { r.group().format.background = r.colour(n); });
    for (const char* name : {"v", "deleted"})
        add(name, [](R& r, N n) { r.group().hidden = n.on(); });
}

void RichTextReader::addParagraphWords(Words& words) {
    using R = RichTextReader;
    using N = RichNumber;
    using Alignment = RichLayout::Alignment;
    const auto add = [&](std::string_view name, Handler handler) { words[name] = handler; };
    for (const char* name : {"par", "sect", "nestrow"})
        add(name, [](R& r, N) {
            if (r.readingPage())
                r.blocks_.EndParagraph(r.group());
        });
    add("pard", [](R& r, N) {
        r.group().layout = {};
        r.group().inTable = false;
        r.borderOfTable_ = false;
    });
    add("ql", [](R& r, N) { r.group().layout.alignment = Alignment::Left; });
    add("qr", [](R& r, N) { r.group().layout.alignment = Alignment::Right; });
    add("qc", [](R& r, N) { r.group().layout.alignment = Alignment::Centre; });
    add("qj", [](R& r, N) { r.group().layout.alignment = Alignment::Justified; });
    add("li", [](R& r, N n) { r.group().layout.left = n.twips(); });
    add("ri", [](R& r, N n) { r.group().layout.right = n.twips(); });
    add("fi", [](R& r, N n) { r.group().layout.firstLine = n.twips(); });
    add("sb", [](R& r, N n) { r.group().layout.before = n.twips(); });
    add("sa", [](R& r, N n) { r.group().layout.after = n.twips(); });
    add("tx", [](R& r, N n) {
        std::vector<int>& stops = r.group().layout.tabStops;
        if (stops.size() < mostTabStops)
            stops.push_back(n.twips());
    });
    for (const char* name : {"brdrt", "brdrb", "brdrl", "brdrr", "box"})
        add(name, [](R& r, N) { r.borderOfTable_ = false; });
}

void RichTextReader::addTableWords(Words& words) {
    using R = RichTextReader;
    using N = RichNumber;
    const auto add = [&](std::string_view name, Handler handler) { words[name] = handler; };
    add("intbl", [](R& r, N) { r.group().inTable = true; });
    add("trowd", [](R& r, N) { r.blocks_.BeginRowDefinition(); });
    add("trleft", [](R& r, N n) { r.blocks_.SetRowLeft(n.twips()); });
    add("cellx", [](R& r, N n) { r.blocks_.DefineCell(n.twips()); });
    add("clcbpat", [](R& r, N n) { r.blocks_.SetCellBackground(r.colour(n)); });
    for (const char* name : {"clbrdrt", "clbrdrb", "clbrdrl", "clbrdrr", "trbrdrt", "trbrdrb",
                             "trbrdrl", "trbrdrr", "trbrdrh", "trbrdrv"})
        add(name, [](R& r, N) { r.borderOfTable_ = true; });
    for (const char* name : {"brdrs", "brdrth", "brdrdb", "brdrdot", "brdrdash", "brdrhair"})
        add(name, [](R& r, N) {
            if (r.borderOfTable_)
                r.blocks_.SetRowBordered();
        });
    add("cell", [](R& r, N) {
        if (r.readingPage())
            r.blocks_.EndCell(r.group());
    });
    add("row", [](R& r, N) {
        if (r.readingPage())
            r.blocks_.EndRow(r.group());
    });
}

} // namespace platform
