#pragma once

#include <QApplication>

// The application, with the handler of last resort for exceptions.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);

    // If an exception escapes an event handler, sends the power-down frames if a run is in
    // progress, reports the cause and ends the program with status 1.
    bool notify(QObject* receiver, QEvent* event) override;

    // Shows a critical message box with the cause of the exception being handled and returns the
    // exit status. Call only in a catch clause.
    static int reportError();
};
