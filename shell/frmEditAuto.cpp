#include "shell/frmEditAuto.h"

#include "app/startup.h"
#include "app/state.h"
#include "functions/device_run.h"
#include "platform/qt/controls.h"
#include "platform/qt/list.h"

#include <QListWidget>
#include <QPushButton>

using namespace modFunc;

namespace {

constexpr int codeRole = Qt::UserRole; // a row's function code

void addFunction(QListWidget* list, int code) {
    const char* const name = DeviceRun::functions.at(static_cast<std::size_t>(code)).name;
    auto* row = new QListWidgetItem(QString::fromLatin1(name), list);
    row->setData(codeRole, code);
}

} // namespace

frmEditAuto::frmEditAuto(QWidget* owner)
    : Form(owner, "frmEditAuto", tr("Edit Auto"), 4665, 2175, Frame::TitleAndCloseBox) {
    lstIn = addList(this, "lstIn", tr("Functions"), {120, 120, 1695, 1425});
    lstOut = addList(this, "lstOut", tr("Auto sequence"), {2760, 120, 1695, 1425});
    cmdMoveRight = addButton(this, "cmdMoveRight", tr(">"), {2040, 240, 495, 255});
    cmdMoveLeft = addButton(this, "cmdMoveLeft", tr("<"), {2040, 600, 495, 255});
    cmdMoveLeftAll = addButton(this, "cmdMoveLeftAll", tr("<<"), {2040, 960, 495, 255});
    cmdCancel = addButton(this, "cmdCancel", tr("Cancel"), {600, 1680, 975, 375});
    cmdOk = addButton(this, "cmdOk", tr("OK"), {3120, 1680, 975, 375});
    cmdOk->setDefault(true);
    cmdMoveRight->setAccessibleName(tr("Add"));
    cmdMoveLeft->setAccessibleName(tr("Remove"));
    cmdMoveLeftAll->setAccessibleName(tr("Remove all"));
    followInTabOrder({lstIn, lstOut, cmdOk, cmdCancel, cmdMoveRight, cmdMoveLeft, cmdMoveLeftAll});

    for (std::size_t code = 0; code < DeviceRun::functions.size(); ++code)
        if (DeviceRun::functions[code].inAutoEditor)
            addFunction(lstIn, static_cast<int>(code));
    lstIn->setCurrentRow(0);
    const State& s = state();
    for (int entry = 1; entry <= s.AutoCount; ++entry) {
        const int code = s.AutoList.at(static_cast<std::size_t>(entry));
        if (code >= 0 && code < static_cast<int>(FunctionCode::Auto))
            addFunction(lstOut, code);
    }
    enableArrows();
    connectHandlers();
}

void frmEditAuto::connectHandlers() {
    connect(cmdMoveRight, &QPushButton::clicked, this, &frmEditAuto::cmdMoveRight_Click);
    connect(cmdMoveLeft, &QPushButton::clicked, this, &frmEditAuto::cmdMoveLeft_Click);
    connect(cmdMoveLeftAll, &QPushButton::clicked, this, &frmEditAuto::cmdMoveLeftAll_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdOk, &QPushButton::clicked, this, &frmEditAuto::cmdOk_Click);
}

void frmEditAuto::enableArrows() {
    cmdMoveRight->setEnabled(lstOut->count() < lastAutoEntry);
    cmdMoveLeft->setEnabled(lstOut->count() > 0);
    cmdMoveLeftAll->setEnabled(lstOut->count() > 0);
}

void frmEditAuto::cmdMoveRight_Click() {
    if (const auto* row = lstIn->item(highlightedRow(lstIn)))
        addFunction(lstOut, row->data(codeRole).toInt());
    enableArrows();
}

void frmEditAuto::cmdMoveLeft_Click() {
    delete lstOut->takeItem(highlightedRow(lstOut));
    lstOut->clearSelection();
    enableArrows();
}

void frmEditAuto::cmdMoveLeftAll_Click() {
    lstOut->clear();
    enableArrows();
}

void frmEditAuto::cmdOk_Click() {
    State& s = state();
    s.AutoCount = static_cast<std::int16_t>(lstOut->count());
    for (int row = 0; row < s.AutoCount; ++row)
        s.AutoList.at(static_cast<std::size_t>(row) + 1) =
            static_cast<std::int16_t>(lstOut->item(row)->data(codeRole).toInt());
    WriteAutoFile();
    accept();
}
