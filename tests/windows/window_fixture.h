// The windows, alone or with the simulated programmer on a real pseudo-terminal. A test that uses
// this needs no other header of the standard library, GoogleTest or Qt, except QtDBus.
#pragma once

#include "app/startup.h"
#include "app/state.h"
#include "shell/mdiMain.h"
#include "tests/support/temporary_folder.h"

#include <QtTest>
#include <QtWidgets>
#include <gtest/gtest.h>

class Windows : public testing::Test {
protected:
    Windows() {
        modFunc::ResetState();
        std::filesystem::copy(SHIPPED_DATA, folder.path());
        std::filesystem::create_symlink("unplugged", folder.file("com5"));
        std::filesystem::current_path(folder.path());
        modFunc::Main();
        // After an earlier test has quit the application, all dialogs return at once until an event
        // loop has been started again.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QApplication::exec();
        watch.callOnTimeout([this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || modal == served)
                return;
            EXPECT_TRUE(modal->parentWidget() || !mdi || !mdi->isVisible());
            if (auto* message = qobject_cast<QMessageBox*>(modal)) {
                EXPECT_EQ(message->textFormat(), Qt::PlainText);
                messages += message->icon() == QMessageBox::Critical ? "! " : "i ";
                messages += (message->windowTitle() + ": " + message->text()).toStdString();
                return message->button(QMessageBox::Ok)->click();
            }
            served = modal;
            ASSERT_FALSE(actions.isEmpty()) << "unexpected: " << modal->objectName().toStdString();
            // In a separate timer, because this one must continue while the action runs.
            QTimer::singleShot(0, modal, actions.takeFirst());
        });
        watch.start(5);
    }
    ~Windows() override {
        endProgrammer();
        EXPECT_EQ(said(), "");
    }
    // simbox with a chip of 64 KiB.
    void startProgrammer(const QString& faults = {}) {
        const QString options = "--no-pace --fill FF --link com5 --chip chip.bin --trace trace.txt";
        simbox.start(SIMBOX, (options + faults).split(' '));
        ASSERT_TRUE(simbox.waitForReadyRead(5000)) << "simbox does not start";
    }
    // Ends simbox, which then saves its chip. It must not have rejected a frame.
    void endProgrammer() {
        simbox.terminate();
        simbox.waitForFinished();
        EXPECT_EQ(simbox.exitCode(), 0);
    }
    // Loads and shows the main window; `message` is what discovery must say.
    void start(const std::string& message, int splashMs = 1) {
        mdi = std::make_unique<mdiMain>(machine);
        machine.totmr.setInterval(splashMs);
        mdi->Load();
        mdi->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(mdi.get())); // or its shortcuts do not work
        EXPECT_EQ(said(), message);
    }
    // Triggers a menu entry and runs one action in each modal window that opens; message boxes are
    // confirmed automatically.
    void trigger(const char* entry, const QList<std::function<void()>>& inWindows = {}) {
        actions = inWindows;
        mdi->findChild<QAction*>(entry)->trigger();
        EXPECT_TRUE(actions.isEmpty()) << entry << ": a window did not come up";
    }
    QWidget* window() {
        QWidget* modal = QApplication::activeModalWidget();
        return modal ? modal : mdi.get();
    }
    // A control of the modal window or else of the main window.
    template <class Widget = QWidget>
    Widget* find(const char* name) {
        return window()->findChild<Widget*>(name);
    }
    std::string text(const char* name, const char* property = "text") {
        return find(name)->property(property).toString().toStdString();
    }
    void set(const char* name, const std::string& text) {
        find(name)->metaObject()->userProperty().write(find(name), QString::fromStdString(text));
    }
    void click(const char* button) { QTest::mouseClick(find(button), Qt::LeftButton); }
    // Presses the keys in order, in the control that has the focus.
    template <class... Keys>
    void press(Keys... keys) {
        for (const QKeyCombination key : {QKeyCombination(keys)...})
            QTest::keyClick(window()->focusWidget(), key.key(), key.keyboardModifiers());
    }
    const std::function<void()> escape = [this] { press(Qt::Key_Escape); };
    const std::function<void()> enter = [this] { press(Qt::Key_Return); };
    // "! title: text" of each critical message box since the last call, "i title: text" of others.
    std::string said() { return std::exchange(messages, {}); }

    TemporaryFolder folder;
    const std::string noPort = "! Communication Port Error: COM5, " + folder.file("com5") +
                               ": there is no such device. Is the programmer plugged in?";
    QProcess simbox;
    QtMachine machine{folder.path()};
    std::unique_ptr<mdiMain> mdi;
    QList<std::function<void()>> actions;
    QTimer watch;
    QPointer<QWidget> served;
    std::string messages;
};
