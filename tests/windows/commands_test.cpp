// Every menu command as a user gives it, and what is on the disk and in the image afterwards.
#include "tests/windows/window_fixture.h"

#include <QComboBox>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextEdit>

using namespace modFunc;

namespace {

class Commands : public Windows {
protected:
    QTextEdit* page() { return find<QTextEdit>("txtBuffer"); }
    QScrollBar* bar() { return find<QScrollBar>("vsc"); }
    // The beginning of a row of the page.
    std::string row(int row, qsizetype length = 17) {
        return page()->toPlainText().section('\n', row + 1, row + 1).left(length).toStdString();
    }
    bool viewOpen() { return mdi->findChild<QWidget*>("frmBuffer"); }
    auto& image() { return state().BufferData; }

    const Bytes erased = Bytes(70001, 0xFF);
};

} // namespace

TEST_F(Commands, TheSplashIsShownForASecond) {
    bool seen = false;
    QTimer::singleShot(900, qApp, [&] {
        QWidget* splash = QApplication::activeWindow();
        QTest::keyClick(splash, Qt::Key_Escape);
        seen = !splash->close() && splash->isVisible() && splash->inherits("frmAbout") &&
               splash->findChild<QWidget*>("cmdOk")->isHidden();
    });
    start(noPort(5), 1000);
    EXPECT_TRUE(seen);
    EXPECT_EQ(mdi->windowTitle().toStdString(), "QUORVEN ~ USB Programmer - Ver.1.0");
    EXPECT_EQ(mdi->size(), QSize(738, 460 + mdi->menuWidget()->height()));
    EXPECT_EQ(QApplication::windowIcon().availableSizes().size(), 4);
    EXPECT_EQ(mdi->centralWidget()->width(), 738);
}

TEST_F(Commands, LoadFillsTheImageOrLeavesItAsItWas) {
    start(noPort(5));
    trigger("FileLoad", {escape});
    trigger("FileLoad", {file("sample.hex"), escape});
    EXPECT_EQ(text("sbar1", "sbar4"), "FAIL|File:");
    folder.write("damaged.hex", ":zz");
    trigger("FileLoad", {file("damaged.hex"), enter});
    EXPECT_TRUE(image() == erased && mdi->isVisible() && !viewOpen());
    folder.write("image.bin", "abcd");
    trigger("FileLoad", {file("image.bin"), [&] {
                             EXPECT_FALSE(window()->close());
                             set("txtBuffer", "10");
                             set("txtFile", "1");
                             click("cmdOk");
                         }});
    EXPECT_EQ(row(1), "0010=FF 62 63 64 ");
    EXPECT_EQ(text("sbar4", "lblCheckSum"), "File: " + folder.file("image.bin") + "|EE2C");
}

// Overwrites an existing file without asking.
TEST_F(Commands, SaveWritesTheChosenFormat) {
    start(noPort(5));
    folder.write("image", "old");
    trigger("FileSave", {file("image"), escape});
    EXPECT_EQ(folder.read("image"), "old");
    for (const auto& [type, begin] :
         {std::pair{"Option1", ":10000000FF"}, {"Option2", "\xFF\xFF"}}) {
        const auto confirm = [&] {
            EXPECT_EQ(text("fileNameEdit"), "image") << "the name before";
            EXPECT_EQ(find<QLineEdit>("fileNameEdit")->maxLength(), 260);
            EXPECT_EQ(window()->property("acceptMode").toInt(), 1);
            enter();
        };
        trigger("FileSave", {confirm, [&] {
                                 click(type);
                                 enter();
                             }});
        EXPECT_EQ(folder.read("image").find(begin), 0U);
    }
}

TEST_F(Commands, FillKeepsThePageAndRejectsWhatDoesNotFit) {
    start(noPort(5));
    trigger("BufferFill", {escape});
    EXPECT_FALSE(viewOpen());
    trigger("BufferFill", {enter});
    bar()->setValue(16);
    const auto fill = [&](const char* with, const char* start, const char* length) {
        set("txtFillWith", with);
        set("txtStart", start);
        set("txtLength", length);
        enter();
        return said();
    };
    trigger("BufferFill", {[&] {
                const std::string not4 = " is not a hexadecimal number of one to four digits.";
                EXPECT_EQ(fill("A", "G", "2"), "! Buffer Fill: The start" + not4);
                EXPECT_EQ(find<QLineEdit>("txtStart")->selectedText(), "G");
                EXPECT_EQ(fill("A", "0", ""), "! Buffer Fill: The length" + not4);
                EXPECT_EQ(window()->focusWidget(), find("txtLength"));
                EXPECT_EQ(fill("A", "FFFF", "1173"), // the last byte would be 70001
                          "! Buffer Fill: The range ends past the end of the buffer. "
                          "From address FFFFH, the maximum length is 1172H.");
                EXPECT_EQ(image(), erased);
                fill("A", "FFFF", "1172");
            }});
    EXPECT_EQ(image()[65534], 0xFF);
    EXPECT_EQ(std::ranges::count(image(), 0x0A), 0x1172);
    trigger("BufferFill", {[&] { fill("b7", "101", "2"); }});
    EXPECT_EQ(row(0) + text("lblAddress"), "0100=FF B7 B7 FF 0100");
    trigger("BufferFill", {[&] { fill("", "102", "1"); }});
    EXPECT_EQ(row(0), "0100=FF B7 FF FF ");
    trigger("BufferClear");
    EXPECT_EQ(image(), erased);
    EXPECT_EQ(text("lblAddress"), "0000");
}

TEST_F(Commands, EditAutoStoresAtMostTwentyRows) {
    folder.write("auto.cfg", "3\n0\n7\n1\n"); // 7 is not a function
    ReadAutoFile();
    start(noPort(5));
    std::string stored = "19\r\n0\r\n";
    trigger("OptionsEditAuto", {[&] {
                click("cmdMoveLeft"); // nothing is highlighted
                find<QListWidget>("lstIn")->setCurrentRow(3);
                for (int row = 2; row < 20; ++row, stored += "4\r\n")
                    click("cmdMoveRight");
                EXPECT_FALSE(find("cmdMoveRight")->isEnabled());
                find<QListWidget>("lstOut")->setCurrentRow(1);
                click("cmdMoveLeft");
                click("cmdMoveLeft"); // the highlight is gone with its row
                EXPECT_TRUE(find("cmdMoveRight")->isEnabled());
                click("cmdOk");
            }});
    EXPECT_EQ(folder.read("auto.cfg"), stored);
    trigger("OptionsEditAuto", {[&] {
                click("cmdMoveLeftAll");
                EXPECT_EQ(find<QListWidget>("lstOut")->count(), 0);
                EXPECT_FALSE(find("cmdMoveLeft")->isEnabled() ||
                             find("cmdMoveLeftAll")->isEnabled());
                escape();
            }});
    EXPECT_EQ(state().AutoCount, 19);
}

TEST_F(Commands, ADeviceAndAPortAreKeptAndExitWritesThem) {
    start(noPort(5));
    trigger("BufferEdit");
    trigger("DeviceSelect", {escape});
    EXPECT_TRUE(viewOpen());
    std::string outlines;
    trigger("DeviceSelect", {[&] {
                for (const int row : {0, 10, 13}) {
                    find<QListWidget>("listDevice")->setCurrentRow(row);
                    for (const char* outline : {"shp1(0)", "shp1(1)", "shp1(2)", "shp1(3)"})
                        outlines += find(outline)->isVisible() ? outline[5] : '-';
                }
                enter();
            }});
    EXPECT_EQ(outlines, "01--0-2-0--3");
    EXPECT_FALSE(viewOpen()) << "its range and checksum are the other device's";
    EXPECT_EQ(text("sbar2", "sbar3"), "Device: DIP8 32K page 64|Size: 8000H");
    trigger("OptionsSettings", {[&] {
                set("cmbCOM", "LPT1");
                enter();
                EXPECT_EQ(said(),
                          "! Settings: \"LPT1\" is not a port. Choose a port from COM1 to COM16.");
                EXPECT_EQ(find<QComboBox>("cmbCOM")->lineEdit()->selectedText(), "LPT1");
                set("cmbCOM", "com16");
                enter();
            }});
    EXPECT_EQ(said(), noPort(16));
    trigger("FileExit");
    EXPECT_FALSE(mdi->isVisible());
    EXPECT_EQ(folder.read("quorven.cfg"), "16\r\n22\r\n14\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
}

TEST_F(Commands, SettingsOutsideTheirRangesStillGiveAProgram) {
    state().ComPort = 17;
    state().SelectedDevice = 0;
    const std::string noSuchPort = "! Communication Port Error: COM17, there is no such port.";
    start(noSuchPort);
    trigger("DeviceSelect", {[&] { click("cmdOk"); }});
    trigger("OptionsSettings", {[&] {
                EXPECT_EQ(text("cmbCOM"), "COM1");
                escape();
            }});
    EXPECT_EQ(said(), noSuchPort);
    trigger("BufferEdit");
    EXPECT_EQ(text("sbar3", "lblCheckSum"), "Size: 0H|0000");
}

TEST_F(Commands, HelpShowsTheGuideOrTheCause) {
    start(noPort(5));
    std::string shown;
    const auto read = [&] {
        shown = text("rtb");
        EXPECT_EQ(find<QTextEdit>("rtb")->textCursor().position(), 0);
        escape();
    };
    actions = {read};
    QTest::keyClick(mdi.get(), Qt::Key_F1);
    EXPECT_NE(shown.find("Finding the programmer"), std::string::npos);
    const std::string name = folder.file("quorven help.rtf");
    folder.write("quorven help.rtf", "no rich text");
    trigger("HelpContents", {read});
    EXPECT_EQ(shown, name + ": the file is not a rich text (RTF) file.");
    folder.remove("quorven help.rtf");
    trigger("HelpContents", {read});
    EXPECT_EQ(shown, name + ": the file cannot be opened: No such file or directory.");
    trigger("HelpAbout", {[&] {
                EXPECT_FALSE(window()->close());
                click("cmdOk");
            }});
    trigger("HelpAbout", {escape});
}

TEST_F(Commands, TypedDigitsGoWhereTheCaretIsShown) {
    start(noPort(5));
    image()[2] = 127; // has no glyph
    trigger("BufferEdit");
    EXPECT_EQ(row(0, 99),
              "0000=FF FF 7F FF FF FF FF FF FF FF FF FF FF FF FF FF ..\xE2\x8C\x82.............");
    QTest::keyClicks(page(), "7fg");
    EXPECT_EQ(text("lblAddress"), "0001");
    press(Qt::CTRL | Qt::Key_A, Qt::Key_Down, Qt::Key_Right, Qt::Key_5);
    EXPECT_EQ(row(0, 11) + row(1, 11), "0000=7F FF 0010=FF F5 ");
    EXPECT_EQ(text("lblCheckSum"), "EEF6");
    bar()->setValue(240);
    press(Qt::Key_1); // the caret is on the first digit of the page
    EXPECT_EQ(image()[0xF00], 0x1F);
    press(Qt::Key_Left, Qt::Key_Up);
    EXPECT_EQ(bar()->value(), 239);
    EXPECT_EQ(text("lblAddress"), "0EF0");
    wheelDown(page()->viewport());
    EXPECT_EQ(bar()->value(), 240);
    trigger("BufferEdit");
    EXPECT_EQ(text("lblAddress") + page()->textCursor().selectedText().toStdString(), "00007");
    EXPECT_EQ(page()->textCursor().selectionStart(), 69);
    EXPECT_LE(page()->document()->size().height(), page()->viewport()->height());
    EXPECT_LE(page()->document()->idealWidth(), bar()->x() - page()->x());
    EXPECT_EQ(mdi->findChild<QMdiSubWindow*>()->pos(), QPoint());
    press(Qt::CTRL | Qt::Key_W);
    QTest::qWait(1); // the window is deleted later
    EXPECT_FALSE(viewOpen());
}

// Lines are 14 pixels high, the heading first. Other clicks do not move the caret.
TEST_F(Commands, EveryPixelOfADigitSelectsIt) {
    start(noPort(5));
    trigger("BufferEdit");
    const int left = page()->cursorRect(QTextCursor(page()->document())).left();
    const double digit = QFontMetricsF(page()->font()).horizontalAdvance('0');
    const auto press = [&](int y, double column, Qt::MouseButton button = Qt::LeftButton) {
        const QPoint at(qRound(left + column * digit), y);
        QTest::mouseClick(page()->viewport(), button, {}, at);
        return text("lblAddress");
    };
    for (const int y : {14, 27, 224, 237}) {
        EXPECT_EQ(press(y, 8.2), y < 28 ? "0001" : "00F1") << y;
        EXPECT_EQ(press(y, 51.8), y < 28 ? "000F" : "00FF") << y;
        press(35, 8.5);
        EXPECT_EQ(press(y, 7.5) + press(y, 53.5) + press(y, 8.5, Qt::RightButton), "001100110011");
    }
    EXPECT_EQ(press(13, 8.5) + press(238, 8.5), "00110011");
    QTest::mouseDClick(page()->viewport(), Qt::LeftButton, {}, {70, 100});
    EXPECT_EQ(text("lblAddress"), "0011");
}
