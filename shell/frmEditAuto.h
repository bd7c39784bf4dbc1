#pragma once

#include "platform/qt/form.h"

class QListWidget;
class QPushButton;

// Edits the Auto sequence. OK stores it in AutoCount and AutoList and writes auto.cfg at once.
class frmEditAuto : public Form {
    Q_OBJECT

public:
    explicit frmEditAuto(QWidget* owner);

private:
    void connectHandlers();
    void enableArrows();
    void cmdMoveRight_Click();
    void cmdMoveLeft_Click();
    void cmdMoveLeftAll_Click();
    void cmdOk_Click();

    QListWidget* lstIn;  // the available functions
    QListWidget* lstOut; // the sequence, in execution order
    QPushButton* cmdMoveRight;
    QPushButton* cmdMoveLeft;
    QPushButton* cmdMoveLeftAll;
    QPushButton* cmdCancel;
    QPushButton* cmdOk;
};
