#include "files/hex_file.h"

#include "platform/file_error.h"
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

using namespace modFunc;

namespace {

class HexFile : public RunTest {
protected:
    HexFile() {
        state().BufferData.assign(70001, 0xFF);
        vm.panels[4] = "File:";
    }
    // True when the load ended without an error.
    bool load(const std::string& path) {
        vm.fileName() = path;
        try {
            OpenHexFile();
            return true;
        } catch (const platform::FileError& error) {
            cause = error.what();
            return false;
        }
    }
    bool loadText(const std::string& text) {
        folder.write("a.hex", text);
        return load(folder.file("a.hex"));
    }
    void expectUntouched() {
        EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
        EXPECT_EQ(vm.panels[4], "File:");
        EXPECT_EQ(viewReopened, 0);
    }

    TemporaryFolder folder;
    std::string cause;
};

constexpr char good[] = ":0400100001020304E2\r\n";
constexpr char end[] = ":00000001FF\r\n";

} // namespace

TEST_F(HexFile, LoadsRealFilesToTheirBytes) {
    for (const std::string name : {"firmware", "full64k", "mixed"}) {
        state().BufferData.assign(70001, 0xFF);
        viewReopened = 0;
        const std::string path = TEST_FILES "/images/" + name + ".hex";
        ASSERT_TRUE(load(path)) << cause;
        std::string expected = TemporaryFolder::readFile(TEST_FILES "/images/" + name + ".bin");
        ASSERT_GT(expected.size(), 4000U);
        expected.resize(70001, '\xFF');
        const Bytes& bytes = state().BufferData;
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.begin(),
                               [](std::uint8_t a, char b) { return a == std::uint8_t(b); }))
            << name;
        EXPECT_EQ(vm.panels[4], "File: " + path);
        EXPECT_EQ(viewReopened, 1);
    }
    EXPECT_TRUE(load(SHIPPED_DATA "/sample.hex")) << cause;
}

TEST_F(HexFile, AnyOtherRecordTypeEndsTheFileAsASuccess) {
    EXPECT_TRUE(load(TEST_FILES "/images/starts-with-04.hex"));
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    EXPECT_EQ(viewReopened, 1);
    EXPECT_TRUE(vm.messages.empty());

    EXPECT_TRUE(loadText(std::string(good) + ":00000001EE\r\nno record at all"));
    EXPECT_EQ(state().BufferData[0x10], 1);
}

TEST_F(HexFile, OffsetsCutBelowAndMoveUp) {
    state().FileAddress = 0x12;
    state().BufferAddress = 0x1000;
    EXPECT_TRUE(loadText(std::string(good) + end));
    Bytes expected(70001, 0xFF);
    expected[0x1012] = 3;
    expected[0x1013] = 4;
    EXPECT_EQ(state().BufferData, expected);

    state().FileAddress = 2147483647;
    state().BufferAddress = 2147483647;
    EXPECT_TRUE(loadText(std::string(good) + end)); // nothing is left to place
}

TEST_F(HexFile, LaterRecordsWinAndOddFormsLoad) {
    EXPECT_TRUE(loadText("x0100100001EE,:02001000aabb89\n:00FFFF0002\r  ?00000001FF"));
    EXPECT_EQ(state().BufferData[0x10], 0xAA);
    EXPECT_EQ(state().BufferData[0x11], 0xBB);
    EXPECT_EQ(state().BufferData[0x12], 0xFF);
}

TEST_F(HexFile, WhatCannotBeRightChangesNothing) {
    const std::string data51 = ":33000000" + std::string(102, '0') + "CD\r\n";
    const std::string data52 = ":34000000" + std::string(104, '0') + "CC\r\n";
    ASSERT_TRUE(loadText(data51 + end)) << cause;
    state().BufferData.assign(70001, 0xFF);
    vm.panels[4] = "File:";
    viewReopened = 0;

    struct Case {
        std::string text;
        const char* message; // null: ends silently
        const char* cause;
    };
    std::string many;
    for (int i = 0; i < 10000; ++i)
        many += ":00000000"
                "00\r\n";
    const Case cases[] = {
        {std::string(good) + ":0400100001020304E3\r\n" + end, "Checksum Error in hex file!", ""},
        {std::string(good) + ":0400100001020305E2\r\n" + end, "Checksum Error in hex file!", ""},
        {good, "No end record in hex file!", ""},
        {"", "No end record in hex file!", ""},
        {std::string(good) + "\r\n" + end, nullptr, "record 2: the address is no"},
        {std::string(good) + ":04XY100001020304E2\r\n", nullptr, "record 2: the address is no"},
        {"ordinary text\n", nullptr, "record 1: the address is no"},
        {std::string("\0\0\0\0", 4), nullptr, "record 1: the address is no"},
        {data52 + end, nullptr, "record 1: more than 51 data bytes"},
        {many + end, nullptr, "more than 10000 records"},
        {std::string(good) + "\"unclosed\n", nullptr, "closing double quote"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 60));
        vm.messages.clear();
        EXPECT_EQ(loadText(c.text), c.message != nullptr);
        if (c.message)
            EXPECT_EQ(vm.messages,
                      (std::vector<ShownMessage>{
                          {"File Load Error", c.message, platform::MessageBox::Icon::Critical}}));
        else
            EXPECT_NE(cause.find(c.cause), std::string::npos) << cause;
        expectUntouched();
    }
    for (const std::string& path : {folder.file("missing.hex"), folder.path()}) {
        EXPECT_FALSE(load(path));
        expectUntouched();
    }
}

TEST_F(HexFile, EveryBumpedOrCutByteOfARecordIsNoticedOrHarmless) {
    // A good record changed in one place: either refused, or the byte is one that no rule looks at.
    const std::string record = good;
    for (std::size_t at = 1; at < record.size() - 2; ++at) {
        std::string bumped = record;
        bumped[at] = bumped[at] == '9' ? 'A' : static_cast<char>(bumped[at] + 1);
        std::string cut = record;
        cut.erase(at, 1);
        for (const std::string& text : {bumped, cut}) {
            state().BufferData.assign(70001, 0xFF);
            vm.messages.clear();
            viewReopened = 0;
            vm.panels[4] = "File:";
            const bool ended = loadText(text + end);
            // The record type: any but 0 ends the file.
            EXPECT_TRUE(!ended || !vm.messages.empty() || at == 7 || at == 8) << text;
            EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF)) << text;
        }
    }
}

TEST_F(HexFile, ATargetBehindTheImageStopsThereAndKeepsWhatWasPlaced) {
    state().BufferAddress = 70000 - 0x12;
    EXPECT_FALSE(loadText(std::string(good) + end));
    EXPECT_NE(cause.find("record 1: reaches behind the end of the image"), std::string::npos);
    EXPECT_EQ(state().BufferData[69998], 1);
    EXPECT_EQ(state().BufferData[70000], 3);
    EXPECT_EQ(vm.panels[4], "File:");
    EXPECT_EQ(viewReopened, 0);
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    for (const char* name : {"a.hex", "A.HEX", "hex", "xhex"})
        EXPECT_TRUE(LooksLikeHexFile(name)) << name;
    for (const char* name : {"a.Hex", "a.bin", "ex", "", "a.hex.bin"})
        EXPECT_FALSE(LooksLikeHexFile(name)) << name;
}
