// The windows, alone or with the simulated programmer on a real pseudo-terminal.
#pragma once

#include "app/family_table.h"
#include "app/startup.h"
#include "app/state.h"
#include "shell/mdiMain.h"
#include "tests/support/temporary_folder.h"

#include <QApplication>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <deque>
#include <utility>

class Windows : public testing::Test {
protected:
    using Actions = std::deque<std::function<void()>>;

    Windows() {
        modFunc::ResetState();
        std::filesystem::copy(SHIPPED_DATA, folder.path());
        for (const char* link : {"com5", "com16"})
            std::filesystem::create_symlink("unplugged", folder.file(link));
        modFunc::state().AppPath = folder.path();
        modFunc::ReadSettings();
        modFunc::state().ProgramVersion = "1.0"; // independent of the release
        modFunc::state().ProgramDate = "22/11/2026";
        modFunc::ReadDeviceList();
        modFunc::ReadAutoFile();
        modFunc::InitFamilyTable();
        // After an earlier test has quit the application, all dialogs return at once until an event
        // loop has been started again.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QApplication::exec();
        QObject::connect(&watch, &QTimer::timeout, &watch, [this] { serveDialogs(); });
        watch.start(5);
    }
    ~Windows() override {
        endProgrammer();
        EXPECT_EQ(said(), "");
    }
    // simbox with a fresh chip of 64 KiB and these faults.
    void startProgrammer(const QStringList& faults = {}) {
        QString options = "--no-pace --fill FF --link com5 --chip chip.bin --trace trace.txt";
        for (const QString& fault : faults)
            options += " --fault " + fault;
        folder.remove("chip.bin");
        simbox.setWorkingDirectory(QString::fromStdString(folder.path()));
        simbox.start(SIMBOX, options.split(' '));
        ASSERT_TRUE(simbox.waitForReadyRead(5000)) << "simbox does not start";
    }
    // Ends simbox, which must not have rejected a frame and then has saved its chip.
    void endProgrammer() {
        simbox.terminate();
        EXPECT_TRUE(simbox.state() == QProcess::NotRunning || simbox.waitForFinished(5000));
        EXPECT_EQ(simbox.exitCode(), 0);
    }
    // The frames that it received, by command code.
    std::string frames() {
        std::string codes;
        const QString trace = QString::fromStdString(folder.read("trace.txt"));
        for (auto i = QRegularExpression(" > (.. ){4}(..)").globalMatch(trace); i.hasNext();)
            codes += static_cast<char>(i.next().captured(2).toInt(nullptr, 16));
        return codes;
    }
    // Loads and shows the main window; `message` is what discovery must say.
    void start(const std::string& message, int splashMs = 1) {
        mdi = std::make_unique<mdiMain>(machine);
        machine.totmr.setInterval(splashMs);
        mdi->Load();
        mdi->show();
        mdi->activateWindow(); // shortcuts need an active window
        EXPECT_TRUE(QTest::qWaitForWindowActive(mdi.get()));
        EXPECT_EQ(said(), message);
    }
    std::string noPort(int port) {
        const std::string number = std::to_string(port);
        return "! Communication Port Error: COM" + number + ", " + folder.file("com" + number) +
               ": there is no such device. Is the programmer plugged in?";
    }
    // Triggers a menu entry and runs one action in each modal window that opens; message boxes are
    // confirmed automatically.
    void trigger(const char* entry, const Actions& inWindows = {}) {
        actions = inWindows;
        mdi->findChild<QAction*>(entry)->trigger();
        EXPECT_TRUE(actions.empty()) << entry << ": a window did not come up";
    }
    QWidget* window() {
        QWidget* modal = QApplication::activeModalWidget();
        return modal ? modal : mdi.get();
    }
    // A control of the modal window or else of the main window.
    template <class Widget = QWidget>
    Widget* find(const char* name) {
        auto* control = window()->findChild<Widget*>(name);
        return control ? control
                       : throw std::runtime_error(name + std::string(": no such control"));
    }
    // The texts of these controls, separated by "|".
    template <class... Name>
    std::string text(const char* name, const Name*... more) {
        QString text;
        for (const char* property : {"text", "plainText", "currentText"})
            text += find(name)->property(property).toString();
        return (text.toStdString() + ... + ("|" + this->text(more)));
    }
    void set(const char* name, const char* text) {
        auto* control = find(name);
        control->setProperty(control->inherits("QComboBox") ? "currentText" : "text", text);
    }
    void click(const char* button) { QTest::mouseClick(find(button), Qt::LeftButton); }
    // Presses the keys in order, in the control that has the focus.
    template <class... Keys>
    void press(Keys... keys) {
        for (const QKeyCombination key : {QKeyCombination(keys)...})
            QTest::keyClick(window()->focusWidget() ? window()->focusWidget() : window(), key.key(),
                            key.keyboardModifiers());
    }
    const std::function<void()> escape = [this] { press(Qt::Key_Escape); };
    const std::function<void()> enter = [this] { press(Qt::Key_Return); };
    // Chooses this file of the program's folder in the file dialog.
    auto file(const char* name) {
        return [this, name] {
            set("fileNameEdit", folder.file(name).c_str());
            QTest::keyClick(find("fileNameEdit"), Qt::Key_Return);
        };
    }
    static void wheelDown(QWidget* widget) {
        QWheelEvent turn({5, 5}, {5, 5}, {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &turn);
    }
    // "! title: text" of each critical message box since the last call, "i title: text" of others.
    std::string said() { return std::exchange(messages, {}); }

    const std::string found = "i Device Found!: Firmware: SimBox v1.00";
    TemporaryFolder folder;
    QProcess simbox;
    QtMachine machine{folder.path()};
    std::unique_ptr<mdiMain> mdi;
    Actions actions;

private:
    void serveDialogs() {
        QWidget* window = QApplication::activeModalWidget();
        if (!window || !window->isVisible() || window == served)
            return;
        if (auto* message = qobject_cast<QMessageBox*>(window)) {
            EXPECT_EQ(message->textFormat(), Qt::PlainText);
            EXPECT_TRUE(message->parentWidget() || !mdi || !mdi->isVisible());
            messages += message->icon() == QMessageBox::Critical ? "! " : "i ";
            messages += (message->windowTitle() + ": " + message->text()).toStdString();
            return message->button(QMessageBox::Ok)->click();
        }
        served = window;
        EXPECT_TRUE(window->parentWidget());
        ASSERT_FALSE(actions.empty()) << "unexpected: " << window->objectName().toStdString();
        // In a separate timer, because this one must continue while the action runs.
        QTimer::singleShot(0, window, [action = actions.front()] { action(); });
        actions.pop_front();
    }

    QTimer watch;
    QPointer<QWidget> served;
    std::string messages;
};
