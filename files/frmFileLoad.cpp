#include "files/frmFileLoad.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "files/hex_file.h"
#include "platform/machine.h"
#include "platform/qt/controls.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

using namespace modFunc;

namespace {

constexpr int indicatorPixels = 22; // the option button's circle and the gap after it

QRadioButton* addOption(QWidget* frame, const char* name, const QString& text,
                        const TwipsRect& rect) {
    auto* option = laidOut(new QRadioButton(text, frame), name, rect);
    fitText(option, indicatorPixels);
    return option;
}

} // namespace

frmFileLoad::frmFileLoad(QWidget* owner)
    : Form(owner, "frmFileLoad", QString(), 4680, 2025, Frame::None) {
    state().FileCancelled = true; // unless OK is pressed
    auto* Frame1 = addFrame(this, "Frame1", tr("File Type:"), {120, 120, 1695, 1095});
    Option1 = addOption(Frame1, "Option1", tr("Intel Hex"), {120, 240, 1095, 255});
    Option2 = addOption(Frame1, "Option2", tr("Binary"), {120, 600, 975, 255});
    auto* Frame2 = addFrame(this, "Frame2", tr("Load Offset:"), {2040, 120, 2535, 1095});
    addLabel(Frame2, "Label1", tr("Buffer Address (HEX):"), {240, 240, 1575, 255});
    txtBuffer = addTextBox(Frame2, "txtBuffer", QStringLiteral("0"), {1800, 240, 615, 285});
    addLabel(Frame2, "Label2", tr("File Address (HEX):"), {240, 600, 1575, 255});
    txtFile = addTextBox(Frame2, "txtFile", QStringLiteral("0"), {1800, 600, 615, 285});
    cmdCancel = addButton(this, "cmdCancel", tr("Cancel"), {720, 1440, 1215, 375});
    cmdOk = addButton(this, "cmdOk", tr("OK"), {2640, 1440, 1215, 375});
    cmdOk->setDefault(true);
    txtBuffer->setAccessibleName(tr("Buffer Address (HEX)"));
    txtFile->setAccessibleName(tr("File Address (HEX)"));
    followInTabOrder({Option1, Option2, txtBuffer, txtFile, cmdCancel, cmdOk});

    QRadioButton* proposed =
        LooksLikeHexFile(platform::machine().cdia.FileName) ? Option1 : Option2;
    proposed->setChecked(true);
    proposed->setFocus();
    connectHandlers();
}

void frmFileLoad::connectHandlers() {
    connect(cmdOk, &QPushButton::clicked, this, &frmFileLoad::cmdOk_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmFileLoad::cmdOk_Click() {
    State& s = state();
    s.FileIsHex = Option1->isChecked();
    s.BufferAddress = TolerantHex(txtBuffer->text().toStdString());
    s.FileAddress = TolerantHex(txtFile->text().toStdString());
    s.FileCancelled = false;
    accept();
}
