#include "shell/help/rich_text_reader.h"

#include "app/hex_text.h"
#include "platform/qt/fonts.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

// Each group needs a copy of the state, and some files open thousands of groups without closing
// any. Groups nested beyond this limit share the state of the deepest group within the limit.
constexpr std::size_t maxGroups = 250;
constexpr qsizetype maxColours = 1000;
constexpr qsizetype maxFontName = 100;
constexpr qsizetype maxRun = 4096;
constexpr int maxRuns = 500;     // for each tab, Qt scans the rest of the paragraph
constexpr int maxUnbroken = 128; // for each line, Qt scans the whole word

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char16_t codePage1252(int byte) {
    constexpr char16_t from80[] =
        u"\u20AC\uFFFD\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\uFFFD"
        u"\u017D\uFFFD\uFFFD\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A"
        u"\u0153\uFFFD\u017E\u0178";
    return byte >= 0x80 && byte < 0xA0 ? from80[byte - 0x80] : static_cast<char16_t>(byte);
}

// The character for a byte of text in a symbol font. Only the usual list markers of the two common
// symbol fonts are translated: bullet, square, arrowhead, check mark.
char16_t symbol(int byte) {
    constexpr std::string_view bytes = "\x6C\xB7\x6E\xA7\xD8\xFC";
    constexpr char16_t symbols[] = u"\u2022\u2022\u25AA\u25AA\u27A2\u2713";
    const std::size_t found = bytes.find(static_cast<char>(byte));
    return found < bytes.size() ? symbols[found] : codePage1252(byte);
}

// False for control characters other than tab, and for characters that QTextDocument reserves. Also
// false for characters of certain complex scripts: Qt would print a warning for every font that
// cannot shape such a script.
bool isShown(char32_t code) {
    const QChar::Script script = QChar::script(code);
    const bool needsShaping = (script >= QChar::Script_Syriac && script <= QChar::Script_Sinhala) ||
                              script == QChar::Script_Khmer || script == QChar::Script_Nko;
    const bool isControl = QChar::category(code) == QChar::Other_Control && code != U'\t';
    return !needsShaping && !isControl && !QChar::isNonCharacter(code) && code != U'\u2029' &&
           code != U'\uFFFC';
}

} // namespace

bool RichTextReader::Read(std::string_view rtf, QTextDocument& document, double pixelRatio) {
    if (!rtf.starts_with("{\\rtf"))
        return false;
    QFont font(sansFont(points12).family());
    font.setPixelSize(points12);
    document.setDefaultFont(font);
    RichTextReader reader(rtf, document, pixelRatio);
    while (!reader.rest_.empty() && !reader.page_.Full())
        reader.next();
    reader.group().destination = Destination::Page;
    reader.end(HelpPage::Part::Row);
    reader.page_.Finish();
    return true;
}

// Line ends and all other bytes below 20 (hexadecimal) except tabs are skipped.
void RichTextReader::next() {
    const char c = rest_.front();
    rest_.remove_prefix(1);
    if (c == '{' || c == '}') {
        starred_ = false;
        fallbackLeft_ = 0;
        c == '{' ? openGroup() : closeGroup();
    } else if (c == '\\') {
        !rest_.empty() && isLetter(rest_.front()) ? controlWord() : controlSymbol();
    } else if (c == '\t') {
        word("tab", {});
    } else if (static_cast<unsigned char>(c) >= ' ') {
        byte(static_cast<unsigned char>(c));
    }
}

void RichTextReader::controlSymbol() {
    const std::string_view symbol = rest_.substr(0, 1);
    rest_.remove_prefix(symbol.size());
    const std::string_view digits = rest_.substr(0, 2);
    if (symbol == "\\" || symbol == "{" || symbol == "}") {
        byte(symbol[0]);
    } else if (const auto value = modFunc::StrictHex(digits);
               symbol == "'" && digits.size() == 2 && value) {
        rest_.remove_prefix(2);
        byte(*value);
    } else {
        word(symbol == "\t" ? "tab" : symbol == "\r" || symbol == "\n" ? "par" : symbol, {});
    }
}

void RichTextReader::controlWord() {
    const std::string_view name(rest_.begin(),
                                std::find_if_not(rest_.begin(), rest_.end(), isLetter));
    rest_.remove_prefix(name.size());
    Number number;
    const char* const begin = rest_.data();
    const char* const end = std::from_chars(begin, begin + rest_.size(), number.value).ptr;
    number.given = end != begin;
    rest_.remove_prefix(static_cast<std::size_t>(end - begin));
    if (rest_.starts_with(' ')) // the delimiter is part of the control word
        rest_.remove_prefix(1);
    word(name, number);
}

void RichTextReader::openGroup() {
    if (groups_.size() < maxGroups)
        groups_.push_back(group());
    else
        ++groupsTooDeep_;
}

void RichTextReader::closeGroup() {
    if (groupsTooDeep_ > 0) {
        --groupsTooDeep_;
        return;
    }
    if (groups_.size() == 1) // a surplus closing brace has no effect
        return;
    const bool wasPicture = group().destination == Destination::Picture;
    groups_.pop_back();
    if (wasPicture && group().destination != Destination::Picture)
        addPicture();
}

// Once in Destination::Nowhere, a group stays there until its end.
void RichTextReader::enter(Destination destination) {
    if (group().destination != Destination::Nowhere)
        group().destination = destination;
}

void RichTextReader::byte(int value) {
    starred_ = false;
    if (fallbackLeft_ > 0) {
        --fallbackLeft_;
        return;
    }
    switch (group().destination) {
    case Destination::Page:
        addUtf16(font(text()).symbols ? symbol(value) : codePage1252(value));
        break;
    case Destination::Fonts:
        if (QString& name = fontEntry().name; value != ';' && name.size() < maxFontName)
            name += QChar(codePage1252(value));
        break;
    case Destination::Colours: // an empty entry is the page's own colour
        if (value == ';' && colours_.size() < maxColours)
            colours_.push_back(std::exchange(mixedColour_, {}));
        break;
    case Destination::Picture:
        picture_.digits += static_cast<char>(value);
        break;
    case Destination::Nowhere:
        break;
    }
}

void RichTextReader::addUnicode(int number) {
    fallbackLeft_ = group().fallbackLength;
    const auto unit = static_cast<char16_t>(number);        // may be negative in a file
    const bool isSymbol = unit >= 0xF020 && unit <= 0xF0FF; // the range that symbol fonts use
    addUtf16(isSymbol ? symbol(unit - 0xF000) : unit);
}

void RichTextReader::addUtf16(char16_t unit) {
    if (!onPage() || group().hidden)
        return;
    const bool whole = !QChar::isLowSurrogate(unit);
    const bool separator = unit == u'\t' || unit == QChar::LineSeparator;
    if ((run_.size() >= maxRun && whole) || separator || text() != runFormat_)
        endRun();
    if (runs_ >= maxRuns)
        end(HelpPage::Part::Paragraph);
    runFormat_ = text();
    if (separator || unit == u' ') {
        unbroken_ = 0;
    } else if (++unbroken_ > maxUnbroken && whole) {
        run_ += u'\u200B'; // allows a line break here
        unbroken_ = 1;
    }
    run_ += QChar(unit);
}

void RichTextReader::endRun() {
    QString shown;
    for (const char32_t code : run_.toUcs4())
        shown += QChar::fromUcs4(isShown(code) ? code : U'\uFFFD');
    run_.clear();
    ++runs_;
    if (!shown.isEmpty())
        page_.AddText(shown, charFormat(runFormat_), group().paragraph.inTable);
}

void RichTextReader::end(HelpPage::Part part) {
    if (!onPage())
        return;
    endRun();
    page_.End(part, blockFormat(), charFormat(text()), group().paragraph.inTable);
    runs_ = unbroken_ = 0;
}

void RichTextReader::addPicture() {
    const Picture picture = std::exchange(picture_, {});
    if (!onPage() || group().hidden)
        return;
    endRun();
    const QSize size(picture.size.width() * picture.scale.width() / 100,
                     picture.size.height() * picture.scale.height() / 100);
    page_.AddPicture(QByteArray::fromHex(picture.digits), size, group().paragraph.inTable);
}

// A font that is not installed is replaced by one of the same kind: a serif font, or the sans or
// fixed font that the other windows use.
QTextCharFormat RichTextReader::charFormat(QTextCharFormat format) const {
    static const QString sans = sansFont(points12).family();
    static const QString fixed = fixedFont(points12).family();
    const Font wanted = font(format);
    QStringList families;
    if (!wanted.symbols && !wanted.name.isEmpty())
        families << wanted.name;
    if (wanted.serif)
        families << QStringLiteral("Liberation Serif") << QStringLiteral("DejaVu Serif");
    families << (wanted.fixed ? fixed : sans);
    format.setFontFamilies(families);
    format.setFontStyleHint(wanted.fixed ? QFont::Monospace : QFont::AnyStyle);
    return format;
}

// The file measures tab stops from the page's left edge, Qt from the beginning of the line. A
// hanging indent implies a tab stop at the left margin, and lists rely on that tab stop.
QTextBlockFormat RichTextReader::blockFormat() const {
    const Paragraph& paragraph = groups_.back().paragraph;
    QTextBlockFormat shown = paragraph.shown;
    QList<int> stops = paragraph.tabStops;
    if (shown.textIndent() < 0)
        stops.append(int(shown.leftMargin()));
    std::sort(stops.begin(), stops.end());
    QList<QTextOption::Tab> tabs;
    for (const int stop : stops)
        if (const qreal position = stop - shown.leftMargin() - shown.textIndent(); position > 0)
            tabs.append(QTextOption::Tab(position, QTextOption::LeftTab));
    shown.setTabPositions(tabs);
    return shown;
}

void RichTextReader::plain() {
    group().hidden = false;
    text() = {};
    text().setProperty(fontProperty, defaultFont_);
    text().setProperty(QTextFormat::FontPixelSize, points12);
}

void RichTextReader::setColour(int property, int index) {
    if (const QColor colour = colours_.value(index); colour.isValid())
        text().setProperty(property, QBrush(colour));
    else
        text().clearProperty(property);
}
