#pragma once

#include "buffer/hex_editor.h"
#include "platform/qt/accessible.h"

#include <QTextEdit>
#include <QWidget>

class QLabel;
class QScrollBar;

// The text box that shows the page: read-only, without its own scroll bar. It reports keys and
// clicks and changes nothing itself; the mouse wheel moves the scroll bar `wheelBar`. A row is
// 0..15, or -1 for the heading; columns are numbered as in buffer/page_text.h. `clicked` also
// reports positions without a digit, which HexEditor::Click ignores.
class PageBox : public QTextEdit, public OwnAccessible {
    Q_OBJECT

public:
    explicit PageBox(QWidget* parent);
    // Shows `text`; replaces only the lines that have changed. Each line gets the fixed height at
    // which all 17 lines fit.
    void showPage(const std::string& text);
    void selectCharacter(int row, int column);
    // The index, within the text, of the character at `point` in the viewport; -1 if there is no
    // line at that point.
    int characterAt(const QPoint& point) const;
    void click(int position); // has the effect of a click on that character
    QAccessibleInterface* makeAccessible() override;

    QScrollBar* wheelBar = nullptr; // must be set before the first wheel event

Q_SIGNALS:
    void clicked(int row, int column);
    void keyDown(modFunc::HexEditor::Key key);
    void keyPress(char character); // follows keyDown if the key produces one character

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent*) override {}
    void mouseReleaseEvent(QMouseEvent*) override {}
    void mouseDoubleClickEvent(QMouseEvent*) override {} // not reported as a second click
    void wheelEvent(QWheelEvent* event) override;

private:
    int lineHeight() const;
};

// The hex view: a page of 256 bytes, its scroll bar, the address of the byte under the caret and
// the checksum.
class frmBuffer : public QWidget {
    Q_OBJECT

public:
    explicit frmBuffer(QWidget* parent); // empty until the first UpdateBuffer()

    // Redraws the page, puts the caret on its first digit and computes the checksum.
    void UpdateBuffer();

private:
    void connectHandlers();
    void txtBuffer_Click(int row, int column);
    void txtBuffer_KeyDown(modFunc::HexEditor::Key key);
    void txtBuffer_KeyPress(char character);
    void vsc_Change(int value);

    void showPage();
    void showCaret();
    // No effect if the caret's address is still `from`. Otherwise makes a screen reader say the
    // text of the caret's line (`line` is true) or the caret's address and the byte there (`line`
    // is false).
    void announceMove(std::int32_t from, bool line = false);

    modFunc::HexEditor editor_;
    PageBox* txtBuffer;
    QScrollBar* vsc;
    QLabel* lblAddress;
    QLabel* lblCheckSum;
};
