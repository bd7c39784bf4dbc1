#pragma once

#include "platform/qt/form.h"

class QLineEdit;
class QPushButton;

// Asks what Buffer Fill writes and where. Sets FillConfirmed and FillByte and, on OK, FillStart and
// FillLength; the range that they describe is within the image.
class frmBufferFill : public Form {
    Q_OBJECT

public:
    explicit frmBufferFill(QWidget* owner);

private:
    void connectHandlers();
    void cmdOk_Click();

    QLineEdit* txtFillWith;
    QLineEdit* txtStart;
    QLineEdit* txtLength;
    QPushButton* cmdCancel;
    QPushButton* cmdOk;
};
