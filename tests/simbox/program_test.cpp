// simbox as a program: its options, its files, its exit status.
#include "tests/support/run_fixture.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <sys/wait.h>

using namespace std::string_literals;

namespace {

const struct ProgramRun {
    const char *name, *options;
    int status;
    std::vector<std::string> output; // expected parts, error output included
    std::string frames = "";         // sent together when simbox is ready
} runs[] = {
    {"Help", "--help", 0, {"\n  --baud N         speed", "\n  pull@F           the cable"}},
    {"ValueMissing", "--help --fill", 2, {"simbox: --fill: value missing"}},
    {"UnknownOption", "--fil", 2, {R"(simbox: unknown option "--fil")"}},
    {"NoPath", "--link ''", 2, {R"(--link "": a path expected)"}},
    {"Firmware11", "--firmware 12345678901", 2, {"12 bytes expected"}},
    {"Baud0", "--baud 0", 2, {R"(simbox: --baud "0": a number from 1 to 4000000 expected)"}},
    {"WrongFault", "--fault short@1", 2, {R"(":" and a count of bytes, 0 to 65536 expected)"}},
    {"TraceNotWritable", "--trace none/t", 1, {"simbox: cannot write none/t\n"}},
    {"ChipNotWritable", "--chip none/c", 1, {"simbox: cannot write none/c.tmp: No such file"}},
    {"ChipTooLong", "--chip long", 1, {"simbox: long is longer than a chip of 65536 bytes\n"}},
    {"LinkOverAFile", "--link long", 1, {"simbox: long exists and is not a symbolic link"}},
    // A shorter file fills the start of the chip, which is locked until it is erased.
    {"EveryOption",
     "--link com5 --chip chip --fill b5 --firmware 123456789012 --trace - --fault pull@I2 --fault "
     "status@L:06",
     3,
     {"simbox ready: com5 -> /dev/", "> 00 00 00 01 49  identify", "firmware 123456789012",
      "set up socket class 3 set-up A0 3F pins F9 00", "read block 0000-00FF chip code 8",
      "< 06 06 06 06 00 00 ", "< 06 06 06 06 41 B5 ", "... (260 bytes)  data of block 0000\n",
      "load 2 bytes", "write block 0000-0001 chip code 9 option 4 mode 2", "set supplies 12 0 50",
      "class 1 set-up A0 3F write pins FA C0 read pins F8 C1", "lock step FF 0A",
      " (injected fault)", "erase 00", "release socket", "< -  cable pulled",
      "simbox: protocol error: frame 2, malformed: unknown command code 58"},
     "\0\0\0\1I\0\0\0\1X\0\0\0\6S\4\0\0\0\0\0\0\0\6R\0\0\0\xFF\b\0\0\0\6S\3\xA0\x3F\xF9\0"
     "\0\0\0\6R\0\0\0\xFF\b\0\0\0\3D12\0\0\0\bW\0\0\0\1\t\4\2\0\0\0\4V\f\0\x32"
     "\0\0\0\bT\1\xA0\x3F\xFA\xC0\xF8\xC1\0\0\0\6S\1\xA0\x3F\xF9\0\0\0\0\3L\xFF\n"
     "\0\0\0\2E\0\0\0\0\2S\0\0\0\0\1I"s},
};

class Program : public testing::TestWithParam<ProgramRun> {};

} // namespace

TEST_P(Program, EndsWithItsStatus) {
    const ProgramRun& run = GetParam();
    const TemporaryFolder folder;
    folder.write("long", std::string(65537, 'A'));
    folder.write("chip", "A");
    folder.write("chip.lock", "");
    std::filesystem::create_symlink("nowhere", folder.file("com5"));
    const std::string command = "timeout 20 '" SIMBOX "' --no-pace "s + run.options + " 2>&1";
    FILE* pipe = popen(("cd " + folder.path() + " && " + command).c_str(), "r");
    std::string output;
    for (char text[200]; fgets(text, sizeof text, pipe);) {
        output += text;
        if (output != text || !output.starts_with("simbox ready"))
            continue;
        const int line = open(folder.file("com5").c_str(), O_RDWR | O_NOCTTY);
        EXPECT_EQ(write(line, run.frames.data(), run.frames.size()), std::ssize(run.frames));
        close(line);
    }
    EXPECT_EQ(WEXITSTATUS(pclose(pipe)), run.status);
    for (const std::string& part : run.output)
        EXPECT_NE(output.find(part), std::string::npos) << part << " is not in\n" << output;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}),
              run.frames.empty() ? 4 : 2); // neither link nor lock
    EXPECT_TRUE(folder.read("chip") == (run.frames.empty() ? "A" : std::string(65536, '\xFF')));
}

INSTANTIATE_TEST_SUITE_P(, Program, testing::ValuesIn(runs), rowName);

TEST(FaultTexts, AreRejectedIfAnyPartIsMissingSurplusOrOutOfRange) {
    for (const char* wrong :
         {"quiet@1", "silent@W0", "silent:1", "long@1:65537", "late@1:5", "late@1:3600001ms",
          "status@1:450", "status@1:", "lie:123", "pull@2:3"})
        EXPECT_TRUE(std::holds_alternative<std::string>(simbox::ParseFault(wrong))) << wrong;
}
