#pragma once

#include <QApplication>

// The application, with the one handler of errors that nothing else has handled.
class Application : public QApplication {
    Q_OBJECT

public:
    Application(int& argc, char** argv);

    // An error that escapes an event handler: the crash frames are sent, the cause is reported and
    // the program ends with status 1.
    bool notify(QObject* receiver, QEvent* event) override;

    // Shows the cause of the error being handled in a critical message box; returns the exit
    // status. To be called in a catch clause.
    static int reportError();
};
