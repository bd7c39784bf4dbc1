#include "platform/qt/application.h"

#include <QMessageBox>

#include <cstdlib>

namespace {
constexpr int failureStatus = 1;
}

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
    setApplicationName(QStringLiteral("quorven"));
    setApplicationDisplayName(QString()); // captions stand as they are given
    setQuitOnLastWindowClosed(false);     // message boxes come before the main window; it ends us
}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        // Nothing below can be trusted to unwind through the event loops that are under way.
        std::_Exit(reportError(error));
    }
}

int Application::reportError(const std::exception& error) {
    QMessageBox box(QMessageBox::Critical, QStringLiteral("QUORVEN"),
                    QString::fromUtf8(error.what()), QMessageBox::Ok, QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.exec();
    return failureStatus;
}
