#include "shell/frmSettings.h"

#include "app/state.h"
#include "platform/port_names.h"
#include "platform/qt/controls.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

using namespace modFunc;
using platform::portCount;

frmSettings::frmSettings(QWidget* owner)
    : Form(owner, "frmSettings", tr("Settings"), 2535, 1605, Frame::TitleAndCloseBox) {
    // The buttons are created first so that they come first in the tab order.
    cmdCancel = addButton(this, "cmdCancel", tr("Cancel"), {120, 1080, 975, 375});
    cmdOk = addButton(this, "cmdOk", tr("OK"), {1200, 1080, 975, 375});
    cmdOk->setDefault(true);
    auto* Frame1 = addFrame(this, "Frame1", tr("Select Port:"), {120, 120, 2055, 855});
    cmbCOM = laidOut(new QComboBox(Frame1), "cmbCOM", {360, 360, 1335, 315});
    cmbCOM->setAccessibleName(tr("Port"));
    cmbCOM->setEditable(true);
    cmbCOM->setInsertPolicy(QComboBox::NoInsert); // typed text is not added to the list
    cmbCOM->setCompleter(nullptr);                // typed text is not completed
    cmbCOM->setMaxVisibleItems(portCount);
    for (int port = 1; port <= portCount; ++port)
        cmbCOM->addItem(QStringLiteral("COM%1").arg(port));
    const int entry = state().ComPort - 1; // ComPort may be any number in the settings file
    cmbCOM->setCurrentIndex(entry >= 0 && entry < portCount ? entry : 0);
    cmbCOM->setFocus();
    connectHandlers();
}

void frmSettings::connectHandlers() {
    connect(cmdOk, &QPushButton::clicked, this, &frmSettings::cmdOk_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

// Uses the text, not the list's current entry: the text may have been typed.
void frmSettings::cmdOk_Click() {
    const QString text = cmbCOM->currentText();
    const int entry = cmbCOM->findText(text, Qt::MatchFixedString); // ignores case
    if (entry < 0)
        return rejectInput(cmbCOM->lineEdit(),
                           "\"" + text.toStdString() +
                               "\" is not a port. Choose a port from COM1 to COM16.");
    state().ComPort = static_cast<std::int16_t>(entry + 1);
    accept();
}
