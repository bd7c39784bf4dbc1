// Events of all kinds during a run.
#include "functions/device_run.h"
#include "link/exchange.h"
#include "tests/windows/window_fixture.h"

#include <algorithm>

using namespace modFunc;

TEST_F(Windows, CtrlWClosesTheHexView) {
    start();
    trigger("BufferEdit");
    QTest::keyClick(in<QTextEdit>(*mdi, "txtBuffer"), Qt::Key_W, Qt::ControlModifier);
    QTest::qWait(1); // the window is deleted later
    EXPECT_EQ(in<QWidget>(*mdi, "frmBuffer"), nullptr);
}

namespace {

// Every few milliseconds during a run: what a user, a window manager and the end of a desktop
// session can do to the program.
class Interference {
public:
    explicit Interference(mdiMain& main) : main_(main) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            if (CurrentLinkUser() == LinkUser::Run)
                interfere();
        });
        timer_.start(10);
    }
    // The command codes of the frames after which it acted, in order, equal ones together.
    std::string commandCodes;

private:
    void interfere() {
        const char code = static_cast<char>(state().TxFrame.at(4));
        if (commandCodes.empty() || commandCodes.back() != code)
            commandCodes += code;
        // Besides message boxes, which close by themselves, only the function window can be open.
        bool windowless = true;
        for (QWidget* form : QApplication::topLevelWidgets())
            if (form->objectName() == QLatin1String("frmFunction") && form->isVisible()) {
                interfereWith(*form);
                windowless = false;
            }
        EXPECT_EQ(QApplication::overrideCursor() != nullptr, windowless);
        auto* page = main_.findChild<QWidget*>(QStringLiteral("txtBuffer"));
        ASSERT_TRUE(page);
        for (const int key : {Qt::Key_5, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_F1})
            QTest::keyClick(page, Qt::Key(key));
        wheel(page);
        QTest::mouseClick(page, Qt::LeftButton);
        QTest::keyClick(page, Qt::Key_W, Qt::ControlModifier);
        QTest::keyClick(&main_, Qt::Key_F, Qt::AltModifier);
        for (const char* entry : {"FileLoad", "BufferClear", "DeviceFunction", "OptionsSettings"})
            main_.findChild<QAction*>(QString::fromLatin1(entry))->trigger();
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_FALSE(main_.close());
        if (!qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) // it would be closed
            QApplication::closeAllWindows();
        EXPECT_TRUE(main_.isVisible() && main_.isEnabled());
    }
    static void interfereWith(QWidget& form) {
        for (const char* button : {"cmdRun", "cmdClose"}) {
            auto* one = form.findChild<QAbstractButton*>(QString::fromLatin1(button));
            EXPECT_FALSE(one->isEnabled());
            QTest::mouseClick(one, Qt::LeftButton);
            QTest::mouseDClick(one, Qt::LeftButton);
        }
        auto* list = form.findChild<QListWidget*>();
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
        for (const int key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Up})
            QTest::keyClick(list, Qt::Key(key));
        wheel(list->viewport());
        EXPECT_FALSE(form.close());
        EXPECT_TRUE(form.isVisible());
    }
    static void wheel(QWidget* widget) {
        QWheelEvent event(QPointF(5, 5), QPointF(5, 5), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
    }

    mdiMain& main_;
    QTimer timer_;
};

} // namespace

// No event during a run starts another one, sends a frame or changes the image; a request to close
// waits for the last frame. Read closes its window in the middle of the sequence.
TEST_F(Windows, NoEventReachesARun) {
    QStringList slow;
    for (const char code : {'V', 'S', 'T', 'D', 'W', 'R', 'E', 'L'})
        slow << QStringLiteral("--fault") << QStringLiteral("late@%1:40ms").arg(QLatin1Char(code));
    startProgrammer('\xFF', slow);
    start();
    state().DeviceList[1].Size = 256;
    using enum FunctionCode;
    constexpr FunctionCode sequence[] = {Erase, Blank, Program, Verify, Read, Verify, Lock};
    state().AutoCount = std::size(sequence);
    std::ranges::transform(sequence, state().AutoList.begin() + 1,
                           [](FunctionCode code) { return static_cast<std::int16_t>(code); });
    state().BufferData.assign(70001, 0x3C);
    trigger("BufferEdit");
    Interference interference(*mdi);
    when("frmFunction", [](QWidget& form) {
        in<QListWidget>(form, "listFunction")->setCurrentRow(static_cast<int>(FunctionCode::Auto));
        click(form, "cmdRun");
        EXPECT_FALSE(form.isVisible());
    });
    trigger("DeviceFunction");
    const std::string expected = "VSEVSVSRVSVTDWVSVSRVSVSRVSVSRVSVSLSLSLVSLSLSLVS";
    EXPECT_EQ(interference.commandCodes, expected);
    EXPECT_EQ(frames().size(), 1 + qsizetype(expected.size()) + 1); // "I", and a second "E"
    EXPECT_EQ(state().BufferData, Bytes(70001, 0x3C));
    EXPECT_EQ(chip(257), std::string(256, '\x3C') + '\xFF');
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(mdi->isVisible()) << "the request to close was not carried out";
    EXPECT_EQ(TemporaryFolder::readFile(folder.file("quorven.cfg")),
              "5\r\n22\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Windows, ARequestToCloseTheFunctionWindowWaitsForTheRunsEnd) {
    startProgrammer('\xFF', {QStringLiteral("--fault"), QStringLiteral("silent@R2")});
    start();
    trigger("BufferEdit");
    const Interference interference(*mdi);
    when("frmFunction", [](QWidget& form) {
        in<QListWidget>(form, "listFunction")->setCurrentRow(static_cast<int>(FunctionCode::Blank));
        click(form, "cmdRun");
        EXPECT_FALSE(form.isVisible());
        EXPECT_EQ(in<QLabel>(form, "lblMsg(0)")->text(),
                  QStringLiteral("Blank Checking ...   Device Fault!"));
    });
    trigger("DeviceFunction");
    EXPECT_EQ(messages.last(), QStringLiteral("Device Error: Communication Error!"));
    EXPECT_EQ(frames().size(), 1 + 2 + 2 + 2);
}

// At once after the dialog's end: discovery has begun by then, so its message is shown first.
TEST_F(Windows, ACloseRequestAtTheEndOfSettingsWaitsForDiscovery) {
    startProgrammer();
    start();
    messages.clear();
    when("frmSettings", [this](QWidget& form) {
        QObject::connect(qobject_cast<QDialog*>(&form), &QDialog::finished, mdi.get(),
                         &QWidget::close);
        QTest::keyClick(&form, Qt::Key_Escape);
    });
    trigger("OptionsSettings");
    EXPECT_EQ(messages, QStringList{QStringLiteral("Device Found!: Firmware: SimBox v1.00")});
    EXPECT_FALSE(mdi->isVisible());
}
