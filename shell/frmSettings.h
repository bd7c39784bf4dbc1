#pragma once

#include "platform/qt/form.h"

class QComboBox;
class QPushButton;

// The serial port. OK sets ComPort, 1..16. Discovery follows, however the window was left.
class frmSettings : public Form {
    Q_OBJECT

public:
    explicit frmSettings(QWidget* owner);

private:
    void connectHandlers();
    void cmdOk_Click();

    QComboBox* cmbCOM;
    QPushButton* cmdCancel;
    QPushButton* cmdOk;
};
