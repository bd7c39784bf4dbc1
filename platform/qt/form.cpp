#include "platform/qt/form.h"

#include "platform/qt/twips.h"

#include <QScreen>
#include <QShowEvent>

namespace {

Qt::WindowFlags flagsFor(Form::Frame frame) {
    const Qt::WindowFlags bare = Qt::Dialog | Qt::CustomizeWindowHint;
    switch (frame) {
    case Form::Frame::TitleAndCloseBox:
        return bare | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    case Form::Frame::Title:
        return bare | Qt::WindowTitleHint;
    case Form::Frame::Bare:
        break;
    }
    return bare;
}

} // namespace

Form::Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
           Frame frame)
    : QDialog(owner, flagsFor(frame)) {
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(caption);
    setFixedSize(pixels(width), pixels(height));
}

void Form::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen()->availableGeometry().center());
        move(frame.topLeft());
    }
    QDialog::showEvent(event);
}
