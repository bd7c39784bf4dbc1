#pragma once

#include "buffer/hex_editor.h"

#include <QTextEdit>
#include <QWidget>

class QLabel;
class QScrollBar;

// The page's text box: locked, without a scroll bar of its own. It tells what is pressed and
// clicked and changes nothing by itself; the wheel turns the view's bar. Characters are told by
// their index in the page's text, where a line end counts as two characters.
class PageBox : public QTextEdit {
    Q_OBJECT

public:
    explicit PageBox(QWidget* parent);
    // Replaces the text, each line at the fixed height that lets all 17 fit.
    void showPage(const std::string& text);
    void selectCharacter(int index);

    QScrollBar* wheelBar = nullptr;

Q_SIGNALS:
    void clicked(int index);
    void keyDown(int keyCode);
    void keyPress(char character); // behind keyDown, for a key that gives one character

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent*) override {}
    void mouseReleaseEvent(QMouseEvent*) override {}
    void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
    void wheelEvent(QWheelEvent* event) override;
};

// The hex view: a page of 256 bytes, its scroll bar, the address under the caret and the checksum.
class frmBuffer : public QWidget {
    Q_OBJECT

public:
    explicit frmBuffer(QWidget* parent);

    // Redraws the page, puts the caret on its first digit and computes the checksum.
    void UpdateBuffer();

private:
    void connectHandlers();
    void txtBuffer_Click(int index);
    void txtBuffer_KeyDown(int keyCode);
    void txtBuffer_KeyPress(char character);
    void vsc_Change(int value);

    void showPage();
    void showCaret();

    modFunc::HexEditor editor_;
    PageBox* txtBuffer;
    QScrollBar* vsc;
    QLabel* lblAddress;
    QLabel* lblCheckSum;
};
