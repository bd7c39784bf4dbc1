#include "buffer/frmBuffer.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "platform/qt/controls.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalBlocker>
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

// The way back.
int pageIndex(int documentPosition) {
    constexpr int documentHeading = headingLength - 1;
    constexpr int documentLine = lineLength - 1;
    if (documentPosition < documentHeading)
        return documentPosition;
    return documentPosition + 1 + (documentPosition - documentHeading) / documentLine;
}

// The page's text as the box takes it. Character 127 has no glyph in today's fonts and would upset
// the columns: it shows as the house that stood there on old screens.
QString shown(const std::string& text) {
    QString page = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    page.remove(u'\r');
    page.chop(1);
    page.replace(QChar(127), QChar(0x2302));
    return page;
}

int keyCodeFor(int key) {
    switch (key) {
    case Qt::Key_Left:
        return KeyLeft;
    case Qt::Key_Up:
        return KeyUp;
    case Qt::Key_Right:
        return KeyRight;
    case Qt::Key_Down:
        return KeyDown;
    default:
        return 0;
    }
}

// White on navy, in the middle.
QLabel* addHexLabel(QWidget* parent, const char* name, const TwipsRect& rect) {
    QLabel* label =
        addLabel(parent, name, QStringLiteral("0000"), rect, fixedFont(points9_75, QFont::Bold));
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
    constexpr int textGap = 3;
    document()->setDocumentMargin(0);
    setViewportMargins(textGap, 0, 0, 0);
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

void PageBox::showPage(const std::string& text) {
    const int lineHeight = (height() - 2 * frameWidth()) / shownLines;
    QTextBlockFormat line;
    line.setLineHeight(lineHeight, QTextBlockFormat::FixedHeight);
    QTextCursor all(document());
    all.beginEditBlock();
    all.select(QTextCursor::Document);
    all.setBlockFormat(line);
    all.insertText(shown(text));
    all.endEditBlock();
}

void PageBox::selectCharacter(int index) {
    QTextCursor caret(document());
    caret.setPosition(documentPosition(index));
    caret.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    setTextCursor(caret);
}

// Modifiers are not looked at for the arrows; a letter with Ctrl or Alt is no character.
void PageBox::keyPressEvent(QKeyEvent* event) {
    Q_EMIT keyDown(keyCodeFor(event->key()));
    const bool command =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (const QString text = event->text(); !command && text.size() == 1)
        Q_EMIT keyPress(text.at(0).toLatin1());
    event->setAccepted(keyCodeFor(event->key()) != 0);
}

// The character whose cell was hit, not the gap that is nearest.
void PageBox::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    QTextCursor hit = cursorForPosition(event->pos());
    if (cursorRect(hit).left() > event->pos().x())
        hit.movePosition(QTextCursor::PreviousCharacter);
    Q_EMIT clicked(pageIndex(hit.position()));
}

void PageBox::wheelEvent(QWheelEvent* event) {
    QCoreApplication::sendEvent(wheelBar, event);
}

frmBuffer::frmBuffer(QWidget* parent) : QWidget(parent), editor_(selectedDevice().Size) {
    setObjectName(QStringLiteral("frmBuffer"));
    setWindowTitle(QStringLiteral("Buffer"));
    setFixedSize(pixels(10215), pixels(4410));

    txtBuffer = new PageBox(this);
    txtBuffer->setObjectName(QStringLiteral("txtBuffer"));
    txtBuffer->setGeometry(TwipsRect{120, 360, 9975, 3615}.inPixels());
    txtBuffer->setAccessibleName(tr("Buffer"));
    vsc = new QScrollBar(Qt::Vertical, this);
    vsc->setObjectName(QStringLiteral("vsc"));
    vsc->setGeometry(TwipsRect{9840, 360, 255, 3615}.inPixels());
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

    vsc->setRange(0, editor_.LastLine());
    connectHandlers();
    UpdateBuffer();
}

void frmBuffer::connectHandlers() {
    connect(txtBuffer, &PageBox::clicked, this, &frmBuffer::txtBuffer_Click);
    connect(txtBuffer, &PageBox::keyDown, this, &frmBuffer::txtBuffer_KeyDown);
    connect(txtBuffer, &PageBox::keyPress, this, &frmBuffer::txtBuffer_KeyPress);
    connect(vsc, &QScrollBar::valueChanged, this, &frmBuffer::vsc_Change);
}

void frmBuffer::UpdateBuffer() {
    editor_.Home();
    showPage();
}

void frmBuffer::txtBuffer_Click(int index) {
    editor_.Click(index);
    showCaret();
}

void frmBuffer::txtBuffer_KeyDown(int keyCode) {
    const std::int32_t topLine = editor_.TopLine();
    editor_.Key(keyCode);
    if (editor_.TopLine() != topLine)
        showPage();
    else
        showCaret();
}

void frmBuffer::txtBuffer_KeyPress(char character) {
    if (editor_.Type(character))
        showPage();
}

void frmBuffer::vsc_Change(int value) {
    editor_.ScrollTo(value);
    showPage();
}

void frmBuffer::showPage() {
    const QSignalBlocker quiet(vsc); // its handler would take the caret back to the page's start
    vsc->setValue(editor_.TopLine());
    txtBuffer->showPage(PageText(editor_.TopLine()));
    showCaret();
    ComputeCheckSum();
    lblCheckSum->setText(QString::fromStdString(HexWord(state().BufferCheckSum)));
}

void frmBuffer::showCaret() {
    txtBuffer->selectCharacter(editor_.CaretPos());
    const QString address = QString::fromStdString(HexWord(editor_.Address()));
    lblAddress->setText(address);
    txtBuffer->setAccessibleDescription(tr("Address %1").arg(address));
}
