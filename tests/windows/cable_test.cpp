// The cable pulled at every frame of every function: the other side of a real pseudo-terminal is
// closed. Each case waits for real time-outs, so they run in many processes at once (ctest -R
// cable).
#include "functions/device_run.h"
#include "tests/windows/window_fixture.h"

#include <ctime>

using namespace modFunc;

namespace {

struct PulledRun {
    int row; // of the shipped device list, the device cut to 256 bytes
    FunctionCode code;
    const char* frames; // letters of a run that is left in peace
    const char* line;   // what it says at its end
};
constexpr PulledRun runs[] = {
    {1, Read, "VSRVS", "Reading ..."},
    {1, Erase, "VSEEVS", "Erasing ...OK"},
    {1, Blank, "VSRVS", "Blank Checking ..."},
    {1, Program, "VTDWVS", "Programming ..."},
    {1, Verify, "VSRVS", "Verifying ..."},
    {1, Lock, "VSLSLSLVSLSLSLVS", "Locking ...   OK!"},
    {7, Erase, "VSEEVSVSEEVS", "Erasing ...OK"},
    {16, Program, "VSDWDWVS", "Programming ..."},
    {21, Erase, "SEVS", "Erasing ...OK"},
};

// A run, and the frame at which the cable goes, from 0.
std::vector<std::pair<PulledRun, std::size_t>> allPulls() {
    std::vector<std::pair<PulledRun, std::size_t>> pulls;
    for (const PulledRun& run : runs)
        for (std::size_t frame = 0; frame < std::string_view(run.frames).size(); ++frame)
            pulls.emplace_back(run, frame);
    return pulls;
}

class CablePulled : public Windows,
                    public testing::WithParamInterface<std::pair<PulledRun, std::size_t>> {
protected:
    QString runFunction(int code) {
        QString line;
        when("frmFunction", [&line, code](QWidget& form) {
            in<QListWidget>(form, "listFunction")->setCurrentRow(code);
            click(form, "cmdRun");
            line = in<QLabel>(form, "lblMsg(0)")->text();
            if (form.isVisible())
                click(form, "cmdClose");
        });
        trigger("DeviceFunction");
        return line;
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
    const std::string_view letters = run.frames;
    startBox('\xFF', {QStringLiteral("--fault"), QStringLiteral("pull@%1").arg(frame + 2)});
    start();
    state().SelectedDevice = static_cast<std::int16_t>(run.row);
    state().DeviceList.at(std::size_t(run.row)).Size = 256;
    const QString line = runFunction(run.code);
    EXPECT_EQ(frames().size(), qsizetype(frame) + 2);
    EXPECT_TRUE(boxEnds());
    // Only the answers to "R", "D" and "W" are looked at.
    const std::size_t lastAsked = letters.find_last_of("RDW");
    const bool missed = lastAsked != std::string_view::npos && frame <= lastAsked;
    QString expected = QString::fromLatin1(run.line);
    if (lastAsked != std::string_view::npos)
        expected += missed ? QStringLiteral("   Device Fault!") : QStringLiteral("   OK!");
    EXPECT_EQ(line, expected);
    EXPECT_EQ(messages.mid(1),
              missed ? QStringList{QStringLiteral("Device Error: Communication Error!")}
                     : QStringList{});
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    expectIdle();

    startBox();
    when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
    trigger("OptionsSettings");
    EXPECT_EQ(messages.last(), QStringLiteral("Device Found!: Firmware: SimBox v1.00"));
    EXPECT_EQ(runFunction(Blank), QStringLiteral("Blank Checking ...   OK!"));
}

INSTANTIATE_TEST_SUITE_P(Every, CablePulled, testing::ValuesIn(allPulls()), [](const auto& each) {
    return std::string(functionNames.at(each.param.first.code)) + "_" +
           std::to_string(each.param.first.row) + "_" + std::to_string(each.param.second);
});
