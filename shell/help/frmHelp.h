#pragma once

#include "platform/qt/form.h"

class QTextEdit;

// Shows the help file. If the file is missing, unreadable or not rich text, the text box shows the
// file's name and the cause instead.
class frmHelp : public Form {
    Q_OBJECT

public:
    explicit frmHelp(QWidget* owner);

private:
    void Form_Load();

    QTextEdit* rtb;
};
