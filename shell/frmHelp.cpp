#include "shell/frmHelp.h"

#include "app/startup.h"
#include "platform/qt/fonts.h"
#include "platform/qt/rich_text_box.h"
#include "platform/qt/twips.h"

frmHelp::frmHelp(QWidget* owner)
    : Form(owner, "frmHelp", tr("QUORVEN Help"), 10380, 5625, Frame::TitleAndCloseBox),
      rtb(new RichTextBox(this)) {
    rtb->setObjectName(QStringLiteral("rtb"));
    rtb->setAccessibleName(tr("Help"));
    rtb->setGeometry(TwipsRect{120, 120, 10095, 5295}.inPixels());
    rtb->setFont(sansFont(points12)); // of what the window itself has to say
    Form_Load();
}

void frmHelp::Form_Load() {
    rtb->LoadFile(modFunc::DataFile("quorven help.rtf"));
}
