#include "buffer/frmBufferFill.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/image.h"
#include "platform/qt/controls.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace modFunc;

frmBufferFill::frmBufferFill(QWidget* owner)
    : Form(owner, "frmBufferFill", tr("Buffer Fill"), 3195, 1695, Frame::TitleAndCloseBox) {
    // The buttons come first in the tab order, so they are created first.
    cmdCancel = addButton(this, "cmdCancel", tr("Cancel"), {360, 1200, 1095, 375});
    cmdOk = addButton(this, "cmdOk", tr("OK"), {1680, 1200, 1095, 375});
    cmdOk->setDefault(true);
    struct Row {
        QLineEdit** textBox;
        const char* name;
        const char* label;
        const char* unit;
        QString caption;
        QString text;
        int digits;
    };
    const Row rows[] = {
        {&txtFillWith, "txtFillWith", "Label1", "Label2", tr("Fill with:"), QStringLiteral("FF"),
         2},
        {&txtStart, "txtStart", "Label3", "Label5", tr("Start:"), QStringLiteral("0000"), 4},
        {&txtLength, "txtLength", "Label4", "Label6", tr("Length:"), QStringLiteral("1"), 4},
    };
    int top = 120;
    for (const Row& row : rows) {
        addLabel(this, row.label, row.caption, {240, top, 735, 255})
            ->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        *row.textBox = addTextBox(this, row.name, row.text, {1320, top, 615, 285});
        (*row.textBox)->setMaxLength(row.digits);
        (*row.textBox)->setAccessibleName(row.caption.chopped(1));
        addLabel(this, row.unit, QStringLiteral("H"), {2040, top, 255, 255});
        top += 360;
    }
    txtFillWith->setFocus(); // so that the user can type at once
    txtFillWith->selectAll();

    state().FillConfirmed = false;
    state().FillByte = erasedByte;
    connectHandlers();
}

void frmBufferFill::connectHandlers() {
    connect(cmdOk, &QPushButton::clicked, this, &frmBufferFill::cmdOk_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmBufferFill::cmdOk_Click() {
    const std::string with = txtFillWith->text().toStdString();
    const auto start = StrictHex(txtStart->text().toStdString());
    const auto length = StrictHex(txtLength->text().toStdString());
    if (!start)
        return rejectInput(txtStart,
                           "The start is not a hexadecimal number of one to four digits.");
    if (!length)
        return rejectInput(txtLength,
                           "The length is not a hexadecimal number of one to four digits.");
    if (*start + *length - 1 > lastBufferIndex)
        return rejectInput(txtLength, "The range ends past the end of the buffer. From address " +
                                          HexWord(*start) + "H, the maximum length is " +
                                          HexDigits(lastBufferIndex + 1 - *start) + "H.");
    State& s = state();
    if (!with.empty())
        s.FillByte = static_cast<std::uint8_t>(TolerantHex(with));
    s.FillStart = *start;
    s.FillLength = *length;
    s.FillConfirmed = true;
    accept();
}
