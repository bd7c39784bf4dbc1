// The controls of every window and how they are painted: each has an entry in windows.txt.
#include "buffer/frmBuffer.h"
#include "buffer/frmBufferFill.h"
#include "files/frmFileLoad.h"
#include "functions/frmFunction.h"
#include "platform/qt/application.h"
#include "platform/qt/controls.h"
#include "platform/qt/list.h"
#include "shell/frmAbout.h"
#include "shell/frmEditAuto.h"
#include "shell/frmSelectDevice.h"
#include "shell/frmSettings.h"
#include "shell/help/frmHelp.h"
#include "tests/windows/window_fixture.h"

#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMetaEnum>
#include <QScreen>

namespace {

bool isOurs(const QWidget* control) {
    const QString name = control->objectName();
    return !control->inherits("QMenu") && !name.startsWith("qt_") && !name.isEmpty();
}

// A control's geometry, its colours, font and properties other than Qt's, and what it paints.
QString describe(QWidget& control) {
    QString text = control.objectName();
    const auto say = [&](bool isSo, const QString& word) { text += isSo ? ' ' + word : ""; };
    const QRect at = control.geometry();
    const bool inMain = control.window()->inherits("QMainWindow"); // size depends on the font
    say(!inMain && !control.isWindow(), QString("%1,%2").arg(at.x()).arg(at.y()));
    say(inMain && control.minimumWidth() > 0, QString("%1 wide").arg(at.width()));
    say(!inMain, QString("%1x%2").arg(at.width()).arg(at.height()));
    if (const auto* label = qobject_cast<const QLabel*>(&control)) {
        const QRect drawn = label->fontMetrics().tightBoundingRect(label->text());
        EXPECT_TRUE(inMain || at.size() == at.size().expandedTo(drawn.size()))
            << text.toStdString();
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
    using P = QPalette;
    for (const auto role : {P::WindowText, P::Text, P::Window, P::Base}) {
        const bool filled = control.isWindow() || control.autoFillBackground();
        const QColor own = control.palette().color(P::Active, role);
        say(own != QApplication::palette().color(P::Active, role) && (filled || role != P::Window),
            QMetaEnum::fromType<P::ColorRole>().valueToKey(role) + own.name());
    }
    const QFont font = control.font();
    say(font.pixelSize() > 0 && font.pixelSize() != 11, QString("%1px").arg(font.pixelSize()));
    say(font.bold(), "bold");
    say(font.underline(), "underlined");
    say(font.fixedPitch(), "fixed");
    say(!control.isEnabled(), "off");
    say(!control.isWindow() && control.isHidden(), "hidden");
    say(control.window()->focusWidget() == &control, "focus");
    const QByteArray type = control.metaObject()->className();
    if ((type == "QWidget" || type == "QGroupBox") && at.width() > 0) {
        const QImage image = control.grab().toImage();
        const int right = at.width() - 1, bottom = at.height() - 1, x = right / 2, y = bottom / 2;
        QStringList colours = {image.pixelColor(0, y).name(), image.pixelColor(right, y).name(),
                               image.pixelColor(x, 0).name(), image.pixelColor(x, bottom).name(),
                               image.pixelColor(x, y).name()};
        colours.removeDuplicates();
        say(true, "paints " + colours.join(' '));
    }
    for (const auto& name :
         QString("alignment maximum maxLength maxVisibleItems maximumWidth default "
                 "checked readOnly text title currentText windowTitle "
                 "accessibleName accessibleDescription toolTip")
             .split(' ')) {
        const QVariant value = control.property(name.toLatin1());
        if (value.typeId() == QMetaType::QString)
            say(value != "",
                (name.endsWith("Description") ? "\n    \"" : "\"") + value.toString() + '"');
        else
            say(!QList<int>{0, 10, 129, 32767, 16777215, at.width()}.contains(value.toInt()),
                name + QString::number(value.toInt()));
    }
    return text;
}

// A window, its controls, the tab order and the menus.
QString describeWindow(QWidget& window) {
    QStringList entries = {describe(window)};
    EXPECT_TRUE(window.minimumSize() == window.maximumSize() || window.inherits("QMainWindow"));
    if (window.inherits("QDialog")) {
        const QFlags flags = window.windowFlags();
        entries[0] += flags & Qt::FramelessWindowHint     ? " no frame"
                      : flags & Qt::WindowCloseButtonHint ? " close box"
                                                          : "";
        EXPECT_EQ(window.geometry().center(), window.screen()->availableGeometry().center());
        EXPECT_FALSE(window.testAttribute(Qt::WA_WState_Created)) << "it is too late to move it";
    }
    for (QWidget* control : window.findChildren<QWidget*>())
        entries += isOurs(control) ? QStringList(describe(*control)) : QStringList();
    entries << "Tab:";
    for (auto* next = window.nextInFocusChain(); next != &window; next = next->nextInFocusChain())
        if (isOurs(next) && (next->focusPolicy() & Qt::TabFocus) && !next->focusProxy())
            entries.last() += ' ' + next->objectName();
    for (const QMenu* menu : window.findChildren<QMenu*>(QRegularExpression("."))) {
        entries << menu->objectName() + " \"" + menu->title() + "\":";
        for (const QAction* entry : menu->actions())
            entries.last() += ' ' + entry->objectName() + " \"" + entry->text() + '"' +
                              entry->shortcut().toString();
    }
    QString text, line;
    for (const QString& entry : entries) {
        if (line.size() + entry.size() > 94)
            text += std::exchange(line, "") + "\n  ";
        line += (line.isEmpty() ? "" : " | ") + entry;
    }
    return text + line + '\n';
}

} // namespace

// On a dark desktop, where the program's own colours are visible.
TEST_F(Windows, AreAsInTheFile) {
    EXPECT_EQ(lightGround(), QBrush());
    const QPalette desktop = QApplication::palette();
    QPalette dark(Qt::black);
    dark.setColor(QPalette::Mid, Qt::green);
    dark.setColor(QPalette::WindowText, Qt::lightGray);
    QApplication::setPalette(dark);
    modFunc::state().SelectedDevice = 14;
    QString windows;
    for (QWidget* window : std::initializer_list<QWidget*>{
             new mdiMain(machine), new frmFileLoad(nullptr), new frmBuffer(nullptr),
             new frmBufferFill(nullptr), new frmSelectDevice(nullptr), new frmFunction(nullptr),
             new frmEditAuto(nullptr), new frmSettings(nullptr), new frmHelp(nullptr),
             new frmAbout(nullptr, frmAbout::Purpose::About)}) {
        windows += describeWindow(*window);
        delete window;
    }
    QApplication::setPalette(desktop);
    EXPECT_EQ(windows.toStdString(), TemporaryFolder::readFile(TEST_FILES "/windows/windows.txt"));
}

TEST_F(Windows, TextIsPaintedAndFitted) {
    mdi = std::make_unique<mdiMain>(machine);
    const auto panel = [&](const QString& text) {
        find<QLabel>("sbar4")->setText(text);
        return find("sbar4")->grab().toImage();
    };
    const QString x(100, 'x'), y(200, 'y'); // a panel elides only the middle
    EXPECT_EQ(panel("a" + x + "z"), panel("a" + x + y + x + "z"));
    EXPECT_NE(panel("a" + x + "z"), panel("b" + x + "z"));
    EXPECT_NE(panel("a" + x + "z"), panel("a" + x));
    QWidget owner;
    auto* frame = addFrame(&owner, "", "Title", {0, 0, 3000, 1500});
    const QImage titled = frame->grab().toImage();
    frame->setTitle("");
    EXPECT_NE(titled, frame->grab().toImage());
    QLabel* label = addLabel(&owner, "", "", {0, 0, 1500, 255});
    const auto fitted = [&](const QString& text) {
        showText(label, text);
        return QSize(label->font().stretch(), label->font().pixelSize());
    };
    const QSize usual = fitted("short");
    EXPECT_EQ(usual.height(), 11);
    EXPECT_EQ(fitted(QString(40, 'x')), QSize(70, 8)) << "as small as can just be read";
    EXPECT_EQ(fitted("short"), usual);
    EXPECT_LT(fitted(QString(22, 'x')).width(), usual.width());
}

namespace {

// A key, or a mouse button on a row, in a list of three rows with the second one highlighted.
struct Gesture {
    const char* name;
    Qt::Key key;
    Qt::MouseButton button;
    Qt::KeyboardModifier with;
    int clicks, from, to, highlighted;
};
struct List : testing::TestWithParam<Gesture> {};
constexpr int below = 4, off = -9;
constexpr auto left = Qt::LeftButton, right = Qt::RightButton;
const Gesture gestures[] = {
    {"CtrlSpace", Qt::Key_Space, {}, Qt::ControlModifier, 0, 0, 0, 1},
    {"CtrlDown", Qt::Key_Down, {}, Qt::ControlModifier, 0, 0, 0, 2},
    {"CtrlClick", {}, left, Qt::ControlModifier, 1, 1, 1, 1},
    {"ShiftClick", {}, left, Qt::ShiftModifier, 1, 2, 2, 2},
    {"ClickBelowTheRows", {}, left, Qt::NoModifier, 1, below, below, 1},
    {"DragOff", {}, left, Qt::NoModifier, 1, 1, off, 1},
    {"DragBelowTheRows", {}, left, Qt::NoModifier, 1, 1, below, 1},
    {"CtrlDrag", {}, left, Qt::ControlModifier, 1, 1, 2, 2},
    {"DoubleClick", {}, left, Qt::NoModifier, 2, 2, 2, 2},
    {"DoubleClickBelowTheRows", {}, left, Qt::NoModifier, 2, below, below, 1},
    {"RightDoubleClick", {}, right, Qt::NoModifier, 2, 2, 2, 2},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(, List, testing::ValuesIn(gestures),
                         [](auto& row) { return row.param.name; });
TEST_P(List, KeepsItsHighlight) {
    const Gesture& gesture = GetParam();
    QWidget owner;
    QListWidget* list = addList(&owner, "", "", {0, 0, 1500, 1500});
    list->addItems({"a", "b", "c"});
    owner.show();
    const int height = list->sizeHintForRow(0);
    EXPECT_EQ(list->viewport()->height() % height, 0) << "a row is shown in part";
    EXPECT_EQ(list->palette().color(QPalette::Window), list->palette().color(QPalette::Base));
    EXPECT_EQ(highlightedRow(list), -1);
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(highlightedRow(list), 0) << "the row that has the focus";
    list->setCurrentRow(1);
    bool used = false;
    QObject::connect(list, &QListWidget::itemDoubleClicked, [&] { used = true; });
    const auto at = [&](int row) { return QPoint(20, height * row + 5); };
    if (gesture.key != Qt::Key{})
        QTest::keyClick(list, gesture.key, gesture.with);
    else {
        QTest::mousePress(list->viewport(), gesture.button, gesture.with, at(gesture.from));
        QTest::mouseMove(list->viewport(), at(gesture.to));
        QTest::mouseRelease(list->viewport(), gesture.button, gesture.with, at(gesture.to));
        if (gesture.clicks > 1)
            QTest::mouseDClick(list->viewport(), gesture.button, gesture.with, at(gesture.from));
    }
    EXPECT_EQ(highlightedRow(list), gesture.highlighted);
    EXPECT_EQ(used, gesture.name == std::string("DoubleClick"));
}

TEST_F(Windows, AnErrorIsReportedWithItsCause) {
    const auto report = [this](const auto& error) {
        try {
            throw error;
        } catch (...) {
            EXPECT_EQ(Application::reportError(), 1);
        }
        return said();
    };
    EXPECT_EQ(report(std::runtime_error("<b>")), "! QUORVEN: <b>");
    EXPECT_EQ(report(std::bad_alloc()), "! QUORVEN: There is not enough memory.");
    EXPECT_EQ(report(1), "! QUORVEN: Unknown error.");
}
