#pragma once

#include "platform/qt/form.h"

class RichTextBox;

// Shows the help file.
class frmHelp : public Form {
    Q_OBJECT

public:
    explicit frmHelp(QWidget* owner);

private:
    void Form_Load();

    RichTextBox* rtb;
};
