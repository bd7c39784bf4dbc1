#include "app/startup.h"

#include "app/family_table.h"
#include "app/state.h"
#include "platform/file_error.h"
#include "tests/support/table_file.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace modFunc;

namespace {

class StartUp : public testing::Test {
protected:
    StartUp() {
        ResetState();
        state().AppPath = folder.path();
        folder.write("quorven.cfg", "3\r\n2\r\n1\r\n\"1.0, beta\"\r\n24/07/2012\r\n");
        folder.write("quorven.dev",
                     "\"DIP40, 4K\",\"a\",b,1,4096,0,-1,9\nsecond\n,\n20,65536,64,0,0,x");
        folder.write("auto.cfg", "2\r\n0\r\n5\r\n");
    }
    void readAll() {
        ReadSettings();
        ReadDeviceList();
        ReadAutoFile();
    }

    TemporaryFolder folder;
};

} // namespace

TEST_F(StartUp, ReadsTheThreeFiles) {
    readAll();
    const State& s = state();
    EXPECT_EQ(s.ComPort, 3);
    EXPECT_EQ(s.SelectedDevice, 1);
    EXPECT_EQ(s.DeviceList[0].Name, "");
    EXPECT_EQ(s.DeviceList[1].Name, "DIP40, 4K");
    EXPECT_EQ(s.DeviceList[1].Value7, -1);
    EXPECT_EQ(s.DeviceList[2].Name, "second");
    EXPECT_EQ(s.DeviceList[2].Text3, "");
    EXPECT_EQ(s.DeviceList[2].Family, 20);
    EXPECT_EQ(s.DeviceList[2].Size, 65536);
    EXPECT_EQ(s.DeviceList[2].PageSize, 64);
    EXPECT_EQ(s.AutoCount, 2);
    EXPECT_EQ(s.AutoList[1], 0);
    EXPECT_EQ(s.AutoList[2], 5);
}

TEST_F(StartUp, ReadsFiftyDevicesAndNoMore) {
    std::string rows;
    for (int row = 1; row <= 51; ++row)
        rows += "device " + std::to_string(row) + ",,,1,256,0,0,0\r\n";
    folder.write("quorven.dev", rows);
    folder.write("quorven.cfg", "3\n50\n50\na\nb\n");
    readAll();
    EXPECT_EQ(selectedDevice().Name, "device 50");
}

TEST_F(StartUp, WritesSettingsThatReadBackTheSame) {
    ReadSettings();
    state().ComPort = 16;
    WriteSettings();
    EXPECT_EQ(folder.read("quorven.cfg"), "16\r\n2\r\n1\r\n\"1.0, beta\"\r\n\"24/07/2012\"\r\n");
    WriteSettings();
    ReadSettings();
    EXPECT_EQ(state().ProgramVersion, "1.0, beta");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"auto.cfg", "quorven.cfg", "quorven.dev"}));
}

TEST_F(StartUp, MissingAndDamagedFilesAreNamedWithTheirCause) {
    for (const auto& row : readTable(TEST_FILES "/app/damaged_files.txt")) {
        const std::string& file = row.at(0);
        const std::string good = folder.read(file);
        row.at(1) == "missing" ? folder.remove(file) : folder.write(file, unescaped(row[1]));
        try {
            readAll();
            ADD_FAILURE() << row.at(2);
        } catch (const platform::FileError& error) {
            const std::string text = error.what();
            EXPECT_TRUE(text.starts_with(folder.file(file))) << text;
            EXPECT_NE(text.find(row.at(2)), std::string::npos) << text;
        }
        folder.write(file, good);
    }
}

// A row outside its limits is a chip that cannot be programmed.
TEST(ShippedFiles, OfferEveryFamilyTwiceAndNoDeviceOutsideItsLimits) {
    ResetState();
    const State& s = state();
    state().AppPath = SHIPPED_DATA;
    ReadSettings();
    ReadDeviceList();
    InitFamilyTable();
    const std::string list = TemporaryFolder::readFile(DataFile("quorven.dev"));
    EXPECT_EQ(std::ranges::count(list, '\n'), s.DeviceCount);

    std::map<std::size_t, std::set<std::string>> offered;
    for (std::size_t row = 1; row <= static_cast<std::size_t>(s.DeviceCount); ++row) {
        const DeviceRec& device = s.DeviceList.at(row);
        SCOPED_TRACE(device.Name);
        offered[static_cast<std::size_t>(device.Family)].insert(device.Name);
        EXPECT_TRUE(device.Size > 0 && device.Size <= 65536 && device.Size % 256 == 0);
        const int page = device.PageSize;
        EXPECT_TRUE(device.Family / 10 == 2 ? page > 0 && page <= 128 && 256 % page == 0
                                            : page == 0);
    }
    for (std::size_t family = 0; family <= lastFamily; ++family) {
        const bool filled = s.FamilyTable.at(family).ClassByte != 0;
        const std::size_t names = offered[family].size();
        EXPECT_TRUE(filled ? names >= 2 : names == 0) << "family " << family << ": " << names;
    }
}
