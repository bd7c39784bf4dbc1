#pragma once

#include "platform/qt/form.h"

class QPushButton;

// The splash of the start, without a button, and the About window, with one.
class frmAbout : public Form {
    Q_OBJECT

public:
    enum class Purpose { Splash, About };
    frmAbout(QWidget* owner, Purpose purpose);

    void reject() override; // Escape is OK; the splash has none

private:
    void cmdOk_Click();

    QPushButton* cmdOk;
};
