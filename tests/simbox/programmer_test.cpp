#include "simbox/programmer.h"

#include "tests/support/table_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <set>

namespace {

using Box = simbox::Programmer;
using Bytes = std::vector<std::uint8_t>;

// "00 1F 21x256": bytes in hexadecimal, the last of them 256 times.
Bytes bytesOf(const std::string& text) {
    Bytes bytes;
    for (const std::string& word : words(text)) {
        const std::size_t times = word.size() > 2 ? std::stoul(word.substr(3)) : 1;
        bytes.insert(bytes.end(), times, static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

// "57600 5000 silent@2": pace in baud, time of a write in microseconds, faults.
simbox::Options optionsOf(const std::string& text) {
    const auto all = words(text);
    simbox::Options options;
    options.baud = static_cast<std::uint32_t>(std::stoul(all.at(0)));
    options.writeTimeUs = std::stoll(all.at(1));
    for (std::size_t i = 2; i < all.size(); ++i)
        options.faults.push_back(std::get<simbox::Fault>(simbox::ParseFault(all[i])));
    return options;
}

// A box, and a program that sends to it and takes what has come by then.
struct Bench {
    explicit Bench(const std::string& options) : box(optionsOf(options)) {}

    // At that time of the clock, or a second after the last.
    Bytes send(const std::string& bytes, const std::string& timeUs = "") {
        now = timeUs.empty() ? now + 1'000'000 : std::stoll(timeUs);
        box.Receive(now, bytesOf(bytes));
        return box.Take(now);
    }
    std::set<std::string> facts() {
        return {"frames=" + std::to_string(box.frames().size()),
                "complaints=" + std::to_string(box.protocolErrors().size()),
                "next=" + std::to_string(box.nextEventUs().value_or(-1)),
                "locked=" + std::to_string(box.chip().locked())};
    }

    Box box;
    std::int64_t now = 0;
};

} // namespace

TEST(Box, AnswersAsTheConversationsGo) {
    std::optional<Bench> bench;
    for (const auto& row : readTable(TEST_FILES "/simbox/conversations.txt")) {
        if (row.size() == 1) {
            bench.emplace(row[0]);
            continue;
        }
        SCOPED_TRACE(std::to_string(bench->now) + ", then " + row[0] + " | " + row[1]);
        EXPECT_EQ(bench->send(row[1], row[0]), bytesOf(row.at(2)));
        for (const std::string& fact : words(row.at(3)))
            EXPECT_TRUE(bench->facts().contains(fact))
                << fact << " is not in " << testing::PrintToString(bench->facts());
    }
}

TEST(Box, RefusesNonsense) {
    const auto table = readTable(TEST_FILES "/simbox/nonsense.txt");
    ASSERT_EQ(table.size(), 34U);
    for (const auto& row : table) {
        SCOPED_TRACE(row.at(0));
        Bench bench("0 0");
        std::istringstream before(row.at(1));
        for (std::string frame; std::getline(before, frame, ',');)
            bench.send(frame);
        EXPECT_EQ(bench.box.protocolErrors(), std::vector<std::string>());
        EXPECT_EQ(bench.send(row.at(2)), Bytes());
        EXPECT_EQ(bench.box.protocolErrors().size(), 1U);
        EXPECT_EQ(bench.send("00 00 00 01 49").size(), 12U);
        bench.send("00 00 00 04 56 00 00 00");
        bench.send("00 00 00 02 53 00");
        EXPECT_EQ(bench.box.protocolErrors().size(), 1U);
        EXPECT_TRUE(bench.box.socketReleased() && !bench.box.powered());
    }
}

TEST(Box, FaultsStrikeWhereTheyAreAskedFor) {
    const std::string ask = "00 00 00 01 49";
    for (const auto& row : readTable(TEST_FILES "/simbox/faults.txt")) {
        SCOPED_TRACE(row.at(0));
        Bench bench("0 0 " + row[0]);
        bench.send(ask);
        EXPECT_EQ(bench.send(ask).size(), std::stoul(row.at(1)));
        EXPECT_EQ(bench.box.Take(bench.now + 100'000).size(), std::stoul(row.at(2)));
        EXPECT_EQ(bench.send(ask).size(), std::stoul(row.at(3)));
        EXPECT_EQ(bench.box.cablePulled(), row.at(4) == "pulled");
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
        box.Receive(now, bytes);
        int events = 0;
        while (box.nextEventUs() && random() % 40 != 0) {
            ASSERT_LT(++events, 2'000) << "round " << round;
            now = std::max(now, *box.nextEventUs());
            box.Take(now);
        }
    }
    EXPECT_GT(box.protocolErrors().size(), 1'000U);
}
