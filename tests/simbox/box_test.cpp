#include "simbox/box.h"

#include "tests/support/table_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

namespace {

using simbox::Box;
using simbox::Options;
using Bytes = std::vector<std::uint8_t>;

Bytes hex(const std::string& text) {
    std::istringstream words(text);
    Bytes bytes;
    for (std::string word; words >> word;) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

// A whole "D" frame.
Bytes load(std::size_t count, std::uint8_t value) {
    const auto length = static_cast<std::uint16_t>(count + 1);
    Bytes frame = {0, 0, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length),
                   'D'};
    frame.insert(frame.end(), count, value);
    return frame;
}

// A frame as the table of nonsense has it.
Bytes frameOf(const std::string& text) {
    const auto at = text.find("load ");
    return at == std::string::npos ? hex(text) : load(std::stoul(text.substr(at + 5)), 1);
}

// A box without pace whose program sends a frame a second and takes what has come by then.
class Bench {
public:
    explicit Bench(const std::vector<std::string>& faults = {}) : box(options(faults)) {}

    Bytes send(const Bytes& bytes) {
        now += 1'000'000;
        box.receive(now, bytes);
        return box.take(now);
    }
    Bytes send(const std::string& text) { return send(hex(text)); }
    void setUpClass1() {
        send("00 00 00 04 56 0C 00 32");
        send("00 00 00 08 54 01 A0 3F FA C0 F8 C0");
    }
    void lockPass() {
        send("00 00 00 04 56 0C 00 32");
        for (const char* pins : {" FB C0", " FB 00", " F9 40"}) {
            send(std::string("00 00 00 06 53 01 A0 3F") + pins);
            send("00 00 00 03 4C FF 00");
        }
    }

    static Options options(const std::vector<std::string>& faults) {
        Options options;
        options.baud = 0;
        for (const std::string& text : faults) {
            options.faults.push_back(std::get<simbox::Fault>(simbox::parseFault(text)));
        }
        return options;
    }

    Box box;
    std::int64_t now = 0;
};

const std::string write0100 = "00 00 00 08 57 01 00 01 FF 08 04 01";
const Bytes identity = {'S', 'i', 'm', 'B', 'o', 'x', ' ', 'v', '1', '.', '0', '0'};

} // namespace

TEST(Box, FlashProgramsOnlyDownwardUntilErased) {
    Bench bench; // a fresh chip holds A5
    bench.setUpClass1();
    EXPECT_EQ(bench.send(load(256, 0x21)).size(), 1U);
    EXPECT_EQ(bench.send(write0100), hex("4E"));
    EXPECT_EQ(bench.box.chip().memory()[0x0100], 0x21);
    EXPECT_EQ(bench.box.chip().memory()[0x01FF], 0x21);
    EXPECT_EQ(bench.box.chip().memory()[0x0200], 0xA5);
    Bytes upward = load(256, 0x21);
    upward[5 + 0x2C] = 0x22;
    bench.send(upward);
    EXPECT_EQ(bench.send(write0100), hex("45 01 2C"));
    EXPECT_EQ(bench.box.chip().memory()[0x012C], 0x20);

    bench.send("00 00 00 06 53 01 A0 3F F9 00");
    EXPECT_EQ(bench.send("00 00 00 02 45 00").size(), 1U);
    EXPECT_EQ(bench.send("00 00 00 02 45 00").size(), 1U);
    bench.setUpClass1();
    bench.send(upward);
    EXPECT_EQ(bench.send(write0100), hex("4E"));
    const Bytes block = bench.send("00 00 00 06 52 01 00 01 FF 08");
    ASSERT_EQ(block.size(), 260U);
    EXPECT_EQ(block[4], 0x21);
    EXPECT_EQ(block[4 + 0x2C], 0x22);
    EXPECT_EQ(bench.box.complaints(), std::vector<std::string>());
}

TEST(Box, ThreeStepsLockAndEraseUnlocks) {
    Bench bench;
    bench.lockPass();
    bench.lockPass();
    EXPECT_TRUE(bench.box.chip().locked());
    bench.setUpClass1();
    bench.send(load(256, 0x00));
    EXPECT_EQ(bench.send(write0100), hex("45 01 00"));
    Bytes dark = bench.send("00 00 00 06 52 01 00 01 FF 08");
    EXPECT_EQ(Bytes(dark.begin() + 4, dark.end()), Bytes(256, 0x00));
    bench.send("00 00 00 06 53 01 A0 3F F9 00");
    bench.send("00 00 00 02 45 00");
    EXPECT_FALSE(bench.box.chip().locked());
    EXPECT_EQ(bench.box.complaints(), std::vector<std::string>());
}

TEST(Box, RefusesNonsense) {
    const auto table = readTable(TEST_FILES "/simbox/nonsense.txt");
    ASSERT_EQ(table.size(), 34U);
    for (const auto& row : table) {
        SCOPED_TRACE(row.at(0));
        Bench bench;
        std::istringstream before(row.at(1));
        for (std::string frame; std::getline(before, frame, ',');)
            bench.send(frameOf(frame));
        EXPECT_EQ(bench.box.complaints(), std::vector<std::string>());
        EXPECT_EQ(bench.send(frameOf(row.at(2))), Bytes());
        EXPECT_EQ(bench.box.complaints().size(), 1U);
        EXPECT_EQ(bench.send("00 00 00 01 49"), identity);
        bench.send("00 00 00 04 56 00 00 00");
        bench.send("00 00 00 02 53 00");
        EXPECT_EQ(bench.box.complaints().size(), 1U);
        EXPECT_TRUE(bench.box.socketReleased() && !bench.box.powered());
    }
}

TEST(Box, DropsAnIncompleteFrameAfterASecond) {
    Bench bench;
    bench.send("00 00 00");
    EXPECT_EQ(bench.box.nextEventUs(), bench.now + 1'000'000);
    bench.box.take(bench.now + 999'999);
    EXPECT_EQ(bench.box.complaints().size(), 0U);
    EXPECT_EQ(bench.send("00 00 00 01 49"), identity);
    EXPECT_EQ(bench.box.complaints().size(), 1U);
}

TEST(Box, PacesBothDirections) {
    Options options;
    options.writeTimeUs = 5'000;
    Box box(options); // 57600 baud: a byte takes 173.6 microseconds
    box.receive(1'000, hex("00 00 00 01 49"));
    EXPECT_TRUE(box.take(1'868).empty());
    EXPECT_EQ(box.nextEventUs(), 1'869); // the frame's last byte
    EXPECT_TRUE(box.frames().empty());
    EXPECT_TRUE(box.take(1'869).empty());
    ASSERT_EQ(box.frames().size(), 1U);
    EXPECT_EQ(box.frames()[0].arrivedUs, 1'869);
    EXPECT_EQ(box.nextEventUs(), 2'043);
    EXPECT_EQ(box.take(2'043), hex("53"));
    EXPECT_EQ(box.take(3'952).size(), 10U);
    EXPECT_EQ(box.take(3'953), hex("30"));
    box.receive(100'000, hex("00 00 00 06 53 04 00 00 00 00"));
    box.receive(200'000, load(256, 0x00));
    box.receive(300'000, hex("00 00 00 08 57 00 00 00 FF 07 00 00"));
    box.take(302'999);
    ASSERT_EQ(box.frames().size(), 4U);
    EXPECT_EQ(box.frames()[2].arrivedUs, 245'313);
    EXPECT_EQ(box.nextEventUs(), 302'084 + 5'000 + 174);
}

TEST(Box, FaultsStrikeWhereTheyAreAskedFor) {
    const std::string ask = "00 00 00 01 49";
    struct Row {
        const char* fault;
        std::size_t atOnce;      // bytes in reply to the second identify
        std::size_t within100Ms; // bytes more
        std::size_t third;       // bytes that have come when the third identify is answered
    };
    for (const Row& row : std::vector<Row>{{"silent@2", 0, 0, 12},
                                           {"silent-from@I2", 0, 0, 0},
                                           {"short@I2:1", 1, 0, 12},
                                           {"long@2:2", 14, 0, 12},
                                           {"late@2:100ms", 0, 12, 12},
                                           {"late@I2:101ms", 0, 0, 24},
                                           {"torn@2:1:100ms", 1, 11, 12},
                                           {"double@2", 24, 0, 12},
                                           {"chatter@2:3:100ms", 12, 3, 12},
                                           {"status@I2:4501", 2, 0, 12},
                                           {"identify:11", 11, 0, 11},
                                           {"pull@2", 0, 0, 0},
                                           {"silent@W2", 12, 0, 12}}) {
        Bench bench({row.fault});
        bench.send(ask);
        EXPECT_EQ(bench.send(ask).size(), row.atOnce) << row.fault;
        EXPECT_EQ(bench.box.take(bench.now + 100'000).size(), row.within100Ms) << row.fault;
        EXPECT_EQ(bench.send(ask).size(), row.third) << row.fault;
        EXPECT_EQ(bench.box.cablePulled(), std::string(row.fault) == "pull@2") << row.fault;
    }
}

// Frames with anything in them, cut off anywhere: nothing may crash, and a loop that goes from
// event to event must come to rest.
TEST(Box, SurvivesAnyBytes) {
    std::mt19937 random(20);
    Box box;
    std::int64_t now = 0;
    for (int round = 0; round < 20'000; ++round) {
        Bytes bytes = {0, 0, 0, static_cast<std::uint8_t>(random() % 10)};
        bytes.push_back(static_cast<std::uint8_t>("IVSTDWREL"[random() % 9]));
        for (auto left = random() % 12; left > 0; --left) {
            bytes.push_back(static_cast<std::uint8_t>(random() % (random() % 2 == 0 ? 256 : 5)));
        }
        box.receive(now, bytes);
        int events = 0;
        while (box.nextEventUs() && random() % 40 != 0) {
            ASSERT_LT(++events, 2'000) << "round " << round;
            now = std::max(now, *box.nextEventUs());
            box.take(now);
        }
    }
    EXPECT_GT(box.complaints().size(), 1'000U);
}
