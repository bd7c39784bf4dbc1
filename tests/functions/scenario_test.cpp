// Runs against faulty boxes and chips, held against tests/functions/scenarios.txt.
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

#include <algorithm>

using namespace modFunc;

namespace {

class Scenario : public RunTest {
protected:
    static std::vector<std::string> words(const std::string& text) {
        std::istringstream stream(text);
        return {std::istream_iterator<std::string>(stream), {}};
    }
    static int codeOf(const std::string& name) {
        const auto found = std::ranges::find(functionNames, name);
        return found == functionNames.end() ? std::stoi(name) : int(found - functionNames.begin());
    }
    // "FF", "image", and single bytes as "0123=00".
    void fillChip(const std::string& contents) {
        for (const std::string& word : words(contents)) {
            if (word == "image")
                vm.box().chip().load(state().BufferData);
            else if (word.size() == 2)
                vm.box().chip().fill(std::uint8_t(std::stoi(word, nullptr, 16)));
            else
                vm.box().chip().set(std::uint16_t(std::stoi(word, nullptr, 16)),
                                    std::uint8_t(std::stoi(word.substr(5), nullptr, 16)));
        }
    }
    void runText(const std::string& text) {
        auto names = words(text);
        if (names.at(0) != "Auto:")
            return run(codeOf(names[0]));
        std::vector<int> codes(names.size() - 1);
        std::transform(names.begin() + 1, names.end(), codes.begin(), codeOf);
        autoSequence(codes);
        run(Auto);
    }
    std::string lines() const {
        std::string text = window.lines[0];
        for (std::size_t i = 1; i < window.lines.size(); ++i)
            text += " / " + window.lines[i];
        return text.substr(0, text.find_last_not_of(" /") + 1);
    }
};

} // namespace

TEST_F(Scenario, EndsAsTold) {
    for (const auto& row : readTable(TEST_FILES "/functions/scenarios.txt")) {
        SCOPED_TRACE(row.at(0) + " | " + row.at(1) + " | " + row.at(2) + " | " + row.at(3));
        const auto size = words(row[0]);
        box(words(row[1]));
        device(std::stoi(size.at(0)), std::stoi(size.at(1)), std::stoi(size.at(2)));
        image();
        fillChip(row[2]);
        const Bytes before = state().BufferData;
        const double start = vm.nowMs();
        runText(row[3]);
        EXPECT_EQ(lines(), row.at(4));
        EXPECT_EQ(window.percents.back(), std::stoi(row.at(5)));
        EXPECT_EQ(vm.messages,
                  std::vector<ShownMessage>(std::stoul(row.at(6)), communicationError()));
        EXPECT_EQ(frames().size(), std::stoul(row.at(7)));
        EXPECT_EQ(vm.nowMs() - start, std::stod(row.at(8)));
        EXPECT_EQ(window.buttons, window.closed ? "rc" : "rcRC");
        EXPECT_TRUE(row[3] == "Read" || state().BufferData == before);
        if (!vm.box().cablePulled() && !frames().empty())
            expectPoweredDown();
    }
}
