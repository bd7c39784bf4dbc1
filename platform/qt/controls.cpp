#include "platform/qt/controls.h"

#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>

namespace {

class CaptionFrame : public QGroupBox {
public:
    CaptionFrame(QWidget* parent, const QString& text, const QBrush& ground)
        : QGroupBox(text, parent), ground_(ground) {}

protected:
    void paintEvent(QPaintEvent*) override {
        constexpr int captionLeft = 8;
        constexpr int gap = 3;
        QPainter painter(this);
        const QFontMetrics metrics(font());
        const QRect caption(captionLeft, 0, metrics.horizontalAdvance(title()), metrics.height());
        const QRectF line = insidePen(rect().adjusted(0, caption.center().y(), 0, 0));
        painter.setPen(palette().color(QPalette::Mid));
        painter.setBrush(ground_);
        painter.setClipRegion(QRegion(rect()) - caption.adjusted(-gap, 0, gap, 0));
        painter.drawRoundedRect(line, 2, 2);
        painter.setClipping(false);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(caption, Qt::AlignLeft | Qt::AlignVCenter, title());
    }

private:
    QBrush ground_;
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

QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                    const QBrush& ground) {
    return laidOut(new CaptionFrame(parent, text, ground), name, rect);
}

QWidget* addRectangle(QWidget* parent, const char* name, const QColor& colour,
                      const TwipsRect& rect) {
    auto* rectangle = laidOut(new QWidget(parent), name, rect);
    rectangle->setAutoFillBackground(true);
    rectangle->setPalette(QPalette(colour));
    return rectangle;
}

void showText(QLabel* label, const QString& text) {
    // Start from the label's original font, not from the font fitted to the label's previous text.
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

void setColour(QWidget* widget, QPalette::ColorRole role, const QBrush& colour) {
    QPalette colours = widget->palette();
    colours.setBrush(role, colour);
    widget->setPalette(colours);
}

QBrush lightGround() {
    constexpr int darkBelow = 128;
    const bool dark = QGuiApplication::palette().color(QPalette::Window).lightness() < darkBelow;
    return dark ? QBrush(QColor(239, 239, 239)) : QBrush();
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
