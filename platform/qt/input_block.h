#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

// Discards user input to a window and everything inside it while `blocked` returns true, without
// greying out any control. Other windows, message boxes in particular, stay usable. An action that
// an assistive program triggers is not discarded, because it comes without an input event: the
// handler of each action must check `blocked` itself.
class InputBlock : public QObject {
    Q_OBJECT

public:
    InputBlock(QWidget* window, std::function<bool()> blocked);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isInside(const QObject* object) const;

    QWidget* window_;
    std::function<bool()> blocked_;
};
