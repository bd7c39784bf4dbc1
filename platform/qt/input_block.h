#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

// Keeps the user's input from a window and everything inside it while `blocked` returns true,
// without greying anything. Other windows, above all message boxes, stay usable.
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
