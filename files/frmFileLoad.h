#pragma once

#include "platform/qt/form.h"

class QLineEdit;
class QPushButton;
class QRadioButton;

// Asks for the file type and the offsets before every load and save. Sets FileCancelled and, on OK,
// FileIsHex, BufferAddress and FileAddress in the shared state.
class frmFileLoad : public Form {
    Q_OBJECT

public:
    explicit frmFileLoad(QWidget* owner);

private:
    void connectHandlers();
    void cmdOk_Click();

    QRadioButton* Option1; // Intel HEX
    QRadioButton* Option2; // binary
    QLineEdit* txtBuffer;
    QLineEdit* txtFile;
    QPushButton* cmdCancel;
    QPushButton* cmdOk;
};
