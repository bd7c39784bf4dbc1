#include "buffer/frmBuffer.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "platform/qt/form.h"

#include <QCoreApplication>
#include <QLabel>
#include <QScrollBar>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QWheelEvent>

using namespace modFunc;

namespace {

constexpr int shownLines = pageLines + 1; // with the heading

// Position in the document, where a line end is one character, of an index in the page's text.
int documentPosition(int index) {
    if (index < headingLength)
        return index;
    return index - 1 - (index - headingLength) / lineLength;
}

// White on navy, in the middle.
QLabel* addHexLabel(QWidget* parent, const char* name, const Place& place) {
    QLabel* label =
        addLabel(parent, name, QStringLiteral("0000"), place, fixedFont(points9_75, QFont::Bold));
    label->setAlignment(Qt::AlignCenter);
    setTextColour(label, Qt::white);
    QPalette colours = label->palette();
    colours.setColor(QPalette::Window, QColor(0, 0, 128));
    label->setPalette(colours);
    label->setAutoFillBackground(true);
    return label;
}

} // namespace

PageBox::PageBox(QWidget* parent) : QTextEdit(parent) {
    setFont(fixedFont(points9_75, QFont::Bold));
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setFocusPolicy(Qt::StrongFocus);
    setLineWrapMode(QTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setCursor(Qt::ArrowCursor);
    document()->setDocumentMargin(0);
    // The caret is seen whether or not the box has the focus.
    QPalette colours = palette();
    for (const auto group : {QPalette::Inactive, QPalette::Disabled}) {
        colours.setColor(group, QPalette::Highlight,
                         colours.color(QPalette::Active, QPalette::Highlight));
        colours.setColor(group, QPalette::HighlightedText,
                         colours.color(QPalette::Active, QPalette::HighlightedText));
    }
    setPalette(colours);
}

void PageBox::showPage(const QString& text) {
    QTextBlockFormat line;
    line.setLineHeight((height() - 2 * frameWidth()) / shownLines, QTextBlockFormat::FixedHeight);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.setBlockFormat(line);
    all.insertText(text);
}

void PageBox::selectCharacter(int index) {
    QTextCursor caret(document());
    caret.setPosition(documentPosition(index));
    caret.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    setTextCursor(caret);
}

void PageBox::wheelEvent(QWheelEvent* event) {
    QCoreApplication::sendEvent(wheelBar, event);
}

frmBuffer::frmBuffer(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmBuffer"));
    setWindowTitle(QStringLiteral("Buffer"));
    setFixedSize(pixels(10215), pixels(4410));

    txtBuffer = new PageBox(this);
    txtBuffer->setObjectName(QStringLiteral("txtBuffer"));
    txtBuffer->setGeometry(Place{120, 360, 9975, 3615}.rect());
    txtBuffer->setAccessibleName(tr("Buffer"));
    vsc = new QScrollBar(Qt::Vertical, this);
    vsc->setObjectName(QStringLiteral("vsc"));
    vsc->setGeometry(Place{9840, 360, 255, 3615}.rect());
    vsc->setAccessibleName(tr("Buffer line"));
    vsc->setFocusPolicy(Qt::StrongFocus);
    vsc->setSingleStep(1);
    vsc->setPageStep(1);
    vsc->setTracking(false); // the page moves when the thumb is released
    txtBuffer->wheelBar = vsc;
    addLabel(this, "Label1", tr("Address:"), {120, 4080, 615, 255});
    lblAddress = addHexLabel(this, "lblAddress", {840, 4080, 615, 255});
    addLabel(this, "Label2", tr("CheckSum:"), {1920, 4080, 855, 255});
    lblCheckSum = addHexLabel(this, "lblCheckSum", {2880, 4080, 615, 255});
    followInTabOrder({txtBuffer, vsc});
    setFocusProxy(txtBuffer);

    vsc->setRange(0, LastTopLine(selectedDevice().Size));
    connectHandlers();
    UpdateBuffer();
}

void frmBuffer::connectHandlers() {
    connect(vsc, &QScrollBar::valueChanged, this, &frmBuffer::vsc_Change);
}

void frmBuffer::vsc_Change(int value) {
    TopLine = value;
    UpdateBuffer();
}

void frmBuffer::UpdateBuffer() {
    txtBuffer->showPage(QString::fromStdString(PageText(TopLine)).remove(u'\r').chopped(1));
    CaretPos = firstDigit;
    txtBuffer->selectCharacter(CaretPos);
    lblAddress->setText(QString::fromStdString(HexWord(TopLine * lineBytes)));
    ComputeCheckSum();
    lblCheckSum->setText(QString::fromStdString(HexWord(state().BufferCheckSum)));
}
