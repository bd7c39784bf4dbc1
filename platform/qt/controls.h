// Creates and adapts the controls of the windows. `name` becomes the objectName.
#pragma once

#include "platform/qt/fonts.h"
#include "platform/qt/twips.h"

#include <QPalette>

#include <initializer_list>

class QAbstractButton;
class QColor;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

// Gives a new control its name, its rectangle and the default font, sansFont().
template <class Widget>
Widget* laidOut(Widget* widget, const char* name, const TwipsRect& rect) {
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(rect.inPixels());
    widget->setFont(sansFont());
    return widget;
}
QLabel* addLabel(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                 const QFont& font = sansFont());
QLineEdit* addTextBox(QWidget* parent, const char* name, const QString& text,
                      const TwipsRect& rect);
QPushButton* addButton(QWidget* parent, const char* name, const QString& text,
                       const TwipsRect& rect);
// A frame whose caption is drawn on its top line and takes no space from its contents. `ground`
// fills the area inside the lines.
QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                    const QBrush& ground = {});
QWidget* addRectangle(QWidget* parent, const char* name, const QColor& colour,
                      const TwipsRect& rect);

// Shows `text` in the label's own font. If the text does not fit, fittedFont() adapts the font.
void showText(QLabel* label, const QString& text);
// Adapts the font of a button or option button so that its text fits. `extraPixels` is the width of
// everything on the button except the text.
void fitText(QAbstractButton* button, int extraPixels);

void setColour(QWidget* widget, QPalette::ColorRole role, const QBrush& colour);
// Background for text and lines whose colours are chosen for a light desktop: a light brush on a
// dark desktop, no brush on a light one.
QBrush lightGround();
// `edges` reduced by half a pen width on each side: a line drawn along the result with a pen of one
// unit lies inside `edges` at every screen scale.
QRectF insidePen(const QRect& edges);

// Sets the tab order of the widgets to the order of the list.
void followInTabOrder(std::initializer_list<QWidget*> widgets);
