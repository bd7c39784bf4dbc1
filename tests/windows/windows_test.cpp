// The main job and runs, by clicks and keys on real windows.
#include "functions/device_run.h"
#include "tests/windows/window_fixture.h"

using namespace modFunc;

namespace {

void loadSample(QWidget& fileDialog) {
    auto* name = fileDialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    name->setText(QStringLiteral(SHIPPED_DATA "/sample.hex"));
    QTest::keyClick(name, Qt::Key_Return);
}

} // namespace

TEST_F(Windows, TheMainJobByClicks) {
    startBox();
    start();
    EXPECT_EQ(messages, QStringList{QStringLiteral("Device Found!: Firmware: SimBox v1.00")});
    EXPECT_EQ(mdi->windowTitle(), QStringLiteral("QUORVEN ~ USB Programmer - Ver.1.0"));
    EXPECT_EQ(panel("sbar1") + panel("sbar2") + panel("sbar3") + panel("sbar4"),
              QStringLiteral("COM5Device: DIP40 4K type 1Size: 1000HFile:"));
    EXPECT_EQ(bufferWindow(), nullptr);
    when("cdia", loadSample);
    when("frmFileLoad", [](QWidget& form) {
        EXPECT_TRUE(in<QRadioButton>(form, "Option1")->isChecked());
        QTest::keyClick(form.focusWidget(), Qt::Key_Return);
    });
    trigger("FileLoad");
    EXPECT_EQ(panel("sbar4"), QStringLiteral("File: " SHIPPED_DATA "/sample.hex"));
    ASSERT_NE(bufferWindow(), nullptr);
    EXPECT_EQ(in<QLabel>(*mdi, "lblCheckSum")->text(), QStringLiteral("BE6C"));

    when("frmFunction", [](QWidget& form) {
        EXPECT_EQ(in<QLineEdit>(form, "txtChipEnd")->text(), QStringLiteral("1000"));
        auto* list = in<QListWidget>(form, "listFunction");
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return); // the default button
        EXPECT_EQ(in<QLabel>(form, "lblMsg(0)")->text(), QStringLiteral("Programming ...   OK!"));
        EXPECT_EQ(in<QLabel>(form, "lblProgress")->text(), QStringLiteral("100%"));
        EXPECT_EQ(in<QWidget>(form, "shpProgress")->width(), in<QWidget>(form, "shpBG")->width());
        QTest::keyClick(&form, Qt::Key_Escape);
    });
    trigger("DeviceFunction");
    EXPECT_EQ(chip(4096), image(4096));
    EXPECT_EQ(chip(65536).substr(4096), std::string(65536 - 4096, '\xFF'));
    EXPECT_TRUE(frames().last().endsWith(QStringLiteral("release socket")));
}

TEST_F(Windows, CancelInEitherFileDialogLoadsNothing) {
    start();
    const auto escape = [](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); };
    when("cdia", escape);
    trigger("FileLoad");
    when("cdia", loadSample);
    when("frmFileLoad", escape);
    trigger("FileLoad");
    EXPECT_TRUE(state().FileCancelled);
    EXPECT_EQ(state().BufferData, Bytes(70001, 0xFF));
    EXPECT_EQ(panel("sbar4"), QStringLiteral("File:"));
    EXPECT_EQ(bufferWindow(), nullptr);
}

namespace {

// Does to the program what a user, a window manager and an ending session can, every few
// milliseconds while a run is under way.
class Meddler {
public:
    explicit Meddler(mdiMain& main) : main_(main) {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
            if (DeviceRun::UnderWay())
                meddle();
        });
        timer_.start(10);
    }
    // Letters of the frames behind which there was meddling, in their order, equal ones together.
    std::string met;

private:
    void meddle() {
        const char letter = static_cast<char>(state().TxFrame.at(4));
        if (met.empty() || met.back() != letter)
            met += letter;
        // Above all the message box, which closes by itself, there is the function window or none.
        for (QWidget* form : QApplication::topLevelWidgets())
            if (form->objectName() == QLatin1String("frmFunction") && form->isVisible())
                meddleWith(*form);
        auto* page = main_.findChild<QWidget*>(QStringLiteral("txtBuffer"));
        ASSERT_TRUE(page);
        for (const int key : {Qt::Key_5, Qt::Key_Down, Qt::Key_PageDown, Qt::Key_F1})
            QTest::keyClick(page, Qt::Key(key));
        wheel(page);
        QTest::mouseClick(page, Qt::LeftButton);
        QTest::keyClick(page, Qt::Key_W, Qt::ControlModifier);
        QTest::keyClick(&main_, Qt::Key_F, Qt::AltModifier);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_FALSE(main_.close());
        QApplication::closeAllWindows();
        EXPECT_TRUE(main_.isVisible() && main_.isEnabled());
    }
    static void meddleWith(QWidget& form) {
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

// Nothing that happens during a run starts another, sends a frame or touches the image; what asks
// to close waits for the last frame. Read closes its window in the middle: the rest of the sequence
// has the program to itself.
TEST_F(Windows, NoEventReachesARun) {
    QStringList slow;
    for (const char letter : {'V', 'S', 'T', 'D', 'W', 'R', 'E', 'L'})
        slow << QStringLiteral("--fault")
             << QStringLiteral("late@%1:40ms").arg(QLatin1Char(letter));
    startBox('\xFF', slow);
    start();
    state().DeviceList[1].Size = 256;
    constexpr int sequence[] = {Erase, Blank, Program, Verify, Read, Verify, Lock};
    state().AutoCount = std::size(sequence);
    std::copy(std::begin(sequence), std::end(sequence), state().AutoList.begin() + 1);
    state().BufferData.assign(70001, 0x3C);
    trigger("BufferEdit");
    Meddler meddler(*mdi);
    when("frmFunction", [](QWidget& form) {
        in<QListWidget>(form, "listFunction")->setCurrentRow(Auto);
        click(form, "cmdRun");
        EXPECT_FALSE(form.isVisible());
    });
    trigger("DeviceFunction");
    const std::string expected = "VSEVSVSRVSVTDWVSVSRVSVSRVSVSRVSVSLSLSLVSLSLSLVS";
    EXPECT_EQ(meddler.met, expected);
    EXPECT_EQ(frames().size(), 1 + qsizetype(expected.size()) + 1); // "I", and a second "E"
    EXPECT_EQ(state().BufferData, Bytes(70001, 0x3C));
    EXPECT_EQ(chip(257), std::string(256, '\x3C') + '\xFF');
    EXPECT_FALSE(mdi->isVisible()) << "the request to close was not carried out";
    EXPECT_EQ(TemporaryFolder::readFile(folder.file("quorven.cfg")),
              "5\r\n22\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Windows, ARequestToCloseTheFunctionWindowWaitsForTheRunsEnd) {
    startBox('\xFF', {QStringLiteral("--fault"), QStringLiteral("silent@R2")});
    start();
    trigger("BufferEdit");
    const Meddler meddler(*mdi);
    when("frmFunction", [](QWidget& form) {
        in<QListWidget>(form, "listFunction")->setCurrentRow(Blank);
        click(form, "cmdRun");
        EXPECT_FALSE(form.isVisible());
        EXPECT_EQ(in<QLabel>(form, "lblMsg(0)")->text(),
                  QStringLiteral("Blank Checking ...   Device Fault!"));
    });
    trigger("DeviceFunction");
    EXPECT_EQ(messages.last(), QStringLiteral("Device Error: Communication Error!"));
    EXPECT_EQ(frames().size(), 1 + 2 + 2 + 2);
}

TEST_F(Windows, WithoutABoxRunIsDisabledAndTheRestWorks) {
    start();
    EXPECT_TRUE(messages.value(0).startsWith(QStringLiteral("Communication Port Error: COM5, ")));
    EXPECT_EQ(panel("sbar1"), QStringLiteral("FAIL"));
    when("frmFunction", [](QWidget& form) {
        EXPECT_FALSE(in<QAbstractButton>(form, "cmdRun")->isEnabled());
        EXPECT_EQ(in<QListWidget>(form, "listFunction")->count(), 7);
        click(form, "cmdClose");
    });
    trigger("DeviceFunction");
    trigger("BufferClear");
    ASSERT_NE(bufferWindow(), nullptr);
    in<QScrollBar>(*mdi, "vsc")->setValue(240);
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0F00"));
    trigger("BufferEdit");
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0000"));
}
