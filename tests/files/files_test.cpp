#include "app/startup.h"
#include "files/binary_file.h"
#include "files/hex_file.h"
#include "platform/file_error.h"
#include "tests/support/limits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <sys/stat.h>

using namespace modFunc;

namespace {

const std::string good = ":0400100001020304E2\r\n";
const std::string end = ":00000001FF\r\n";

class Files : public RunTest {
protected:
    Files() {
        state().BufferData.assign(70001, 0xFF);
        vm.panels[4] = "File:";
    }
    // The error text of the command without the file name; empty on success.
    std::string attempt(void (*command)(), const std::string& path) {
        vm.fileName() = path;
        try {
            command();
        } catch (const platform::FileError& error) {
            const std::string text = error.what();
            EXPECT_TRUE(text.starts_with(path)) << text;
            return text.substr(path.size());
        }
        return "";
    }
    std::string loadText(const std::string& text) {
        folder.write("a.hex", text);
        return attempt(OpenHexFile, folder.file("a.hex"));
    }
    void expectShown(bool shown) {
        EXPECT_EQ(vm.panels[4], shown ? "File: " + vm.fileName() : "File:");
        EXPECT_EQ(viewReopened, shown ? 1 : 0);
    }

    TemporaryFolder folder;
};

struct Text {
    const char* name;
    std::string text;
    std::string image;        // expected bytes from address 0x10 on; the rest is FF
    const char* failure = ""; // the text of a message box, or the end of an error text
    int fileAddress = 0;
    int bufferAddress = 0;
};

std::string emptyRecords(int count) {
    std::string records;
    for (int i = 0; i < count; ++i)
        records += ":0000000000\n";
    return records;
}

const char wrongSum[] = "Checksum Error in hex file!";
const char noEnd[] = "No end record in hex file!";
const char noAddress[] = ": the address is not a hexadecimal number.";
const char tooLong[] = ", record 1: the data reach past the end of the image.";

const Text texts[] = {
    {"Data", good + end, "01 02 03 04"},
    {"LaterRecordsWin", good + ":02001000aabb89\n" + end, "AA BB 03 04"},
    {"AnyOtherTypeEnds", good + ":00000005FB\r\nnot a record", "01 02 03 04"},
    {"OddForms", "x0100100001EE\n:00FFFF0002\r  ?00000001FF", "01"},
    {"Offsets", good + end, "FF FF FF FF FF FF 03 04", "", 0x12, 4},
    {"GreatestOffsets", good + end, "", "", 2147483647, 2147483647},
    {"LastByte", ":01FFFF00AA57\n" + end, "", "", 0, 70000 - 0xFFFF},
    {"PastTheImage", good + end, "", tooLong, 0, 70001 - 0x10},
    {"Records10000", emptyRecords(9998) + good + end, "01 02 03 04"},
    {"Records10001", emptyRecords(10000) + end, "", ": the file has more than 10000 records."},
    {"RecordOf51Bytes", ":33001000" + std::string(102, '0') + "BD\n" + end,
     "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
    {"RecordOf52Bytes", ":34001000" + std::string(104, '0') + "BC\n" + end, "",
     ", record 1: the record has more than 51 data bytes."},
    {"WrongCheckSum", good + ":0400100001020304E3\r\n" + end, "", wrongSum},
    {"WrongData", good + ":0400100001020305E2\r\n" + end, "", wrongSum},
    {"NoEndRecord", good, "", noEnd},
    {"Empty", "", "", noEnd},
    {"EmptyLine", good + "\r\n" + end, "", noAddress},
    {"Address", ":04XY100001020304E2", "", noAddress},
    {"OpenQuote", good + "\"open\n", "", "quote on the same line but finds \"open\"."},
};

class HexFile : public Files, public testing::WithParamInterface<Text> {};

struct BinaryLoad {
    const char* name;
    int length; // of the file
    std::int32_t fileAddress, bufferAddress;
    int first, count; // range of the bytes stored
    bool succeeds;
};
const BinaryLoad binaryLoads[] = {
    {"Whole", 300, 0, 0, 0, 300, true},
    {"Offsets", 300, 16, 4096, 4112, 284, true},
    {"PastItsEnd", 300, 2147483647, 2147483647, 0, 0, true},
    {"Empty", 0, 0, 0, 0, 0, true},
    {"AsLongAsTheImage", 70001, 0, 0, 0, 70001, true},
    {"LongerThanTheImage", 70002, 0, 0, 0, 70001, false},
    {"OverTheEndOfTheImage", 300, 0, 69702, 69702, 299, false},
    {"PastTheImage", 300, 0, 70001, 0, 0, false},
};

class BinaryFile : public Files, public testing::WithParamInterface<BinaryLoad> {};

} // namespace

TEST_P(HexFile, IsLoadedOrChangesNothing) {
    state().FileAddress = GetParam().fileAddress;
    state().BufferAddress = GetParam().bufferAddress;
    std::string failure = loadText(GetParam().text);
    if (!vm.messages.empty()) {
        EXPECT_EQ(vm.messages.at(0).title, "File Load Error");
        failure = vm.messages.at(0).text;
    }
    EXPECT_TRUE(GetParam().failure[0] ? failure.ends_with(GetParam().failure) : failure.empty())
        << failure;
    const Bytes& image = state().BufferData;
    const auto length = std::ptrdiff_t(GetParam().image.size() + 1) / 3;
    EXPECT_EQ(hexText({image.begin() + 0x10, image.begin() + 0x10 + length}), GetParam().image);
    const auto other = std::ranges::count_if(image, [](int byte) { return byte != 0xFF; });
    const bool last = GetParam().name == std::string("LastByte");
    EXPECT_EQ(image[70000], last ? 0xAA : 0xFF);
    EXPECT_EQ(other, last ? 1 : length - std::ranges::count(GetParam().image, 'F') / 2);
    expectShown(failure.empty());
}

INSTANTIATE_TEST_SUITE_P(, HexFile, testing::ValuesIn(texts), rowName);

TEST_F(Files, ATargetPastTheImageStopsThereAndKeepsWhatWasPlaced) {
    state().BufferAddress = 70000 - 0x12;
    EXPECT_EQ(loadText(good + end), tooLong);
    EXPECT_EQ(hexText({state().BufferData.end() - 4, state().BufferData.end()}), "FF 01 02 03");
}

// Load and save, in both formats.
TEST_F(Files, RealImagesLoadToTheirBytesAndAreSavedAsTheyWereLoaded) {
    for (const std::string name : {"firmware", "full64k", "mixed"}) {
        const std::string path = TEST_FILES "/images/" + name;
        state().BufferData.assign(70001, 0xFF);
        viewReopened = 0;
        ASSERT_EQ(attempt(OpenHexFile, path + ".hex"), "");
        expectShown(true);
        const std::string bytes = TemporaryFolder::readFile(path + ".bin");
        ASSERT_GT(bytes.size(), 4000U);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), state().BufferData.begin(),
                               [](char a, int b) { return std::uint8_t(a) == b; }));
        device(1, static_cast<int>(bytes.size()));
        EXPECT_EQ(attempt(SaveBinFile, folder.file(name)), "");
        EXPECT_EQ(folder.read(name), bytes);
    }
    device(1, 65536);
    EXPECT_EQ(attempt(OpenHexFile, TEST_FILES "/images/full64k.hex"), "");
    EXPECT_EQ(attempt(SaveHexFile, folder.file("a.hex")), "");
    std::string text = folder.read("a.hex");
    std::erase(text, '\r');
    EXPECT_EQ(text, TemporaryFolder::readFile(TEST_FILES "/images/full64k.hex"));
}

// A pipe would block the program, and a disk image would fill the memory.
TEST_F(Files, EveryReaderRejectsPipesAndLargeFilesAndTextsMustExist) {
    state().AppPath = folder.path();
    for (const auto& [read, name] :
         {std::pair(&ReadSettings, "quorven.cfg"), std::pair(&ReadDeviceList, "quorven.dev"),
          std::pair(&ReadAutoFile, "auto.cfg"), std::pair(&OpenHexFile, "a.hex"),
          std::pair(&OpenBinFile, "a.bin")}) {
        const std::string path = folder.file(name);
        const bool text = read != &OpenBinFile;
        if (text) {
            EXPECT_EQ(attempt(read, path),
                      ": the file cannot be opened: No such file or directory.");
        }
        mkfifo(path.c_str(), 0600);
        EXPECT_EQ(attempt(read, path), ": it is not a regular file.");
        folder.remove(name);
        folder.write(name, "");
        std::filesystem::resize_file(path, 1 << 30);
        EXPECT_EQ(attempt(read, path),
                  text ? ": the file is larger than 16 MiB and not one of this program."
                       : ": the data reach past the end of the image.");
    }
}

TEST_P(BinaryFile, IsPlacedByItsOffset) {
    const BinaryLoad& row = GetParam();
    state().FileAddress = row.fileAddress;
    state().BufferAddress = row.bufferAddress;
    std::string contents;
    for (int i = 0; i < row.length; ++i)
        contents += char(i % 251);
    folder.write("a.bin", contents);
    EXPECT_EQ(attempt(OpenBinFile, folder.file("a.bin")).empty(), row.succeeds);
    Bytes expected(70001, 0xFF);
    for (int i = 0; i < row.count; ++i)
        expected[std::size_t(row.first + i)] = std::uint8_t((row.fileAddress + i) % 251);
    EXPECT_EQ(state().BufferData, expected);
    expectShown(row.succeeds);
}

INSTANTIATE_TEST_SUITE_P(, BinaryFile, testing::ValuesIn(binaryLoads), rowName);

TEST_F(Files, ABinaryLoadCreatesTheFileAndReadsOneThatIsReadOnly) {
    EXPECT_EQ(attempt(OpenBinFile, folder.file("new.bin")), "");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"new.bin"});
    EXPECT_NE(attempt(OpenBinFile, folder.file("none/new.bin")), "");

    folder.write("a.bin", "A");
    chmod(folder.path().c_str(), 0755);
    chmod(folder.file("a.bin").c_str(), 0444);
    const OrdinaryUser user;
    EXPECT_EQ(attempt(OpenBinFile, folder.file("a.bin")), "");
    EXPECT_EQ(state().BufferData[0], 'A');
}

TEST_F(Files, AHexSaveHasRecordsOfSixteenAndABinarySaveKeepsTheTailOfALongerFile) {
    device(1, 40);
    for (int i = 0; i < 16; ++i)
        state().BufferData[std::size_t(16 + i)] = std::uint8_t(i * 17);
    state().FileAddress = state().BufferAddress = 5; // no effect on saving
    EXPECT_EQ(attempt(SaveHexFile, folder.file("a.hex")), "");
    const std::string blank = std::string(32, 'F');
    EXPECT_EQ(folder.read("a.hex"), ":10000000" + blank + "00\r\n" +
                                        ":1000100000112233445566778899AABBCCDDEEFFE8\r\n" +
                                        ":10002000" + blank + "E0\r\n:00000001FF\r\n");
    EXPECT_EQ(vm.panels[4], "File: " + folder.file("a.hex"));
    folder.write("a.bin", std::string(64, 'x'));
    EXPECT_EQ(attempt(SaveBinFile, folder.file("a.bin")), "");
    EXPECT_EQ(folder.read("a.bin").substr(32), std::string(8, '\xFF') + std::string(24, 'x'));
    EXPECT_EQ(vm.panels[4], "File: " + folder.file("a.bin"));
    EXPECT_EQ(viewReopened, 0);
}

TEST_F(Files, ASaveThatFailsReportsItAndOnlyABinaryFileMayBeLeftShort) {
    device(1, 64);
    state().AppPath = folder.path();
    for (const auto& [save, name] :
         {std::pair(&SaveHexFile, "a.hex"), std::pair(&WriteAutoFile, "auto.cfg"),
          std::pair(&WriteSettings, "quorven.cfg"), std::pair(&SaveBinFile, "a.bin")}) {
        folder.write(name, "as before");
        {
            const FullDisk disk(2);
            EXPECT_EQ(attempt(save, folder.file(name)),
                      ": the file cannot be written: File too large.");
        }
        EXPECT_EQ(folder.read(name) == "as before", save != &SaveBinFile) << name;
        EXPECT_EQ(vm.panels[4], "File:");
    }
    for (const auto& [size, failure] :
         {std::pair(70001, ""), std::pair(70002, ": the device is larger than the image.")}) {
        device(1, size);
        EXPECT_EQ(attempt(SaveHexFile, folder.file("a.hex")), failure);
        EXPECT_EQ(attempt(SaveBinFile, folder.file("a.bin")), failure);
    }
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    for (const char* name : {"a.hex", "A.HEX", "hex", "xhex"})
        EXPECT_TRUE(LooksLikeHexFile(name)) << name;
    for (const char* name : {"a.Hex", "a.bin", "ex", "", "a.hex.bin"})
        EXPECT_FALSE(LooksLikeHexFile(name)) << name;
}
