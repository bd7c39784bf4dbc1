#include "app/startup.h"

#include "app/family_table.h"
#include "app/state.h"
#include "platform/file_error.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace modFunc;
using namespace std::string_literals;

namespace {

class StartUp : public testing::Test {
protected:
    StartUp() {
        s.AppPath = folder.path();
        folder.write("quorven.cfg", "3\r\n2\r\n1\r\n\"1.0, beta\"\r\n24/07/2012\r\n");
        folder.write("quorven.dev",
                     "\"DIP40, 4K\",\"a\",b,1,4096,7,-1,9\nsecond\n,\n20,65536,64,0,0,x");
        folder.write("auto.cfg", "2\r\n0\r\n5\r\n");
    }
    void readAll() {
        ReadSettings();
        ReadDeviceList();
        ReadAutoFile();
    }

    TemporaryFolder folder;
    State& s = (ResetState(), state());
};

} // namespace

TEST_F(StartUp, ReadsTheDeviceListAsFarAsTheSettingsSay) {
    readAll();
    const DeviceRec& first = selectedDevice();
    EXPECT_EQ(first.Name + "|" + first.Text2 + "|" + first.Text3, "DIP40, 4K|a|b");
    EXPECT_EQ(std::tuple(first.Family, first.Size, first.PageSize, first.Value7, first.Value8),
              std::tuple(1, 4096, 7, -1, 9));
    EXPECT_EQ(s.DeviceList[2].Name + s.DeviceList[2].Text3, "second");
    EXPECT_EQ(s.DeviceList[2].Size, 65536);

    std::string rows;
    for (int row = 1; row <= 51; ++row)
        rows += "device " + std::to_string(row) + ",,,1,256,0,0,0\r\n";
    folder.write("quorven.dev", rows);
    folder.write("quorven.cfg", "3\n50\n50\na\nb\n");
    readAll();
    EXPECT_EQ(selectedDevice().Name, "device 50");
}

TEST_F(StartUp, WritesWhatReadsBackTheSame) {
    readAll();
    s.ComPort = 16;
    s.SelectedDevice = 2;
    s.AutoList[2] = 3;
    for (int again = 0; again < 2; ++again) {
        WriteSettings();
        WriteAutoFile();
        EXPECT_EQ(folder.read("quorven.cfg"),
                  "16\r\n2\r\n2\r\n\"1.0, beta\"\r\n\"24/07/2012\"\r\n");
        EXPECT_EQ(folder.read("auto.cfg"), "2\r\n0\r\n3\r\n");
        readAll();
    }
}

namespace {

constexpr char cfg[] = "quorven.cfg";
constexpr char dev[] = "quorven.dev";
constexpr char autoCfg[] = "auto.cfg";

struct Damage {
    const char* name;
    const char* file;
    std::string contents;
    const char* position; // after the file's name
    const char* cause;    // at the end
};
const Damage damages[] = {
    {"Empty", cfg, "", ", line 1, item 1 (port number)", "the end of the file."},
    {"EmptyLine", cfg, "3\r\n\r\n1\na\nb\n", ", line 2, item 2 (device count)", "an empty line."},
    {"EmptyItem", dev, "a,b,c\n,4096,0,0", ", line 2, item 4 (row 1, family)", "an empty item."},
    {"LastItemEmpty", dev, "a,b,c,\n", ", line 1, item 4 (row 1, family)", "an empty item."},
    {"Utf16", cfg, "\xFF\xFE\x35\0\r\0\n\0"s, ", line 1, item 1", "the file is not plain text."},
    {"ZeroByteInText", cfg, "3\n2\n1\n1\0\nb"s, ", line 4, item 4", "the file is not plain text."},
    {"CountAbove50", cfg, "3\n51\n1\na\nb", ", line 2, item 2", "from 0 to 50 but finds \"51\"."},
    {"CountBelow0", cfg, "3\n-1\n1\na\nb", ", line 2, item 2", "but finds \"-1\"."},
    {"SelectedAbove50", cfg, "3\n2\n51\na\nb", ", line 3, item 3 (selected device)", "\"51\"."},
    {"NoDate", cfg, "3\n2\n1\na\n", ", line 5, item 5 (release date)", "the end of the file."},
    {"QuoteInText", cfg, "3\n2\n1\n1\"0\nb", ", line 4, item 4 (version)", "finds \"1\"0\"."},
    {"LongText", cfg, "3\n2\n1\n" + std::string(65536, 'x') + "\nb", ", line 4, item 4 (version)",
     "65535 bytes but finds \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\"."},
    {"LongTextInUtf8", cfg, "3\n2\n1\n\"" + std::string(39, 'x') + "\u20AC and so on", ", line 4",
     "quote on the same line but finds \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\"."},
    {"NoSecondRow", dev, "a,b,c,1,4096,0,0,0\n", ", line 2, item 9 (row 2, name)", "of the file."},
    {"NoNumber", dev, "a,b,c,1,4K,0,0,0", ", line 1, item 5 (row 1, size)", "finds \"4K\"."},
    {"QuotedNumber", dev, "a,b,c,\"1\"", ", line 1, item 4", "finds the quoted text \"1\"."},
    {"AfterTheQuote", dev, "\"a\"b", ", line 1, item 1", "closing double quote but finds \"b\"."},
    {"AutoCountAbove20", autoCfg, "21\n", ", line 1, item 1 (entry count)", "finds \"21\"."},
    {"NoSecondEntry", autoCfg, "2\n1\n", ", line 3, item 3 (function code of entry 2)", "file."},
};

class DamagedFile : public StartUp, public testing::WithParamInterface<Damage> {};

} // namespace

TEST_P(DamagedFile, IsReportedWithPositionAndCause) {
    folder.write(GetParam().file, GetParam().contents);
    std::string text;
    try {
        readAll();
    } catch (const platform::FileError& error) {
        text = error.what();
    }
    EXPECT_TRUE(text.starts_with(folder.file(GetParam().file) + GetParam().position)) << text;
    EXPECT_TRUE(text.ends_with(GetParam().cause)) << text;
}

INSTANTIATE_TEST_SUITE_P(, DamagedFile, testing::ValuesIn(damages),
                         [](const auto& row) { return row.param.name; });

// A row outside its limits is a chip that cannot be programmed.
TEST_F(StartUp, ShippedFilesOfferEveryFamilyTwiceAndNoDeviceOutsideItsLimits) {
    s.AppPath = SHIPPED_DATA;
    readAll();
    InitFamilyTable();
    const std::string list = TemporaryFolder::readFile(DataFile("quorven.dev"));
    EXPECT_EQ(std::ranges::count(list, '\n'), s.DeviceCount);

    std::map<std::size_t, std::set<std::string>> offered;
    for (std::size_t row = 1; row <= static_cast<std::size_t>(s.DeviceCount); ++row) {
        const DeviceRec& device = s.DeviceList.at(row);
        offered[static_cast<std::size_t>(device.Family)].insert(device.Name);
        const int page = device.PageSize;
        EXPECT_TRUE(
            device.Size > 0 && device.Size <= 65536 && device.Size % 256 == 0 &&
            (device.Family / 10 == 2 ? page > 0 && page <= 128 && 256 % page == 0 : page == 0))
            << device.Name;
    }
    for (std::size_t family = 0; family <= lastFamily; ++family) {
        const bool filled = s.FamilyTable.at(family).ClassByte != 0;
        const std::size_t names = offered[family].size();
        EXPECT_TRUE(filled ? names >= 2 : names == 0) << "family " << family << ": " << names;
    }
}
