// Accessible interfaces for widgets whose interfaces from Qt are missing or wrong.
#pragma once

#include <QTimer>
#include <QWidget>

class QAccessibleInterface;

// A widget with an accessible interface of its own.
struct OwnAccessible {
    virtual ~OwnAccessible() = default;
    virtual QAccessibleInterface* makeAccessible() = 0; // Qt deletes the result
};

// Makes Qt use OwnAccessible. Also gives each label in a frame its own text as its accessible name;
// otherwise Qt would give an empty label the title of the frame. A window inside the main window
// gets the role of a pane. Call once, before the first window is created.
void useOwnAccessibles();

// Makes a screen reader say `text`, whichever window has the focus. No effect if `window` is null
// or not visible, or `text` is empty.
void announce(QWidget* window, const QString& text);

// A widget that gives the progress bar drawn on `track` its accessible interface. It reports the
// value to assistive programs at most four times a second, and always reports the last value.
class ProgressValue : public QWidget, public OwnAccessible {
public:
    ProgressValue(QWidget* track, const QString& name);
    void setPercent(int percent); // 0..100
    int percent() const { return percent_; }
    QAccessibleInterface* makeAccessible() override;

private:
    void report();

    QTimer pause_;
    int percent_ = 0;
    int reported_ = 0;
};
