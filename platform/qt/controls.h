// The controls of the windows. `name` becomes the objectName.
#pragma once

#include "platform/qt/fonts.h"
#include "platform/qt/twips.h"

#include <QBrush>

#include <initializer_list>

class QAbstractButton;
class QColor;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

QLabel* addLabel(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                 const QFont& font = sansFont());
QLineEdit* addTextBox(QWidget* parent, const char* name, const QString& text,
                      const TwipsRect& rect);
QPushButton* addButton(QWidget* parent, const char* name, const QString& text,
                       const TwipsRect& rect);
// A frame with its caption on the top line, so that its contents keep their geometry; `ground`
// fills the area inside the lines.
QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                    const QBrush& ground = {});
QWidget* addRectangle(QWidget* parent, const char* name, const QColor& colour,
                      const TwipsRect& rect);

// Shows `text` in the label's own font, adapted by fittedFont() where it does not fit.
void showText(QLabel* label, const QString& text);
// Adapts the font of a button or option button so that its text fits; `extraPixels` is the width of
// everything else that it shows.
void fitText(QAbstractButton* button, int extraPixels);

void setTextColour(QWidget* widget, const QColor& colour);
// Background for colours that are chosen for a light desktop: a light brush on a dark desktop, no
// brush on a light one.
QBrush lightGround();
// `edges` reduced by half a pen width on each side: a line drawn along it with a pen of one unit
// lies inside `edges` at every screen scale.
QRectF insidePen(const QRect& edges);

// Sets the tab order of the widgets to the order of the list.
void followInTabOrder(std::initializer_list<QWidget*> widgets);
