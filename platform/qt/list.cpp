#include "platform/qt/list.h"

#include "platform/qt/controls.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QMouseEvent>

namespace {

class List : public QListWidget {
public:
    using QListWidget::QListWidget;

protected:
    // Modifiers are ignored. Any input that reaches a row selects that row; other input changes
    // nothing.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent*) const override {
        return index.isValid() ? QItemSelectionModel::ClearAndSelect
                               : QItemSelectionModel::NoUpdate;
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton)
            QListWidget::mouseDoubleClickEvent(event);
        else
            QListWidget::mousePressEvent(event);
    }

    void keyPressEvent(QKeyEvent* event) override {
        const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down ||
                           event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
        if (moves && currentItem() && selectedItems().isEmpty())
            currentItem()->setSelected(true);
        else
            QListWidget::keyPressEvent(event);
    }

    // Leaves an empty strip below the last visible row, so that no row is partly visible.
    void showEvent(QShowEvent* event) override {
        setColour(this, QPalette::Window, palette().base()); // for the strip
        setAutoFillBackground(true);
        if (const int row = sizeHintForRow(0); row > 0)
            setViewportMargins(0, 0, 0, (height() - 2 * frameWidth()) % row);
        QListWidget::showEvent(event);
    }
};

} // namespace

QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const TwipsRect& rect) {
    auto* list = laidOut(new List(parent), name, rect);
    list->setAccessibleName(accessibleName);
    return list;
}

int highlightedRow(const QListWidget* list) {
    const auto rows = list->selectedItems();
    return rows.isEmpty() ? -1 : list->row(rows.first());
}
