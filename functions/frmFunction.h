#pragma once

#include "functions/device_run.h"
#include "platform/qt/form.h"

#include <array>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class ProgressValue;

// Starts a run and shows its progress. After a Read has closed this window, the run continues; this
// object lives until the run has ended.
class frmFunction : public Form, private modFunc::RunWindow {
    Q_OBJECT

public:
    explicit frmFunction(QWidget* owner);

    void reject() override; // Escape and close requests press cmdClose if it is enabled

protected:
    // A close request during a run is carried out after the run's last frame.
    void closeEvent(QCloseEvent* event) override;

private:
    void addChipRange();
    void connectHandlers();
    void cmdRun_Click();
    void cmdClose_Click();

    void ShowLine(int line, const std::string& text) override;
    void ShowProgress(int percent) override;
    void EnableRun(bool enabled) override;
    void EnableClose(bool enabled) override;
    void Close() override;

    QListWidget* listFunction;
    std::array<QLabel*, modFunc::messageLines> lblMsg{};
    QLineEdit* txtChipStart;
    QLineEdit* txtChipEnd;
    QLineEdit* txtBufferStart;
    QLineEdit* txtBufferEnd;
    QWidget* shpBG;
    QWidget* shpProgress;
    ProgressValue* progress_;
    QLabel* lblProgress;
    QPushButton* cmdRun;
    QPushButton* cmdClose;
    int shownPercent_ = 0;
    bool closeRequested_ = false; // a close request has arrived during the run
};
