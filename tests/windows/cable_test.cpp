// The cable pulled at every frame of every function: the other side of a real pseudo-terminal is
// closed. Each case waits for real time-outs, so they run in many processes at once (ctest -R
// cable).
#include "tests/support/table_file.h"
#include "tests/windows/window_fixture.h"

#include <ctime>

using namespace modFunc;

namespace {

struct Pull {
    std::vector<std::string> run; // a row of tests/windows/pulls.txt
    std::size_t frame;            // at which the cable goes, from 0
};

std::vector<Pull> allPulls() {
    std::vector<Pull> pulls;
    for (const auto& run : readTable(TEST_FILES "/windows/pulls.txt"))
        for (std::size_t frame = 0; frame < run.at(2).size(); ++frame)
            pulls.push_back({run, frame});
    return pulls;
}

class CablePulled : public Windows, public testing::WithParamInterface<Pull> {
protected:
    QString runFunction(const QString& name) {
        QString line;
        when("frmFunction", [&line, name](QWidget& form) {
            auto* list = in<QListWidget>(form, "listFunction");
            list->setCurrentItem(list->findItems(name, Qt::MatchExactly).value(0));
            click(form, "cmdRun");
            line = in<QLabel>(form, "lblMsg(0)")->text();
            if (form.isVisible())
                click(form, "cmdClose");
        });
        trigger("DeviceFunction");
        return line;
    }
    // Leaves the settings with a fresh box plugged in. So many tests run at once that a box may
    // miss its tenth of a second.
    void findBox(const QStringList& options = {}) {
        state().ProgrammerFound = false;
        for (int tries = 10; tries > 0 && !state().ProgrammerFound; --tries) {
            box.terminate();
            EXPECT_TRUE(boxEnds());
            startBox('\xFF', options);
            when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
            trigger("OptionsSettings");
        }
        EXPECT_EQ(messages.last(), QStringLiteral("Device Found!: Firmware: SimBox v1.00"));
        messages.clear();
    }
    // A program that goes on listening to the dead line would take a whole core.
    static void expectIdle() {
        const std::clock_t before = std::clock();
        QTest::qWait(500);
        EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 40) << "above 5 % of a core";
    }
};

} // namespace

TEST_P(CablePulled, EndsTheRunAndTheBoxIsFoundAgain) {
    const auto& [run, frame] = GetParam();
    const int row = std::stoi(run[0]);
    const std::string& letters = run[2];
    start();
    findBox({QStringLiteral("--fault"), QStringLiteral("pull@%1").arg(frame + 2)});
    state().SelectedDevice = static_cast<std::int16_t>(row);
    state().DeviceList.at(std::size_t(row)).Size = 256;
    const QString line = runFunction(QString::fromStdString(run[1]));
    EXPECT_EQ(frames().size(), qsizetype(frame) + 2);
    EXPECT_TRUE(boxEnds());
    // Only the answers to "R", "D" and "W" are looked at.
    const std::size_t lastAsked = letters.find_last_of("RDW");
    const bool missed = lastAsked != std::string::npos && frame <= lastAsked;
    QString expected = QString::fromStdString(run[3]);
    if (lastAsked != std::string::npos)
        expected += missed ? QStringLiteral("   Device Fault!") : QStringLiteral("   OK!");
    EXPECT_EQ(line, expected);
    EXPECT_EQ(messages, missed ? QStringList{QStringLiteral("Device Error: Communication Error!")}
                               : QStringList{});
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    expectIdle();

    findBox();
    EXPECT_EQ(runFunction(QStringLiteral("Blank")), QStringLiteral("Blank Checking ...   OK!"));
}

INSTANTIATE_TEST_SUITE_P(Every, CablePulled, testing::ValuesIn(allPulls()), [](const auto& each) {
    return each.param.run[1] + "_" + each.param.run[0] + "_" + std::to_string(each.param.frame);
});
