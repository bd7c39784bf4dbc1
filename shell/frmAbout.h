#pragma once

#include "platform/qt/form.h"

class QPushButton;

// The splash window, which is shown when the program starts and has no button, and the About
// window, which has an OK button.
class frmAbout : public Form {
    Q_OBJECT

public:
    enum class Purpose { Splash, About };
    frmAbout(QWidget* owner, Purpose purpose);

    void reject() override; // Escape acts as OK; the splash ignores it

private:
    void cmdOk_Click();

    QPushButton* cmdOk;
};
