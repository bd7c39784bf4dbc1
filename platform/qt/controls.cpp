#include "platform/qt/controls.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>

namespace {

template <class Widget>
Widget* laidOut(Widget* widget, const char* name, const TwipsRect& rect) {
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(rect.inPixels());
    widget->setFont(sansFont());
    return widget;
}

class CaptionFrame : public QGroupBox {
public:
    using QGroupBox::QGroupBox;

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr int captionLeft = 8;
        constexpr int gap = 3;
        QPainter painter(this);
        const QFontMetrics metrics(font());
        const QRect caption(captionLeft, 0, metrics.horizontalAdvance(title()), metrics.height());
        const QRectF line = insidePen(rect().adjusted(0, caption.center().y(), 0, 0));
        painter.setPen(palette().color(QPalette::Mid));
        painter.setClipRegion(QRegion(rect()) - caption.adjusted(-gap, 0, gap, 0));
        painter.drawRoundedRect(line, 2, 2);
        painter.setClipping(false);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(caption, Qt::AlignLeft | Qt::AlignVCenter, title());
    }
};

} // namespace

QLabel* addLabel(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                 const QFont& font) {
    auto* label = laidOut(new QLabel(parent), name, rect);
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    showText(label, text);
    return label;
}

QLineEdit* addTextBox(QWidget* parent, const char* name, const QString& text,
                      const TwipsRect& rect) {
    return laidOut(new QLineEdit(text, parent), name, rect);
}

QPushButton* addButton(QWidget* parent, const char* name, const QString& text,
                       const TwipsRect& rect) {
    return laidOut(new QPushButton(text, parent), name, rect);
}

QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect) {
    return laidOut(new CaptionFrame(text, parent), name, rect);
}

QWidget* addRectangle(QWidget* parent, const char* name, const QColor& colour,
                      const TwipsRect& rect) {
    auto* rectangle = laidOut(new QWidget(parent), name, rect);
    rectangle->setAutoFillBackground(true);
    rectangle->setPalette(QPalette(colour));
    return rectangle;
}

void showText(QLabel* label, const QString& text) {
    // Each text starts from the label's own font, not from the one fitted to the text before.
    constexpr char ownFont[] = "ownFont";
    if (!label->property(ownFont).isValid())
        label->setProperty(ownFont, label->font());
    label->setFont(fittedFont(label->property(ownFont).value<QFont>(), text, label->size()));
    label->setText(text);
}

void fitText(QAbstractButton* button, int extraPixels) {
    QString shown = button->text();
    shown.remove(u'&');
    button->setFont(
        fittedFont(button->font(), shown, QSize(button->width() - extraPixels, button->height())));
}

void setTextColour(QWidget* widget, const QColor& colour) {
    QPalette colours = widget->palette();
    colours.setColor(QPalette::WindowText, colour);
    widget->setPalette(colours);
}

void giveLightGround(QWidget* widget) {
    constexpr int darkBelow = 128;
    QPalette colours = widget->palette();
    if (colours.color(QPalette::Window).lightness() >= darkBelow)
        return;
    colours.setColor(QPalette::Window, QColor(239, 239, 239));
    widget->setPalette(colours);
    widget->setAutoFillBackground(true);
}

QRectF insidePen(const QRect& edges) {
    constexpr double halfPen = 0.5;
    return QRectF(edges).adjusted(halfPen, halfPen, -halfPen, -halfPen);
}

void followInTabOrder(std::initializer_list<QWidget*> widgets) {
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if (previous)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}
