// The cable pulled during a run: the other side of a real pseudo-terminal is closed. Every frame of
// every function is covered in virtual time, by the fault tests; here it is the port and the
// windows.
#include "tests/windows/window_fixture.h"

using namespace modFunc;

namespace {

struct Pull {
    const char* name;
    const char* function;
    int frame; // at which the cable is pulled; the first of the run is 2
    const char* line;
    bool noticed; // by the function: it checks the replies to read and write frames only
};

constexpr Pull pulls[] = {
    {"ReadAtABlock", "Read", 5, "Reading ...   Device Fault!", true},
    {"EraseAtItsFirstFrame", "Erase", 2, "Erasing ...OK", false},
    {"VerifyAtItsLastFrame", "Verify", 7, "Verifying ...   OK!", false},
};

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
    void leaveSettings() {
        when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
        trigger("OptionsSettings");
        EXPECT_EQ(messages, QStringList{QStringLiteral("Device Found!: Firmware: SimBox v1.00")});
        messages.clear();
    }
};

} // namespace

TEST_P(CablePulled, EndsTheRunAndTheProgrammerIsFoundAgain) {
    const Pull& pull = GetParam();
    startProgrammer('\xFF', {QStringLiteral("--fault"), QStringLiteral("pull@%1").arg(pull.frame)});
    start();
    messages.clear();
    state().SelectedDevice = 1;
    state().DeviceList[1].Size = 512;
    EXPECT_EQ(runFunction(QString::fromLatin1(pull.function)), QString::fromLatin1(pull.line));
    EXPECT_EQ(messages, pull.noticed
                            ? QStringList{QStringLiteral("Device Error: Communication Error!")}
                            : QStringList{});
    messages.clear();
    EXPECT_EQ(frames().size(), pull.frame);
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    EXPECT_FALSE(machine->cm.PortOpen());
    EXPECT_TRUE(programmerEnds());

    startProgrammer();
    leaveSettings();
    EXPECT_EQ(runFunction(QStringLiteral("Blank")), QStringLiteral("Blank Checking ...   OK!"));
}

INSTANTIATE_TEST_SUITE_P(Every, CablePulled, testing::ValuesIn(pulls),
                         [](const auto& each) { return each.param.name; });
