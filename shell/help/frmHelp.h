#pragma once

#include "platform/qt/form.h"

class QTextEdit;

// Shows the help file. A file that is missing, unreadable or not rich text is reported in the
// text box itself, with its name and the cause.
class frmHelp : public Form {
    Q_OBJECT

public:
    explicit frmHelp(QWidget* owner);

private:
    void Form_Load();

    QTextEdit* rtb;
};
