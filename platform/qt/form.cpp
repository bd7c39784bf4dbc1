#include "platform/qt/form.h"

#include <QAbstractButton>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>

namespace {

constexpr double twipsPerPixel = 15.0;
constexpr int narrowestStretch = 70; // percent; below this a smaller size reads better
constexpr int smallestPixelSize = 8;

QFont narrowed(QFont font, const QString& text, QSize box) {
    const auto fits = [&] {
        const QFontMetrics metrics(font);
        const int lines = static_cast<int>(text.count(u'\n')) + 1;
        return metrics.size(0, text).width() <= box.width() &&
               metrics.tightBoundingRect(text).height() <= box.height() * lines;
    };
    int stretch = font.stretch() == QFont::AnyStretch ? int(QFont::Unstretched) : font.stretch();
    while (!fits() && stretch > narrowestStretch)
        font.setStretch(stretch -= 5);
    while (!fits() && font.pixelSize() > smallestPixelSize)
        font.setPixelSize(font.pixelSize() - 1);
    return font;
}

template <class Widget>
Widget* placed(Widget* widget, const char* name, const Place& place) {
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(place.rect());
    return widget;
}

Qt::WindowFlags flagsFor(Form::Frame frame) {
    const Qt::WindowFlags bare = Qt::Dialog | Qt::CustomizeWindowHint;
    switch (frame) {
    case Form::Frame::TitleAndCloseBox:
        return bare | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    case Form::Frame::Title:
        return bare | Qt::WindowTitleHint;
    case Form::Frame::Bare:
        break;
    }
    return bare;
}

} // namespace

int pixels(int twips) {
    return qRound(twips / twipsPerPixel);
}

QFont firstInstalled(const QStringList& families, int pixelSize) {
    static const QStringList installed = QFontDatabase::families();
    QFont font;
    for (const QString& family : families) {
        if (installed.contains(family)) {
            font.setFamily(family);
            break;
        }
    }
    font.setPixelSize(pixelSize);
    return font;
}

QFont sansFont(int pixelSize) {
    QFont font =
        firstInstalled({QStringLiteral("MS Sans Serif"), QStringLiteral("Microsoft Sans Serif"),
                        QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                        QStringLiteral("Nimbus Sans"), QStringLiteral("DejaVu Sans Condensed"),
                        QStringLiteral("Noto Sans"), QStringLiteral("DejaVu Sans")},
                       pixelSize);
    // The tightest of all captions and the width of its place less a gap, at the smallest size.
    constexpr int captionWidth = 100;
    const QString caption = QStringLiteral("Buffer Address (HEX):");
    const int width = captionWidth * pixelSize / points8_25;
    font.setStretch(narrowed(font, caption, QSize(width, 2 * pixelSize)).stretch());
    return font;
}

QFont fixedFont(int pixelSize, QFont::Weight weight) {
    QFont font =
        firstInstalled({QStringLiteral("Courier"), QStringLiteral("Courier New"),
                        QStringLiteral("Liberation Mono"), QStringLiteral("DejaVu Sans Mono"),
                        QFontDatabase::systemFont(QFontDatabase::FixedFont).family()},
                       pixelSize);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    font.setWeight(weight);
    return font;
}

void showText(QLabel* label, const QString& text) {
    // Each text starts from the label's own font, not from what an earlier one left of it.
    constexpr char ownFont[] = "ownFont";
    if (!label->property(ownFont).isValid())
        label->setProperty(ownFont, label->font());
    label->setFont(narrowed(label->property(ownFont).value<QFont>(), text, label->size()));
    label->setText(text);
}

void fitText(QAbstractButton* button, int extraPixels) {
    QString shown = button->text();
    shown.remove(u'&');
    button->setFont(
        narrowed(button->font(), shown, QSize(button->width() - extraPixels, button->height())));
}

QLabel* addLabel(QWidget* parent, const char* name, const QString& text, const Place& place,
                 const QFont& font) {
    auto* label = placed(new QLabel(parent), name, place);
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    showText(label, text);
    return label;
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

QLineEdit* addTextBox(QWidget* parent, const char* name, const QString& text, const Place& place) {
    auto* box = placed(new QLineEdit(text, parent), name, place);
    box->setFont(sansFont());
    return box;
}

QPushButton* addButton(QWidget* parent, const char* name, const QString& text, const Place& place) {
    auto* button = placed(new QPushButton(text, parent), name, place);
    button->setFont(sansFont());
    return button;
}

QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const Place& place) {
    auto* list = placed(new List(parent), name, place);
    list->setFont(sansFont());
    list->setAccessibleName(accessibleName);
    return list;
}

QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const Place& place) {
    auto* frame = placed(new CaptionFrame(text, parent), name, place);
    frame->setFont(sansFont());
    return frame;
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

Shape::Shape(QWidget* parent, const char* name, const QColor& colour, const Place& place)
    : QWidget(parent) {
    placed(this, name, place);
    setAutoFillBackground(true);
    setPalette(QPalette(colour));
}

void List::keyPressEvent(QKeyEvent* event) {
    const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down ||
                       event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    if (moves && currentItem() && selectedItems().isEmpty())
        currentItem()->setSelected(true);
    else
        QListWidget::keyPressEvent(event);
}

void List::showEvent(QShowEvent* event) {
    QPalette colours = palette();
    colours.setBrush(QPalette::Window, colours.base()); // of the strip left below the last row
    setPalette(colours);
    setAutoFillBackground(true);
    if (const int row = sizeHintForRow(0); row > 0)
        setViewportMargins(0, 0, 0, (height() - 2 * frameWidth()) % row);
    QListWidget::showEvent(event);
}

void CaptionFrame::paintEvent(QPaintEvent*) {
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

Form::Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
           Frame frame)
    : QDialog(owner, flagsFor(frame)) {
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(caption);
    setFixedSize(pixels(width), pixels(height));
}

void Form::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen()->availableGeometry().center());
        move(frame.topLeft());
    }
    QDialog::showEvent(event);
}
