#include "platform/qt/accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QGroupBox>
#include <QLabel>
#include <QMdiSubWindow>

namespace {

constexpr int reportIntervalMs = 250;

// Draws nothing. Each time it is shown, a screen reader says its accessible name.
class Notification : public QWidget, public OwnAccessible {
public:
    explicit Notification(QWidget* window) : QWidget(window) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        resize(1, 1);
    }
    QAccessibleInterface* makeAccessible() override {
        return new QAccessibleWidget(this, QAccessible::Notification);
    }
};

class ProgressInterface : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ProgressInterface(ProgressValue* bar)
        : QAccessibleWidget(bar, QAccessible::ProgressBar), bar_(bar) {}
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QVariant currentValue() const override { return bar_->percent(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    ProgressValue* bar_;
};

class FramedLabel : public QAccessibleWidget {
public:
    explicit FramedLabel(QLabel* label)
        : QAccessibleWidget(label, QAccessible::StaticText), label_(label) {}
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? label_->text() : QAccessibleWidget::text(kind);
    }

private:
    QLabel* label_;
};

QAccessibleInterface* make(const QString&, QObject* object) {
    if (auto* own = dynamic_cast<OwnAccessible*>(object))
        return own->makeAccessible();
    if (auto* inner = qobject_cast<QMdiSubWindow*>(object))
        return new QAccessibleWidget(inner, QAccessible::Pane);
    auto* label = qobject_cast<QLabel*>(object);
    return label && qobject_cast<QGroupBox*>(label->parent()) ? new FramedLabel(label) : nullptr;
}

} // namespace

void useOwnAccessibles() {
    QAccessible::installFactory(make);
}

void announce(QWidget* window, const QString& text) {
    if (!QAccessible::isActive() || !window || !window->isVisible() || text.isEmpty())
        return;
    const QString name = QStringLiteral("notification");
    auto* notification = window->findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
    if (!notification) {
        notification = new Notification(window);
        notification->setObjectName(name);
    }
    notification->hide();
    notification->setAccessibleName(text);
    notification->show();
}

ProgressValue::ProgressValue(QWidget* track, const QString& name) : QWidget(track) {
    resize(track->size());
    setAccessibleName(name);
    pause_.setSingleShot(true);
    pause_.setInterval(reportIntervalMs);
    connect(&pause_, &QTimer::timeout, this, [this] { report(); });
}

QAccessibleInterface* ProgressValue::makeAccessible() {
    return new ProgressInterface(this);
}

void ProgressValue::setPercent(int percent) {
    percent_ = percent;
    if (!pause_.isActive())
        report();
}

void ProgressValue::report() {
    if (reported_ == percent_)
        return;
    reported_ = percent_;
    QAccessibleValueChangeEvent changed(this, percent_);
    QAccessible::updateAccessibility(&changed);
    pause_.start();
}
