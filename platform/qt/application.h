#pragma once

#include <QApplication>

#include <QTemporaryDir>

#include <functional>

// The application, with the one place where errors end that nothing else has handled.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);

    // An error that escapes an event handler: beforeReport runs, the cause is reported and the
    // program ends with status 1.
    bool notify(QObject* receiver, QEvent* event) override;
    std::function<void()> beforeReport;

    // Ends the process at once, from within whatever event loops are under way.
    [[noreturn]] void endNow(int status);

    // Shows the cause of the error being handled in a critical message box; returns the exit
    // status. To be called in a catch clause.
    static int reportError();

private:
    // Qt's file dialog stores where it was last; this program keeps no state but its own files.
    QTemporaryDir settings_;
};
