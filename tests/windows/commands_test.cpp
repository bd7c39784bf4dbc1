// Every menu command as a user gives it, and what is on the disk and in the image afterwards.
#include "tests/windows/window_fixture.h"

using namespace modFunc;

namespace {

class Commands : public Windows {
protected:
    void SetUp() override { start(noPort); }
    QTextEdit* page() { return find<QTextEdit>("txtBuffer"); }
    // The beginning of a row of the page.
    std::string row(int row, qsizetype length = 17) {
        return page()->toPlainText().section('\n', row + 1, row + 1).left(length).toStdString();
    }
    bool viewOpen() { return mdi->findChild<QWidget*>("frmBuffer"); }
    // Chooses a file of the program's folder in the file dialog, which proposes the last one.
    std::function<void()> file(const std::string& proposed, const std::string& name) {
        return [this, proposed, name] {
            EXPECT_EQ(text("fileNameEdit") + text("fileNameEdit", "maxLength"), proposed + "260");
            set("fileNameEdit", folder.file(name));
            enter();
        };
    }

    Bytes& image = state().BufferData;
};

} // namespace

TEST_F(Windows, ShowTheSplashForASecond) {
    bool seen = false;
    QTimer::singleShot(900, qApp, [&] {
        QWidget* splash = QApplication::activeWindow();
        QTest::keyClick(splash, Qt::Key_Escape);
        seen = !splash->close() && splash->findChild<QWidget*>("cmdOk")->isHidden();
    });
    state().ProgramVersion = "1.[*]0"; // a placeholder in Qt
    start(noPort, 1000);
    EXPECT_TRUE(seen);
    EXPECT_EQ(mdi->windowHandle()->title(), "QUORVEN ~ USB Programmer - Ver.1.[*]0");
    EXPECT_EQ(mdi->size(), QSize(738, 460 + mdi->menuWidget()->height()));
    EXPECT_EQ(QApplication::windowIcon().availableSizes().size(), 4);
}

TEST_F(Commands, LoadFillsTheImageOrLeavesItAsItWas) {
    trigger("FileLoad", {escape});
    trigger("FileLoad", {file("", "sample.hex"), escape});
    trigger("FileLoad", {file("sample.hex", "missing.hex"), enter});
    EXPECT_TRUE(image == Bytes(70001, 0xFF) && !viewOpen());
    folder.write("5\" image.bin", "abcd");
    trigger("FileLoad", {file("missing.hex", "5\" image.bin"), [&] {
                             EXPECT_FALSE(window()->close());
                             press(Qt::Key_Tab, Qt::Key_1, Qt::Key_0, Qt::Key_Tab, Qt::Key_1,
                                   Qt::Key_Return);
                         }});
    EXPECT_EQ(row(1) + text("lblCheckSum"), "0010=FF 62 63 64 EE2C");
}

TEST_F(Commands, FillKeepsThePageAndRejectsWhatDoesNotFit) {
    trigger("BufferFill", {[&] {
                press(Qt::Key_A, Qt::Key_Tab, Qt::Key_G, Qt::Key_Tab, Qt::Key_H, Qt::Key_Return);
                // Each replaces the selected text; 1173 would end at 70001.
                for (const char* typed : {"FFFF", "1173", "1172"}) {
                    QTest::keyClicks(window()->focusWidget(), typed);
                    enter();
                }
            }});
    const std::string not4 = " is not a hexadecimal number of one to four digits.";
    EXPECT_EQ(said(), "! Buffer Fill: The start" + not4 + "! Buffer Fill: The length" + not4 +
                          "! Buffer Fill: The range ends past the end of the buffer. "
                          "From address FFFFH, the maximum length is 1172H.");
    trigger("BufferFill", {[&] { click("cmdCancel"); }});
    EXPECT_EQ(Bytes(image.begin() + 0xFFFF, image.end()), Bytes(0x1172, 0x0A));
    set("vsc", "16");
    image[0x101] = image[0x102] = 0;
    trigger("BufferFill", {[&] { // an empty text box means FF
                press(Qt::Key_Delete, Qt::Key_Tab, Qt::Key_1, Qt::Key_0, Qt::Key_2, Qt::Key_Return);
            }});
    EXPECT_EQ(row(0) + text("lblAddress"), "0100=FF 00 FF FF 0100");
    trigger("BufferClear");
    EXPECT_EQ(row(0) + text("lblAddress"), "0000=FF FF FF FF 0000");
    EXPECT_EQ(image, Bytes(70001, 0xFF));
}

TEST_F(Commands, EditAutoStoresAtMostTwentyRows) {
    state().AutoList[2] = 6;  // Auto itself
    state().TimedOut = false; // stays false: the splash's timer has stopped
    trigger("OptionsEditAuto", {[&] {
                for (int row = 3; row < 25; ++row)
                    click("cmdMoveRight");
                find<QListWidget>("lstOut")->setCurrentRow(0);
                // The highlight is gone with its row, so the second click removes nothing.
                for (const char* button : {"cmdMoveLeft", "cmdMoveLeft", "cmdMoveRight", "cmdOk"})
                    click(button);
            }});
    const std::string added = QByteArray("1\r\n").repeated(18).toStdString();
    EXPECT_EQ(folder.read("auto.cfg"), "20\r\n3\r\n4\r\n" + added);
    EXPECT_FALSE(state().TimedOut);
}

// The program also works with settings outside their ranges.
TEST_F(Commands, ADeviceAndAPortAreKeptAndExitWritesThem) {
    std::filesystem::create_symlink("unplugged", folder.file("com16"));
    state().ComPort = 17;
    state().SelectedDevice = 0;
    trigger("DeviceSelect", {[&] { click("cmdOk"); }}); // no row is highlighted
    trigger("BufferEdit");
    trigger("DeviceSelect", {[&] { click("cmdCancel"); }}); // leaves the view open
    EXPECT_EQ(text("sbar3") + text("lblCheckSum"), "Size: 0H0000");
    trigger("DeviceSelect", {[&] {
                find<QListWidget>("listDevice")->setCurrentRow(10);
                EXPECT_FALSE(find("shp1(1)")->isVisible() || find("shp1(3)")->isVisible());
                EXPECT_TRUE(find("shp1(2)")->isVisible());
                enter();
            }});
    EXPECT_FALSE(viewOpen()) << "its range and checksum are the other device's";
    trigger("OptionsSettings", {[&] { click("cmdCancel"); }});
    EXPECT_EQ(said(), "! Communication Port Error: COM17, there is no such port.");
    trigger("OptionsSettings", {[&] {
                EXPECT_EQ(text("cmbCOM", "currentText"), "COM1");
                set("cmbCOM", "LPT1");
                enter();
                EXPECT_EQ(said(),
                          "! Settings: \"LPT1\" is not a port. Choose a port from COM1 to COM16.");
                QTest::keyClicks(find("cmbCOM"), "com16"); // replaces the selected LPT1
                enter();
            }});
    EXPECT_EQ(said().find("! Communication Port Error: COM16, " + folder.file("com16")), 0U);
    trigger("FileExit");
    EXPECT_EQ(folder.read("quorven.cfg"), "16\r\n22\r\n11\r\n\"1.0\"\r\n\"23/11/2026\"\r\n");
}

TEST_F(Commands, HelpShowsTheGuideOrTheCause) {
    std::string shown;
    const auto read = [&] {
        shown = text("rtb", "plainText");
        EXPECT_EQ(find<QTextEdit>("rtb")->textCursor().position(), 0);
        escape();
    };
    trigger("HelpContents", {read});
    EXPECT_NE(shown.find("Finding the programmer"), std::string::npos);
    folder.write("quorven help.rtf", "no rich text");
    trigger("HelpContents", {read});
    EXPECT_EQ(shown, folder.file("quorven help.rtf") + ": the file is not a rich text (RTF) file.");
    trigger("HelpAbout", {[&] { click("cmdOk"); }});
}

// Lines are 14 pixels high, the heading first.
TEST_F(Commands, DigitsAreTypedAndClickedWhereTheCaretIsShown) {
    image[2] = 127; // has no glyph
    trigger("BufferEdit");
    EXPECT_EQ(row(0, 99),
              "0000=FF FF 7F FF FF FF FF FF FF FF FF FF FF FF FF FF ..\xE2\x8C\x82.............");
    press(Qt::Key_7, Qt::Key_F, Qt::CTRL | Qt::Key_A, Qt::Key_Down, Qt::Key_Right, Qt::Key_5);
    EXPECT_EQ(row(0, 11) + row(1, 11), "0000=7F FF 0010=FF F5 ");
    set("vsc", "240");
    press(Qt::Key_1, Qt::Key_2, Qt::Key_Up); // typed at the first digit of the page; Up scrolls
    QWheelEvent turn({5, 5}, {5, 5}, {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(page()->viewport(), &turn);
    EXPECT_EQ(text("vsc", "value") + ": " + row(0, 8) + text("lblAddress"), "240: 0F00=12 0F00");
    trigger("BufferEdit");
    EXPECT_EQ(text("lblAddress") + page()->textCursor().selectedText().toStdString(), "00007");
    EXPECT_LE(page()->document()->size().height(), page()->viewport()->height());

    const int left = page()->cursorRect(QTextCursor(page()->document())).left();
    const double digit = QFontMetricsF(page()->font()).horizontalAdvance('0');
    std::string addresses = std::to_string(page()->viewport()->x()) + ' ';
    for (const int y : {14, 27, 28, 237, 238})
        for (const int x : {qRound(left + 8.2 * digit), qRound(left + 51.8 * digit)}) {
            QTest::mouseClick(page()->viewport(), Qt::LeftButton, {}, {x, y});
            // The other button has no effect.
            QTest::mouseClick(page()->viewport(), Qt::RightButton, {}, {left + 68, 40});
            addresses += text("lblAddress") + ' ';
        }
    EXPECT_EQ(addresses, "4 0001 000F 0001 000F 0011 001F 00F1 00FF 00FF 00FF ");
    press(Qt::CTRL | Qt::Key_W);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !viewOpen(); }));
}
