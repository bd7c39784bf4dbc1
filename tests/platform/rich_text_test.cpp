#include "platform/files.h"
#include "platform/rich_text.h"

#include <gtest/gtest.h>

#include <random>

using namespace platform;

namespace {

std::string paragraphText(const RichParagraph& paragraph) {
    std::string text;
    for (const RichRun& run : paragraph.runs)
        text += run.picture.empty() ? run.text : "<" + run.picture + ">";
    return text;
}

// A paragraph a line; a row of a table as [cell|cell], a paragraph inside a cell ended by /.
std::string shown(const RichText& text) {
    std::string all;
    for (const auto& block : text.blocks) {
        if (const auto* paragraph = std::get_if<RichParagraph>(&block)) {
            all += paragraphText(*paragraph) + "\n";
            continue;
        }
        std::string row;
        for (const RichCell& cell : std::get<RichRow>(block).cells) {
            row += row.empty() ? "[" : "|";
            for (const RichParagraph& paragraph : cell.paragraphs)
                row +=
                    paragraphText(paragraph) + (&paragraph == &cell.paragraphs.back() ? "" : "/");
        }
        all += row + "]\n";
    }
    return all;
}

std::string shown(const std::string& body) {
    return shown(*ReadRichText("{\\rtf1\\ansi " + body + "}"));
}

// Everything the reader knows, close together, for damage to hit.
const std::string dense =
    R"({\rtf1\deff1{\fonttbl{\f0\fswiss Arial;}{\f1\fmodern\fcharset2 Signs;}}{\colortbl;)"
    R"(\red255\green0\blue1;}{\stylesheet{\s1 x;}}\pard\li360\fi-360\tx720{\pntext\'b7\tab}\b1)"
    R"(\i\ul\cf1\highlight1 A\~B\u8364\'80\u-10179?\u-8704?{\v no}\par{\*\unknown{x}}{\field)"
    R"({\*\fldinst HYPERLINK}{\fldrslt link}}\par\trowd\trleft9\clbrdrt\brdrs\clcbpat1\cellx99)"
    R"(\cellx200\pard\intbl 1\par 2\cell 3\cell\row\pard{\*\shppict{\pict\pngblip\picwgoal300)"
    R"(\pichgoal-5\picscalex50 4142}}\bin3 {}}\'4\super x\plain\par})";

// A copy whose end is the end of its memory, so that reading past it is caught.
void readExactly(const std::string& text) {
    const std::vector<char> exact(text.begin(), text.end());
    ReadRichText({exact.data(), exact.size()});
}

} // namespace

TEST(RichText, IsToldByItsBeginning) {
    for (const char* none : {"", "{", "{\\rt", "text {\\rtf1}", "<html>"})
        EXPECT_FALSE(ReadRichText(none)) << none;
    EXPECT_TRUE(ReadRichText("{\\rtf1}")->blocks.empty());
}

TEST(RichText, ShowsWhatIsOnThePageAndNothingElse) {
    const struct {
        const char* rtf;
        const char* text;
    } rows[] = {
        {"one\\par two\r\n three\\line four\\tab five", "one\ntwo three\nfour\tfive\n"},
        {"\\{\\}\\\\ a\\~b\\_c\\emdash d\\lquote e", "{}\\ a\u00A0b\u2011c\u2014d\u2018e\n"},
        {"\\'e9\\'80\\'93\\'81\\'07\\u127? \\'zz", "\u00E9\u20AC\u201C\uFFFD\uFFFD\uFFFD zz\n"},
        {"\\u8364?x\\uc2\\u233\\'c3\\'a9y\\uc0\\u8226 z{\\uc1\\u65 {}?}",
         "\u20ACx\u00E9y\u2022zA?\n"},
        {"\\u-10179?\\u-8704? \\u-10179?x \\u-3913?", "\U0001F600 x \u2022\n"},
        {"{\\info{\\title t}}{\\header h}{\\*\\new{n}}{\\stylesheet{\\s1 s;}}x", "x\n"},
        {"{\\field{\\*\\fldinst HYPERLINK \"u\"}{\\fldrslt{\\ul link}}}{\\v no}", "link\n"},
        {"{\\fonttbl{\\f5\\fcharset2 Signs;}}{\\pntext\\f5\\'b7\\tab}a", "\u2022\ta\n"},
        {"a\\bin4 }}{\\c", "ac\n"},
        {"{\\pict\\pngblip\\picw1 41 4\n2}{\\pict\\wmetafile8 41}{\\nonshppict{\\pict\\pngblip41}}",
         "<AB>\n"},
        {"\\trowd\\cellx9\\cellx20\\pard\\intbl 1\\par 2\\cell\\cell\\row x", "[1/2|]\nx\n"},
        {"\\pard\\intbl a\\cell\\pard after\\par", "[a]\nafter\n"},
        {"a}}}b{{{c", "abc\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(row.rtf), row.text) << row.rtf;
}

TEST(RichText, KeepsFormatsLayoutAndTables) {
    const RichText text = *ReadRichText(
        R"({\rtf1\deff2{\fonttbl{\f2\fmodern Courier New;}}{\colortbl;\red1\green2\blue255;})"
        R"(\pard\qc\li300\ri10\fi-200\sb5\sa999999999\tx720{\b\i\ul\fs30\cf1 a}{\super\cf9 b\b0}\par)"
        R"(\trowd\trleft15\clbrdrt\brdrs\clcbpat1\cellx600\cellx900\pard\intbl x\cell y\cell\row)"
        R"(\trowd\cellx5\pard\intbl\brdrb\brdrs z\cell\row})");
    const auto& paragraph = std::get<RichParagraph>(text.blocks.at(0));
    EXPECT_EQ(paragraph.layout.alignment, RichLayout::Alignment::Centre);
    EXPECT_EQ(paragraph.layout.left, 300);
    EXPECT_EQ(paragraph.layout.firstLine, -200);
    EXPECT_EQ(paragraph.layout.after, 32000);
    EXPECT_EQ(paragraph.layout.tabStops, std::vector<int>{720});

    ASSERT_EQ(paragraph.runs.size(), 2u);
    RichFormat format;
    format.font = 2;
    format.script = 1;
    EXPECT_EQ(paragraph.runs[1].format, format); // a colour that is not in the table is none
    format.script = 0;
    format.halfPoints = 30;
    format.bold = format.italic = format.underline = true;
    format.colour = 0x0102FF;
    EXPECT_EQ(paragraph.runs[0].format, format);

    const auto& first = std::get<RichRow>(text.blocks.at(1));
    EXPECT_TRUE(first.bordered);
    EXPECT_EQ(first.cells.at(0).background, 0x0102FFu);
    EXPECT_EQ(first.cells.at(1).rightEdge, 900);
    EXPECT_FALSE(std::get<RichRow>(text.blocks.at(2)).bordered); // a paragraph's border is not its
}

TEST(RichText, ReadsTheShippedGuide) {
    const std::string guide = ReadWholeFile(SHIPPED_DATA "/quorven help.rtf");
    const std::string text = shown(*ReadRichText(guide));
    for (const char* part :
         {"QUORVEN\n", "\nFinding the box\n", "\nDevice functions\n", "\nFiles and offsets\n",
          "\nThe device list\n", "[Port|Device]\n[COM1 to COM4|/dev/ttyS0 to /dev/ttyS3]\n",
          "\n\"DIP8 32K page 64\",\"DIP8\",\"\",20,32768,64,0,0\n",
          "3 Program, 4 Verify, 5 Lock.\n"})
        EXPECT_NE(text.find(part), std::string::npos) << part;
    for (const char c : {'\\', '{', '}'})
        EXPECT_EQ(text.find(c), std::string::npos) << c;
}

TEST(RichText, SurvivesDamage) {
    const std::string guide = ReadWholeFile(SHIPPED_DATA "/quorven help.rtf");
    for (std::size_t length = 0; length <= dense.size(); ++length)
        readExactly(dense.substr(0, length));
    for (std::size_t length = 0; length <= guide.size(); length += 131)
        readExactly(guide.substr(0, length));

    std::mt19937 random(20120724);
    using namespace std::string_literals;
    const std::string spice = "\0{}\\'*;-09uf \r\t\x80\xFF"s;
    for (int round = 0; round < 5000; ++round) {
        std::string text = dense;
        for (int change = 0; change < 4; ++change) {
            const std::size_t at = 5 + random() % (text.size() - 5);
            switch (random() % 3) {
            case 0:
                text[at] = spice[random() % spice.size()];
                break;
            case 1:
                text.erase(at, random() % 20);
                break;
            default:
                text.insert(at, text.substr(random() % text.size(), random() % 40));
            }
        }
        readExactly(text);
    }
}

// Half a megabyte of each takes milliseconds, and for ever if a byte cost more the more came
// before. What comes of it is no more than a window can lay out.
TEST(RichText, TakesTimeByItsLengthAndGivesNoMoreThanAPage) {
    for (const char* part :
         {"{", "}", "{\\b", "{}", "\\tx1{}", "\\cellx1\\intbl\\cell\\row", "\\cell", "\\par",
          "\\u-10179?", "\\bin1000000000", "\\u99999999999999999999", "{\\colortbl;",
          "{\\fonttbl{\\f", "{\\pict\\pngblip 41", "\\f1{\\fonttbl x"}) {
        std::string text = "{\\rtf1";
        while (text.size() < 500'000)
            text += part;
        EXPECT_LE(ReadRichText(text)->blocks.size(), 20'100U) << part;
    }
}
