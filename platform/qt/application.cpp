#include "platform/qt/application.h"

#include "platform/qt/accessible.h"
#include "platform/qt/qt_machine.h"
#include "platform/qt/termination_posix.h"

#include <QDBusConnection>
#include <QIcon>
#include <QSettings>

#include <exception>
#include <new>
#include <string>

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
    setApplicationName(QStringLiteral("quorven"));
    setQuitOnLastWindowClosed(false); // closing a start-up message box must not end the program
    QIcon icon;
    for (const int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/icons/quorven-%1.png").arg(size));
    setWindowIcon(icon);
    useOwnAccessibles();
    QDBusConnection::systemBus(); // connecting to the bus blocks, so do it before any run
    // Qt's file dialog would store the folder last used, but this program keeps state only in its
    // own files. No file can be created below /dev/null, and QSettings ignores the failure.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        // The running event loops cannot be unwound safely.
        SendCrashFrames();
        EndProcess(reportError());
    }
}

int Application::reportError() {
    constexpr int failureStatus = 1;
    std::string cause = "Unknown error.";
    try {
        throw;
    } catch (const std::bad_alloc&) {
        cause = "There is not enough memory.";
    } catch (const std::exception& error) {
        cause = error.what();
    } catch (...) { // keep the default text
    }
    QtMessageBox().Show("QUORVEN", cause, platform::MessageBox::Icon::Critical);
    return failureStatus;
}
