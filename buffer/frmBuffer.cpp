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
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QWheelEvent>

using namespace modFunc;

namespace {

constexpr int shownLines = pageLines + 1; // including the heading

// The page's text as the text box shows it. Character 127 has no glyph in current fonts and would
// shift the columns, so it is shown as a house (U+2302), as on old screens.
QString shown(const std::string& text) {
    QString page = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    page.remove(u'\r');
    page.chop(1);
    page.replace(QChar(127), QChar(0x2302));
    return page;
}

HexEditor::Key editorKey(int key) {
    switch (key) {
    case Qt::Key_Left:
        return HexEditor::Key::Left;
    case Qt::Key_Up:
        return HexEditor::Key::Up;
    case Qt::Key_Right:
        return HexEditor::Key::Right;
    case Qt::Key_Down:
        return HexEditor::Key::Down;
    default:
        return HexEditor::Key::Other;
    }
}

// A label with centred white text on navy.
QLabel* addHexLabel(QWidget* parent, const char* name, const TwipsRect& rect) {
    QLabel* label =
        addLabel(parent, name, QStringLiteral("0000"), rect, fixedFont(points9_75, QFont::Bold));
    label->setAlignment(Qt::AlignCenter);
    setColour(label, QPalette::WindowText, Qt::white);
    setColour(label, QPalette::Window, QColor(0, 0, 128));
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
    // Keep the caret visible when the text box does not have the focus.
    QPalette colours = palette();
    for (const auto group : {QPalette::Inactive, QPalette::Disabled}) {
        colours.setColor(group, QPalette::Highlight,
                         colours.color(QPalette::Active, QPalette::Highlight));
        colours.setColor(group, QPalette::HighlightedText,
                         colours.color(QPalette::Active, QPalette::HighlightedText));
    }
    setPalette(colours);
}

int PageBox::lineHeight() const {
    return (height() - 2 * frameWidth()) / shownLines;
}

void PageBox::showPage(const std::string& text) {
    QTextBlockFormat line;
    line.setLineHeight(lineHeight(), QTextBlockFormat::FixedHeight);
    const QStringList lines = shown(text).split(u'\n');
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    if (document()->blockCount() != lines.size()) {
        cursor.setBlockFormat(line);
        cursor.insertText(lines.join(u'\n'));
    }
    // Only changed lines are replaced: each replacement is reported to assistive programs.
    for (int i = 0; i < lines.size(); ++i)
        if (const QTextBlock old = document()->findBlockByNumber(i); old.text() != lines[i]) {
            cursor.setPosition(old.position());
            cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            cursor.insertText(lines[i]);
        }
    cursor.endEditBlock();
}

void PageBox::selectCharacter(int row, int column) {
    QTextCursor caret(document()->findBlockByNumber(row + 1));
    caret.setPosition(caret.position() + column + 1);
    // Selected backwards, so that assistive programs get the position of the digit.
    caret.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
    setTextCursor(caret);
}

// The arrow keys act with any modifier; with Ctrl, Alt or Meta no character is typed.
void PageBox::keyPressEvent(QKeyEvent* event) {
    const HexEditor::Key key = editorKey(event->key());
    Q_EMIT keyDown(key);
    const bool command =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (const QString text = event->text(); !command && text.size() == 1)
        Q_EMIT keyPress(text.at(0).toLatin1());
    event->setAccepted(key != HexEditor::Key::Other);
}

// The line height is smaller than the font's, so the lines overlap and Qt's own hit test misses
// some pixel rows. This function therefore computes the line from the y coordinate alone.
int PageBox::characterAt(const QPoint& point) const {
    const QTextBlock line = document()->findBlockByNumber(point.y() / lineHeight());
    const int x = point.x() + horizontalScrollBar()->value();
    if (!line.isValid())
        return -1;
    return line.position() + line.layout()->lineAt(0).xToCursor(x, QTextLine::CursorOnCharacter);
}

void PageBox::click(int position) {
    const QTextBlock line = document()->findBlock(position);
    if (line.isValid())
        Q_EMIT clicked(line.blockNumber() - 1, position - line.position());
}

void PageBox::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        click(characterAt(event->pos()));
}

void PageBox::wheelEvent(QWheelEvent* event) {
    QCoreApplication::sendEvent(wheelBar, event);
}

frmBuffer::frmBuffer(QWidget* parent)
    : QWidget(parent), editor_(selectedDevice().Size, state().BufferData) {
    setObjectName(QStringLiteral("frmBuffer"));
    setWindowTitle(QStringLiteral("Buffer"));
    setFixedSize(pixels(10215), pixels(4410));

    txtBuffer = new PageBox(this);
    txtBuffer->setObjectName(QStringLiteral("txtBuffer"));
    txtBuffer->setGeometry(TwipsRect{120, 360, 9975, 3615}.inPixels());
    txtBuffer->setAccessibleName(tr("Buffer"));
    vsc = laidOut(new QScrollBar(Qt::Vertical, this), "vsc", {9840, 360, 255, 3615});
    vsc->setAccessibleName(tr("Buffer line"));
    vsc->setFocusPolicy(Qt::StrongFocus);
    vsc->setPageStep(1);
    vsc->setTracking(false); // the page moves only when the thumb is released
    txtBuffer->wheelBar = vsc;
    addLabel(this, "Label1", tr("Address:"), {120, 4080, 615, 255});
    lblAddress = addHexLabel(this, "lblAddress", {840, 4080, 615, 255});
    addLabel(this, "Label2", tr("CheckSum:"), {1920, 4080, 855, 255});
    lblCheckSum = addHexLabel(this, "lblCheckSum", {2880, 4080, 615, 255});
    followInTabOrder({txtBuffer, vsc});
    setFocusProxy(txtBuffer);

    vsc->setRange(0, editor_.LastLine());
    connectHandlers();
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

void frmBuffer::txtBuffer_Click(int row, int column) {
    const std::int32_t address = editor_.Address();
    editor_.Click(row, column);
    showCaret();
    announceMove(address);
}

void frmBuffer::txtBuffer_KeyDown(HexEditor::Key key) {
    const std::int32_t topLine = editor_.TopLine();
    const std::int32_t address = editor_.Address();
    editor_.Press(key);
    const bool scrolled = editor_.TopLine() != topLine;
    if (scrolled)
        showPage();
    else
        showCaret();
    // After Up or Down, a screen reader reads the new line without an announcement from this
    // program. If the page has scrolled, the caret has not moved within the text, so the line is
    // announced here.
    const bool line = key == HexEditor::Key::Up || key == HexEditor::Key::Down;
    if (!line || scrolled)
        announceMove(address, line);
}

void frmBuffer::txtBuffer_KeyPress(char character) {
    const std::int32_t address = editor_.Address();
    if (editor_.Type(character))
        showPage();
    announceMove(address);
}

void frmBuffer::vsc_Change(int value) {
    const std::int32_t address = editor_.Address();
    editor_.ScrollTo(value);
    showPage();
    announceMove(address);
}

void frmBuffer::showPage() {
    const QSignalBlocker quiet(vsc); // its handler would move the caret to the page's start
    vsc->setValue(editor_.TopLine());
    txtBuffer->showPage(PageText(editor_.TopLine(), state().BufferData));
    showCaret();
    ComputeCheckSum();
    lblCheckSum->setText(QString::fromStdString(HexWord(state().BufferCheckSum)));
}

void frmBuffer::showCaret() {
    txtBuffer->selectCharacter(editor_.Row(), DigitColumn(editor_.Digit()));
    lblAddress->setText(QString::fromStdString(HexWord(editor_.Address())));
}

void frmBuffer::announceMove(std::int32_t from, bool line) {
    const std::int32_t address = editor_.Address();
    if (address == from)
        return;
    const QString row = txtBuffer->document()->findBlockByNumber(editor_.Row() + 1).text();
    const QString byte = row.mid(DigitColumn(editor_.Digit() / 2 * 2), 2);
    announce(window(), line ? row : lblAddress->text() + u' ' + byte);
}
