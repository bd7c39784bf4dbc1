// The help page: what it makes of rich text, and that no file holds the program up.
#include "app/state.h"
#include "shell/help/frmHelp.h"
#include "shell/help/rich_text_reader.h"
#include "tests/support/temporary_folder.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QTextEdit>
#include <QTextTable>

#include <ctime>
#include <gtest/gtest.h>

namespace {

QString textOf(const QTextBlock& block) {
    QString text;
    for (auto i = block.begin(); !i.atEnd(); ++i) {
        const QTextFormat format = i.fragment().charFormat();
        const QTextImageFormat picture = format.toImageFormat();
        text += picture.isValid() ? QStringLiteral("<picture>") : i.fragment().text();
    }
    return text.replace(QChar::LineSeparator, u'↵').replace(u'\t', u'→').replace(u'\u00A0', u'°');
}

// Paragraphs end with ¶, Qt's empty one in front of a table too, cells are in brackets; ↵ is a line
// break, → a tab, ° a no-break space.
QString textOf(const QTextFrame& frame) {
    QString text;
    for (auto i = frame.begin(); !i.atEnd(); ++i) {
        if (auto* table = qobject_cast<QTextTable*>(i.currentFrame())) {
            for (int cell = 0; cell < table->rows() * table->columns(); ++cell) {
                text += u'[';
                const auto at = table->cellAt(cell / table->columns(), cell % table->columns());
                for (auto block = at.begin(); !block.atEnd(); ++block)
                    text += textOf(block.currentBlock()) + u'¶';
                text.back() = u']';
            }
        } else {
            text += textOf(i.currentBlock()) + u'¶';
        }
    }
    return text;
}

std::string shown(const std::string& body) {
    const std::string file = "{\\rtf1\\ansi " + body + "}";
    const std::vector<char> exact(file.begin(), file.end()); // reading past its end is caught
    QTextDocument document;
    EXPECT_TRUE(RichTextReader::Read({exact.data(), exact.size()}, document, 1));
    return textOf(*document.rootFrame()).toStdString();
}

struct TextRow {
    const char *name, *rtf, *shown;
    friend void PrintTo(const TextRow& row, std::ostream* out) { *out << row.name; }
};
const TextRow texts[] = {
    {"Lines", "one\\par two\r\n three\\line four\tfive\\\nsix", "one¶two three↵four→five¶six¶"},
    {"Symbols", R"(\{\}\\ a\~b\_c\emdash d\lquote e)", "{}\\ a°b‑c—d‘e¶"},
    {"CodePage", R"(\'e9\'80\'93\'81\'07\u127? \'zz)", "é€“��� zz¶"},
    {"Unicode", R"(\u8364?x\uc2\u233\'c3\'a9y\uc0\u8226 z{\uc1\u65 {}?})", "€xéy•zA?¶"},
    {"Surrogates", R"(\u-10179?\u-8704? x\u-10179?x \u-3913?)", "😀 x�x •¶"},
    {"ScriptQtWarnsOf", "\\u2325?x", "�x¶"},
    {"NotOnThePage", R"({\info{\title t}}{\header h}{\*\new{n}}{\stylesheet{\s1 s;}}{\v h}x)",
     "x¶"},
    {"Link", R"({\field{\*\fldinst HYPERLINK "u"}{\fldrslt{\ul link}}})", "link¶"},
    {"Bullet", R"({\fonttbl{\f5\fcharset2 Signs;}}{\pntext\f5\'b7\tab}a)", "•→a¶"},
    {"Binary", "a\\bin4 }}{\\c", "ac¶"},
    {"Cells", R"(\trowd\cellx9\cellx20\pard\intbl 1\par 2\cell\cell\row\pard x)", "¶[1¶2][]x¶"},
    {"MoreCells", R"(\trowd\cellx9\pard\intbl 1\cell 2\cell\row 3\cell\row\pard x)", "¶[1¶2][3]x¶"},
    {"NoDescription", R"(\pard\intbl a\cell\row\pard after\par)", "¶[a]after¶"},
    {"NoRowEnd", R"(\trowd\cellx9\pard\intbl a\pard\par b\par)", "a¶b¶"},
    {"Braces", "a}}}b{{{c", "abc¶"},
};

class HelpText : public testing::TestWithParam<TextRow> {};
TEST_P(HelpText, IsShown) {
    EXPECT_EQ(shown(GetParam().rtf), GetParam().shown);
}
INSTANTIATE_TEST_SUITE_P(, HelpText, testing::ValuesIn(texts),
                         [](const auto& row) { return std::string(row.param.name); });

// What is unusual about the first text of a document, its paragraph and the table around it.
std::string formatOf(const char* body) {
    QTextDocument document;
    RichTextReader::Read(std::string(R"({\rtf1\deff2{\fonttbl{\f2\fmodern Courier;}{\f3 Arial;}})"
                                     R"({\colortbl;\red1\green2\blue255;})") +
                             body + "}",
                         document, 1);
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::NextCharacter);
    QStringList found;
    const auto number = [&](const char* name, qreal value, qreal usual = 0) {
        if (value != usual)
            found << QString::fromLatin1(name) + QString::number(value);
    };
    const auto brush = [&](const char* name, const QBrush& value) {
        if (value.style() != Qt::NoBrush)
            found << QString::fromLatin1(name) + value.color().name();
    };
    const QTextCharFormat text = cursor.charFormat();
    if (const QString family = text.fontFamilies().toStringList().value(0); family != u"Courier")
        found << family;
    number("size", text.font().pixelSize(), 16);
    number("bold", text.font().bold());
    number("italic", text.fontItalic());
    number("underline", text.fontUnderline());
    number("strike", text.fontStrikeOut());
    number("script", text.verticalAlignment());
    brush("", text.foreground());
    brush("on", text.background());
    const QTextBlockFormat block = cursor.blockFormat();
    number("align", int(block.alignment() & ~Qt::AlignAbsolute), Qt::AlignLeft);
    number("left", block.leftMargin());
    number("right", block.rightMargin());
    number("first", block.textIndent());
    number("top", block.topMargin());
    number("bottom", block.bottomMargin());
    for (const QTextOption::Tab& tab : block.tabPositions())
        number("tab", tab.position);
    if (const QTextTable* table = cursor.currentTable()) {
        const QTextTableCell first = table->cellAt(0, 0);
        number("border", first.format().toTableCellFormat().topBorder());
        number("from", table->format().leftMargin());
        for (int column = 0; column < table->columns(); ++column) {
            number("cell", table->format().columnWidthConstraints()[column].rawValue());
            brush("on", table->cellAt(0, column).format().background());
        }
    }
    return found.join(u' ').toStdString();
}

const TextRow formats[] = {
    {"Usual", "\\plain a", ""},
    {"Font", "\\f3\\fs30 a", "Arial size20"},
    {"SizeLimits", "\\fs0 a", "size2"},
    {"Bold", "\\b a", "bold1"},
    {"BoldOff", "\\b\\b0 a", ""},
    {"BoldOfAnotherGroup", "{\\b}a", ""},
    {"Italic", "\\i a", "italic1"},
    {"Underline", "\\ulw a", "underline1"},
    {"UnderlineOff", "\\ul\\ulnone a", ""},
    {"StrikeOut", "\\strike a", "strike1"},
    {"Superscript", "\\super a", "script1"},
    {"Subscript", "\\sub a", "script2"},
    {"ScriptOff", "\\sub\\nosupersub a", ""},
    {"Plain", "\\b\\cf1\\plain a", ""},
    {"Colours", "\\cf1\\highlight1 a", "#0102ff on#0102ff"},
    {"NoSuchColour", "\\cf1\\cf9 a", ""},
    {"Centre", "\\qc a\\par", "align4"},
    {"Right", "\\qr a\\par", "align2"},
    {"Pard", "\\qc\\li300\\tx9\\pard a\\par", ""},
    {"Spacing", "\\sb30\\sa-5 a\\par", "top2"},
    {"TabStopsFromTheFirstLine", "\\li300\\ri150\\fi-150\\tx900\\tx600 a\\par",
     "left20 right10 first-10 tab10 tab30 tab50"},
    {"Table",
     R"(\trowd\trleft15\clbrdrt\brdrs\clcbpat1\cellx600\cellx900\pard\intbl x\cell y\cell\row)",
     "border1 from1 cell39 on#0102ff cell20"},
    {"BorderOfAParagraph", R"(\trowd\cellx300\pard\intbl\brdrb\brdrs z\cell\row)", "cell20"},
};

class HelpFormat : public testing::TestWithParam<TextRow> {};
TEST_P(HelpFormat, IsKept) {
    EXPECT_EQ(formatOf(GetParam().rtf), GetParam().shown);
}
INSTANTIATE_TEST_SUITE_P(, HelpFormat, testing::ValuesIn(formats),
                         [](const auto& row) { return std::string(row.param.name); });

QByteArray picture(const char* kind) {
    QImage image(40, 30, QImage::Format_RGB32);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            image.setPixel(x, y, qRgb(x * 6, y * 8, x * y));
    QBuffer file;
    image.save(&file, kind);
    return file.data();
}

std::string pict(const char* kind, const QByteArray& bytes) {
    return std::string("{\\pict\\") + kind + "blip " + bytes.toHex().toStdString() + "}";
}

class HelpPicture : public testing::TestWithParam<const char*> {};

// The damaged ones are left out, and no library prints a word about them.
TEST_P(HelpPicture, IsShownUnlessItIsDamaged) {
    const char* const kind = GetParam();
    const QByteArray bytes = picture(kind);
    EXPECT_EQ(shown("a" + pict(kind, bytes)), "a<picture>¶");
    testing::internal::CaptureStderr();
    for (qsizetype i = 0; i < bytes.size(); i += 7) {
        QByteArray damaged = bytes;
        damaged[i] = char(damaged[i] ^ 0x55);
        const std::string text = shown("a" + pict(kind, damaged) + pict(kind, bytes.left(i)) + "b");
        EXPECT_TRUE(text.starts_with("a") && text.ends_with("b¶")) << i;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
INSTANTIATE_TEST_SUITE_P(, HelpPicture, testing::Values("png", "jpeg"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST(Help, TheFileIsRichText) {
    for (const char* none : {"", "{", "{\\rt", "text {\\rtf1}", "<html>"}) {
        QTextDocument document;
        EXPECT_FALSE(RichTextReader::Read(none, document, 1)) << none;
    }
}

TEST(Help, DamageIsSurvived) {
    const std::string dense =
        R"({\fonttbl{\f1\fcharset2 S;}}{\colortbl;\red255;}\li360\tx720\f1\'b7\u-10179?\u-8704?\tab)"
        R"({\*\unknown{x}}\trowd\clcbpat1\cellx99\pard\intbl 1\cell\row{\pict\pngblip 4142}\bin3 {})";
    for (std::size_t length = 0; length <= dense.size(); ++length)
        shown(dense.substr(0, length));
}

std::string repeated(const std::string& part, std::size_t bytes) {
    std::string text;
    while (text.size() < bytes)
        text += part;
    return text;
}

struct TimeRow {
    const char* name;
    std::string part; // repeated
    std::string begin = {};
    friend void PrintTo(const TimeRow& row, std::ostream* out) { *out << row.name; }
};
std::string fontSizes() {
    std::string text;
    for (int size = 2; size < 400; ++size)
        text += "\\fs" + std::to_string(size) + " x";
    return text;
}
const TimeRow times[] = {
    {"NoBlank", "a", " "},
    {"Bold", "\\b x\\b0 x"},
    {"FontSizes", fontSizes()},
    {"SubscriptOfNoSize", "\\fs0\\sub x\\super x"},
    {"Groups", "{"},
    {"TabStops", "\\tab x", "\\tx9600"},
    {"Lines", "\\line ", "\\fs144"},
    {"Paragraphs", "\\par "},
    {"Spacing", "\\sb32000\\sa32000\\par "},
    {"NarrowCells", "W", "\\fs144\\trowd\\cellx300\\intbl "},
    {"Rows", "\\trowd\\clbrdrt\\brdrs\\cellx99\\cellx999\\intbl a\\cell b\\cell\\row"},
    {"Tables", "\\trowd\\cellx99\\intbl a\\cell\\row\\pard x\\par"},
    {"Directions", "\\u1488?a"},
    {"Pictures", pict("png", picture("png")) + "\\picwgoal9000\\pichgoal30000"},
};

class HelpTime : public testing::TestWithParam<TimeRow> {};

// Of CPU time, in a slow build; without a limit each takes from half a minute to for ever.
TEST_P(HelpTime, IsShort) {
    constexpr int maxSeconds = 10;
    TemporaryFolder folder;
    modFunc::state().AppPath = folder.path();
    folder.write("quorven help.rtf",
                 "{\\rtf1" + GetParam().begin + repeated(GetParam().part, 1'000'000));
    const std::clock_t begin = std::clock();
    {
        frmHelp help(nullptr);
        help.show();
        QApplication::processEvents();
        auto* rtb = help.findChild<QTextEdit*>(QStringLiteral("rtb"));
        EXPECT_LT(rtb->document()->size().height(), 8'000'000);
    }
    EXPECT_LT((std::clock() - begin) / CLOCKS_PER_SEC, maxSeconds);
}
INSTANTIATE_TEST_SUITE_P(, HelpTime, testing::ValuesIn(times),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Help, AGuideOfTwoHundredPagesIsWholeAndAnEndlessOneSaysSo) {
    const std::string page =
        repeated("{\\b Some} words of a guide, in a paragraph. ", 280) + "\\par ";
    const std::string guide = "\\fs20 " + repeated(page, 620'000) + "the end";
    EXPECT_NE(shown(guide).find("the end¶"), std::string::npos);
    const std::string endless = shown(guide + repeated("word ", 4'000'000));
    EXPECT_TRUE(endless.ends_with("¶The rest of this file is not shown.¶"));
}

} // namespace
