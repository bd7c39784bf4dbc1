#include "files/binary_file.h"
#include "files/hex_file.h"
#include "platform/file_error.h"
#include "tests/support/limits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

#include <numeric>
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
    // The report on the file; without one, panel 4 names it. A load goes into an image of FF.
    std::string attempt(void (*command)(), const std::string& path) {
        const bool load = command == OpenHexFile || command == OpenBinFile;
        if (load)
            state().BufferData = imageWith(0, Bytes());
        viewReopened = 0;
        vm.panels[4] = "";
        vm.fileName() = path;
        std::string report = path;
        try {
            command();
            for (const ShownMessage& message : vm.messages)
                report += message.title + ": " + message.text;
        } catch (const platform::FileError& error) {
            report = error.what();
        }
        EXPECT_TRUE(report.starts_with(path)) << report;
        EXPECT_EQ(vm.panels[4], report == path ? "File: " + path : "");
        EXPECT_EQ(viewReopened, load && report == path ? 1 : 0);
        return report.substr(path.size());
    }
    std::string loadText(const std::string& text) {
        folder.write("a", text);
        return attempt(OpenHexFile, file);
    }

    TemporaryFolder folder;
    const std::string file = folder.file("a");
    const Bytes& loaded = state().BufferData;
};

struct Text {
    const char* name;
    std::string text;
    Bytes stored; // from address 0x10 on
    std::string report = "";
};

const Text texts[] = {
    {"LaterRecordsWin", good + ":02001000aabb89\n" + end, {0xAA, 0xBB, 3, 4}},
    {"AnyOtherTypeEnds", good + ":00000005FB\r\nnot a record", {1, 2, 3, 4}},
    {"OddForms", "x0100100001EE\n:00FFFF0002\r  ?00000001FF", {1}},
    {"WrongSum", good + ":0000000001\n", {}, "File Load Error: Checksum Error in hex file!"},
    {"NoEndRecord", good, {}, "File Load Error: No end record in hex file!"},
    {"EmptyLine", good + "\n", {}, ", record 2: the address is not a hexadecimal number."},
    {"52Bytes", ":34001000", {}, ", record 1: the record has more than 51 data bytes."},
};

class HexFile : public Files, public testing::WithParamInterface<Text> {};

} // namespace

TEST_P(HexFile, IsLoadedOrChangesNothing) {
    EXPECT_EQ(loadText(GetParam().text), GetParam().report);
    EXPECT_EQ(loaded, imageWith(0x10, GetParam().stored));
}

INSTANTIATE_TEST_SUITE_P(, HexFile, testing::ValuesIn(texts), rowName);

TEST_F(Files, AHexFileHasAtMost10000Records) {
    std::string text = good;
    for (int record = 3; record <= 10000; ++record)
        text += ":0000000000\n";
    EXPECT_EQ(loadText(text + end), "");
    EXPECT_EQ(loadText(text + good + end), ": the file has more than 10000 records.");
}

TEST_F(Files, HexOffsetsSelectAndMoveBytesUpToTheEndOfTheImage) {
    state().FileAddress = 0x12;
    state().BufferAddress = 4;
    EXPECT_EQ(loadText(good + end), "");
    EXPECT_EQ(loaded, imageWith(0x16, Bytes{3, 4}));
    for (const int offset : {70000 - 0x12, INT32_MAX}) {
        state().BufferAddress = offset;
        EXPECT_EQ(loadText(good + end), std::string(", record 1") + tooLong);
        EXPECT_EQ(loaded, imageWith(70000, Bytes(offset == INT32_MAX ? 0 : 1, 3)));
    }
}

// A pipe would block the program, and a disk image would fill the memory.
TEST_F(Files, ReadersRejectPipesAndLargeFilesAndATextMustExist) {
    EXPECT_EQ(attempt(OpenHexFile, file),
              ": the file cannot be opened: No such file or directory.");
    mkfifo(file.c_str(), 0600);
    for (const auto& command : {OpenHexFile, OpenBinFile})
        EXPECT_EQ(attempt(command, file), ": it is not a regular file.");
    folder.remove("a");
    folder.write("a", "");
    std::filesystem::resize_file(file, (16 << 20) + 1);
    EXPECT_EQ(attempt(OpenHexFile, file),
              ": the file is larger than 16 MiB and not one of this program.");
    EXPECT_EQ(attempt(OpenBinFile, file), tooLong);
}

TEST_F(Files, ABinaryFileIsPlacedByItsOffsets) {
    std::string contents(300, 'A');
    std::iota(contents.begin(), contents.end(), 0);
    folder.write("a", contents);
    for (const auto& [fileAddress, bufferAddress, first, count] :
         {std::tuple(16, 4096, 4112, 284), std::tuple(INT32_MAX, INT32_MAX, 0, 0),
          std::tuple(0, 69701, 69701, 300), std::tuple(0, 69702, 69702, 299)}) {
        state().FileAddress = fileAddress;
        state().BufferAddress = bufferAddress;
        EXPECT_EQ(attempt(OpenBinFile, file), count == 299 ? tooLong : "");
        EXPECT_EQ(loaded, imageWith(first, contents.substr(fileAddress == 16 ? 16 : 0, count)));
    }
}

TEST_F(Files, ABinaryLoadCreatesTheFileAndReadsOneThatIsReadOnly) {
    EXPECT_EQ(attempt(OpenBinFile, file), "");
    EXPECT_EQ(folder.names(), std::set<std::string>{"a"});
    EXPECT_EQ(attempt(OpenBinFile, folder.file("none/a")),
              ": the file cannot be opened: No such file or directory.");
    const OrdinaryUser user;
    EXPECT_EQ(attempt(OpenBinFile, "/etc/passwd"), "");
    EXPECT_NE(loaded[0], 0xFF);
}

TEST_F(Files, RealImagesLoadToTheirBytes) {
    for (const std::string name : {"firmware", "mixed", "full64k"}) {
        const std::string path = TEST_FILES "/images/" + name;
        EXPECT_EQ(attempt(OpenHexFile, path + ".hex"), "");
        EXPECT_EQ(loaded, imageWith(0, TemporaryFolder::readFile(path + ".bin"))) << name;
    }
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
    for (const auto& [size, report] :
         {std::pair(70001, ""), std::pair(70002, ": the device is larger than the image.")}) {
        device(1, size);
        EXPECT_EQ(attempt(SaveHexFile, file), report);
        EXPECT_EQ(attempt(SaveBinFile, file), report);
    }
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    EXPECT_TRUE(LooksLikeHexFile("a.hex") && LooksLikeHexFile("A.HEX"));
    EXPECT_FALSE(LooksLikeHexFile("a.Hex") || LooksLikeHexFile("a.bin"));
}
