#include "platform/files.h"
#include "platform/rich_text.h"
#include "tests/support/table_file.h"

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

// A paragraph ended by ¶; a row of a table as [cell][cell]; a line end as ↵,
// a tab as →, a hard space as °.
std::string shown(const RichText& text) {
    std::string all;
    for (const auto& block : text.blocks) {
        if (const auto* paragraph = std::get_if<RichParagraph>(&block)) {
            all += paragraphText(*paragraph) + "¶";
            continue;
        }
        for (const RichCell& cell : std::get<RichRow>(block).cells) {
            all += "[";
            for (const RichParagraph& paragraph : cell.paragraphs)
                all +=
                    (&paragraph == &cell.paragraphs.front() ? "" : "¶") + paragraphText(paragraph);
            all += "]";
        }
    }
    return replaced(replaced(replaced(all, "\n", "↵"), "\t", "→"), "\u00A0", "°");
}

std::vector<std::vector<std::string>> table() {
    return readTable(TEST_FILES "/platform/rich_text.txt");
}

std::string document(const std::string& body) {
    return "{\\rtf1\\ansi " + replaced(body, "↵", "\r\n") + "}";
}

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
    for (const auto& row : table()) {
        EXPECT_EQ(shown(*ReadRichText(document(row.at(0)))), row.at(1)) << row[0];
    }
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
         {"QUORVEN¶", "¶Finding the box¶", "¶Device functions¶", "¶Files and offsets¶",
          "¶The device list¶", "[Port][Device][COM1 to COM4][/dev/ttyS0 to /dev/ttyS3]",
          "¶\"DIP8 32K page 64\",\"DIP8\",\"\",20,32768,64,0,0¶", "3 Program, 4 Verify, 5 Lock.¶"})
        EXPECT_NE(text.find(part), std::string::npos) << part;
    EXPECT_EQ(text.find_first_of("\\{}"), std::string::npos);
}

TEST(RichText, SurvivesDamage) {
    const std::string guide = ReadWholeFile(SHIPPED_DATA "/quorven help.rtf");
    const std::string dense = document(table().back().at(0));
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
