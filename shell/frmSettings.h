#pragma once

#include "platform/qt/form.h"

class QComboBox;
class QPushButton;

// Selects the serial port. OK sets ComPort, 1..16. The caller runs discovery afterwards, even after
// Cancel.
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
