// Functions run on the simulated programmer, with everything that can come in between.
#include "functions/device_run.h"
#include "link/exchange.h"
#include "tests/windows/window_fixture.h"

#include <QLabel>

using namespace modFunc;

namespace {

class Runs : public Windows {
protected:
    // The function window after a run: first line, percentage, width of the bar, whether closed.
    std::string run(FunctionCode code) {
        std::string line;
        trigger("DeviceFunction", {[&] {
                    find<QListWidget>("listFunction")->setCurrentRow(static_cast<int>(code));
                    QWidget* form = window();
                    click("cmdRun");
                    for (const char* label : {"lblMsg(0)", "lblProgress"})
                        line += form->findChild<QLabel*>(label)->text().toStdString();
                    line += std::to_string(form->findChild<QWidget*>("shpProgress")->width());
                    if (!form->isVisible())
                        line += " closed";
                    else
                        click("cmdClose");
                }});
        return line;
    }
    // From now on, every few milliseconds during a run: what a user, a window manager and the end
    // of a desktop session can do to the program.
    void interfere() {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
            if (CurrentLinkUser() != LinkUser::Run)
                return;
            after += static_cast<char>(state().TxFrame.at(4));
            // Besides message boxes, which close by themselves, only the function window is open.
            QWidget* form = QApplication::activeModalWidget();
            const bool windowless = !form || form->inherits("QMessageBox");
            EXPECT_TRUE(windowless || !QApplication::overrideCursor());
            EXPECT_TRUE(form || QApplication::overrideCursor()) << "the busy pointer";
            if (!windowless)
                interfereWith(*form);
            auto* page = mdi->findChild<QWidget*>("txtBuffer");
            for (const QKeyCombination key :
                 {Qt::NoModifier | Qt::Key_5, Qt::NoModifier | Qt::Key_Down,
                  Qt::NoModifier | Qt::Key_F1, Qt::CTRL | Qt::Key_W, Qt::ALT | Qt::Key_F})
                QTest::keyClick(page, key.key(), key.keyboardModifiers());
            QTest::mouseClick(page, Qt::LeftButton);
            wheelDown(page);
            for (const char* entry :
                 {"FileLoad", "BufferClear", "DeviceFunction", "OptionsSettings"})
                mdi->findChild<QAction*>(entry)->trigger();
            EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
            EXPECT_FALSE(mdi->close());
            if (!qobject_cast<QMessageBox*>(
                    QApplication::activeModalWidget())) // it would be closed
                QApplication::closeAllWindows();
            EXPECT_TRUE(mdi->isVisible() && mdi->isEnabled());
        });
        timer.start(10);
    }
    static void interfereWith(QWidget& form) {
        auto* list = form.findChild<QListWidget*>();
        for (const char* button : {"cmdRun", "cmdClose"}) {
            EXPECT_FALSE(form.findChild<QWidget*>(button)->isEnabled());
            QTest::mouseDClick(form.findChild<QWidget*>(button), Qt::LeftButton);
        }
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Up})
            QTest::keyClick(list, key);
        EXPECT_FALSE(form.close());
        EXPECT_TRUE(form.isVisible());
    }

    std::string after; // command codes of the frames after which it interfered
    QTimer timer;
};

} // namespace

// No event during a run starts another one, sends a frame or changes the image; a request to close
// waits for the last frame. Read closes its window in the middle of the sequence.
TEST_F(Runs, AreReachedByNoEvent) {
    QStringList slow;
    for (const char code : std::string("VSTDWREL"))
        slow << QString("late@%1:40ms").arg(QLatin1Char(code));
    startProgrammer(slow);
    start(found);
    state().DeviceList[1].Size = 256;
    using enum FunctionCode;
    state().AutoCount = 0;
    for (const FunctionCode code : {Erase, Blank, Program, Verify, Read, Verify, Lock})
        state().AutoList[++state().AutoCount] = static_cast<std::int16_t>(code);
    state().BufferData.assign(70001, 0x3C);
    trigger("BufferEdit");
    interfere();
    run(Auto);
    EXPECT_EQ(frames(), "IVSEEVSVSRVSVTDWVSVSRVSVSRVSVSRVSVSLSLSLVSLSLSLVS");
    for (const char code : std::string("VSTDWREL"))
        EXPECT_NE(after.find(code), std::string::npos) << code;
    EXPECT_EQ(state().BufferData, Bytes(70001, 0x3C));
    endProgrammer();
    EXPECT_EQ(folder.read("chip.bin").substr(0, 257), std::string(256, '\x3C') + '\xFF');
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(mdi->isVisible()) << "the request to close was not carried out";
    EXPECT_EQ(folder.read("quorven.cfg"), "5\r\n22\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Runs, ARequestToCloseTheFunctionWindowWaitsForTheEnd) {
    startProgrammer({"silent@R2"});
    start(found);
    trigger("BufferEdit");
    interfere();
    EXPECT_EQ(run(FunctionCode::Blank), "Blank Checking ...   Device Fault!0%0 closed");
    EXPECT_EQ(said(), "! Device Error: Communication Error!");
    EXPECT_EQ(frames(), "IVSRRVS");
}

// Every frame of every function is covered in virtual time; here it is the port and the windows.
TEST_F(Runs, APulledCableEndsTheRunAndTheProgrammerIsFoundAgain) {
    startProgrammer({"pull@5"});
    start(found);
    EXPECT_EQ(text("sbar1", "sbar2", "sbar3"), "COM5|Device: DIP40 4K type 1|Size: 1000H");
    EXPECT_EQ(run(FunctionCode::Read), "Reading ...   Device Fault!0%0");
    EXPECT_EQ(said(), "! Device Error: Communication Error!");
    EXPECT_EQ(frames().size(), 5U);
    EXPECT_FALSE(machine.cm.PortOpen());
    endProgrammer();
    trigger("OptionsSettings", {escape});
    EXPECT_NE(said().find("there is no such device"), std::string::npos);
    EXPECT_EQ(text("sbar1"), "FAIL");
    trigger("DeviceFunction", {[&] {
                EXPECT_FALSE(find("cmdRun")->isEnabled());
                window()->close();
            }});
    startProgrammer();
    trigger("OptionsSettings", {escape});
    EXPECT_EQ(said(), found);
    EXPECT_EQ(run(FunctionCode::Blank), "Blank Checking ...   OK!100%201");
}

// The request comes directly after the dialog's end. Discovery has begun by then, so its message is
// shown first.
TEST_F(Runs, ACloseRequestAtTheEndOfSettingsWaitsForDiscovery) {
    startProgrammer();
    start(found);
    trigger("OptionsSettings", {[&] {
                QObject::connect(qobject_cast<QDialog*>(window()), &QDialog::finished, mdi.get(),
                                 &QWidget::close);
                escape();
            }});
    EXPECT_EQ(said(), found);
    EXPECT_FALSE(mdi->isVisible());
}
