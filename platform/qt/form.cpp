#include "platform/qt/form.h"

#include "platform/machine.h"
#include "platform/qt/twips.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QLineEdit>
#include <QScreen>

#include <algorithm>

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

int minTitleBarWidth(const QString& title) {
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return 0;
    // Qt centres the title and clips it where the space for three buttons begins, whatever the
    // window's flags.
    constexpr int titlePixelSize = 14;
    constexpr int buttonsWidth = 75;
    QFont font = QGuiApplication::font();
    font.setPixelSize(titlePixelSize);
    return QFontMetrics(font).horizontalAdvance(title) + 2 * buttonsWidth;
}

void callUser() {
    if (QGuiApplication::applicationState() != Qt::ApplicationActive)
        QApplication::alert(nullptr); // all windows
}

Form::Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
           Frame frame)
    : QDialog(owner, flagsFor(frame)) {
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(caption);
    setFixedSize(std::max(pixels(width), minTitleBarWidth(caption)), pixels(height));
    // The position is set before the native window exists: otherwise Qt may never learn the actual
    // position of a window without a title bar.
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

void Form::rejectInput(QLineEdit* textBox, const std::string& cause) {
    platform::machine().msgBox.Show(windowTitle().toStdString(), cause,
                                    platform::MessageBox::Icon::Critical);
    textBox->setFocus();
    textBox->selectAll();
}
