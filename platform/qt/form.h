// What all windows are built with: twips, fonts whose text fits, and the controls at their places.
#pragma once

#include <QDialog>
#include <QFont>
#include <QGroupBox>
#include <QListWidget>
#include <QString>

#include <initializer_list>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QPushButton;

// Positions and sizes are given in twips, 1440 to the inch, 15 to a device-independent pixel.
int pixels(int twips);

// A place inside a window or frame, in twips.
struct Place {
    int left;
    int top;
    int width;
    int height;
    QRect rect() const { return {pixels(left), pixels(top), pixels(width), pixels(height)}; }
};

// Heights of the type sizes used, in device-independent pixels at 96 to the inch. Pixels, since a
// window's geometry does not follow the desktop's type size either.
inline constexpr int points8_25 = 11;
inline constexpr int points9_75 = 13;
inline constexpr int points12 = 16;
inline constexpr int points24 = 32;

// The first family of the list that is installed, or else the desktop's own.
QFont firstInstalled(const QStringList& families, int pixelSize);
// The face of captions and boxes, condensed where the installed one is wider than the places were
// made for.
QFont sansFont(int pixelSize = points8_25);
QFont fixedFont(int pixelSize, QFont::Weight weight = QFont::Normal);

// Shows `text` in full: where the font is too wide for the label it is condensed, then made
// smaller, down to what can just be read.
void showText(QLabel* label, const QString& text);

QLabel* addLabel(QWidget* parent, const char* name, const QString& text, const Place& place,
                 const QFont& font = sansFont());
void setTextColour(QWidget* widget, const QColor& colour);
// Some colours are the program's own and made for a light ground. On a dark desktop this gives the
// widget one.
void giveLightGround(QWidget* widget);
QLineEdit* addTextBox(QWidget* parent, const char* name, const QString& text, const Place& place);
QPushButton* addButton(QWidget* parent, const char* name, const QString& text, const Place& place);
QListWidget* addList(QWidget* parent, const char* name, const QString& accessibleName,
                     const Place& place);
QGroupBox* addFrame(QWidget* parent, const char* name, const QString& text, const Place& place);
// Condenses the font of a button or option button until its text fits beside what else it shows,
// which is `extraPixels` wide.
void fitText(QAbstractButton* button, int extraPixels);

// The rectangle to draw along with a pen of one unit so that the line stands inside `edges`, at
// every scale of the screen.
QRectF insidePen(const QRect& edges);

// Makes the widgets follow each other in the tab order as listed.
void followInTabOrder(std::initializer_list<QWidget*> widgets);

// A filled rectangle.
class Shape : public QWidget {
    Q_OBJECT

public:
    Shape(QWidget* parent, const char* name, const QColor& colour, const Place& place);
};

// A list box in which nothing need be highlighted. The first key that moves then highlights the row
// that it stands on, so that none is passed over.
class List : public QListWidget {
    Q_OBJECT

public:
    using QListWidget::QListWidget;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override; // no row is shown in part
};

// A frame with its caption on the upper line, so that what stands inside keeps its place.
class CaptionFrame : public QGroupBox {
    Q_OBJECT

public:
    using QGroupBox::QGroupBox;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// A dialog of fixed size in the middle of the screen.
class Form : public QDialog {
    Q_OBJECT

public:
    enum class Frame { TitleAndCloseBox, Title, Bare };

    // `width` and `height` of the client area in twips.
    Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
         Frame frame);

protected:
    void showEvent(QShowEvent* event) override;
};
