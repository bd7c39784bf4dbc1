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
// A frame with its caption on the upper line, so that the geometry of its contents is kept;
// `ground` fills it up to its lines.
QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
                    const QBrush& ground = {});
// A filled rectangle.
QWidget* addRectangle(QWidget* parent, const char* name, const QColor& colour,
                      const TwipsRect& rect);

// Shows `text` in full, in the label's own font or what fittedFont() makes of it.
void showText(QLabel* label, const QString& text);
// Fits the font of a button or option button to its text; `extraPixels` is the width of what else
// it shows.
void fitText(QAbstractButton* button, int extraPixels);

void setTextColour(QWidget* widget, const QColor& colour);
// The ground for colours that are fixed for a light desktop: a light brush on a dark desktop, no
// brush on a light one.
QBrush lightGround();
// `edges` reduced by half a pen width on each side: a line drawn along it with a pen of one unit
// lies inside `edges` at every screen scale.
QRectF insidePen(const QRect& edges);

// Makes the widgets follow each other in the tab order as listed.
void followInTabOrder(std::initializer_list<QWidget*> widgets);
