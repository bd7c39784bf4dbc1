#include "platform/qt/input_block.h"

#include <QApplication>
#include <QEvent>

#include <utility>

namespace {

bool isInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::NonClientAreaMouseButtonPress:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TabletPress:
    case QEvent::TouchBegin:
    case QEvent::InputMethod:
    case QEvent::DragEnter:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

} // namespace

InputBlock::InputBlock(QWidget* window, std::function<bool()> blocked)
    : QObject(window), window_(window), blocked_(std::move(blocked)) {
    qApp->installEventFilter(this);
}

// True for the window and the widgets in it, but not for widgets in other windows that this window
// owns.
bool InputBlock::isInside(const QObject* object) const {
    for (; object; object = object->parent()) {
        if (object == window_)
            return true;
        if (object->isWidgetType() && static_cast<const QWidget*>(object)->isWindow())
            return false;
    }
    return false;
}

bool InputBlock::eventFilter(QObject* watched, QEvent* event) {
    if (!isInput(event->type()) || !blocked_() || !isInside(watched))
        return false;
    if (event->type() == QEvent::ShortcutOverride)
        event->accept(); // otherwise the key could trigger a menu shortcut
    return true;
}
