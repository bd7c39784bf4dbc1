#include "files/binary_file.h"
#include "files/hex_file.h"
#include "platform/file_error.h"
#include "tests/support/limits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

#include <sys/stat.h>

using namespace modFunc;

namespace {

const std::string good = ":0400100001020304E2\r\n";
const std::string end = ":00000001FF\r\n";
constexpr char tooLong[] = ": the data reach past the end of the image.";

// An image of FF except for these bytes from an address on.
Bytes imageWith(int first, const auto& bytes) {
    Bytes image(70001, 0xFF);
    std::ranges::copy(bytes, image.begin() + first);
    return image;
}

class Files : public RunTest {
protected:
    // Runs a command on a file. Returns what is reported after the file's name, nothing on success.
    // A load starts from an image of FF.
    std::string attempt(void (*command)(), const std::string& path) {
        const bool load = command == OpenHexFile || command == OpenBinFile;
        if (load)
            state().BufferData = imageWith(0, Bytes());
        viewReopened = 0;
        vm.messages.clear();
        vm.panels[4] = "";
        vm.FileName = path;
        std::string report = path;
        try {
            command();
            for (const std::string& message : vm.messages)
                report += message;
        } catch (const platform::FileError& error) {
            report = error.what();
        }
        EXPECT_TRUE(report.starts_with(path)) << report;
        EXPECT_EQ(vm.panels[4], report == path ? "File: " + path : "");
        EXPECT_EQ(viewReopened, load && report == path ? 1 : 0);
        return report.substr(path.size());
    }
    std::string load(const std::string& hexText) {
        folder.write("a", hexText);
        return attempt(OpenHexFile, file);
    }

    TemporaryFolder folder;
    const std::string file = folder.file("a");
    const Bytes& loaded = state().BufferData;
};

} // namespace

TEST_F(Files, AHexFileIsLoadedByItsRecords) {
    EXPECT_EQ(load(good + ":02001000aabb89\n" + end), ""); // later records win
    EXPECT_EQ(loaded, imageWith(0x10, Bytes{0xAA, 0xBB, 3, 4}));
    EXPECT_EQ(load("x0100100001EE\n:00FFFF0002\r  ?00000005FB\nnot a record"), ""); // odd forms
    EXPECT_EQ(loaded, imageWith(0x10, Bytes{1}));
    for (const std::string name : {"firmware", "mixed", "full64k"}) {
        const std::string path = TEST_FILES "/images/" + name;
        EXPECT_EQ(attempt(OpenHexFile, path + ".hex"), "");
        EXPECT_EQ(loaded, imageWith(0, TemporaryFolder::readFile(path + ".bin"))) << name;
    }
}

TEST_F(Files, ADamagedHexFileChangesNothing) {
    std::string empty9998;
    for (int record = 0; record < 9998; ++record)
        empty9998 += ":0000000000\n";
    EXPECT_EQ(load(empty9998 + good + end), "");
    for (const auto& [text, report] :
         {std::pair(empty9998 + good + good + end, ": the file has more than 10000 records."),
          std::pair(good + ":0000000001\n", "! File Load Error: Checksum Error in hex file!"),
          std::pair(good, "! File Load Error: No end record in hex file!"),
          std::pair(good + "\n", ", record 2: the address is not a hexadecimal number."),
          std::pair(good + ":34001000", ", record 2: the record has more than 51 data bytes.")}) {
        EXPECT_EQ(load(text), report);
        EXPECT_EQ(loaded, imageWith(0, Bytes()));
    }
}

TEST_F(Files, OffsetsSelectAndMoveBytesUpToTheEndOfTheImage) {
    state().FileAddress = 0x12;
    state().BufferAddress = 4;
    EXPECT_EQ(load(good + end), "");
    EXPECT_EQ(loaded, imageWith(0x16, Bytes{3, 4}));
    state().BufferAddress = INT32_MAX;
    EXPECT_EQ(load(good + end), std::string(", record 1") + tooLong);
    state().BufferAddress = 70000 - 0x12;
    EXPECT_EQ(load(good + end), std::string(", record 1") + tooLong);
    EXPECT_EQ(loaded, imageWith(70000, Bytes{3}));

    folder.write("a", "0123456789");
    for (const auto& [fileAddress, bufferAddress, first, stored] :
         {std::tuple(3, 4096, 4099, "3456789"), std::tuple(INT32_MAX, INT32_MAX, 0, ""),
          std::tuple(0, 69991, 69991, "0123456789"), std::tuple(0, 69992, 69992, "012345678")}) {
        state().FileAddress = fileAddress;
        state().BufferAddress = bufferAddress;
        EXPECT_EQ(attempt(OpenBinFile, file), bufferAddress == 69992 ? tooLong : "");
        EXPECT_EQ(loaded, imageWith(first, std::string(stored)));
    }
}

// A pipe would block the program, and a disk image would fill the memory.
TEST_F(Files, ReadersRejectPipesAndLargeFilesAndATextMustExist) {
    const std::string noFile = ": the file cannot be opened: No such file or directory.";
    EXPECT_EQ(attempt(OpenHexFile, file), noFile);
    EXPECT_EQ(attempt(OpenBinFile, folder.file("none/a")), noFile);
    EXPECT_EQ(attempt(OpenBinFile, file), ""); // created
    folder.write("a", std::string((16 << 20) + 1, '0'));
    EXPECT_EQ(attempt(OpenHexFile, file),
              ": the file is larger than 16 MiB and not one of this program.");
    folder.remove("a");
    mkfifo(file.c_str(), 0600);
    for (const auto& command : {OpenHexFile, OpenBinFile})
        EXPECT_EQ(attempt(command, file), ": it is not a regular file.");
    const OrdinaryUser user;
    EXPECT_EQ(attempt(OpenBinFile, "/etc/os-release"), ""); // read-only
    EXPECT_NE(loaded[0], 0xFF);
}

TEST_F(Files, AHexSaveHasRecordsOfSixteenAndABinarySaveKeepsTheTailOfALongerFile) {
    device(1, 0x118);
    state().BufferData = imageWith(0x100, Bytes{0x12, 0x34});
    state().FileAddress = state().BufferAddress = 5; // no effect on saving
    folder.write("a", std::string(0x120, 'x'));
    EXPECT_EQ(attempt(SaveBinFile, file), "");
    EXPECT_EQ(folder.read("a"),
              std::string(0x100, '\xFF') + "\x12\x34" + std::string(0x16, '\xFF') + "xxxxxxxx");
    EXPECT_EQ(attempt(SaveHexFile, file), "");
    EXPECT_EQ(folder.read("a").substr(15 * 45),
              ":1000F000FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF10\r\n"
              ":100100001234FFFFFFFFFFFFFFFFFFFFFFFFFFFFB7\r\n"
              ":10011000FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFEF\r\n:00000001FF\r\n");
}

TEST_F(Files, ASaveThatFailsReportsItAndOnlyABinaryFileMayBeLeftShort) {
    for (const int size : {64, 8192}) {
        device(1, size);
        folder.write("a", "as before");
        const FullDisk disk(2);
        EXPECT_EQ(attempt(SaveHexFile, file), ": the file cannot be written: File too large.");
        EXPECT_EQ(folder.read("a"), "as before");
        EXPECT_EQ(attempt(SaveBinFile, file), ": the file cannot be written: File too large.");
    }
    for (const auto& command : {SaveHexFile, SaveBinFile}) {
        device(1, 70001);
        EXPECT_EQ(attempt(command, file), "");
        device(1, 70002);
        EXPECT_EQ(attempt(command, file), ": the device is larger than the image.");
    }
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    EXPECT_TRUE(LooksLikeHexFile("A.HEX") && LooksLikeHexFile("a.hex"));
    EXPECT_FALSE(LooksLikeHexFile("a.Hex"));
}
