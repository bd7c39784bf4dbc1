#include "shell/help/frmHelp.h"

#include "app/startup.h"
#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/qt/fonts.h"
#include "platform/qt/twips.h"
#include "shell/help/rich_text_reader.h"

#include <QTextEdit>

frmHelp::frmHelp(QWidget* owner)
    : Form(owner, "frmHelp", tr("QUORVEN Help"), 10380, 5625, Frame::TitleAndCloseBox),
      rtb(new QTextEdit(this)) {
    rtb->setObjectName(QStringLiteral("rtb"));
    rtb->setAccessibleName(tr("Help"));
    rtb->setGeometry(TwipsRect{120, 120, 10095, 5295}.inPixels());
    rtb->setFont(sansFont(points12)); // for the window's own messages
    rtb->setReadOnly(true);
    rtb->setUndoRedoEnabled(false);
    // Black on white on any desktop: the colours in a help file are chosen for paper.
    QPalette colours = rtb->palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    rtb->setPalette(colours);
    Form_Load();
}

void frmHelp::Form_Load() {
    const std::string path = modFunc::DataFile("quorven help.rtf");
    try {
        const std::string file = platform::ReadWholeFile(path);
        if (!RichTextReader::Read(file, *rtb->document(), devicePixelRatioF()))
            throw platform::FileError(path + ": the file is not a rich text (RTF) file.");
    } catch (const platform::FileError& error) {
        rtb->setPlainText(QString::fromUtf8(error.what()));
    }
    rtb->moveCursor(QTextCursor::Start); // inserting text moved the cursor to the end
}
