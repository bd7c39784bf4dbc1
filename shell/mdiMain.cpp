#include "shell/mdiMain.h"

#include "app/startup.h"
#include "app/state.h"
#include "app/status_bar.h"
#include "buffer/frmBuffer.h"
#include "buffer/frmBufferFill.h"
#include "buffer/image.h"
#include "files/binary_file.h"
#include "files/frmFileLoad.h"
#include "files/hex_file.h"
#include "functions/frmFunction.h"
#include "link/exchange.h"
#include "link/find_programmer.h"
#include "platform/qt/fonts.h"
#include "platform/qt/input_block.h"
#include "platform/qt/menu.h"
#include "platform/qt/twips.h"
#include "shell/frmAbout.h"
#include "shell/frmEditAuto.h"
#include "shell/frmSelectDevice.h"
#include "shell/frmSettings.h"
#include "shell/help/frmHelp.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPainter>
#include <QStatusBar>
#include <QStyle>

#include <exception>

using namespace modFunc;

namespace {

constexpr int splashMs = 1000;

// A status bar panel. A text that is too long, usually a full file name, is elided in the middle
// when it is painted; text() stays complete.
class Panel : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        drawFrame(&painter);
        const QRect inside = contentsRect().adjusted(2, 0, -2, 0);
        style()->drawItemText(&painter, inside, Qt::AlignLeft | Qt::AlignVCenter, palette(), true,
                              fontMetrics().elidedText(text(), Qt::ElideMiddle, inside.width()),
                              QPalette::WindowText);
    }
};

// The system menu of a window that can be closed but not resized; Qt's own menu would also offer
// resizing.
QMenu* closeMenu(QMdiSubWindow* window) {
    auto* menu = new QMenu(window);
    QAction* close = menu->addAction(QObject::tr("&Close"), window, &QWidget::close);
    close->setShortcuts(QKeySequence::Close);
    close->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    window->addAction(close); // needed for the shortcut, because no menu bar contains the menu
    return menu;
}

} // namespace

mdiMain::mdiMain(QtMachine& machine) : machine_(machine), area_(new QMdiArea(this)) {
    setObjectName(QStringLiteral("mdiMain"));
    setCentralWidget(area_);
    addMenus();
    addStatusBar();
    // 11070 x 6900 twips is the size of the client area, below the menu bar.
    resize(pixels(11070), pixels(6900) + menuBar()->sizeHint().height());
    new InputBlock(this, LinkInUse);
    connectHandlers();

    useBufferView(this);
    machine_.cdia.owner = this;
    machine_.totmr.Tick = [] { totmr_Timer(); };
    machine_.totmr.setInterval(splashMs);
    machine_.totmr.setEnabled(true);
}

mdiMain::~mdiMain() {
    machine_.totmr.Tick = nullptr;
    machine_.sbar.Show = nullptr;
    useBufferView(nullptr);
}

void mdiMain::addMenus() {
    menuBar()->setNativeMenuBar(false); // the desktop's menu bar would bypass InputBlock
    struct Entry {
        const char* name;
        QString caption; // empty: a separator
    };
    struct Menu {
        const char* name;
        QString caption;
        QList<Entry> entries;
    };
    const Menu menus[] = {
        {"File",
         tr("&File"),
         {{"FileLoad", tr("&Load")},
          {"FileSave", tr("&Save")},
          {"FileS1", {}},
          {"FileExit", tr("E&xit")}}},
        {"Buffer",
         tr("&Buffer"),
         {{"BufferEdit", tr("&Edit")}, {"BufferClear", tr("&Clear")}, {"BufferFill", tr("Fill")}}},
        {"Device",
         tr("&Device"),
         {{"DeviceSelect", tr("Select")}, {"DeviceFunction", tr("Function")}}},
        {"Options",
         tr("&Options"),
         {{"OptionsEditAuto", tr("Edit Auto")}, {"OptionsSettings", tr("Settings")}}},
        {"Help",
         tr("&Help"),
         {{"HelpContents", tr("Contents")}, {"HelpS1", {}}, {"HelpAbout", tr("About")}}},
    };
    for (const Menu& menu : menus) {
        QMenu* bar = addMenu(menuBar(), menu.caption);
        bar->setObjectName(QString::fromLatin1(menu.name));
        for (const Entry& entry : menu.entries) {
            QAction* action = bar->addAction(entry.caption);
            action->setObjectName(QString::fromLatin1(entry.name));
            action->setSeparator(entry.caption.isEmpty());
        }
    }
    findChild<QAction*>(QStringLiteral("HelpContents"))->setShortcut(Qt::Key_F1);
}

void mdiMain::addStatusBar() {
    struct PanelShape {
        QString toolTip;
        int width; // twips
    };
    const std::array<PanelShape, 4> shapes = {{
        {tr("Communication Port"), 700},
        {tr("Selected Device"), 2000},
        {tr("Memory Size of Selected Device"), 1440},
        {tr("File Name"), 5000},
    }};
    QStatusBar* sbar = statusBar();
    sbar->setObjectName(QStringLiteral("sbar"));
    for (std::size_t i = 0; i < panels_.size(); ++i) {
        auto* panel = new Panel(QString::fromLatin1(initialPanelTexts[i]), sbar);
        panel->setObjectName(QStringLiteral("sbar%1").arg(i + 1));
        panel->setTextFormat(Qt::PlainText);
        panel->setFont(sansFont());
        panel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        panel->setFixedWidth(pixels(shapes[i].width));
        panel->setToolTip(shapes[i].toolTip);
        sbar->addWidget(panel);
        panels_[i] = panel;
    }
    machine_.sbar.Show = [this](int panel, const QString& text) {
        panels_.at(static_cast<std::size_t>(panel - 1))->setText(text);
    };
}

void mdiMain::connectHandlers() {
    // InputBlock cannot stop an action that an assistive program triggers, because no input event
    // occurs. So every action except FileExit checks LinkInUse() itself.
    const auto on = [this](const char* entry, void (mdiMain::*handler)()) {
        connect(findChild<QAction*>(QString::fromLatin1(entry)), &QAction::triggered, this,
                [this, handler] {
                    if (!LinkInUse())
                        (this->*handler)();
                });
    };
    on("FileLoad", &mdiMain::FileLoad_Click);
    on("FileSave", &mdiMain::FileSave_Click);
    on("BufferEdit", &mdiMain::BufferEdit_Click);
    on("BufferClear", &mdiMain::BufferClear_Click);
    on("BufferFill", &mdiMain::BufferFill_Click);
    on("DeviceSelect", &mdiMain::DeviceSelect_Click);
    on("DeviceFunction", &mdiMain::DeviceFunction_Click);
    on("OptionsEditAuto", &mdiMain::OptionsEditAuto_Click);
    on("OptionsSettings", &mdiMain::OptionsSettings_Click);
    on("HelpContents", &mdiMain::HelpContents_Click);
    on("HelpAbout", &mdiMain::HelpAbout_Click);
    connect(findChild<QAction*>(QStringLiteral("FileExit")), &QAction::triggered, this,
            &mdiMain::FileExit_Click); // closeEvent() defers closing while the link is in use
}

void mdiMain::Load() {
    State& s = state();
    QString version = QString::fromStdString(s.ProgramVersion);
    version.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); // [*] is a placeholder in Qt
    setWindowTitle(QStringLiteral("QUORVEN ~ USB Programmer - Ver.") + version);
    s.TimedOut = false;
    {
        frmAbout splash(nullptr, frmAbout::Purpose::Splash);
        splash.show();
        while (!s.TimedOut)
            machine_.events.Yield();
    }
    ClearImage();
    machine_.cm.setSettings("57600,N,8,1");
    machine_.cm.setRThreshold(0);
    machine_.cm.setInputModeBinary();
    FindProgrammer();
}

void mdiMain::closeEvent(QCloseEvent* event) {
    if (LinkInUse()) {
        closeRequested_ = true;
        event->ignore();
        return;
    }
    WriteSettings();
    event->accept();
    QCoreApplication::exit(0);
}

// An exception ends the command without a message. What is unchanged after a failure is documented
// in files/hex_file.h and files/binary_file.h.
void mdiMain::transferFile(bool (platform::FileDialog::*ask)(), void (*hex)(), void (*binary)()) {
    try {
        if (!(machine_.cdia.*ask)())
            return;
        frmFileLoad(this).exec();
        if (!state().FileCancelled)
            state().FileIsHex ? hex() : binary();
    } catch (const std::exception&) { // no message
    }
}

void mdiMain::FileLoad_Click() {
    transferFile(&platform::FileDialog::ShowOpen, OpenHexFile, OpenBinFile);
}

void mdiMain::FileSave_Click() {
    transferFile(&platform::FileDialog::ShowSave, SaveHexFile, SaveBinFile);
}

void mdiMain::FileExit_Click() {
    close();
}

void mdiMain::BufferEdit_Click() {
    Reopen();
}

void mdiMain::BufferClear_Click() {
    ClearImage();
    Reopen();
}

void mdiMain::BufferFill_Click() {
    frmBufferFill(this).exec();
    if (!state().FillConfirmed)
        return;
    FillImage();
    if (bufferWindow_)
        qobject_cast<frmBuffer*>(bufferWindow_->widget())->UpdateBuffer();
    else
        Reopen();
}

// Closes the hex view, because its range and checksum are those of the previous device.
void mdiMain::DeviceSelect_Click() {
    if (frmSelectDevice(this).exec() == QDialog::Accepted)
        delete bufferWindow_;
}

// When exec() returns, any run started in the dialog has ended, even if the dialog closed during
// the run.
void mdiMain::DeviceFunction_Click() {
    frmFunction(this).exec();
    closeIfRequested();
}

// Carries out a close request that arrived while the link was in use.
void mdiMain::closeIfRequested() {
    if (closeRequested_)
        close();
}

void mdiMain::OptionsEditAuto_Click() {
    frmEditAuto(this).exec();
}

// Discovery follows even after Cancel: the Settings window is the only way to find a programmer
// that is plugged in after start-up. The signal finished() starts discovery before exec() returns,
// so that no close request is handled between the closing of the Settings window and discovery.
void mdiMain::OptionsSettings_Click() {
    frmSettings settings(this);
    connect(&settings, &QDialog::finished, FindProgrammer);
    settings.exec();
    closeIfRequested();
}

void mdiMain::HelpContents_Click() {
    frmHelp(this).exec();
}

void mdiMain::HelpAbout_Click() {
    frmAbout(this, frmAbout::Purpose::About).exec();
}

void mdiMain::Reopen() {
    delete bufferWindow_;
    auto* view = new frmBuffer(nullptr);
    bufferWindow_ =
        area_->addSubWindow(view, Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                      Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    bufferWindow_->setAccessibleName(view->windowTitle());
    bufferWindow_->setFixedSize(bufferWindow_->sizeHint());
    bufferWindow_->setSystemMenu(closeMenu(bufferWindow_));
    bufferWindow_->move(0, 0);
    bufferWindow_->show();
    // The window frame must not take the focus, not even by Tab: assistive programs would stay on
    // it. The view gets the focus before it is filled; otherwise these programs would not read out
    // its contents.
    bufferWindow_->setFocusPolicy(Qt::NoFocus);
    view->setFocus();
    view->UpdateBuffer();
}
