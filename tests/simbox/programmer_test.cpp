// The simulated programmer: the frames that it accepts, its chip, its line.
#include "simbox/programmer.h"
#include "tests/support/run_fixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <sstream>

namespace {

using Names = std::vector<std::string>;

// Names and bytes of frames; the data of a "D" is filled up with 21.
constexpr char frameTexts[] =
    "I:00 00 00 01 49;V:00 00 00 04 56 0C 00 32;V0:00 00 00 04 56 00 00 00;S0:00 00 00 02 53 00;"
    "S1:00 00 00 06 53 01 A0 3F F8 C0;S3:00 00 00 06 53 03 00 00 00 00;D256:00 00 01 01 44;"
    "S4:00 00 00 06 53 04 00 00 00 00;T2:00 00 00 08 54 02 A0 3F FA C0 F8 C0;E:00 00 00 02 45 00;"
    "D256with22:00 00 01 01 44 22;D64:00 00 00 41 44 FF;W256:00 00 00 08 57 01 00 01 FF 08 04 01;"
    "W64:00 00 00 08 57 01 40 01 7F 14 00 40;R:00 00 00 06 52 01 00 01 FF 08;E8:00 00 00 02 45 08;"
    "L:00 00 00 03 4C FF 00;"
    // Never accepted:
    "Incomplete:00 00 00;UnknownCode:00 00 00 01 58;NoCode:00 00 00 00;LongV:00 00 00 05 56 0 0 0 "
    "0;"
    "TooLong:00 01 00 01 49 49 49;S5:00 00 00 06 53 05 00 00 00 00;S0long:00 00 00 06 53 0 0 0 0 0;"
    "ReleaseOf1:00 00 00 02 53 01;WrongLength:00 00 01 00 44;T3:00 00 00 08 54 03 0 0 0 0 0 0;"
    "WriteOfHalfABlock:00 00 00 08 57 00 00 00 7F 07 00 00;LongI:00 00 00 02 49 0;"
    "WriteOverTheBlocksEnd:00 00 00 08 57 00 E0 01 1F 14 00 40;ShortL:00 00 00 02 4C FF;"
    "WriteOfAnotherPageSize:00 00 00 08 57 00 00 00 3F 14 00 20;LongE:00 00 00 03 45 00 00;"
    "ReadFromInsideABlock:00 00 00 06 52 00 80 00 FF 08;ReadOverTwoBlocks:00 00 00 06 52 0 0 1 FF "
    "8;";

const std::map<std::string, Bytes> frames = [] {
    std::map<std::string, Bytes> all;
    std::istringstream texts(frameTexts);
    for (std::string name, text;
         std::getline(texts, name, ':') && std::getline(texts, text, ';');) {
        std::istringstream words(text);
        Bytes& bytes = all[name];
        for (unsigned byte = 0; words >> std::hex >> byte;)
            bytes.push_back(static_cast<std::uint8_t>(byte));
        if (bytes.size() > 4 && bytes[4] == 'D')
            bytes.resize(4U + bytes[2] * 256U + bytes[3], 0x21);
    }
    return all;
}();

// An unthrottled programmer, its chip filled with A5.
struct Line {
    // Sends these frames, a second apart, and returns the immediate reply to the last.
    std::string after(const Names& names) {
        Bytes reply;
        for (const std::string& name : names) {
            nowUs += 1'000'000;
            programmer.Receive(nowUs, frames.at(name));
            reply = programmer.Take(nowUs);
        }
        return hexText(reply);
    }

    simbox::Programmer programmer{{.baud = 0, .faults = {}}};
    std::int64_t nowUs = 0;
};

struct Moment {
    const char* name;
    Names before;
    std::string accepted; // in alphabetical order
};

const Moment moments[] = {
    {"Released", {}, "I S0 S1 S3 S4 T2 V V0"},
    {"ReleasedAgain", {"V", "S1", "S0"}, "I S0 S1 S3 S4 T2 V V0"},
    {"Class1Off", {"S1"}, "D256 D256with22 I S0 S1 S3 S4 T2 V V0"},
    {"Class1OffAgain", {"V", "S1", "V0"}, "D256 D256with22 I S0 S1 S3 S4 T2 V V0"},
    {"Class1", {"V", "S1"}, "D256 D256with22 E I L R S0 S1 S3 S4 T2 V V0"},
    {"Class1Loaded", {"V", "S1", "D256"}, "I S0 V0"},
    {"Class1LockStep", {"V", "S1", "L"}, "D256 D256with22 E I R S0 S1 S3 S4 T2 V V0"},
    {"Class2ForWriting", {"V", "T2"}, "D256 D256with22 I R S0 S1 S3 S4 T2 V V0"},
    {"Class2Loaded", {"V", "T2", "D256"}, "I S0 V0 W256"},
    {"Class2LoadedOff", {"T2", "D256"}, "I S0 V0"},
    {"Class2Written", {"V", "T2", "D256", "W256"}, "D256 D256with22 I R S0 S1 S3 S4 T2 V V0"},
    {"Class3", {"S3"}, "D64 I R S0 S1 S3 S4 T2 V V0"},
    {"Class3Loaded", {"S3", "D64"}, "I S0 V0 W64"},
    {"Class4", {"S4"}, "D256 D256with22 E E8 I R S0 S1 S3 S4 T2 V V0"},
    {"Class4Loaded", {"S4", "D256"}, "I S0 V0 W256"},
};

class Moments : public testing::TestWithParam<Moment> {};

// Three identify frames, a second apart, and when bytes of the replies arrive: "7:1 9:2" is one
// byte after 7 us and two after 9 us. At 57600 baud a byte takes 173.6 us in either direction.
struct Timing {
    const char* name;
    std::uint32_t baud;
    const char* fault;
    std::string arrivals;
};

const Timing timings[] = {
    {"SilentFrom", 0, "silent-from@I2", "0:12"},
    {"AnotherCode", 0, "silent@W2", "0:12 1000000:12 2000000:12"},
    {"EachOfACode", 0, "short@I:1", "0:1 1000000:1 2000000:1"},
    {"Late", 0, "late@2:1500ms", "0:12 2500000:24"},
    {"Double", 0, "double@2", "0:12 1000000:24 2000000:12"},
    {"Status", 0, "status@I3:4501", "0:12 1000000:12 2000000:2"},
    {"LineAt57600", 57600, "silent@2", "2953:12 2002953:12"},
    {"Portions", 57600, "long@1:60", "6425:32 11981:32 13369:8 1002953:12 2002953:12"},
    {"TwoParts", 57600, "chatter@3:40:10ms", "2953:12 1002953:12 2002953:12 2018509:32 2019898:8"},
    {"PortionLostWithTheCable", 110, "pull@2", ""},
};

class Timings : public testing::TestWithParam<Timing> {};

} // namespace

TEST_P(Moments, AcceptTheirFramesOnly) {
    std::string accepted;
    for (const auto& [name, bytes] : frames) {
        Line line;
        const auto& errors = line.programmer.protocolErrors();
        line.after(GetParam().before);
        EXPECT_EQ(errors, Names());
        const bool reply = !line.after({name}).empty();
        EXPECT_TRUE(line.after({"I"}).ends_with("53 69 6D 42 6F 78 20 76 31 2E 30 30")) << name;
        EXPECT_EQ(errors.size(), reply ? 0U : 1U) << name;
        accepted += reply ? (accepted.empty() ? "" : " ") + name : "";
        line.after({"V0", "S0"});
        EXPECT_TRUE(line.programmer.socketReleased() && !line.programmer.powered()) << name;
    }
    EXPECT_EQ(accepted, GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(, Moments, testing::ValuesIn(moments), rowName);

TEST_P(Timings, AreExact) {
    simbox::Programmer programmer(
        {.baud = GetParam().baud, .faults = parseFaults(GetParam().fault)});
    std::string arrivals;
    for (const std::int64_t startUs : {0, 1'000'000, 2'000'000}) {
        programmer.Receive(startUs, frames.at("I"));
        const std::int64_t endUs = startUs < 2'000'000 ? startUs + 1'000'000 : INT64_MAX;
        while (programmer.nextEventUs().value_or(INT64_MAX) < endUs) {
            const std::int64_t nowUs = *programmer.nextEventUs();
            if (const std::size_t count = programmer.Take(nowUs).size(); count > 0)
                arrivals += (arrivals.empty() ? "" : " ") + std::to_string(nowUs) + ":" +
                            std::to_string(count);
        }
    }
    EXPECT_EQ(arrivals, GetParam().arrivals);
}

INSTANTIATE_TEST_SUITE_P(, Timings, testing::ValuesIn(timings), rowName);

TEST(Chip, OfFlashIsProgrammedLockedAndErased) {
    Line line;
    const simbox::Chip& chip = line.programmer.chip();
    EXPECT_EQ(line.after({"V", "T2", "D256", "W256"}), "4E");
    EXPECT_EQ(line.after({"R"}).substr(0, 17), "06 06 06 06 21 21");
    EXPECT_EQ(line.after({"D256with22", "W256"}), "45 01 00");
    EXPECT_EQ(line.after({"R"}).substr(0, 17), "06 06 06 06 20 21");
    EXPECT_EQ(line.after({"S1", "E", "T2", "D256with22", "W256"}), "4E");
    for (const bool lockedBefore : {false, true}) {
        line.after({"V", "S1", "L", "V", "S1", "L", "S1", "L"});
        EXPECT_EQ(chip.locked(), lockedBefore);
        line.after({"S1", "L"});
        EXPECT_TRUE(chip.locked());
    }
    EXPECT_EQ(line.after({"R"}).substr(0, 17), "06 06 06 06 00 00");
    EXPECT_EQ(line.after({"T2", "D256", "W256"}), "45 01 00");
    EXPECT_EQ(chip.memory()[0x100], 0x22);
    EXPECT_EQ(line.after({"S4", "E"}), "06");
    EXPECT_EQ(line.programmer.nextEventUs(), line.nowUs + 50'000); // the second byte
    EXPECT_FALSE(chip.locked());
    EXPECT_EQ(chip.memory()[0x100], 0xFF);
}

TEST(Chip, OfPagesIsOverwritten) {
    Line line;
    EXPECT_EQ(line.after({"S3", "D64", "W64"}), "4E");
    EXPECT_EQ(line.after({"R"}).substr(67 * 3, 8), "A5 FF 21");
}

// Frames of any content, truncated anywhere: nothing may crash, and processing event after event
// must end.
TEST(Line, SurvivesAnyBytes) {
    std::mt19937 random(20);
    simbox::Programmer programmer;
    std::int64_t nowUs = 0;
    for (int round = 0; round < 20'000; ++round) {
        Bytes bytes = {0, 0, 0, Bytes::value_type(random() % 10)};
        bytes.push_back(std::uint8_t("IVSTDWREL"[random() % 9]));
        for (auto left = random() % 12; left > 0; --left)
            bytes.push_back(std::uint8_t(random() % (random() % 2 == 0 ? 256 : 5)));
        programmer.Receive(nowUs, bytes);
        for (int events = 0; programmer.nextEventUs() && random() % 40 != 0; ++events) {
            ASSERT_LT(events, 2'000) << "round " << round;
            nowUs = std::max(nowUs, *programmer.nextEventUs());
            programmer.Take(nowUs);
        }
    }
    EXPECT_GT(programmer.protocolErrors().size(), 1'000U);
}
