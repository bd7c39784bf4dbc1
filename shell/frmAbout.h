#pragma once

#include "platform/qt/form.h"

class QPushButton;

// The splash window at the start, without a button, and the About window, with an OK button.
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
