#include "files/binary_file.h"
#include "files/hex_file.h"
#include "tests/support/limits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

using namespace modFunc;
using namespace std::string_literals;

namespace {

const std::string good = ":0400100001020304E2\r\n";
const std::string end = ":00000001FF\r\n";

// An image of FF except for these bytes from an address on.
Bytes imageWith(int first, const auto& bytes) {
    Bytes image(70001, 0xFF);
    std::ranges::copy(bytes, image.begin() + first);
    return image;
}

class Files : public RunTest {
protected:
    // Runs a command on a file. Returns what is reported, nothing on success. A load starts from an
    // image of FF.
    std::string attempt(void (*command)(), const std::string& path) {
        const bool load = command == OpenHexFile || command == OpenBinFile;
        if (load)
            state().BufferData = imageWith(0, Bytes());
        viewReopened = 0;
        vm.messages.clear();
        vm.panels[4] = "";
        vm.FileName = path;
        std::string report = errorOf(command);
        for (const std::string& message : vm.messages)
            report += message;
        EXPECT_EQ(vm.panels[4], report.empty() ? "File: " + path : "");
        EXPECT_EQ(viewReopened, load && report.empty() ? 1 : 0);
        return report;
    }

    TemporaryFolder folder;
    const std::string file = folder.file("a");
    const Bytes& loaded = state().BufferData;
};

} // namespace

TEST_F(Files, AHexFileIsLoadedByItsRecordsAndADamagedOneChangesNothing) {
    std::string empty9998;
    for (int record = 0; record < 9998; ++record)
        empty9998 += ":0000000000\n";
    for (const auto& [text, report, stored] :
         std::vector<std::tuple<std::string, std::string, Bytes>>{
             {good + ":02001000aabb89\n" + end, "", {0xAA, 0xBB, 3, 4}}, // later records win
             {"x0100100001EE\n:00FFFF0002\r  ?00000005FB\nnot a record", "", {1}}, // odd forms
             {empty9998 + good + end, "", {1, 2, 3, 4}},
             {empty9998 + good + good + end, file + ": the file has more than 10000 records.", {}},
             {good + ":0000000001\n", "! File Load Error: Checksum Error in hex file!", {}},
             {good, "! File Load Error: No end record in hex file!", {}},
             {good + "\n", file + ", record 2: the address is not a hexadecimal number.", {}},
             {good + ":34001000",
              file + ", record 2: the record has more than 51 data bytes.",
              {}}}) {
        folder.write("a", text);
        EXPECT_EQ(attempt(OpenHexFile, file), report);
        EXPECT_EQ(loaded, imageWith(0x10, stored));
    }
    EXPECT_EQ(attempt(OpenHexFile, TEST_FILES "/images/mixed.hex"), "");
    EXPECT_EQ(loaded, imageWith(0, TemporaryFolder::readFile(TEST_FILES "/images/mixed.bin")));
}

TEST_F(Files, OffsetsSelectAndMoveBytesUpToTheEndOfTheImage) {
    const std::string text = good + end, past = ": the data reach past the end of the image.";
    folder.write("a", text);
    for (const auto& [command, fileAddress, bufferAddress, report, first, stored] :
         {std::tuple(&OpenHexFile, 0x12, 4, ""s, 0x16, "\3\4"s),
          std::tuple(&OpenHexFile, 0x12, 70000 - 0x12, file + ", record 1" + past, 70000, "\3"s),
          std::tuple(&OpenHexFile, 0x12, INT32_MAX, file + ", record 1" + past, 0, ""s),
          std::tuple(&OpenBinFile, 3, 4096, ""s, 4099, text.substr(3)),
          std::tuple(&OpenBinFile, INT32_MAX, INT32_MAX, ""s, 0, ""s),
          std::tuple(&OpenBinFile, 0, 69967, ""s, 69967, text),
          std::tuple(&OpenBinFile, 0, 70000, file + past, 70000, text.substr(0, 1))}) {
        state().FileAddress = fileAddress;
        state().BufferAddress = bufferAddress;
        EXPECT_EQ(attempt(command, file), report);
        EXPECT_EQ(loaded, imageWith(first, stored));
    }
}

// A device or a pipe could block the program, and a disk image would fill the memory.
TEST_F(Files, ReadersRejectDevicesAndLargeFilesAndAHexFileMustExist) {
    const std::string noFile = ": the file cannot be opened: No such file or directory.";
    EXPECT_EQ(attempt(OpenHexFile, file), file + noFile);
    EXPECT_EQ(attempt(OpenBinFile, file + "/a"), file + "/a" + noFile);
    EXPECT_EQ(attempt(OpenBinFile, file), ""); // created
    folder.write("a", std::string((16 << 20) + 1, '0'));
    EXPECT_EQ(attempt(OpenHexFile, file),
              file + ": the file is larger than 16 MiB and not one of this program.");
    for (const auto& command : {OpenHexFile, OpenBinFile})
        EXPECT_EQ(attempt(command, "/dev/null"), "/dev/null: it is not a regular file.");
    const OrdinaryUser user;
    EXPECT_EQ(attempt(OpenBinFile, "/etc/os-release"), ""); // read-only
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
    EXPECT_TRUE(LooksLikeHexFile("A.HEX") && LooksLikeHexFile("a.hex") && !LooksLikeHexFile("Hex"));
}

TEST_F(Files, ASaveThatFailsReportsItAndOnlyABinaryFileMayBeLeftIncomplete) {
    const std::string full = file + ": the file cannot be written: File too large.";
    for (const auto& command : {SaveHexFile, SaveBinFile})
        for (const auto& [size, room, report] :
             {std::tuple(64, 2, full), std::tuple(8192, 2, full), std::tuple(70001, 1 << 20, ""s),
              std::tuple(70002, 2, file + ": the device is larger than the image.")}) {
            device(1, size);
            folder.write("a", "as before");
            const FullDisk disk{rlim_t(room)};
            EXPECT_EQ(attempt(command, file), report) << size;
            EXPECT_TRUE(command == SaveBinFile || report.empty() ||
                        folder.read("a") == "as before");
        }
}
