// Real windows, clicked and typed into, with the simulated box on a real pseudo-terminal.
#include "app/family_table.h"
#include "app/startup.h"
#include "app/state.h"
#include "functions/device_run.h"
#include "shell/mdiMain.h"
#include "tests/support/temporary_folder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QProcess>
#include <QRadioButton>
#include <QScrollBar>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace modFunc;

namespace {

class Windows : public testing::Test {
protected:
    Windows() {
        ResetState();
        for (const auto& file : std::filesystem::directory_iterator(SHIPPED_DATA))
            std::filesystem::copy(file, folder.path());
        state().AppPath = folder.path();
        ReadSettings();
        ReadDeviceList();
        ReadAutoFile();
        InitFamilyTable();
        // An earlier test has ended the program: as long as no event loop was begun anew, all
        // dialogs would return at once.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QApplication::exec();
        QObject::connect(&watch, &QTimer::timeout, &watch, [this] { serveDialogs(); });
        watch.start(5);
    }
    ~Windows() override {
        box.terminate();
        EXPECT_TRUE(box.state() == QProcess::NotRunning || box.waitForFinished(5000));
    }
    // The box, with a chip of 64 KiB of `fill`.
    void startBox(char fill = '\xFF') {
        folder.write("chip.bin", std::string(65536, fill));
        const auto file = [this](const char* name) {
            return QString::fromStdString(folder.file(name));
        };
        box.start(QStringLiteral(SIMBOX),
                  {QStringLiteral("--link"), file("com5"), QStringLiteral("--chip"),
                   file("chip.bin"), QStringLiteral("--trace"), file("trace.txt"),
                   QStringLiteral("--no-pace")});
        ASSERT_TRUE(box.waitForReadyRead(5000)) << "the simulated box does not start";
    }
    // The frames that the box got, as its trace tells them.
    QStringList frames() {
        return QString::fromStdString(folder.read("trace.txt"))
            .split(u'\n')
            .filter(QStringLiteral(" > "));
    }
    std::string chip(std::size_t bytes) { return folder.read("chip.bin").substr(0, bytes); }
    static std::string image(std::size_t bytes) {
        const Bytes& data = state().BufferData;
        return {data.begin(), data.begin() + std::ptrdiff_t(bytes)};
    }
    // The main window, loaded and shown.
    void start() {
        machine = std::make_unique<QtMachine>();
        mdi = std::make_unique<mdiMain>(*machine);
        state().TimedOut = false;
        mdi->Load();
        mdi->show();
    }
    // What is done when a modal window of this name is up; message boxes are answered by
    // themselves.
    void when(const char* window, std::function<void(QWidget&)> action) {
        actions[QString::fromLatin1(window)] = std::move(action);
    }
    void trigger(const char* entry) {
        mdi->findChild<QAction*>(QString::fromLatin1(entry))->trigger();
    }
    template <class Widget>
    static Widget* in(QWidget& window, const char* name) {
        return window.findChild<Widget*>(QString::fromLatin1(name));
    }
    static void click(QWidget& window, const char* button) {
        QTest::mouseClick(in<QAbstractButton>(window, button), Qt::LeftButton);
    }
    QMdiSubWindow* bufferWindow() const { return mdi->findChild<QMdiSubWindow*>(); }
    QString panel(const char* name) { return in<QLabel>(*mdi, name)->text(); }

    TemporaryFolder folder;
    QProcess box;
    std::unique_ptr<QtMachine> machine;
    std::unique_ptr<mdiMain> mdi;
    QStringList messages; // "title: text" of each message box

private:
    void serveDialogs() {
        QWidget* window = QApplication::activeModalWidget();
        if (!window || !window->isVisible())
            return;
        if (auto* message = qobject_cast<QMessageBox*>(window)) {
            messages << message->windowTitle() + QStringLiteral(": ") + message->text();
            message->button(QMessageBox::Ok)->click();
        } else if (const auto action = actions.take(window->objectName())) {
            // Out of a timer of its own: this one shall go on ticking while the action runs.
            QTimer::singleShot(0, window, [action, window] { action(*window); });
        }
    }

    QTimer watch;
    QMap<QString, std::function<void(QWidget&)>> actions;
};

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
    when("frmSettings", [](QWidget& form) {
        in<QComboBox>(form, "cmbCOM")->setCurrentIndex(4);
        click(form, "cmdOk");
    });
    trigger("OptionsSettings");
    when("frmSettings", [](QWidget& form) { QTest::keyClick(&form, Qt::Key_Escape); });
    trigger("OptionsSettings");
    EXPECT_EQ(messages.filter(QStringLiteral("Device Found!")).size(), 2);
    EXPECT_EQ(panel("sbar1"), QStringLiteral("COM5"));
}
