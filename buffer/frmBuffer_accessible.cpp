// The hex view's page as assistive programs see it: text that is edited digit by digit, with the
// caret on the selected digit.
#include "buffer/frmBuffer.h"

#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QTextCursor>

#include <algorithm>

namespace {

class PageInterface : public QAccessibleWidget,
                      public QAccessibleTextInterface,
                      public QAccessibleEditableTextInterface {
public:
    explicit PageInterface(PageBox* page)
        : QAccessibleWidget(page, QAccessible::EditableText), page_(page) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = true;
        state.multiLine = true;
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    // The selected digit is reported as the caret. If it were also reported as a selection, a
    // screen reader would announce it twice.
    int selectionCount() const override { return 0; }
    void selection(int, int* start, int* end) const override { *start = *end = 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}

    int cursorPosition() const override { return page_->textCursor().selectionStart(); }
    void setCursorPosition(int position) override { page_->click(position); }
    QString text(int start, int end) const override {
        return page_->toPlainText().mid(start, end - start);
    }
    QString text(QAccessible::Text kind) const override { return QAccessibleWidget::text(kind); }
    int characterCount() const override { return page_->document()->characterCount() - 1; }
    QRect characterRect(int offset) const override {
        QTextCursor character(page_->document());
        character.setPosition(offset);
        const QRect left = page_->cursorRect(character);
        character.movePosition(QTextCursor::NextCharacter);
        const QRect right = page_->cursorRect(character);
        return {page_->viewport()->mapToGlobal(left.topLeft()),
                QSize(std::max(0, right.left() - left.left()), left.height())};
    }
    int offsetAtPoint(const QPoint& point) const override {
        return page_->characterAt(page_->viewport()->mapFromGlobal(point));
    }
    void scrollToSubstring(int, int) override {} // all text is visible
    QString attributes(int, int* start, int* end) const override {
        *start = 0;
        *end = characterCount();
        return {};
    }

    // Inserts by sending key presses, so that anything that blocks keys also blocks the insertion.
    void insertText(int offset, const QString& text) override {
        setCursorPosition(offset);
        if (cursorPosition() != offset) // not a digit
            return;
        for (const QChar character : text) {
            QKeyEvent key(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, character);
            QCoreApplication::sendEvent(page_, &key);
        }
    }
    void deleteText(int, int) override {}
    void replaceText(int start, int, const QString& text) override { insertText(start, text); }

private:
    PageBox* page_;
};

} // namespace

QAccessibleInterface* PageBox::makeAccessible() {
    return new PageInterface(this);
}
