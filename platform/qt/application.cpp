#include "platform/qt/application.h"

#include "platform/qt/qt_machine.h"

#include <QIcon>
#include <QSettings>

#include <cstdlib>
#include <exception>
#include <string>

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
    setApplicationName(QStringLiteral("quorven"));
    setApplicationDisplayName(QString()); // captions stand as they are given
    setQuitOnLastWindowClosed(false);     // message boxes come before the main window; it ends us
    QIcon icon;
    for (const int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/icons/quorven-%1.png").arg(size));
    setWindowIcon(icon);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings_.path());
}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        // Nothing below can be trusted to unwind through the event loops that are under way.
        if (beforeReport)
            beforeReport();
        endNow(reportError());
    }
}

void Application::endNow(int status) {
    settings_.remove();
    std::_Exit(status);
}

int Application::reportError() {
    constexpr int failureStatus = 1;
    std::string cause = "An error of unknown kind.";
    try {
        throw;
    } catch (const std::exception& error) {
        cause = error.what();
    } catch (...) { // the words above
    }
    QtMessageBox().Show("QUORVEN", cause, platform::MessageBox::Icon::Critical);
    return failureStatus;
}
