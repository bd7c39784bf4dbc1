// Every menu command as a user gives it, on the real windows.
#include "tests/windows/window_fixture.h"

#include <QComboBox>
#include <QKeySequence>
#include <QLineEdit>
#include <QScrollBar>

using namespace modFunc;

namespace {

class Commands : public Windows {
protected:
    const QString noPort = QStringLiteral("Communication Port Error: COM5, ");

    // The program without a programmer; the message of the failed discovery has been taken.
    void startAlone() {
        start();
        EXPECT_TRUE(takeMessage().startsWith(noPort));
    }
    QString takeMessage() { return messages.isEmpty() ? QString() : messages.takeFirst(); }
    static std::string text(QWidget& window, const char* control) {
        return in<QObject>(window, control)->property("text").toString().toStdString();
    }
    std::string text(const char* control) { return text(*mdi, control); }
    std::string page() { return in<QTextEdit>(*mdi, "txtBuffer")->toPlainText().toStdString(); }
    static void set(QWidget& window, const char* control, const QString& value) {
        in<QLineEdit>(window, control)->setText(value);
    }
    static void press(QWidget& window, Qt::Key key) {
        QTest::keyClick(window.focusWidget() ? window.focusWidget() : &window, key);
    }
    static void escape(QWidget& window) { press(window, Qt::Key_Escape); }
    // In the file dialog: this file of the program's folder.
    void choose(const char* name) {
        const QString path = QString::fromStdString(folder.file(name));
        when("cdia", [path](QWidget& dialog) {
            set(dialog, "fileNameEdit", path);
            QTest::keyClick(in<QLineEdit>(dialog, "fileNameEdit"), Qt::Key_Return);
        });
    }
};

} // namespace

TEST_F(Commands, MainJob) {
    startProgrammer();
    start();
    EXPECT_EQ(takeMessage().toStdString(), "Device Found!: Firmware: SimBox v1.00");
    EXPECT_EQ(mdi->windowTitle().toStdString(), "QUORVEN ~ USB Programmer - Ver.1.0");
    EXPECT_EQ(text("sbar1"), "COM5");
    EXPECT_EQ(text("sbar2"), "Device: DIP40 4K type 1");
    EXPECT_EQ(text("sbar3"), "Size: 1000H");
    EXPECT_EQ(text("sbar4"), "File:");
    EXPECT_FALSE(in<QWidget>(*mdi, "frmBuffer"));
    choose("sample.hex");
    when("frmFileLoad", [](QWidget& form) {
        EXPECT_TRUE(in<QAbstractButton>(form, "Option1")->isChecked());
        press(form, Qt::Key_Return);
    });
    trigger("FileLoad");
    EXPECT_EQ(text("sbar4"), "File: " + folder.file("sample.hex"));
    EXPECT_EQ(text("lblCheckSum"), "BE6C");
    when("frmFunction", [](QWidget& form) {
        EXPECT_EQ(text(form, "txtChipEnd"), "1000");
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return})
            press(form, key);
        EXPECT_EQ(text(form, "lblMsg(0)"), "Programming ...   OK!");
        EXPECT_EQ(text(form, "lblProgress"), "100%");
        EXPECT_EQ(in<QWidget>(form, "shpProgress")->width(), 201);
        escape(form);
    });
    trigger("DeviceFunction");
    std::string expected(65536, '\xFF');
    std::copy_n(state().BufferData.begin(), 4096, expected.begin());
    EXPECT_EQ(chip(65536), expected);
    EXPECT_TRUE(frames().last().endsWith(QStringLiteral("release socket")));
}

TEST_F(Commands, CancelLoadsNothing) {
    startAlone();
    when("cdia", escape);
    trigger("FileLoad");
    choose("sample.hex");
    when("frmFileLoad", escape);
    trigger("FileLoad");
    EXPECT_EQ(text("sbar4"), "File:");
    EXPECT_FALSE(in<QWidget>(*mdi, "frmBuffer"));
    trigger("BufferEdit");
    EXPECT_EQ(text("lblCheckSum"), "F000"); // 4096 bytes of FF
}

// In either format, over a file that is there, without a question; a failure says nothing.
TEST_F(Commands, SavesInTheChosenFormat) {
    startAlone();
    folder.write("image.hex", "old");
    for (const char* type : {"Option1", "Option2"}) {
        choose("image.hex");
        when("frmFileLoad", [type](QWidget& form) {
            in<QAbstractButton>(form, type)->click();
            press(form, Qt::Key_Return);
        });
        trigger("FileSave");
        const std::string saved = folder.read("image.hex");
        EXPECT_EQ(saved.substr(0, 9),
                  type == std::string("Option1") ? ":10000000" : std::string(9, '\xFF'));
    }
    folder.write("damaged.hex", ":zz");
    choose("damaged.hex");
    when("frmFileLoad", [](QWidget& form) {
        in<QAbstractButton>(form, "Option1")->click();
        press(form, Qt::Key_Return);
    });
    trigger("FileLoad");
    EXPECT_TRUE(messages.isEmpty());
    EXPECT_TRUE(mdi->isVisible());
    EXPECT_EQ(text("sbar4"), "File: " + folder.file("image.hex"));
}

TEST_F(Commands, WithoutAProgrammerOnlyRunIsDisabled) {
    startAlone();
    EXPECT_EQ(text("sbar1"), "FAIL");
    when("frmFunction", [](QWidget& form) {
        EXPECT_FALSE(in<QAbstractButton>(form, "cmdRun")->isEnabled());
        click(form, "cmdClose");
    });
    trigger("DeviceFunction");
    trigger("BufferClear");
    auto* bar = in<QScrollBar>(*mdi, "vsc");
    bar->setValue(240);
    EXPECT_EQ(text("lblAddress"), "0F00");
    QTest::keyClick(in<QTextEdit>(*mdi, "txtBuffer"), Qt::Key_Up);
    EXPECT_EQ(bar->value(), 239);
    EXPECT_EQ(text("lblAddress"), "0EF0");
    trigger("BufferEdit");
    EXPECT_EQ(text("lblAddress"), "0000");
}

TEST_F(Commands, FillKeepsThePageAndRejectsWhatDoesNotFit) {
    startAlone();
    trigger("BufferEdit");
    in<QScrollBar>(*mdi, "vsc")->setValue(16);
    when("frmBufferFill", [this](QWidget& form) {
        const auto rejected = [&](const char* start, const char* length, const char* selected) {
            set(form, "txtStart", QString::fromLatin1(start));
            set(form, "txtLength", QString::fromLatin1(length));
            click(form, "cmdOk");
            EXPECT_TRUE(form.isVisible());
            EXPECT_TRUE(in<QLineEdit>(form, selected)->hasSelectedText() || !*start);
            return takeMessage().toStdString();
        };
        set(form, "txtFillWith", QStringLiteral("A"));
        const std::string notANumber = "Buffer Fill: The start is not a hexadecimal number";
        EXPECT_TRUE(rejected("", "2", "txtStart").starts_with(notANumber));
        EXPECT_TRUE(rejected("G", "2", "txtStart").starts_with(notANumber));
        EXPECT_TRUE(rejected("FFFF", "1173", "txtLength") // the last byte would be 70001
                        .starts_with("Buffer Fill: The length reaches past the end"));
        set(form, "txtStart", QStringLiteral("101"));
        set(form, "txtLength", QStringLiteral("2"));
        press(form, Qt::Key_Return);
    });
    trigger("BufferFill");
    EXPECT_NE(page().find("0100=FF 0A 0A FF FF"), std::string::npos);
    EXPECT_EQ(text("lblAddress"), "0100");
    when("frmBufferFill", escape);
    trigger("BufferFill");
    EXPECT_NE(page().find("0100=FF 0A 0A FF FF"), std::string::npos);
    when("frmBufferFill", [](QWidget& form) {
        set(form, "txtStart", QStringLiteral("FFFF"));
        set(form, "txtLength", QStringLiteral("1172"));
        click(form, "cmdOk");
    });
    trigger("BufferFill");
    EXPECT_EQ(state().BufferData[70000], 0xFF);
}

TEST_F(Commands, EditAutoStoresAtMostTwentyRows) {
    folder.write("auto.cfg", "2\n0\n7\n"); // 7 is no function
    ReadAutoFile();
    startAlone();
    when("frmEditAuto", [](QWidget& form) {
        auto* sequence = in<QListWidget>(form, "lstOut");
        auto* add = in<QAbstractButton>(form, "cmdMoveRight");
        EXPECT_EQ(in<QListWidget>(form, "lstIn")->item(0)->text().toStdString(), "Erase");
        EXPECT_EQ(sequence->count(), 1);
        click(form, "cmdMoveLeft"); // nothing is highlighted
        EXPECT_EQ(sequence->count(), 1);
        in<QListWidget>(form, "lstIn")->setCurrentRow(3);
        for (int row = 1; row < 20; ++row)
            add->click();
        EXPECT_EQ(sequence->count(), 20);
        EXPECT_FALSE(add->isEnabled());
        sequence->setCurrentRow(5);
        click(form, "cmdMoveLeft");
        EXPECT_EQ(sequence->count(), 19);
        EXPECT_TRUE(add->isEnabled());
        click(form, "cmdOk");
    });
    trigger("OptionsEditAuto");
    std::string stored = "19\r\n0\r\n";
    for (int row = 1; row < 19; ++row)
        stored += "4\r\n";
    EXPECT_EQ(folder.read("auto.cfg"), stored);
    when("frmEditAuto", [](QWidget& form) {
        click(form, "cmdMoveLeftAll");
        EXPECT_FALSE(in<QAbstractButton>(form, "cmdMoveLeft")->isEnabled());
        escape(form);
    });
    trigger("OptionsEditAuto");
    EXPECT_EQ(state().AutoCount, 19);
}

TEST_F(Commands, SelectClosesTheViewAndIsKept) {
    startAlone();
    trigger("BufferClear");
    when("frmSelectDevice", [](QWidget& form) {
        auto* list = in<QListWidget>(form, "listDevice");
        EXPECT_EQ(list->count(), 22);
        const auto expectOutline = [&form](const char* visible) {
            for (const char* outline : {"shp1(1)", "shp1(2)", "shp1(3)"})
                EXPECT_EQ(in<QWidget>(form, outline)->isVisible(), outline == std::string(visible));
            EXPECT_TRUE(in<QWidget>(form, "shp1(0)")->isVisible());
        };
        expectOutline("shp1(1)");
        list->setCurrentRow(10);
        expectOutline("shp1(2)");
        list->setCurrentRow(13);
        expectOutline("shp1(3)");
        QTest::keyClick(list, Qt::Key_Return);
    });
    trigger("DeviceSelect");
    EXPECT_EQ(text("sbar2"), "Device: DIP8 32K page 64");
    EXPECT_EQ(text("sbar3"), "Size: 8000H");
    EXPECT_FALSE(in<QWidget>(*mdi, "frmBuffer"));
    trigger("FileExit");
    EXPECT_FALSE(mdi->isVisible());
    EXPECT_EQ(folder.read("quorven.cfg"), "5\r\n22\r\n14\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Commands, HelpShowsTheGuideOrTheCause) {
    startAlone();
    std::string shown;
    for (const char* separator : {"FileS1", "HelpS1"})
        EXPECT_EQ(mdi->findChild<QAction*>(QString::fromLatin1(separator))->text(), QString());
    const auto help = [&] {
        when("frmHelp", [&shown](QWidget& form) {
            auto* text = in<QTextEdit>(form, "rtb");
            shown = text->toPlainText().toStdString();
            EXPECT_EQ(text->textCursor().position(), 0);
            escape(form);
        });
    };
    help();
    QTest::keyClick(mdi.get(), Qt::Key_F1);
    EXPECT_NE(shown.find("Finding the programmer"), std::string::npos);
    folder.write("quorven help.rtf", "no rich text");
    help();
    trigger("HelpContents");
    EXPECT_NE(shown.find("quorven help.rtf"), std::string::npos);
    folder.remove("quorven help.rtf");
    help();
    trigger("HelpContents");
    EXPECT_NE(shown.find("No such file"), std::string::npos);
    when("frmAbout", [&shown](QWidget& form) {
        shown = text(form, "lblVersion");
        click(form, "cmdOk");
    });
    trigger("HelpAbout");
    EXPECT_EQ(shown, "Version 1.0, 22/11/2026");
}

TEST_F(Commands, LeavingSettingsLooksForTheProgrammerEveryTime) {
    startAlone();
    when("frmSettings", [this](QWidget& form) {
        auto* port = in<QComboBox>(form, "cmbCOM");
        EXPECT_EQ(port->currentText().toStdString(), "COM5");
        EXPECT_EQ(port->count(), 16);
        port->setCurrentText(QStringLiteral("LPT1"));
        click(form, "cmdOk");
        EXPECT_EQ(takeMessage().toStdString(),
                  "Settings: \"LPT1\" is not a port. Choose one of COM1 to COM16.");
        EXPECT_TRUE(form.isVisible());
        port->setCurrentText(QStringLiteral("com16"));
        QTest::keyClick(port, Qt::Key_Return);
    });
    trigger("OptionsSettings");
    EXPECT_TRUE(takeMessage().startsWith(QStringLiteral("Communication Port Error: COM16, ")));
    EXPECT_EQ(text("sbar1"), "FAIL");
    when("frmSettings", [](QWidget& form) {
        in<QComboBox>(form, "cmbCOM")->setCurrentText(QStringLiteral("COM5"));
        click(form, "cmdOk");
    });
    trigger("OptionsSettings");
    EXPECT_TRUE(takeMessage().startsWith(noPort));
    startProgrammer();
    when("frmSettings", escape);
    trigger("OptionsSettings");
    EXPECT_TRUE(takeMessage().startsWith(QStringLiteral("Device Found!")));
    EXPECT_EQ(text("sbar1"), "COM5");
}

TEST_F(Commands, SettingsOutsideTheirRangesStillGiveAProgram) {
    folder.write("quorven.cfg", "17\n0\n0\n\"1.0\"\n\"22/11/2026\"\n");
    ReadSettings();
    start();
    EXPECT_TRUE(takeMessage().startsWith(QStringLiteral("Communication Port Error: COM17, ")));
    when("frmSelectDevice", [](QWidget& form) { click(form, "cmdOk"); });
    trigger("DeviceSelect");
    EXPECT_EQ(text("sbar3"), "Size: 0H");
    when("frmSettings", [](QWidget& form) {
        EXPECT_EQ(in<QComboBox>(form, "cmbCOM")->currentText().toStdString(), "COM1");
        escape(form);
    });
    trigger("OptionsSettings");
    trigger("BufferEdit");
    EXPECT_EQ(text("lblCheckSum"), "0000");
}

TEST_F(Commands, TypedDigitsReachTheImageAndTheView) {
    startAlone();
    trigger("BufferClear");
    auto* textBox = in<QTextEdit>(*mdi, "txtBuffer");
    QTest::keyClicks(textBox, QStringLiteral("7f"));
    EXPECT_EQ(text("lblAddress"), "0001");
    EXPECT_EQ(text("lblCheckSum"), "EF80");
    QTest::keyClick(textBox, Qt::Key_A, Qt::ControlModifier); // no digit
    QTest::keyClick(textBox, Qt::Key_Down);
    QTest::keyClicks(textBox, QStringLiteral("5"));
    EXPECT_NE(page().find("0000=7F FF"), std::string::npos);
    EXPECT_NE(page().find("0010=FF 5F"), std::string::npos);
    EXPECT_EQ(state().BufferData[0], 0x7F);
    in<QScrollBar>(*mdi, "vsc")->setValue(1);
    QTest::keyClicks(textBox, QStringLiteral("1")); // the caret is on the first digit of the page
    EXPECT_EQ(state().BufferData[16], 0x1F);
}
