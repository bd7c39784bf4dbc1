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
    setApplicationDisplayName(QString()); // titles stay as they are given
    setQuitOnLastWindowClosed(false);     // message boxes come before the main window; it ends us
    QIcon icon;
    for (const int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/icons/quorven-%1.png").arg(size));
    setWindowIcon(icon);
    useOwnAccessibles();
    QDBusConnection::systemBus(); // connecting waits for a reply, which no run shall
    // Qt's file dialog stores its last folder in a file; this program keeps no state but its own
    // files. No file can be created in this path, and QSettings ignores that.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        // Nothing below can be trusted to unwind through the event loops that are running.
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
    } catch (...) { // the text above
    }
    QtMessageBox().Show("QUORVEN", cause, platform::MessageBox::Icon::Critical);
    return failureStatus;
}
