#pragma once

#include "buffer/buffer_view.h"
#include "platform/qt/qt_machine.h"

#include <QMainWindow>
#include <QPointer>

#include <array>

class QLabel;
class QMdiArea;
class QMdiSubWindow;

// The main window: menus, status bar, and the hex view as its only child window.
class mdiMain : public QMainWindow, private modFunc::BufferView {
    Q_OBJECT

public:
    explicit mdiMain(QtMachine& machine);
    ~mdiMain() override;

    // Call before the window is shown. Shows the splash window, clears the image, sets up the port
    // and runs discovery.
    void Load();

protected:
    // Writes the settings and ends the program. While a run or discovery uses the link, the close
    // request is kept and carried out afterwards.
    void closeEvent(QCloseEvent* event) override;

private:
    void addMenus();
    void addStatusBar();
    void connectHandlers();
    void closeIfRequested();

    void FileLoad_Click();
    void FileSave_Click();
    void transferFile(bool (platform::FileDialog::*ask)(), void (*hex)(), void (*binary)());
    void FileExit_Click();
    void BufferEdit_Click();
    void BufferClear_Click();
    void BufferFill_Click();
    void DeviceSelect_Click();
    void DeviceFunction_Click();
    void OptionsEditAuto_Click();
    void OptionsSettings_Click();
    void HelpContents_Click();
    void HelpAbout_Click();

    void Reopen() override;

    QtMachine& machine_;
    QMdiArea* area_;
    QPointer<QMdiSubWindow> bufferWindow_; // contains frmBuffer; null when closed
    std::array<QLabel*, 4> panels_{};
    bool closeRequested_ = false;
};
