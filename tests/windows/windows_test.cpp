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

// Read closes its window in the middle of an Auto sequence. The rest of the run has the program to
// itself: no key, no click, and the wish to close waits for the last frame.
TEST_F(Windows, TheRestOfARunAfterReadKeepsTheMainWindowFromInput) {
    startBox('\x3C');
    start();
    state().AutoCount = 2;
    state().AutoList[1] = Read;
    state().AutoList[2] = Verify;
    QTimer meddler;
    int tries = 0;
    QObject::connect(&meddler, &QTimer::timeout, &meddler, [&] {
        if (!DeviceRun::UnderWay() || QApplication::activeModalWidget() || !bufferWindow())
            return;
        ++tries;
        QTest::keyClick(mdi.get(), Qt::Key_F, Qt::AltModifier);
        QTest::mouseClick(bufferWindow(), Qt::LeftButton);
        QTest::keyClick(in<QScrollBar>(*mdi, "vsc"), Qt::Key_Down);
        EXPECT_EQ(in<QScrollBar>(*mdi, "vsc")->value(), 0);
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
        EXPECT_FALSE(mdi->close());
        EXPECT_TRUE(mdi->isVisible());
        EXPECT_TRUE(mdi->isEnabled());
    });
    meddler.start(50);
    when("frmFunction", [](QWidget& form) {
        in<QListWidget>(form, "listFunction")->setCurrentRow(Auto);
        click(form, "cmdRun");
        EXPECT_FALSE(form.isVisible());
    });
    trigger("DeviceFunction");
    EXPECT_GT(tries, 5);
    EXPECT_EQ(image(4096), std::string(4096, '\x3C'));
    EXPECT_EQ(frames().size(), 1 + 2 * (2 + 16 + 2));
    EXPECT_TRUE(frames().last().endsWith(QStringLiteral("release socket")));
    EXPECT_FALSE(mdi->isVisible()) << "the request to close was not carried out";
    EXPECT_EQ(TemporaryFolder::readFile(folder.file("quorven.cfg")),
              "5\r\n22\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Windows, TheFunctionWindowCannotBeLeftDuringARun) {
    startBox();
    start();
    when("frmFunction", [](QWidget& form) {
        QTimer::singleShot(100, &form, [&form] {
            EXPECT_FALSE(in<QAbstractButton>(form, "cmdRun")->isEnabled());
            EXPECT_FALSE(in<QAbstractButton>(form, "cmdClose")->isEnabled());
            QTest::keyClick(&form, Qt::Key_Escape);
            QTest::keyClick(&form, Qt::Key_Return);
            form.close();
            EXPECT_TRUE(form.isVisible());
        });
        in<QListWidget>(form, "listFunction")->setCurrentRow(Blank);
        click(form, "cmdRun");
        EXPECT_TRUE(form.isVisible());
        click(form, "cmdClose");
        EXPECT_FALSE(form.isVisible());
    });
    trigger("DeviceFunction");
    EXPECT_EQ(frames().size(), 1 + 2 + 16 + 2);
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
