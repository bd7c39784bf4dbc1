#pragma once

#include <QApplication>

#include <exception>

// The application, with the one place where errors end that nothing else has handled.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);

    // An error that escapes an event handler is reported and ends the program with status 1.
    bool notify(QObject* receiver, QEvent* event) override;

    // Shows the cause in a critical message box; returns the exit status.
    static int reportError(const std::exception& error);
};
