// The help page: how it shows rich text, and that no file blocks the program for long.
#include "platform/qt/fonts.h"
#include "shell/help/rich_text_reader.h"

#include <QtGui>
#include <gtest/gtest.h>

namespace {

// What is unusual about a format, in angle brackets.
QString unusual(const QTextFormat& format) {
    static const QString sans = sansFont(16).family(), fixed = fixedFont(16).family();
    static const QString properties =
        "font FontFamilies,size FontPixelSize,weight FontWeight,italic FontItalic,"
        "underline TextUnderlineStyle,strike FontStrikeOut,script TextVerticalAlignment,"
        "text ForegroundBrush,on BackgroundBrush,align BlockAlignment,left BlockLeftMargin,"
        "right BlockRightMargin,first TextIndent,above BlockTopMargin,below BlockBottomMargin,"
        "tabs TabPositions,border TableCellTopBorder,style TableCellTopBorderStyle,"
        "from FrameLeftMargin,columns TableColumnWidthConstraints";
    QString words;
    for (const QString& property : properties.split(',')) {
        const QVariant id = property.section(' ', 1);
        const QVariant value = format.property(id.value<QTextFormat::Property>());
        QString text =
            value.canConvert<QBrush>() ? value.value<QBrush>().color().name() : value.toString();
        if (value.typeId() == QMetaType::QStringList)
            text = value.toStringList().join('+').replace(sans, "sans").replace(fixed, "fixed");
        else
            for (const QVariant& item : value.toList())
                text += QString(" %1").arg(item.canConvert<QTextLength>()
                                               ? item.value<QTextLength>().rawValue()
                                               : item.value<QTextOption::Tab>().position);
        if (!QStringList{"", "0", "false", "sans", "16", "400"}.contains(text))
            words += ' ' + property.section(' ', 0, 0) + text;
    }
    return words.isEmpty() ? "" : '<' + words.mid(1) + '>';
}

// The document's text: ¶ after each paragraph, including Qt's empty one before a table; cells in
// brackets, ↵ for a line break, → for a tab, ° for a no-break space, pictures by their size.
QString textOf(const QTextDocument& document, QTextFrame::iterator i) {
    QString text;
    for (; !i.atEnd(); ++i)
        if (auto* table = qobject_cast<QTextTable*>(i.currentFrame())) {
            text += unusual(table->format());
            for (int cell = 0; cell < table->rows() * table->columns(); ++cell) {
                const auto at = table->cellAt(cell / table->columns(), cell % table->columns());
                text += '[' + unusual(at.format()) + textOf(document, at.begin()).chopped(1) + ']';
            }
        } else {
            for (auto run = i.currentBlock().begin(); !run.atEnd(); ++run) {
                const auto name = run.fragment().charFormat().toImageFormat().name();
                const QSize size =
                    document.resource(QTextDocument::ImageResource, name).value<QImage>().size();
                text += name.isEmpty()
                            ? unusual(run.fragment().charFormat()) + run.fragment().text()
                            : QString("(%1x%2)").arg(size.width()).arg(size.height());
            }
            text += unusual(i.currentBlock().blockFormat()) + u'¶';
        }
    return text.replace(QChar::LineSeparator, u'↵').replace('\t', u'→').replace(u'\u00A0', u'°');
}
std::string shown(const std::string& body) {
    const std::string file = "{\\rtf1\\ansi " + body + "}";
    const std::vector<char> exact(file.begin(), file.end()); // reading past its end is caught
    QTextDocument document;
    EXPECT_TRUE(RichTextReader::Read({exact.data(), exact.size()}, document, 1));
    return textOf(document, document.rootFrame()->begin()).toStdString();
}
std::string repeated(const std::string& part, std::size_t bytes) {
    const auto count = static_cast<qsizetype>(bytes / part.size() + 1);
    return QByteArray::fromStdString(part).repeated(count).toStdString();
}
std::string pict(const char* kind) {
    QImage image(40, 30, QImage::Format_RGB32);
    for (int i = 0; i < 1200; ++i)
        image.setPixel(i % 40, i / 40, qRgb(i * 6, i * 8, i * i));
    QBuffer file;
    image.save(&file, kind);
    return std::string("{\\pict\\") + kind + "blip " + file.data().toHex().toStdString() + "}";
}

struct Row {
    const char* name;
    std::string rtf, shown;
    int maxCharacters = 0;
};
struct HelpText : testing::TestWithParam<Row> {};
struct HelpTime : testing::TestWithParam<Row> {};
const auto nameOf = [](const auto& row) { return std::string(row.param.name); };

const Row texts[] = {
    {"Lines", "one\\par two\r\n three\\line four\tfive\\\nsix", "one¶two three↵four→five¶six¶"},
    {"Symbols", R"(\{\}\\ a\~b\_c\emdash d\lquote e)", "{}\\ a°b‑c—d‘e¶"},
    {"CodePage", R"(\'e9\'80\'93\'81\'07\u127? \'zz)", "é€“��� zz¶"},
    {"Unicode", R"(\u8364?x\uc2\u233\'c3\'a9y\uc0\u8226 z{\uc1\u65 {}?})", "€xéy•zA?¶"},
    {"Surrogates", R"(\u-10179?\u-8704? x\u-10179?x \u-3913?\u2325?)", "😀 x�x •�¶"},
    {"Hidden", R"({\info{\title t}}{\header h}{\*\new{n}}{\v h)" + pict("png") + "}x", "x¶"},
    {"Link", R"({\b a}{\field{\*\fldinst HYPERLINK "u"}{\fldrslt{\ul b}}})",
     "<weight700>a<underline1>b¶"},
    {"Bullet", R"({\fonttbl{\f5\fcharset2 Signs;}}{\pntext\f5\'b7\tab}a)", "•→a¶"},
    {"BinaryAndBraces", "a\\bin4 }}{\\b}}}c{{{d", "abcd¶"},
    {"Cells", R"(\trowd\cellx15\cellx60\intbl 1\par 2\cell\row\pard x)", "¶<columns 1 3>[1¶2][]x¶"},
    {"MoreCells", R"(\trowd\cellx9\intbl 1\cell 2\cell\row 3\cell\row)", "¶<columns 1>[1¶2][3]¶"},
    {"NoDescription", R"(\pard\intbl a\cell\row\pard after\par more)", "¶[a]after¶more¶"},
    {"NoRowEnd", R"(\trowd\cellx9\pard\intbl a\pard\par b\par)", "a¶b¶"},
    {"Borders",
     R"({\colortbl;\red9;}\trowd\trleft15\clbrdrt\brdrs\clcbpat1\cellx600\intbl x\cell\row)",
     "¶<from1 columns 39>[<on#090000 border1 style3>x]¶"},
    {"TextBorder", R"(\trowd\cellx300\pard\intbl\brdrb\brdrs z\cell\row)", "¶<columns 20>[z]¶"},
    {"Characters",
     R"(\b b\b0\i i\i0\ulw u\ulnone\strike s\strike0\super x\sub y\nosupersub\fs0 z\fs30 w\plain a)",
     "<weight700>b<italictrue>i<underline1>u<striketrue>s<script1>x<script2>y<size2>z<size20>wa¶"},
    {"DeepGroups", repeated("{", 260) + "\\b x}\\i y", "<weight700>x<weight700 italictrue>y¶"},
    {"Fonts", R"({\fonttbl{\f2\fmodern Courier;}{\f3\froman Times;}}\f2 a\f3 b\f9 c)",
     "<fontCourier+fixed>a<fontTimes+Liberation Serif+DejaVu Serif+sans>bc¶"},
    {"Colours", R"({\colortbl;\red1\green2\blue255;\red300;}\cf1\highlight2 a\cf9 b\highlight0 c)",
     "<text#0102ff on#ff0000>a<on#ff0000>bc¶"},
    {"Alignment", R"(\qc a\par\qr b\par\qj c\par\ql d\par)",
     "a<align4>¶b<align18>¶c<align8>¶d<align17>¶"},
    {"Spacing", R"(\sb30\sa45 a\par\sb-5\sa0 b)", "a<above2 below3>¶b¶"},
    {"Indents", R"(\li300\ri150\fi-150\tx900\tx600 a\par\li9000\ri9000\fi0 b\par)",
     "a<left20 right10 first-10 tabs 10 30 50>¶b<left300 right100>¶"},
    {"Png", "a" + pict("png"), "a(40x30)¶"},
    {"Jpeg", "\\picwgoal9000\\pichgoal3000\\picscalex200" + pict("jpeg"), "(600x100)¶"},
};
// A page begins with `shown` and repeats `rtf` up to a million bytes; its end is left out.
const Row times[] = {
    {"NoBlank", "a", " ", 1'010'000},
    {"Bold", "\\b x\\b0 x", "", 115'000},
    {"TabStops", "\\tx9600\\tab x", "", 70'000},
    {"Lines", "\\line ", "\\fs144", 31'000},
    {"Large", "W ", "\\fs192", 75'000},
    {"Paragraphs", "\\par ", "", 61'000},
    {"Spacing", "\\sb32000\\sa32000\\par ", "", 1'700},
    {"NarrowCells", "W", "\\fs144\\trowd\\cellx300\\intbl ", 46'000},
    {"Rows", "\\trowd\\clbrdrt\\brdrs\\cellx99\\cellx999\\intbl a\\cell b\\cell\\row", "", 29'000},
    {"Tables", "\\trowd\\cellx99\\intbl a\\cell\\row\\pard x\\par", "", 26'000},
    {"Directions", "\\u1488?a", "", 255'000},
    {"Pictures", "\\picwgoal9000\\pichgoal30000" + pict("png"), "", 60},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, HelpText, testing::ValuesIn(texts), nameOf);
TEST_P(HelpText, IsShown) {
    EXPECT_EQ(shown(GetParam().rtf), GetParam().shown);
}

// Without limits, each row takes from half a minute to forever.
INSTANTIATE_TEST_SUITE_P(, HelpTime, testing::ValuesIn(times), nameOf);
TEST_P(HelpTime, IsShort) {
    const std::string file = "{\\rtf1" + GetParam().shown + repeated(GetParam().rtf, 1'000'000);
    QTextDocument document;
    EXPECT_TRUE(RichTextReader::Read(file, document, 1));
    document.setTextWidth(640);
    EXPECT_LT(document.size().height(), 8'000'000);
    EXPECT_LE(document.characterCount(), GetParam().maxCharacters);
}

TEST(Help, SurvivesDamageAndNoLibraryPrintsAWord) {
    testing::internal::CaptureStderr();
    for (const Row& row : texts)
        for (std::size_t i = 0; i < row.rtf.size(); i += row.rtf.size() / 300 + 1) {
            shown(row.rtf.substr(0, i));
            std::string damaged = row.rtf;
            damaged[i] ^= 1;
            shown(damaged);
        }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Help, OfTwoHundredPagesIsWholeAndALargerOneStatesThatItIsNot) {
    const std::string page =
        repeated("{\\b Some} words of a guide, in a paragraph. ", 280) + "\\par ";
    const std::string guide = "\\qc\\fs20 " + repeated(page, 620'000) + "the end";
    EXPECT_NE(shown(guide).find("the end¶"), std::string::npos);
    EXPECT_TRUE(shown(guide + repeated("word ", 4'000'000))
                    .ends_with("¶The rest of this file is not shown.¶"));
}
