#include "platform/qt/qt_machine.h"

#include "platform/port_names.h"
#include "platform/qt/form.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

QtTimer::QtTimer() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
        if (Tick)
            Tick();
    });
}

void QtTimer::setInterval(int milliseconds) {
    timer_.setInterval(milliseconds);
}

void QtTimer::setEnabled(bool enabled) {
    if (!enabled)
        timer_.stop();
    else if (!timer_.isActive())
        timer_.start();
}

void QtEventQueue::Yield() {
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

namespace {

// Returns the window that is to own a message box; finds one even when another program is active.
// Without an owner, the message box could be hidden by the main window: the user would not notice
// it, and the socket would stay powered.
QWidget* messageOwner() {
    if (QWidget* active = QApplication::activeWindow(); active && active->isVisible())
        return active;
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->inherits("QMainWindow"))
            return window;
    return nullptr;
}

} // namespace

void QtMessageBox::Show(const std::string& title, const std::string& text, Icon icon) {
    QMessageBox message(icon == Icon::Critical ? QMessageBox::Critical : QMessageBox::Information,
                        QString::fromStdString(title), QString::fromStdString(text),
                        QMessageBox::Ok, messageOwner());
    message.setTextFormat(Qt::PlainText); // the text may come from the programmer or a file
    if (auto* grid = qobject_cast<QGridLayout*>(message.layout()))
        grid->addItem(new QSpacerItem(minTitleBarWidth(message.windowTitle()), 0), 0, 0, 1,
                      grid->columnCount());
    message.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    if (auto* label = message.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        label->setFocusPolicy(Qt::StrongFocus); // otherwise the keyboard could not reach it
        message.button(QMessageBox::Ok)->setFocus();
    }
    QTimer::singleShot(0, &message, callUser);
    const bool busy = QApplication::overrideCursor(); // no busy cursor over a message box
    if (busy)
        QApplication::setOverrideCursor(Qt::ArrowCursor);
    message.exec();
    if (busy)
        QApplication::restoreOverrideCursor();
}

void QtStatusBar::setPanel(int panel, const std::string& text) {
    if (Show)
        Show(panel, QString::fromStdString(text));
}

bool QtFileDialog::ShowOpen() {
    return show(false);
}
bool QtFileDialog::ShowSave() {
    return show(true);
}

// Uses Qt's own dialog, because the desktop's dialog would check names and ask before overwriting.
bool QtFileDialog::show(bool saving) {
    constexpr int maxNameCharacters = 260;
    QFileDialog dialog(owner);
    dialog.setObjectName(QStringLiteral("cdia"));
    dialog.setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontConfirmOverwrite);
    dialog.setAcceptMode(saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::AnyFile);
    auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (name)
        name->setMaxLength(maxNameCharacters);
    if (FileName.empty())
        dialog.setDirectory(QDir::currentPath());
    else
        dialog.selectFile(QFile::decodeName(FileName.c_str()));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    // selectedFiles() would split a name at double quotes.
    const QString file = name && name->text().contains(u'"')
                             ? dialog.directory().absoluteFilePath(name->text())
                             : dialog.selectedFiles().constFirst();
    FileName = QFile::encodeName(file).toStdString();
    return true;
}

QtMachine::QtMachine(std::string dataFolder)
    : cm([folder = std::move(dataFolder)](int port) { return platform::PortName(port, folder); }) {
    platform::useMachine(&machine_);
}

QtMachine::~QtMachine() {
    platform::useMachine(nullptr);
}
