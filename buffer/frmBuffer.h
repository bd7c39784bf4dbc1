#pragma once

#include <QTextEdit>
#include <QWidget>

#include <cstdint>

class QLabel;
class QScrollBar;

// The page's text box: locked, without a scroll bar of its own; the wheel turns the view's bar.
class PageBox : public QTextEdit {
    Q_OBJECT

public:
    explicit PageBox(QWidget* parent);
    // Replaces the text, each line at the fixed height that lets all 17 fit.
    void showPage(const QString& text);
    // Selects one character by its index in the page's text, line ends counted as two characters.
    void selectCharacter(int index);

    QScrollBar* wheelBar = nullptr;

protected:
    void wheelEvent(QWheelEvent* event) override;
};

// The hex view: a page of 256 bytes, its scroll bar, the address under the caret and the checksum.
class frmBuffer : public QWidget {
    Q_OBJECT

public:
    explicit frmBuffer(QWidget* parent);

    // Redraws the page at TopLine with the caret on its first digit, and computes the checksum.
    void UpdateBuffer();

private:
    void connectHandlers();
    void vsc_Change(int value);

    std::int32_t TopLine = 0; // the 16-byte line at the top of the page
    int CaretPos = 0;         // index of the selected digit in the page's text

    PageBox* txtBuffer;
    QScrollBar* vsc;
    QLabel* lblAddress;
    QLabel* lblCheckSum;
};
