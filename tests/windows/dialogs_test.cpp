// The hex view and the dialogs, by clicks and keys on real windows.
#include "tests/windows/window_fixture.h"

using namespace modFunc;

TEST_F(Windows, TypedDigitsReachTheImageAndTheView) {
    start();
    trigger("BufferClear");
    auto* page = in<QTextEdit>(*mdi, "txtBuffer");
    QTest::keyClicks(page, QStringLiteral("7f"));
    EXPECT_EQ(state().BufferData[0], 0x7F);
    EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("0000=7F FF")));
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0001"));
    EXPECT_EQ(in<QLabel>(*mdi, "lblCheckSum")->text(), QStringLiteral("EF80"));
    QTest::keyClick(page, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(state().BufferData[1], 0xFF);

    QTextCursor digit(page->document());
    digit.setPosition(64 + 70 * 2 + 5 + 3); // the high digit of address 0021
    const QRect cell = page->cursorRect(digit);
    QTest::mouseClick(page->viewport(), Qt::LeftButton, {}, cell.center() + QPoint(5, 0));
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0021"));
    QTest::keyClick(page, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0031"));
    EXPECT_EQ(page->textCursor().selectedText(), QStringLiteral("F"));
    QTest::keyClick(page, Qt::Key_W, Qt::ControlModifier);
    QTest::qWait(1); // the window is deleted later
    EXPECT_EQ(bufferWindow(), nullptr);
}

TEST_F(Windows, FillRefusesWhatDoesNotFitAndKeepsThePage) {
    start();
    trigger("BufferEdit");
    in<QScrollBar>(*mdi, "vsc")->setValue(16);
    when("frmBufferFill", [](QWidget& form) {
        in<QLineEdit>(form, "txtFillWith")->setText(QStringLiteral("A"));
        for (const char* start : {"", "G", "FFFF"}) {
            in<QLineEdit>(form, "txtStart")->setText(QString::fromLatin1(start));
            in<QLineEdit>(form, "txtLength")->setText(QStringLiteral("FFFF"));
            click(form, "cmdOk");
            EXPECT_TRUE(form.isVisible());
        }
        EXPECT_EQ(in<QLineEdit>(form, "txtLength")->selectedText(), QStringLiteral("FFFF"));
        in<QLineEdit>(form, "txtStart")->setText(QStringLiteral("101"));
        in<QLineEdit>(form, "txtLength")->setText(QStringLiteral("2"));
        QTest::keyClick(&form, Qt::Key_Return);
    });
    trigger("BufferFill");
    EXPECT_EQ(messages.filter(QStringLiteral("Buffer Fill: ")).size(), 3);
    EXPECT_EQ(QString::fromStdString(image(0x104)).count(QChar(0x0A)), 2);
    EXPECT_EQ(state().BufferData[0x102], 0x0A);
    EXPECT_EQ(in<QLabel>(*mdi, "lblAddress")->text(), QStringLiteral("0100"));
    when("frmBufferFill", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
    trigger("BufferFill");
    EXPECT_FALSE(state().FillConfirmed);
}

TEST_F(Windows, TheAutoEditorBuildsAtMostTwentyRowsAndStoresThem) {
    start();
    folder.write("auto.cfg", "2\n0\n7\n");
    ReadAutoFile();
    when("frmEditAuto", [](QWidget& form) {
        auto* out = in<QListWidget>(form, "lstOut");
        EXPECT_EQ(out->count(), 1); // code 7 is none
        click(form, "cmdMoveLeft");
        EXPECT_EQ(out->count(), 1); // nothing was highlighted
        in<QListWidget>(form, "lstIn")->setCurrentRow(3);
        for (int row = 1; row < 20; ++row)
            click(form, "cmdMoveRight");
        EXPECT_FALSE(in<QWidget>(form, "cmdMoveRight")->isEnabled());
        out->setCurrentRow(5);
        click(form, "cmdMoveLeft");
        click(form, "cmdMoveLeft");
        EXPECT_EQ(out->count(), 19);
        EXPECT_TRUE(in<QWidget>(form, "cmdMoveRight")->isEnabled());
        click(form, "cmdOk");
    });
    trigger("OptionsEditAuto");
    std::string expected = "19\r\n0\r\n";
    for (int row = 1; row < 19; ++row)
        expected += "4\r\n";
    EXPECT_EQ(folder.read("auto.cfg"), expected);
    when("frmEditAuto", [](QWidget& form) {
        click(form, "cmdMoveLeftAll");
        EXPECT_FALSE(in<QWidget>(form, "cmdMoveLeft")->isEnabled());
        QTest::keyClick(&form, Qt::Key_Escape);
    });
    trigger("OptionsEditAuto");
    EXPECT_EQ(state().AutoCount, 19);
}

TEST_F(Windows, SelectingADeviceClosesTheViewAndKeepsTheImage) {
    start();
    trigger("BufferClear");
    when("frmSelectDevice", [](QWidget& form) {
        const auto visible = [&form] {
            QString names;
            for (int i = 0; i < 4; ++i)
                if (form.findChild<QWidget*>(QStringLiteral("shp1(%1)").arg(i))->isVisible())
                    names += QString::number(i);
            return names;
        };
        auto* list = in<QListWidget>(form, "listDevice");
        EXPECT_EQ(list->count(), 22);
        EXPECT_EQ(visible(), QStringLiteral("01"));
        list->setCurrentRow(10);
        EXPECT_EQ(visible(), QStringLiteral("02"));
        list->setCurrentRow(13);
        EXPECT_EQ(visible(), QStringLiteral("03"));
        QTest::keyClick(list, Qt::Key_Return);
    });
    trigger("DeviceSelect");
    EXPECT_EQ(state().SelectedDevice, 14);
    EXPECT_EQ(panel("sbar2"), QStringLiteral("Device: DIP8 32K page 64"));
    EXPECT_EQ(panel("sbar3"), QStringLiteral("Size: 8000H"));
    EXPECT_EQ(bufferWindow(), nullptr);
}

TEST_F(Windows, HelpShowsTheGuideOrWhyItCannot) {
    start();
    const auto textOfHelp = [this] {
        QString text;
        when("frmHelp", [&text](QWidget& form) {
            text = in<QTextEdit>(form, "rtb")->toPlainText();
            QTest::keyClick(&form, Qt::Key_Escape);
        });
        trigger("HelpContents");
        return text;
    };
    EXPECT_TRUE(textOfHelp().contains(QStringLiteral("Finding the box")));
    folder.write("quorven help.rtf", "no rich text");
    EXPECT_TRUE(textOfHelp().contains(QStringLiteral("quorven help.rtf")));
    folder.remove("quorven help.rtf");
    EXPECT_TRUE(textOfHelp().contains(QStringLiteral("No such file")));
    EXPECT_EQ(mdi->findChild<QAction*>(QStringLiteral("HelpContents"))->shortcut(),
              QKeySequence(Qt::Key_F1));
}

TEST_F(Windows, LeavingSettingsLooksForTheBoxEveryTime) {
    start();
    when("frmSettings", [](QWidget& form) {
        auto* port = in<QComboBox>(form, "cmbCOM");
        EXPECT_EQ(port->currentText(), QStringLiteral("COM5"));
        EXPECT_EQ(port->count(), 16);
        port->setEditText(QStringLiteral("LPT1"));
        click(form, "cmdOk");
        EXPECT_TRUE(form.isVisible());
        port->setEditText(QStringLiteral("com16"));
        QTest::keyClick(port, Qt::Key_Return);
    });
    trigger("OptionsSettings");
    EXPECT_EQ(state().ComPort, 16);
    EXPECT_EQ(messages.at(1),
              QStringLiteral("Settings: \"LPT1\" is no port. Choose one of COM1 to COM16."));
    EXPECT_EQ(panel("sbar1"), QStringLiteral("FAIL"));
    startBox();
    state().ComPort = 5;
    when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
    trigger("OptionsSettings"); // by Cancel, too
    EXPECT_TRUE(messages.last().startsWith(QStringLiteral("Device Found!")));
}

TEST_F(Windows, StartFilesWithoutDevicesOrWithAPortThatIsNoneStillGiveAProgram) {
    state().DeviceCount = state().SelectedDevice = 0;
    state().ComPort = 17;
    start();
    EXPECT_EQ(messages, QStringList{QStringLiteral("Communication Port Error: COM17, there is no "
                                                   "such port on this computer")});
    when("frmSelectDevice", [](QWidget& form) { click(form, "cmdOk"); });
    trigger("DeviceSelect");
    EXPECT_EQ(state().SelectedDevice, 0);
    EXPECT_EQ(panel("sbar2") + panel("sbar3"), QStringLiteral("Device: Size: 0H"));
    when("frmSettings", [](QWidget& form) {
        EXPECT_EQ(in<QComboBox>(form, "cmbCOM")->currentText(), QString());
        QTest::keyClick(&form, Qt::Key_Escape);
    });
    trigger("OptionsSettings");
    trigger("BufferEdit");
    EXPECT_EQ(in<QLabel>(*mdi, "lblCheckSum")->text(), QStringLiteral("0000"));
}
