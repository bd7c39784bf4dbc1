#include "shell/help/frmHelp.h"

#include "app/startup.h"
#include "platform/file_error.h"
#include "platform/files.h"
#include "platform/qt/controls.h"
#include "shell/help/rich_text_reader.h"

#include <QTextEdit>

frmHelp::frmHelp(QWidget* owner)
    : Form(owner, "frmHelp", tr("QUORVEN Help"), 10380, 5625, Frame::TitleAndCloseBox),
      rtb(laidOut(new QTextEdit(this), "rtb", {120, 120, 10095, 5295})) {
    rtb->setAccessibleName(tr("Help"));
    rtb->setFont(sansFont(points12)); // for the window's own messages
    rtb->setReadOnly(true);
    rtb->setUndoRedoEnabled(false);
    // Black on white on any desktop: the colours in a guide are chosen for paper.
    setColour(rtb, QPalette::Base, Qt::white);
    setColour(rtb, QPalette::Text, Qt::black);
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
