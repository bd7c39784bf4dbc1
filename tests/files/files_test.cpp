#include "app/startup.h"
#include "files/binary_file.h"
#include "files/hex_file.h"
#include "platform/file_error.h"
#include "tests/support/limits.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

#include <sys/stat.h>

using namespace modFunc;
namespace fs = std::filesystem;

namespace {

class Files : public RunTest {
protected:
    Files() { startAfresh(); }
    void startAfresh() {
        state().BufferData.assign(70001, 0xFF);
        vm.panels[4] = "File:";
        vm.messages.clear();
        viewReopened = 0;
    }
    // True when the command ended without an error.
    bool attempt(void (*command)(), const std::string& path) {
        cause.clear();
        vm.fileName() = path;
        try {
            command();
        } catch (const platform::FileError& error) {
            cause = error.what();
        }
        return cause.empty();
    }
    bool load(const std::string& path) { return attempt(OpenHexFile, path); }
    bool loadText(const std::string& text) {
        folder.write("a.hex", text);
        return load(folder.file("a.hex"));
    }
    void expectShown(const std::string& path) {
        EXPECT_EQ(vm.panels[4], "File:" + (path.empty() ? "" : " " + path));
        EXPECT_EQ(viewReopened, path.empty() ? 0 : 1);
    }

    TemporaryFolder folder;
    std::string cause;
};

const std::string good = ":0400100001020304E2\r\n";
const std::string end = ":00000001FF\r\n";

constexpr auto rowName = [](const auto& row) { return std::string(row.param.name); };

} // namespace

TEST_F(Files, LoadsRealFilesToTheirBytes) {
    for (const std::string name : {"firmware", "full64k", "mixed"}) {
        startAfresh();
        const std::string path = TEST_FILES "/images/" + name + ".hex";
        ASSERT_TRUE(load(path)) << cause;
        std::string expected = TemporaryFolder::readFile(TEST_FILES "/images/" + name + ".bin");
        ASSERT_GT(expected.size(), 4000U);
        expected.resize(70001, '\xFF');
        EXPECT_EQ(std::string(state().BufferData.begin(), state().BufferData.end()), expected);
        expectShown(path);
    }
    EXPECT_TRUE(load(SHIPPED_DATA "/sample.hex")) << cause;
}

TEST_F(Files, AnyOtherRecordTypeEndsTheFileAsASuccess) {
    EXPECT_TRUE(load(TEST_FILES "/images/starts-with-04.hex"));
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    expectShown(TEST_FILES "/images/starts-with-04.hex");
    EXPECT_TRUE(vm.messages.empty());

    EXPECT_TRUE(loadText(good + ":00000001EE\r\nnot a record"));
    EXPECT_EQ(state().BufferData[0x10], 1);
}

TEST_F(Files, OffsetsDropWhatIsBelowAndMoveTheRest) {
    state().FileAddress = 0x12;
    state().BufferAddress = 0x1000;
    EXPECT_TRUE(loadText(good + end));
    Bytes expected(70001, 0xFF);
    expected[0x1012] = 3;
    expected[0x1013] = 4;
    EXPECT_EQ(state().BufferData, expected);

    state().FileAddress = 2147483647;
    state().BufferAddress = 2147483647;
    EXPECT_TRUE(loadText(good + end));
    EXPECT_EQ(state().BufferData, expected);
}

TEST_F(Files, LaterRecordsWinAndOddFormsLoad) {
    EXPECT_TRUE(loadText("x0100100001EE,:02001000aabb89\n:00FFFF0002\r  ?00000001FF"));
    EXPECT_EQ(state().BufferData[0x10], 0xAA);
    EXPECT_EQ(state().BufferData[0x11], 0xBB);
    EXPECT_EQ(state().BufferData[0x12], 0xFF);
}

TEST_F(Files, ATargetPastTheImageStopsThereAndKeepsWhatWasPlaced) {
    state().BufferAddress = 70000 - 0x12;
    EXPECT_FALSE(loadText(good + end));
    EXPECT_TRUE(cause.ends_with(", record 1: the data reach past the end of the image.")) << cause;
    EXPECT_EQ(state().BufferData[69998], 1);
    EXPECT_EQ(state().BufferData[70000], 3);
    expectShown("");
}

namespace {

std::string manyRecords() {
    std::string records;
    for (int i = 0; i < 10000; ++i)
        records += ":0000000000\n";
    return records;
}

struct Broken {
    const char* name;
    std::string text;
    const char* outcome; // a message box, or the end of the error that ends the command silently
    friend void PrintTo(const Broken& broken, std::ostream* out) { *out << broken.name; }
};
const Broken brokenFiles[] = {
    {"WrongCheckSum", good + ":0400100001020304E3\r\n" + end, "Checksum Error in hex file!"},
    {"WrongData", good + ":0400100001020305E2\r\n" + end, "Checksum Error in hex file!"},
    {"NoEndRecord", good, "No end record in hex file!"},
    {"Empty", "", "No end record in hex file!"},
    {"EmptyLine", good + "\r\n" + end, "record 2: the address is not a hexadecimal number."},
    {"Address", ":04XY100001020304E2", "record 1: the address is not a hexadecimal number."},
    {"PlainText", "ordinary text", "record 1: the address is not a hexadecimal number."},
    {"OpenQuote", good + "\"open\n", "quote on the same line but finds \"open\"."},
    {"RecordOf52Bytes", ":34000000" + std::string(104, '0') + "CC\n" + end,
     "record 1: the record has more than 51 data bytes."},
    {"Records10001", manyRecords() + end, "the file has more than 10000 records."},
};

class BrokenHexFile : public Files, public testing::WithParamInterface<Broken> {};

} // namespace

TEST_P(BrokenHexFile, ChangesNothing) {
    if (loadText(GetParam().text)) {
        EXPECT_EQ(vm.messages[0].title, "File Load Error");
        cause = vm.messages[0].text;
    }
    EXPECT_TRUE(cause.ends_with(GetParam().outcome)) << cause;
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    expectShown("");
}

INSTANTIATE_TEST_SUITE_P(, BrokenHexFile, testing::ValuesIn(brokenFiles), rowName);

// A pipe would keep the program waiting, a disk image fill the memory.
TEST_F(Files, EveryReaderRejectsPipesAndLargeFilesAndTextsMustExist) {
    state().AppPath = folder.path();
    for (const auto& [read, name] :
         {std::pair(&ReadSettings, "quorven.cfg"), std::pair(&ReadDeviceList, "quorven.dev"),
          std::pair(&ReadAutoFile, "auto.cfg"), std::pair(&OpenHexFile, "a.hex"),
          std::pair(&OpenBinFile, "a.bin")}) {
        const auto causeOf = [&, read = read, name = name] {
            EXPECT_FALSE(attempt(read, folder.file(name))) << name;
            return cause.erase(0, folder.file(name).size());
        };
        const bool text = read != &OpenBinFile;
        if (text) {
            EXPECT_EQ(causeOf(), ": the file cannot be opened: No such file or directory.");
        }
        mkfifo(folder.file(name).c_str(), 0600);
        EXPECT_EQ(causeOf(), ": it is not an ordinary file.");
        folder.remove(name);
        folder.write(name, "");
        fs::resize_file(folder.file(name), 1 << 30);
        EXPECT_EQ(causeOf(), text ? ": the file is larger than 16 MiB and not one of this program."
                                  : ": the data reach past the end of the image.");
    }
}

namespace {

struct BinaryLoad {
    const char* name;
    int length; // of the file
    std::int32_t fileAddress, bufferAddress;
    int first, count; // of the bytes that are placed
    bool ends;        // as a success
    friend void PrintTo(const BinaryLoad& load, std::ostream* out) { *out << load.name; }
};
const BinaryLoad binaryLoads[] = {
    {"Whole", 300, 0, 0, 0, 300, true},
    {"Offsets", 300, 16, 4096, 4112, 284, true},
    {"PastItsEnd", 300, 2147483647, 2147483647, 0, 0, true},
    {"Empty", 0, 0, 0, 0, 0, true},
    {"AsLongAsTheImage", 70001, 0, 0, 0, 70001, true},
    {"LongerThanTheImage", 70002, 0, 0, 0, 70001, false},
    {"OverTheEndOfTheImage", 300, 0, 69900, 69900, 101, false},
    {"PastTheImage", 300, 0, 70001, 0, 0, false},
};

class BinaryFile : public Files, public testing::WithParamInterface<BinaryLoad> {};

} // namespace

TEST_P(BinaryFile, IsPlacedByItsOffset) {
    const BinaryLoad& row = GetParam();
    state().FileAddress = row.fileAddress;
    state().BufferAddress = row.bufferAddress;
    std::string contents;
    for (int i = 0; i < row.length; ++i)
        contents += char(i % 251);
    folder.write("a.bin", contents);
    EXPECT_EQ(attempt(OpenBinFile, folder.file("a.bin")), row.ends);
    Bytes expected(70001, 0xFF);
    for (int i = 0; i < row.count; ++i)
        expected[std::size_t(row.first + i)] = std::uint8_t((row.fileAddress + i) % 251);
    EXPECT_EQ(state().BufferData, expected);
    expectShown(row.ends ? folder.file("a.bin") : "");
}

INSTANTIATE_TEST_SUITE_P(, BinaryFile, testing::ValuesIn(binaryLoads), rowName);

TEST_F(Files, ABinaryLoadCreatesTheFileAndReadsOneThatIsReadOnly) {
    EXPECT_TRUE(attempt(OpenBinFile, folder.file("new.bin")));
    EXPECT_EQ(folder.read("new.bin"), "");
    EXPECT_FALSE(attempt(OpenBinFile, folder.file("none/new.bin")));

    folder.write("a.bin", "A");
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder.file("a.bin"), fs::perms(0444));
    const OrdinaryUser user;
    EXPECT_TRUE(attempt(OpenBinFile, folder.file("a.bin"))) << cause;
    EXPECT_EQ(state().BufferData[0], 'A');
}

TEST_F(Files, SavesTheDeviceInRecordsOfSixteen) {
    device(1, 40);
    for (int i = 0; i < 16; ++i)
        state().BufferData[std::size_t(16 + i)] = std::uint8_t(i * 17);
    state().FileAddress = state().BufferAddress = 5; // without effect
    EXPECT_TRUE(attempt(SaveHexFile, folder.file("a.hex")));
    const std::string blank = std::string(32, 'F');
    EXPECT_EQ(folder.read("a.hex"), ":10000000" + blank + "00\r\n" +
                                        ":1000100000112233445566778899AABBCCDDEEFFE8\r\n" +
                                        ":10002000" + blank + "E0\r\n:00000001FF\r\n");
    EXPECT_EQ(vm.panels[4], "File: " + folder.file("a.hex"));
    EXPECT_EQ(viewReopened, 0);
}

TEST_F(Files, ABinarySaveKeepsTheTailOfALongerFile) {
    device(1, 2048);
    folder.write("a.bin", std::string(4096, 'x'));
    EXPECT_TRUE(attempt(SaveBinFile, folder.file("a.bin")));
    EXPECT_EQ(folder.read("a.bin"), std::string(2048, '\xFF') + std::string(2048, 'x'));
    EXPECT_EQ(viewReopened, 0);
}

TEST_F(Files, SavesARealImageAsItWasLoaded) {
    const std::string image = TEST_FILES "/images/full64k";
    device(1, 65536);
    EXPECT_TRUE(load(image + ".hex"));
    EXPECT_TRUE(attempt(SaveHexFile, folder.file("a.hex")));
    EXPECT_TRUE(attempt(SaveBinFile, folder.file("a.bin")));
    std::string text = folder.read("a.hex");
    std::erase(text, '\r');
    EXPECT_EQ(text, TemporaryFolder::readFile(image + ".hex"));
    EXPECT_EQ(folder.read("a.bin"), TemporaryFolder::readFile(image + ".bin"));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.bin", "a.hex"}));
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
            EXPECT_FALSE(attempt(save, folder.file(name))) << name;
        }
        EXPECT_EQ(cause, folder.file(name) + ": the file cannot be written: File too large.");
        EXPECT_EQ(folder.read(name) == "as before", save != &SaveBinFile) << name;
        EXPECT_EQ(vm.panels[4], "File:");
    }
    device(1, 70002);
    EXPECT_FALSE(attempt(SaveHexFile, folder.file("a.hex")));
    EXPECT_FALSE(attempt(SaveBinFile, folder.file("a.bin")));
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    for (const char* name : {"a.hex", "A.HEX", "hex", "xhex"})
        EXPECT_TRUE(LooksLikeHexFile(name)) << name;
    for (const char* name : {"a.Hex", "a.bin", "ex", "", "a.hex.bin"})
        EXPECT_FALSE(LooksLikeHexFile(name)) << name;
}
