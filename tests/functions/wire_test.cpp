// Every function on every kind of family, held against tests/functions/wire_table.txt.
#include "tests/support/run_fixture.h"
#include "tests/support/table_file.h"

#include <algorithm>

using namespace modFunc;

namespace {

class Wire : public RunTest {
protected:
    // The box's frames in the table's form; the last is followed by the run's end.
    std::string traffic(double endMs) {
        const auto& all = vm.box().frames();
        std::string text;
        for (std::size_t i = 0; i < all.size(); ++i) {
            const Bytes& bytes = all[i].bytes;
            text += i ? ", " : "";
            text += all[i].letter;
            text += ' ';
            text += all[i].letter == 'D' ? std::to_string(bytes.size() - 5)
                                         : hexText({bytes.begin() + 5, bytes.end()});
            const std::int64_t next =
                i + 1 < all.size() ? all[i + 1].arrivedUs : static_cast<std::int64_t>(endMs * 1000);
            if (const std::int64_t pauseMs = (next - all[i].arrivedUs) / 1000)
                text += " +" + std::to_string(pauseMs);
        }
        return text;
    }
    std::string percents() const {
        std::string text;
        for (const int percent : window.percents)
            text += (text.empty() ? "" : " ") + std::to_string(percent);
        return text;
    }
};

} // namespace

TEST_F(Wire, EveryFunctionOnEveryFamily) {
    const auto table = readTable(TEST_FILES "/functions/wire_table.txt");
    ASSERT_EQ(table.size(), 13U * 6);
    for (const auto& row : table) {
        SCOPED_TRACE("family " + row.at(0) + ", " + row.at(3));
        const auto code = std::ranges::find(functionNames, row[3]) - functionNames.begin();
        box();
        device(std::stoi(row[0]), std::stoi(row[1]), std::stoi(row[2]));
        image();
        if (code == Verify)
            vm.box().chip().load(state().BufferData);
        run(static_cast<int>(code));
        EXPECT_EQ(window.lines[0], row[4]);
        EXPECT_EQ(percents(), row[5]);
        EXPECT_EQ(traffic(vm.nowMs()), row[6]);
        EXPECT_EQ(window.closed, code == Read && row[4].ends_with("OK!"));
        const bool answered = row[0] != "6" && row[0] != "45";
        EXPECT_EQ(vm.box().complaints().empty(), answered || row[4].starts_with("Function") ||
                                                     (row[0] == "45" && code == Program));
        EXPECT_EQ(vm.box().chip().locked(), code == Lock && row[4].ends_with("OK!") && answered);
        if (code == Program && answered) {
            EXPECT_TRUE(std::equal(state().BufferData.begin(), state().BufferData.begin() + 512,
                                   vm.box().chip().memory().begin()));
            EXPECT_EQ(vm.box().chip().memory()[512], 0xFF);
        }
    }
}
