#include "platform/qt/form.h"

#include "platform/qt/twips.h"

#include <QCloseEvent>
#include <QScreen>

namespace {

Qt::WindowFlags flagsFor(Form::Frame frame) {
    const Qt::WindowFlags title = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    switch (frame) {
    case Form::Frame::TitleAndCloseBox:
        return title | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    case Form::Frame::Title:
        return title;
    case Form::Frame::None:
        break;
    }
    return Qt::Dialog | Qt::FramelessWindowHint;
}

} // namespace

Form::Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
           Frame frame)
    : QDialog(owner, flagsFor(frame)) {
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(caption);
    setFixedSize(pixels(width), pixels(height));
    // Before the native window exists: one without a title bar that is moved later may never learn
    // its position.
    QRect centred = geometry();
    centred.moveCenter((owner ? owner : this)->screen()->availableGeometry().center());
    setGeometry(centred);
}

void Form::closeEvent(QCloseEvent* event) {
    if (windowFlags().testFlag(Qt::FramelessWindowHint))
        event->ignore();
    else
        QDialog::closeEvent(event);
}
