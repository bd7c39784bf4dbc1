#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

// Keeps the user's input from a window and all that is inside it while `blocked` says so, without
// greying anything. Other windows, a message box above all, stay usable.
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
