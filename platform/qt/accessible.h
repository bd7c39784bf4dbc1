// Accessible interfaces for widgets where Qt's own are missing or wrong.
#pragma once

#include <QTimer>
#include <QWidget>

class QAccessibleInterface;

// A widget with an accessible interface of its own.
struct OwnAccessible {
    virtual ~OwnAccessible() = default;
    virtual QAccessibleInterface* makeAccessible() = 0; // Qt deletes it
};

// Puts OwnAccessible into effect, and gives a label in a frame the name that it shows: Qt's own has
// the frame's title where it shows nothing. To be called once, before the first window.
void useOwnAccessibles();

// Has a screen reader say `text`, whichever window has the focus; nothing where `window` is null or
// not shown.
void announce(QWidget* window, const QString& text);

// Reports to assistive programs the value of a progress bar that is drawn by `track`: at most four
// times a second, and always the last value.
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
