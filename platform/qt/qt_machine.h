// The Qt implementation of the machine: timers, event queue, message box, status bar and file
// dialog.
#pragma once

#include "platform/machine.h"
#include "platform/qt/qt_serial_port.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

class QtTimer final : public platform::Timer {
public:
    QtTimer();
    void setInterval(int milliseconds) override;
    void setEnabled(bool enabled) override;

private:
    QTimer timer_;
};

struct QtEventQueue final : platform::EventQueue {
    void Yield() override;
};

struct QtMessageBox final : platform::MessageBox {
    void Show(const std::string& title, const std::string& text, Icon icon) override;
};

// Passes texts to the main window once it exists.
struct QtStatusBar final : platform::StatusBar {
    void setPanel(int panel, const std::string& text) override;
    std::function<void(int panel, const QString& text)> Show;
};

struct QtFileDialog final : platform::FileDialog {
    bool ShowOpen() override;
    bool ShowSave() override;
    QPointer<QWidget> owner;

private:
    bool show(bool saving);
};

// All of the above and the serial port in one object. While this object exists, it is the machine
// in use.
class QtMachine {
public:
    // `dataFolder` is the folder in which symbolic links to ports, named com<n>, are looked up.
    explicit QtMachine(std::string dataFolder);
    QtMachine(const QtMachine&) = delete;
    QtMachine& operator=(const QtMachine&) = delete;
    ~QtMachine();

    QtSerialPort cm;
    QtTimer totmr;
    QtTimer tmrWait;
    QtEventQueue events;
    QtMessageBox msgBox;
    QtStatusBar sbar;
    QtFileDialog cdia;

private:
    platform::Machine machine_{cm, totmr, tmrWait, events, msgBox, sbar, cdia};
};
