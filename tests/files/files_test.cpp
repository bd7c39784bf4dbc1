#include "app/startup.h"
#include "files/binary_file.h"
#include "files/hex_file.h"
#include "platform/file_error.h"
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>

using namespace modFunc;

namespace {

class Files : public RunTest {
protected:
    Files() {
        state().BufferData.assign(70001, 0xFF);
        vm.panels[4] = "File:";
    }
    // True when the command ended without an error.
    bool attempt(void (*command)(), const std::string& path) {
        vm.fileName() = path;
        try {
            command();
            return true;
        } catch (const platform::FileError& error) {
            cause = error.what();
            return false;
        }
    }
    bool load(const std::string& path) { return attempt(OpenHexFile, path); }
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

TEST_F(Files, LoadsRealFilesToTheirBytes) {
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

TEST_F(Files, AnyOtherRecordTypeEndsTheFileAsASuccess) {
    EXPECT_TRUE(load(TEST_FILES "/images/starts-with-04.hex"));
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    EXPECT_EQ(viewReopened, 1);
    EXPECT_TRUE(vm.messages.empty());

    EXPECT_TRUE(loadText(std::string(good) + ":00000001EE\r\nno record at all"));
    EXPECT_EQ(state().BufferData[0x10], 1);
}

TEST_F(Files, OffsetsCutBelowAndMoveUp) {
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

TEST_F(Files, LaterRecordsWinAndOddFormsLoad) {
    EXPECT_TRUE(loadText("x0100100001EE,:02001000aabb89\n:00FFFF0002\r  ?00000001FF"));
    EXPECT_EQ(state().BufferData[0x10], 0xAA);
    EXPECT_EQ(state().BufferData[0x11], 0xBB);
    EXPECT_EQ(state().BufferData[0x12], 0xFF);
}

TEST_F(Files, WhatCannotBeRightChangesNothing) {
    auto table = readTable(TEST_FILES "/files/broken.txt");
    std::string many;
    for (int i = 0; i < 10000; ++i)
        many += ":0000000000\n";
    table.push_back({"", "more than 10000 records", many + end});
    for (const auto& row : table) {
        SCOPED_TRACE(row.at(2).substr(0, 60));
        vm.messages.clear();
        cause.clear();
        EXPECT_EQ(loadText(unescaped(row[2])), !row.at(0).empty());
        EXPECT_EQ(vm.messages.empty() ? "" : vm.messages[0].title + ": " + vm.messages[0].text,
                  row[0]);
        EXPECT_TRUE(cause.find(row.at(1)) != std::string::npos) << cause;
        expectUntouched();
    }
    for (const std::string& path : {folder.file("missing.hex"), folder.path()}) {
        EXPECT_FALSE(load(path));
        expectUntouched();
    }
}

TEST_F(Files, WhatIsNoFileOfThisProgramIsRefusedAtOnceAndInAFewWords) {
    const std::string largest(16 << 20, 'x');
    const std::pair<const char*, std::function<void(const std::string&)>> kinds[] = {
        {"a pipe", [](const std::string& path) { mkfifo(path.c_str(), 0600); }},
        {"a device", [](const auto& path) { std::filesystem::create_symlink("/dev/zero", path); }},
        {"a folder", [](const auto& path) { std::filesystem::create_directory(path); }},
        {"a disk image",
         [&](const auto& path) {
             folder.write("sparse", "");
             std::filesystem::resize_file(folder.file("sparse"), 1 << 30);
             std::filesystem::rename(folder.file("sparse"), path);
         }},
        {"one line", [&](const auto&) { folder.write("a", largest); }},
        {"one text", [&](const auto&) { folder.write("a", "5\n1\n1\n" + largest + "\nb\n"); }},
        {"zeros", [&](const auto&) { folder.write("a", std::string(1 << 20, '\0')); }},
    };
    state().AppPath = folder.path();
    state().DeviceCount = 1;
    for (const auto& [kind, make] : kinds) {
        make(folder.file("a"));
        for (const auto& [name, read] :
             {std::pair("quorven.cfg", &ReadSettings), std::pair("quorven.dev", &ReadDeviceList),
              std::pair("auto.cfg", &ReadAutoFile), std::pair("a.hex", &OpenHexFile),
              std::pair("a.bin", &OpenBinFile)}) {
            std::filesystem::rename(folder.file("a"), folder.file(name));
            EXPECT_FALSE(attempt(read, folder.file(name))) << name << ", " << kind;
            EXPECT_LT(cause.size(), folder.file(name).size() + 250) << cause.substr(0, 500);
            std::filesystem::rename(folder.file(name), folder.file("a"));
        }
        std::filesystem::remove(folder.file("a"));
        state().DeviceCount = 1;
    }
}

TEST_F(Files, EveryBumpedOrCutByteOfARecordIsNoticedOrHarmless) {
    // A good record changed in one place: either refused, or the byte is one that no rule looks at.
    const std::string record = good;
    for (std::size_t at = 1; at < record.size() - 2; ++at) {
        std::string bumped = record;
        bumped[at] = bumped[at] == '9' ? 'A' : static_cast<char>(bumped[at] + 1);
        std::string cut = record;
        cut.erase(at, 1);
        std::string doubled = record;
        doubled.insert(at, 1, record[at]);
        for (const std::string& text : {bumped, cut, doubled}) {
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

TEST_F(Files, ATargetBehindTheImageStopsThereAndKeepsWhatWasPlaced) {
    state().BufferAddress = 70000 - 0x12;
    EXPECT_FALSE(loadText(std::string(good) + end));
    EXPECT_NE(cause.find("record 1: reaches behind the end of the image"), std::string::npos);
    EXPECT_EQ(state().BufferData[69998], 1);
    EXPECT_EQ(state().BufferData[70000], 3);
    EXPECT_EQ(vm.panels[4], "File:");
    EXPECT_EQ(viewReopened, 0);
}

TEST_F(Files, SavesTheDeviceInRecordsOfSixteen) {
    device(1, 40);
    for (int i = 0; i < 16; ++i)
        state().BufferData[std::size_t(16 + i)] = std::uint8_t(i * 17);
    const std::string blank = std::string(32, 'F');
    folder.write("a.hex",
                 "what was there before, and longer than what comes\n" + blank + blank + blank);
    state().FileAddress = state().BufferAddress = 5; // no matter
    EXPECT_TRUE(attempt(SaveHexFile, folder.file("a.hex")));
    EXPECT_EQ(folder.read("a.hex"), ":10000000" + blank + "00\r\n" +
                                        ":1000100000112233445566778899AABBCCDDEEFFE8\r\n" +
                                        ":10002000" + blank + "E0\r\n:00000001FF\r\n");
    EXPECT_EQ(vm.panels[4], "File: " + folder.file("a.hex"));
    EXPECT_EQ(viewReopened, 0);
}

TEST_F(Files, WhatIsSavedLoadsBackTheSame) {
    std::mt19937 random(3);
    for (const auto& [save, open, name] : {std::tuple(&SaveHexFile, &OpenHexFile, "a.hex"),
                                           std::tuple(&SaveBinFile, &OpenBinFile, "a.bin")}) {
        for (const std::int32_t size : {256, 65536}) {
            device(1, size);
            std::ranges::generate(state().BufferData, [&] { return std::uint8_t(random()); });
            Bytes saved(state().BufferData.begin(), state().BufferData.begin() + size);
            ASSERT_TRUE(attempt(save, folder.file(name)));
            state().BufferData.assign(70001, 0x55);
            ASSERT_TRUE(attempt(open, folder.file(name)));
            saved.resize(70001, 0x55);
            EXPECT_EQ(state().BufferData, saved) << name << ", " << size;
        }
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.bin", "a.hex"}));
}

// The disk is full at every single byte of what is saved.
TEST_F(Files, AFullDiskLeavesTheOldFileWhole) {
    device(1, 64);
    state().AppPath = folder.path();
    state().ProgramVersion = "1.0";
    autoSequence({Erase, Program, Verify});
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    for (const auto& [save, name, bytes] : {std::tuple(&SaveHexFile, "a.hex", 4 * 45 + 13),
                                            std::tuple(&WriteAutoFile, "auto.cfg", 12),
                                            std::tuple(&WriteSettings, "quorven.cfg", 20)}) {
        folder.write(name, "as it was");
        for (rlim_t limit = 0; limit <= rlim_t(bytes); ++limit) {
            SCOPED_TRACE(testing::Message() << name << ", " << limit << " bytes left");
            vm.panels[4] = "File:";
            const rlimit small{limit, old.rlim_max};
            setrlimit(RLIMIT_FSIZE, &small);
            const bool saved = attempt(save, folder.file("a.hex"));
            setrlimit(RLIMIT_FSIZE, &old);
            EXPECT_EQ(saved, limit == rlim_t(bytes));
            EXPECT_EQ(saved, folder.read(name) != "as it was");
            EXPECT_EQ(folder.names(), std::vector<std::string>{name});
            EXPECT_TRUE(saved || vm.panels[4] == "File:");
            EXPECT_TRUE(saved || cause.ends_with("cannot be written: File too large")) << cause;
        }
        folder.remove(name);
    }
}

TEST_F(Files, ASaveFollowsLinksAndNeedsItsFolder) {
    EXPECT_FALSE(attempt(SaveHexFile, folder.file("no folder/a.hex")));
    std::filesystem::create_symlink("b.hex", folder.file("link")); // to a file yet to come
    EXPECT_TRUE(attempt(SaveHexFile, folder.file("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(folder.read("b.hex"), ":00000001FF\r\n");
}

TEST_F(Files, BinaryLoadsPlaceEachByteByItsOffset) {
    for (const auto& row : readTable(TEST_FILES "/files/binary_loads.txt")) {
        std::size_t length = 0, first = 0, count = 0;
        std::istringstream(row.at(0)) >> length;
        State& st = state();
        std::istringstream(row.at(1)) >> st.FileAddress >> st.BufferAddress;
        std::istringstream(row.at(2)) >> first >> count;
        const bool ends = row.at(3) == "ends";
        SCOPED_TRACE(row[0] + " | " + row[1]);
        st.BufferData.assign(70001, 0xFF);
        vm.panels[4] = "File:";
        viewReopened = 0;
        std::string contents(length, '\0');
        for (std::size_t i = 0; i < length; ++i)
            contents[i] = char(i % 251);
        folder.write("a.bin", contents);
        EXPECT_EQ(attempt(OpenBinFile, folder.file("a.bin")), ends);
        Bytes expected(70001, 0xFF);
        for (std::size_t i = 0; i < count; ++i)
            expected[first + i] = std::uint8_t((std::size_t(st.FileAddress) + i) % 251);
        EXPECT_EQ(st.BufferData, expected);
        EXPECT_EQ(vm.panels[4] != "File:", ends);
        EXPECT_EQ(viewReopened, ends ? 1 : 0);
    }
    EXPECT_TRUE(attempt(OpenBinFile, folder.file("new.bin")));
    EXPECT_EQ(folder.read("new.bin"), "");
    EXPECT_FALSE(attempt(OpenBinFile, folder.path()));
    EXPECT_FALSE(attempt(OpenBinFile, "/dev/zero"));
}

TEST_F(Files, BinarySaveKeepsTheTailOfALongerFile) {
    device(1, 2048);
    folder.write("a.bin", std::string(4096, 'x'));
    EXPECT_TRUE(attempt(SaveBinFile, folder.file("a.bin")));
    EXPECT_EQ(folder.read("a.bin"), std::string(2048, '\xFF') + std::string(2048, 'x'));
    EXPECT_EQ(viewReopened, 0);
    EXPECT_FALSE(attempt(SaveBinFile, "/dev/full"));
}

TEST(HexFileName, TheLastThreeLettersProposeTheType) {
    for (const char* name : {"a.hex", "A.HEX", "hex", "xhex"})
        EXPECT_TRUE(LooksLikeHexFile(name)) << name;
    for (const char* name : {"a.Hex", "a.bin", "ex", "", "a.hex.bin"})
        EXPECT_FALSE(LooksLikeHexFile(name)) << name;
}
