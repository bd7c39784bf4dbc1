// Runs held against tables: tests/functions/wire_table.txt has every function on every kind of
// family, tests/functions/scenarios.txt has faulty boxes, chips and devices.
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

#include <algorithm>

using namespace modFunc;

namespace {

FunctionCode codeOf(const std::string& name) {
    for (std::size_t code = 0; code < DeviceRun::functions.size(); ++code)
        if (name == DeviceRun::functions[code].name)
            return static_cast<FunctionCode>(code);
    return static_cast<FunctionCode>(std::stoi(name));
}

class Scenario : public RunTest {
protected:
    // A run of a function, or of "Auto:" and the names of some, on a device "family size page".
    // The image holds a pattern, for Read the chip alone.
    void play(const std::string& deviceText, const std::string& faults, const std::string& chip,
              const std::string& runText) {
        box(words(faults));
        const auto numbers = words(deviceText);
        device(std::stoi(numbers.at(0)), std::stoi(numbers.at(1)), std::stoi(numbers.at(2)));
        image();
        fillChip(chip);
        if (runText == "Read")
            state().BufferData.assign(70001, 0xEE);
        imageBefore = state().BufferData;
        startMs = vm.nowMs();

        auto names = words(runText);
        std::vector<FunctionCode> codes(names.size() - 1);
        std::transform(names.begin() + 1, names.end(), codes.begin(), codeOf);
        autoSequence(codes);
        run(names[0] == "Auto:" ? Auto : codeOf(names[0]));
        EXPECT_EQ(window.closed, runText == "Read" && window.lines[0].ends_with("OK!"));
        EXPECT_EQ(window.buttons, window.closed ? "rc" : "rcRC");
        if (runText == "Program" && window.lines[0].ends_with("OK!")) {
            Bytes expected(65536, 0xFF);
            std::copy_n(imageBefore.begin(), std::stoi(numbers[1]), expected.begin());
            EXPECT_TRUE(std::ranges::equal(vm.box().chip().memory(), expected));
        }
    }
    // "FF", "image", and single bytes as "0123=00".
    void fillChip(const std::string& contents) {
        for (const std::string& word : words(contents)) {
            if (word == "image")
                vm.box().chip().Load(state().BufferData);
            else if (word.size() == 2)
                vm.box().chip().Fill(std::uint8_t(std::stoi(word, nullptr, 16)));
            else
                vm.box().chip().Set(std::uint16_t(std::stoi(word, nullptr, 16)),
                                    std::uint8_t(std::stoi(word.substr(5), nullptr, 16)));
        }
    }
    std::string lines() const {
        std::string text = window.lines[0];
        for (std::size_t i = 1; i < window.lines.size(); ++i)
            text += " / " + window.lines[i];
        return text.substr(0, text.find_last_not_of(" /") + 1);
    }
    // The box's frames, each with the time until the next or the run's end: "S 00 +500".
    std::string traffic() {
        std::string text;
        double beforeMs = 0;
        const auto pause = [&](double untilMs) {
            if (const int ms = static_cast<int>(untilMs - beforeMs); ms > 0 && !text.empty())
                text += " +" + std::to_string(ms);
            beforeMs = untilMs;
        };
        for (const simbox::Frame& frame : vm.box().frames()) {
            pause(static_cast<double>(frame.arrivedUs) / 1000);
            const Bytes parameters(frame.bytes.begin() + 5, frame.bytes.end());
            text += (text.empty() ? "" : ", ") + std::string{frame.commandCode} + " " +
                    (frame.commandCode == 'D' ? std::to_string(parameters.size()) : hexText(parameters));
        }
        pause(vm.nowMs());
        return text;
    }

    Bytes imageBefore;
    double startMs = 0;
};

} // namespace

TEST_F(Scenario, EveryFunctionOnEveryFamily) {
    const auto table = readTable(TEST_FILES "/functions/wire_table.txt");
    ASSERT_EQ(table.size(), 13U * 6);
    for (const auto& row : table) {
        SCOPED_TRACE(row.at(0) + " | " + row.at(1));
        const FunctionCode code = codeOf(row[1]);
        play(row[0], "", code == Read || code == Verify ? "image" : "FF", row[1]);
        EXPECT_EQ(lines(), row.at(2));
        EXPECT_EQ(window.percents, row.at(3));
        EXPECT_EQ(traffic(), row.at(4));
        const bool refused = row.size() > 5;
        EXPECT_EQ(vm.box().protocolErrors().empty(), !refused);
        EXPECT_EQ(vm.box().chip().locked(), !refused && row[2] == "Locking ...   OK!");
    }
}

TEST_F(Scenario, EndsAsTold) {
    for (const auto& row : readTable(TEST_FILES "/functions/scenarios.txt")) {
        SCOPED_TRACE(row.at(0) + " | " + row.at(1) + " | " + row.at(2) + " | " + row.at(3));
        play(row[0], row[1], row[2], row[3]);
        EXPECT_EQ(lines(), row.at(4));
        EXPECT_EQ(words(window.percents).back(), row.at(5));
        EXPECT_EQ(vm.messages,
                  std::vector<ShownMessage>(std::stoul(row.at(6)), communicationError()));
        EXPECT_EQ(frames().size(), std::stoul(row.at(7)));
        EXPECT_EQ(vm.nowMs() - startMs, std::stod(row.at(8)));
        const auto& chip = vm.box().chip().memory();
        std::copy_n(chip.begin(), row.size() > 9 ? std::stoi(row[9]) : 0, imageBefore.begin());
        EXPECT_EQ(state().BufferData, imageBefore);
        if (!vm.box().cablePulled() && !frames().empty())
            expectPoweredDown();
    }
}
