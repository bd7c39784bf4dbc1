// The main window with the simulated programmer on a real pseudo-terminal.
#pragma once

#include "app/family_table.h"
#include "app/startup.h"
#include "app/state.h"
#include "shell/mdiMain.h"
#include "tests/support/temporary_folder.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QProcess>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

class Windows : public testing::Test {
protected:
    Windows() {
        modFunc::ResetState();
        for (const auto& file : std::filesystem::directory_iterator(SHIPPED_DATA))
            std::filesystem::copy(file, folder.path());
        // One version text for all times, whatever the release.
        folder.write("quorven.cfg", "5\r\n22\r\n1\r\n\"1.0\"\r\n\"22/11/2026\"\r\n");
        modFunc::state().AppPath = folder.path();
        modFunc::ReadSettings();
        modFunc::ReadDeviceList();
        modFunc::ReadAutoFile();
        modFunc::InitFamilyTable();
        // An earlier test has ended the program: until an event loop has been started again, all
        // dialogs return at once.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QApplication::exec();
        QObject::connect(&watch, &QTimer::timeout, &watch, [this] { serveDialogs(); });
        watch.start(5);
    }
    ~Windows() override {
        simbox.terminate();
        EXPECT_TRUE(programmerEnds());
        EXPECT_TRUE(actions.isEmpty()) << "did not come up: " << actions.firstKey().toStdString();
    }
    // simbox with a chip of 64 KiB of `fill` and these further options.
    void startProgrammer(char fill = '\xFF', const QStringList& more = {}) {
        folder.write("chip.bin", std::string(65536, fill));
        folder.remove("chip.bin.lock");
        const auto file = [this](const char* name) {
            return QString::fromStdString(folder.file(name));
        };
        simbox.start(QStringLiteral(SIMBOX),
                     QStringList{QStringLiteral("--link"), file("com5"), QStringLiteral("--chip"),
                                 file("chip.bin"), QStringLiteral("--trace"), file("trace.txt"),
                                 QStringLiteral("--no-pace")} +
                         more);
        ASSERT_TRUE(simbox.waitForReadyRead(5000)) << "simbox does not start";
    }
    bool programmerEnds() {
        return simbox.state() == QProcess::NotRunning || simbox.waitForFinished(5000);
    }
    // The lines of the frames in the trace of simbox.
    QStringList frames() {
        return QString::fromStdString(folder.read("trace.txt"))
            .split(u'\n')
            .filter(QStringLiteral(" > "));
    }
    std::string chip(std::size_t bytes) { return folder.read("chip.bin").substr(0, bytes); }
    // The main window, loaded and shown.
    void start() {
        machine = std::make_unique<QtMachine>(folder.path());
        mdi = std::make_unique<mdiMain>(*machine);
        modFunc::state().TimedOut = false;
        mdi->Load();
        mdi->show();
        mdi->activateWindow(); // or no shortcut would be heard
        EXPECT_TRUE(QTest::qWaitForWindowActive(mdi.get()));
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

    TemporaryFolder folder;
    QProcess simbox;
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
