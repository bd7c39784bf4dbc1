#include "platform/qt/menu.h"

#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>

namespace {

class Menu : public QMenu {
public:
    using QMenu::QMenu;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        const QString letter = event->text();
        QList<QAction*> found;
        for (QAction* entry : actions()) {
            if (letter.isEmpty() || entry->text().contains(u'&' + letter, Qt::CaseInsensitive))
                return QMenu::keyPressEvent(event);
            if (entry->text().remove(u'&').startsWith(letter, Qt::CaseInsensitive))
                found << entry;
        }
        if (found.isEmpty())
            return QMenu::keyPressEvent(event);
        setActiveAction(found[(found.indexOf(activeAction()) + 1) % found.size()]);
        if (found.size() == 1) {
            QKeyEvent trigger(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
            QMenu::keyPressEvent(&trigger);
        }
    }
};

} // namespace

QMenu* addMenu(QMenuBar* bar, const QString& caption) {
    auto* menu = new Menu(caption, bar);
    bar->addMenu(menu);
    return menu;
}
