// The data files that are read at start-up, and their format.
#include "app/delimited_text.h"
#include "app/startup.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

using namespace modFunc;

namespace {

class StartUp : public testing::Test {
protected:
    StartUp() {
        std::filesystem::current_path(folder.path());
        folder.write("quorven.cfg", "3\r\n2\r\n50\r\n\"1.0, beta\"\r\n24/07/2012\r\n");
        folder.write("quorven.dev", "\"A, 4\",a,b,1,4096,7,-1,9\nc\n,\n20,65536,64,0,0,x,\"rest");
        folder.write("auto.cfg", "2\r\n0\r\n5\r\n");
    }
    ~StartUp() override { std::filesystem::current_path("/"); }

    TemporaryFolder folder;
    State& s = (ResetState(), state());
};

constexpr char cfg[] = "quorven.cfg", dev[] = "quorven.dev";

const struct Damage {
    const char *name, *file;
    std::string contents;
    const char *position, *cause; // how the message goes on after the file's name, and ends
} damages[] = {
    {"EmptyLine", cfg, "3\r\n\r\n1\na\nb\n", ", line 2, item 2 (device count)", "an empty line."},
    {"EmptyItem", dev, "a,b,c\n,4096,0,0", ", line 2, item 4 (row 1, family)", "an empty item."},
    {"ZeroByte", cfg, std::string("3\n2\n1\n1\0\nb", 10), ", line 4, item 4", "not plain text."},
    {"CountAbove50", cfg, "3\n51\n1\na\nb", ", line 2, item 2", "from 0 to 50 but finds \"51\"."},
    {"SelectedAbove50", cfg, "3\n2\n51\na\nb", ", line 3, item 3 (selected device)", "\"51\"."},
    {"QuoteInText", cfg, "3\n2\n1\n1\"0\nb", ", line 4, item 4 (version)", "finds \"1\"0\"."},
    {"LongText", cfg, "3\n2\n1\n" + std::string(39, 'x') + "\u20AC" + std::string(65533, 'x'),
     ", line 4", "65535 bytes but finds \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\"."},
    {"OpenQuote", cfg, "3\n2\n1\n\"1.0\nb\"", ", line 4", "same line but finds \"1.0\"."},
    {"NoSecondRow", dev, "a,b,c,1,4096,0,0,0", ", line 1, item 9 (row 2, name)", "of the file."},
    {"QuotedNumber", dev, "a,b,c,\"1\"", ", line 1, item 4", "finds the quoted text \"1\"."},
    {"AfterTheQuote", dev, "\"a\"b", ", line 1, item 1", "closing double quote but finds \"b\"."},
    {"AutoAbove20", "auto.cfg", "21\n", ", line 1, item 1 (entry count)", "finds \"21\"."},
};

class DamagedFile : public StartUp, public testing::WithParamInterface<Damage> {};

} // namespace

TEST_F(StartUp, ReadsTheDeviceListAsFarAsTheSettingsSayAndWritesSettingsAndAutoFile) {
    Main();
    const auto& [name, text2, text3, family, size, pageSize, value7, value8] = s.DeviceList[1];
    EXPECT_EQ(std::tuple(name, text2, text3, family, size, pageSize, value7, value8),
              std::tuple("A, 4", "a", "b", 1, 4096, 7, -1, 9));
    EXPECT_EQ(s.DeviceList[2].Size, 65536);
    s.AutoList[1] = 3;
    WriteSettings();
    WriteAutoFile();
    EXPECT_EQ(folder.read("quorven.cfg"), "3\r\n2\r\n50\r\n\"1.0, beta\"\r\n\"24/07/2012\"\r\n");
    EXPECT_EQ(folder.read("auto.cfg"), "2\r\n3\r\n5\r\n");
}

TEST_P(DamagedFile, IsReportedWithPositionAndCause) {
    folder.write(GetParam().file, GetParam().contents);
    const std::string text = errorOf(Main);
    EXPECT_TRUE(text.starts_with(DataFile(GetParam().file) + GetParam().position)) << text;
    EXPECT_TRUE(text.ends_with(GetParam().cause)) << text;
}

INSTANTIATE_TEST_SUITE_P(, DamagedFile, testing::ValuesIn(damages), rowName);

// A row outside its limits is a chip that cannot be programmed.
TEST_F(StartUp, ShippedFilesOfferEveryFamilyTwiceAndNoDeviceOutsideItsLimits) {
    std::filesystem::current_path(SHIPPED_DATA);
    Main();
    EXPECT_EQ(std::ranges::count(TemporaryFolder::readFile("quorven.dev"), '\n'), s.DeviceCount);
    const auto rows = std::span(s.DeviceList).subspan(1, std::size_t(s.DeviceCount));
    for (const auto& [name, text2, text3, family, size, page, value7, value8] : rows) {
        EXPECT_TRUE(size > 0 && size <= 65536 && size % 256 == 0 && page <= 128) << name;
        EXPECT_EQ(std::popcount(unsigned(page)), family / 10 == 2 ? 1 : 0) << name; // 1, 2, 4 ...
    }
    for (int family = 0; family <= lastFamily; ++family) {
        const auto devices = std::ranges::count(rows, family, &DeviceRec::Family);
        const bool filled = s.FamilyTable.at(std::size_t(family)).ClassByte != 0;
        EXPECT_TRUE(filled ? devices >= 2 : devices == 0) << "family " << family;
    }
}

TEST(DelimitedText, ItemsEndAtCommasAndAnyLineEndAndNumbersAreDecimalAndWithinTheirRange) {
    DelimitedReader all(
        "f", "\xEF\xBB\xBF+5 ,-32768\n32767\none,  two\r\n\t a b\rc\n\n \"d, e\" \r\n,f");
    for (const int number : {5, -32768, 32767})
        EXPECT_EQ(all.NextInt16("a"), number);
    std::string items;
    while (!all.atEnd())
        items.append(all.NextString("item")) += '|';
    EXPECT_EQ(items, "one|two|a b|c||d, e||f|");
    for (const std::string text : {"32768", "-32769", "5x", "x5", " ", "+-5", "- 5"})
        EXPECT_THROW(DelimitedReader("f", text).NextInt16("a"), platform::FileError) << text;
}
