// The simulated programmer: the frames that it accepts, its chip, its line.
#include "tests/support/run_fixture.h"

namespace {

using Frames = std::vector<Bytes>;

// Frames without their length field.
const Bytes I{'I'}, E{'E', 0}, E8{'E', 8}, L{'L', 0xFF, 0}, S0{'S', 0}, V0{'V', 0, 0, 0};
const Bytes D256(257, 'D'), D64(65, 'D'), R{'R', 1, 0, 1, 0xFF, 8}, V{'V', 12, 0, 50};
const Bytes S1{'S', 1, 0xA0, 0x3F, 0xF8, 0xC0}, S3{'S', 3, 0, 0, 0, 0}, S4{'S', 4, 0, 0, 0, 0};
const Bytes T2{'T', 2, 0xA0, 0x3F, 0xFA, 0xC0, 0xF8, 0xC0};
const Bytes W256{'W', 1, 0, 1, 0xFF, 8, 4, 1}, W64{'W', 1, 0x40, 1, 0x7F, 20, 0, 64};
// Never accepted:
const Bytes D255(256, 'D'), S5{'S', 5, 0, 0, 0, 0}, T3{'T', 3, 0, 0, 0, 0, 0, 0}, release1{'S', 1};
const Bytes RInside{'R', 0, 0x80, 0, 0xFF, 8}, RAcross{'R', 0, 0, 1, 0xFF, 8};
const Bytes WHalf{'W', 0, 0, 0, 0x7F, 7, 0, 0}, WAcross{'W', 0, 0xE0, 1, 0x1F, 20, 0, 64};
const Bytes WOtherPage{'W', 0, 0, 0, 0x3F, 20, 0, 32}, longI{'I', 0}, longS0{'S', 0, 0, 0, 0, 0};
const Frames frames{D256, D64,      E,       E8,      I,     L,       R,          S0,    S1,
                    S3,   S4,       T2,      V,       V0,    W256,    W64,        D255,  S5,
                    T3,   release1, RInside, RAcross, WHalf, WAcross, WOtherPage, longI, longS0};

// An unthrottled programmer.
struct Line {
    // Sends these frames, a second apart, and returns the immediate reply to the last.
    std::string after(const Frames& sent) {
        Bytes reply;
        for (Bytes bytes : sent) {
            const auto length = bytes.size();
            bytes.insert(bytes.begin(), {0, 0, std::uint8_t(length / 256), std::uint8_t(length)});
            programmer.Receive(nowUs += 1'000'000, bytes);
            reply = programmer.Take(nowUs);
        }
        return hexText(reply);
    }

    simbox::Programmer programmer{{.baud = 0, .fill = 0x55, .faults = {}}};
    std::int64_t nowUs = 0;
};

const struct Moment {
    const char* name;
    Frames before, accepted;
} moments[] = {
    {"Released", {}, {I, S0, S1, S3, S4, T2, V, V0}},
    {"Class1Off", {V, S1, V0}, {D256, I, S0, S1, S3, S4, T2, V, V0}},
    {"Class1", {V, S1}, {D256, E, I, L, R, S0, S1, S3, S4, T2, V, V0}},
    {"Class1Loaded", {V, S1, D256}, {I, S0, V0}},
    {"Class1LockStep", {V, S1, L}, {D256, E, I, R, S0, S1, S3, S4, T2, V, V0}},
    {"Class2Loaded", {V, T2, D256}, {I, S0, V0, W256}},
    {"Class2LoadedOff", {T2, D256}, {I, S0, V0}},
    {"Class2Written", {V, T2, D256, W256}, {D256, I, R, S0, S1, S3, S4, T2, V, V0}},
    {"Class3", {S3}, {D64, I, R, S0, S1, S3, S4, T2, V, V0}},
    {"Class3Loaded", {S3, D64}, {I, S0, V0, W64}},
    {"Class4", {S4}, {D256, E, E8, I, R, S0, S1, S3, S4, T2, V, V0}},
};

class Moments : public testing::TestWithParam<Moment> {};

} // namespace

TEST_P(Moments, AcceptTheirFramesOnly) {
    Frames accepted;
    for (const Bytes& frame : frames) {
        Line line;
        line.after(GetParam().before);
        const bool reply = !line.after({frame}).empty();
        if (reply)
            accepted.push_back(frame);
        // Two protocol errors: a length that is too large, and an incomplete frame.
        line.programmer.Receive(line.nowUs, Bytes{0, 1, 0, 1, 'I', 'I', 'I'});
        line.programmer.Receive(line.nowUs, Bytes{0, 0, 0});
        EXPECT_TRUE(line.after({V0, S0, I}).ends_with("53 69 6D 42 6F 78 20 76 31 2E 30 30"));
        EXPECT_EQ(line.programmer.protocolErrors().size(), reply ? 2U : 3U) << hexText(frame);
        EXPECT_TRUE(line.programmer.socketReleased() && !line.programmer.powered());
    }
    EXPECT_EQ(accepted, GetParam().accepted);
}

INSTANTIATE_TEST_SUITE_P(, Moments, testing::ValuesIn(moments), rowName);

// Three identify frames, a second apart, and when bytes of the replies arrive: "7:1 9:2" is one
// byte after 7 us and two after 9 us. At 57600 baud a byte takes 173.6 us in either direction.
TEST(Line, DelaysSplitsAndLosesReplies) {
    for (const auto& [baud, fault, expected] :
         {std::tuple(0, "silent-from@I2", "0:12 "),
          std::tuple(0, "double@2", "0:12 1000000:24 2000000:12 "),
          std::tuple(57600, "chatter@3:40:10ms",
                     "2953:12 1002953:12 2002953:12 2018509:32 2019898:8 "),
          std::tuple(110, "pull@2", "")}) {
        simbox::Programmer programmer({.baud = std::uint32_t(baud), .faults = parseFaults(fault)});
        std::string arrivals;
        for (const std::int64_t startUs : {0, 1'000'000, 2'000'000}) {
            programmer.Receive(startUs, Bytes{0, 0, 0, 1, 'I'});
            while (programmer.nextEventUs().value_or(INT64_MAX) < startUs + 1'000'000) {
                const std::int64_t nowUs = *programmer.nextEventUs();
                if (const Bytes reply = programmer.Take(nowUs); !reply.empty())
                    arrivals += std::to_string(nowUs) + ":" + std::to_string(reply.size()) + " ";
            }
        }
        EXPECT_EQ(arrivals, expected) << fault;
    }
}

TEST(Chip, IsProgrammedLockedAndErased) {
    Line line;
    EXPECT_EQ(line.after({V, T2, D256, W256}), "4E");
    line.programmer.chip().Set(0x101, 0x26);
    EXPECT_EQ(line.after({D256, W256}), "45 01 01");
    EXPECT_EQ(line.after({R}).substr(0, 20), "06 06 06 06 44 04 44");

    // An erase and "V" each start a new lock pass.
    EXPECT_EQ(line.after({V, S1, L, S1, L, S1, E, S1, L, S1, L, V, S1, L, S1, L, R}).substr(0, 14),
              "06 06 06 06 FF");
    EXPECT_EQ(line.after({S1, L, R}).substr(0, 17), "06 06 06 06 00 00");
    EXPECT_EQ(line.after({T2, D256, W256}), "45 01 00");
    EXPECT_EQ(line.after({S4, E, R}).substr(0, 20), "06 06 06 06 06 FF FF");

    line.programmer.chip().Fill(0); // pages are overwritten
    EXPECT_EQ(line.after({S3, D64, W64, R}).substr(67 * 3, 5), "00 44");
}
