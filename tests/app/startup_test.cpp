#include "app/startup.h"

#include "app/state.h"
#include "platform/file_error.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(s.DeviceCount, 2);
    EXPECT_EQ(s.SelectedDevice, 1);
    EXPECT_EQ(s.ProgramVersion, "1.0, beta");
    EXPECT_EQ(s.ProgramDate, "24/07/2012");
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

TEST_F(StartUp, SettingsThatCannotBeReplacedStayWhole) {
    ReadSettings();
    const std::string before = folder.read("quorven.cfg");
    folder.write("blocked/file", "");
    state().AppPath = folder.path() + "/blocked/file";
    EXPECT_THROW(WriteSettings(), platform::FileError);
    EXPECT_EQ(folder.read("quorven.cfg"), before);
}

TEST_F(StartUp, MissingAndDamagedFilesAreNamedWithTheirCause) {
    struct Case {
        const char* file;
        const char* contents; // null: missing
        const char* cause;
    };
    const Case cases[] = {
        {"quorven.cfg", nullptr, "quorven.cfg: cannot be opened: No such file"},
        {"quorven.cfg", "", "item 1 (port number): expected a whole number"},
        {"quorven.cfg", "3\n51\n1\na\nb\n",
         "item 2 (device count): expected a whole number from 0 to 50"},
        {"quorven.cfg", "3\n-1\n1\na\nb\n", "item 2 (device count)"},
        {"quorven.cfg", "3\n2\n51\na\nb\n", "item 3 (selected device)"},
        {"quorven.cfg", "3\n2\n1\na\n", "item 5 (release date): expected a text, found the end"},
        {"quorven.cfg", "3\n2\n1\n1\"0\nb\n", "item 4 (version): expected a text without double"},
        {"quorven.dev", nullptr, "quorven.dev: cannot be opened"},
        {"quorven.dev", "a,b,c,1,4096,0,0,0\n",
         "item 9 (row 2, name): expected a text, found the end"},
        {"quorven.dev", "a,b,c,1,4K,0,0,0\n", "item 5 (row 1, size)"},
        {"auto.cfg", nullptr, "auto.cfg: cannot be opened"},
        {"auto.cfg", "21\n", "item 1 (entry count): expected a whole number from 0 to 20"},
        {"auto.cfg", "2\n1\n", "item 3 (function code of entry 2): expected"},
    };
    for (const Case& c : cases) {
        const std::string good = folder.read(c.file);
        c.contents ? folder.write(c.file, c.contents) : folder.remove(c.file);
        try {
            readAll();
            ADD_FAILURE() << c.cause;
        } catch (const platform::FileError& error) {
            EXPECT_NE(std::string(error.what()).find(c.cause), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(folder.path()), std::string::npos);
        }
        folder.write(c.file, good);
    }
}

TEST_F(StartUp, NoDeviceRowsStillNeedTheDeviceList) {
    folder.write("quorven.cfg", "3\n0\n0\na\nb\n");
    readAll();
    EXPECT_EQ(selectedDevice().Name, "");
    folder.remove("quorven.dev");
    EXPECT_THROW(readAll(), platform::FileError);
}
