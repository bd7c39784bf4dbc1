#include "functions/frmFunction.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "link/exchange.h"
#include "platform/qt/accessible.h"
#include "platform/qt/controls.h"
#include "platform/qt/list.h"
#include "platform/qt/stay_awake.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <utility>

using namespace modFunc;

namespace {

constexpr TwipsRect track{1680, 2760, 3015, 135};

} // namespace

frmFunction::frmFunction(QWidget* owner)
    : Form(owner, "frmFunction", tr("Function"), 6300, 3330, Frame::Title) {
    listFunction = addList(this, "listFunction", tr("Function"), {120, 240, 1455, 2400});
    for (const DeviceRun::Function& function : DeviceRun::functions)
        listFunction->addItem(QString::fromLatin1(function.name));
    listFunction->setCurrentRow(0);

    auto* Frame1 = addFrame(this, "Frame1", tr("Message:"), {1680, 120, 3015, 2535}, lightGround());
    for (std::size_t line = 0; line < lblMsg.size(); ++line) {
        const int index = static_cast<int>(line);
        lblMsg[line] = addLabel(Frame1, qPrintable(QStringLiteral("lblMsg(%1)").arg(index)),
                                QString(), {120, 240 + 240 * index, 2775, 255});
        setColour(lblMsg[line], QPalette::WindowText, QColor(0, 0, 255));
    }

    addChipRange();
    shpBG = addRectangle(this, "shpBG", Qt::white, track);
    shpProgress = addRectangle(this, "shpProgress", QColor(192, 0, 0), track);
    shpProgress->resize(0, shpProgress->height());
    progress_ = new ProgressValue(shpBG, tr("Progress"));
    lblProgress = addLabel(this, "lblProgress", QStringLiteral("0%"), {2880, 3000, 615, 255},
                           fixedFont(points9_75, QFont::Bold));
    lblProgress->setAlignment(Qt::AlignCenter);
    cmdRun = addButton(this, "cmdRun", tr("Run"), {240, 2760, 1095, 375});
    cmdRun->setDefault(true);
    cmdRun->setEnabled(state().ProgrammerFound);
    cmdClose = addButton(this, "cmdClose", tr("Close"), {5040, 2760, 975, 375});
    followInTabOrder(
        {listFunction, txtChipStart, txtChipEnd, txtBufferStart, txtBufferEnd, cmdRun, cmdClose});
    listFunction->setFocus();
    connectHandlers();
}

// The four text boxes are for display only: every function works on the whole device.
void frmFunction::addChipRange() {
    const QString start = QString::fromStdString(HexWord(0));
    const QString end = QString::fromStdString(HexWord(selectedDevice().Size));
    struct Row {
        QLineEdit** textBox;
        const char* name;
        const char* label;
        QString caption;
        int labelWidth;
        QString text;
    };
    const Row rows[] = {
        {&txtChipStart, "txtChipStart", "Label1", tr("Chip Start"), 1095, start},
        {&txtChipEnd, "txtChipEnd", "Label2", tr("Chip End"), 855, end},
        {&txtBufferStart, "txtBufferStart", "Label3", tr("Buffer Start"), 1095, start},
        {&txtBufferEnd, "txtBufferEnd", "Label4", tr("Buffer End"), 975, end},
    };
    int top = 240;
    for (const Row& row : rows) {
        addLabel(this, row.label, row.caption, {5040, top, row.labelWidth, 255});
        *row.textBox = addTextBox(this, row.name, row.text, {5040, top + 240, 1095, 285});
        (*row.textBox)->setAccessibleName(row.caption);
        top += 600;
    }
}

void frmFunction::connectHandlers() {
    connect(cmdRun, &QPushButton::clicked, this, &frmFunction::cmdRun_Click);
    connect(cmdClose, &QPushButton::clicked, this, &frmFunction::cmdClose_Click);
}

void frmFunction::cmdRun_Click() {
    DeviceRun run(*this);
    {
        const StayAwake awake(tr("A chip is in use"));
        run.Run(highlightedRow(listFunction));
    }
    if (QApplication::overrideCursor())
        QApplication::restoreOverrideCursor();
    callUser();
    if (closeRequested_)
        done(Rejected);
}

void frmFunction::cmdClose_Click() {
    done(Rejected);
}

void frmFunction::reject() {
    cmdClose->click();
}

void frmFunction::closeEvent(QCloseEvent* event) {
    if (CurrentLinkUser() == LinkUser::Run) {
        closeRequested_ = true;
        event->ignore();
        return;
    }
    Form::closeEvent(event);
}

void frmFunction::ShowLine(int line, const std::string& text) {
    QLabel* label = lblMsg.at(static_cast<std::size_t>(line));
    showText(label, QString::fromStdString(text));
    announce(parentWidget(), label->text()); // this window may be about to close
}

// Most blocks of a large device do not change the percentage. For these, nothing is drawn.
void frmFunction::ShowProgress(int percent) {
    if (std::exchange(shownPercent_, percent) == percent)
        return;
    lblProgress->setText(QStringLiteral("%1%").arg(percent));
    progress_->setPercent(percent);
    const float width = static_cast<float>(percent) * static_cast<float>(shpBG->width()) / 100.0F;
    shpProgress->resize(qRound(width), shpProgress->height());
}

void frmFunction::EnableRun(bool enabled) {
    cmdRun->setEnabled(enabled);
}

void frmFunction::EnableClose(bool enabled) {
    cmdClose->setEnabled(enabled);
}

void frmFunction::Close() {
    done(Accepted);
    QApplication::setOverrideCursor(Qt::WaitCursor); // until the run has ended
}
