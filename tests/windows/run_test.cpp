// Functions run on the simulated programmer, with everything that can come in between.
#include "link/exchange.h"
#include "tests/windows/window_fixture.h"

using namespace modFunc;

namespace {

class Runs : public Windows {
protected:
    // First line and width of the bar after a run of the function that begins with this letter. The
    // window gets a close request during the run.
    std::string run(Qt::Key first) {
        std::string line;
        trigger("DeviceFunction", {[&] {
                    press(first);
                    QWidget* form = window();
                    QTimer::singleShot(0, form, &QWidget::close);
                    click("cmdRun");
                    line = form->findChild<QLabel*>("lblMsg(0)")->text().toStdString();
                    line += std::to_string(form->findChild<QWidget*>("shpProgress")->width());
                }});
        return line;
    }
};

} // namespace

// No event during a run starts another one, sends a frame or changes the image; a request to close
// waits for the last frame. Read closes its window in the middle of the sequence, so the message
// about the Verify after it has the main window as its owner.
TEST_F(Runs, AreReachedByNoEvent) {
    QString faults = " --fault silent@R4";
    for (const char code : {'V', 'S', 'T', 'D', 'W', 'R', 'E', 'L'})
        faults += QString(" --fault late@%1:40ms").arg(QLatin1Char(code));
    startProgrammer(faults);
    start("i Device Found!: Firmware: SimBox v1.00");
    state().DeviceList[1].Size = 256;
    folder.write("auto.cfg", "7,1,2,3,4,0,4,5"); // from Erase to Lock
    ReadAutoFile();
    state().BufferData.assign(70001, 0x3C);
    trigger("BufferEdit");
    std::set<int> after; // command codes of the frames after which there was interference
    QTimer timer;
    // What a user, a window manager and the end of a desktop session can do.
    timer.callOnTimeout([&] {
        if (CurrentLinkUser() != LinkUser::Run)
            return;
        after.insert(state().TxFrame.at(4));
        QWidget* form = QApplication::activeModalWidget();
        EXPECT_TRUE(form || QApplication::overrideCursor()) << "the busy cursor";
        if (form && !form->inherits("QMessageBox")) { // which the fixture closes
            EXPECT_FALSE(find("cmdRun")->isEnabled() || find("cmdClose")->isEnabled());
            QTest::keyClick(find("listFunction"), Qt::Key_Escape);
            EXPECT_FALSE(form->close() || form->isHidden());
        }
        auto* page = mdi->findChild<QWidget*>("txtBuffer");
        QTest::keyClick(page, Qt::Key_5);
        QTest::keyClick(page, Qt::Key_W, Qt::ControlModifier);
        QTest::keyClick(page, Qt::Key_F, Qt::AltModifier);
        QTest::mouseClick(mdi->menuWidget(), Qt::LeftButton, {}, {20, 10});
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        mdi->findChild<QAction*>("BufferClear")->trigger();
        EXPECT_FALSE(mdi->close());
    });
    timer.start(10);
    EXPECT_EQ(run(Qt::Key_A), "Erasing ...OK201");
    EXPECT_EQ(after.size(), 8U);
    EXPECT_EQ(said(), "! Device Error: Communication Error!");
    EXPECT_EQ(state().BufferData, Bytes(70001, 0x3C));
    endProgrammer();
    EXPECT_EQ(QByteArray::fromStdString(folder.read("trace.txt")).count(" > "), 49) << "frames";
    EXPECT_EQ(folder.read("chip.bin").substr(0, 257), std::string(256, '\x3C') + '\xFF');
    EXPECT_FALSE(QApplication::overrideCursor() || mdi->isVisible());
}

// Other tests cover every frame of every function in virtual time; this one covers the port and the
// windows. A request to close that comes directly after the end of Settings waits for discovery.
TEST_F(Runs, APulledCableEndsTheRunAndTheProgrammerIsFoundAgain) {
    startProgrammer(" --fault pull@5");
    start("i Device Found!: Firmware: SimBox v1.00");
    EXPECT_EQ(run(Qt::Key_R), "Reading ...   Device Fault!0");
    EXPECT_EQ(said(), "! Device Error: Communication Error!");
    endProgrammer();
    trigger("OptionsSettings", {escape});
    EXPECT_NE(said().find("there is no such device"), std::string::npos);
    trigger("DeviceFunction", {[&] { window()->close(); }});
    startProgrammer();
    trigger("OptionsSettings", {[&] {
                QObject::connect(window(), SIGNAL(finished(int)), mdi.get(), SLOT(close()));
                escape();
            }});
    EXPECT_EQ(said(), "i Device Found!: Firmware: SimBox v1.00");
    EXPECT_FALSE(mdi->isVisible());
}
