// The controls of every window and how they are painted. windows.txt has an entry for each window.
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

namespace {

// A control's geometry; its colours, font and properties where they differ from Qt's; what it
// paints.
QString describe(QWidget& control) {
    QString text = control.objectName();
    const auto say = [&](bool isSo, const QString& word) { text += isSo ? ' ' + word : ""; };
    for (const QAction* entry : control.actions())
        say(true, entry->objectName() + '=' + entry->text() + entry->shortcut().toString());
    const QRect at = control.geometry();
    const bool inMain = control.window()->inherits("QMainWindow"); // size depends on the font
    say(inMain && control.minimumWidth() > 0, QString("%1 wide").arg(at.width()));
    say(!inMain, QString("%1,%2 %3x%4").arg(at.x()).arg(at.y()).arg(at.width()).arg(at.height()));
    const QFlags flags = control.inherits("QDialog") ? control.windowFlags() : Qt::WindowFlags();
    say(flags & Qt::FramelessWindowHint, "no frame");
    say(flags & Qt::WindowCloseButtonHint, "close box");
    using P = QPalette;
    for (const auto role : {P::WindowText, P::Text, P::Window, P::Base}) {
        const QColor own = control.palette().color(P::Active, role);
        const bool shown = role != P::Window || control.isWindow() || control.autoFillBackground();
        say(shown && own != QApplication::palette().color(P::Active, role),
            QVariant::fromValue(role).toString() + own.name());
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
        QStringList colours = {"paints"};
        for (const QPoint point : {QPoint(0, y), {right, y}, {x, 0}, {x, bottom}, {x, y}})
            colours << image.pixelColor(point).name();
        colours.removeDuplicates();
        say(true, colours.join(' '));
    }
    for (const auto& name :
         QString("textFormat alignment maximum maxLength maxVisibleItems default checked readOnly "
                 "text title currentText windowTitle accessibleName accessibleDescription toolTip")
             .split(' ')) {
        const QVariant value = control.property(name.toLatin1());
        if (value.typeId() == QMetaType::QString)
            say(value != "", '"' + value.toString() + '"');
        else
            say(!QList<int>{0, 10, 129, 32767}.contains(value.toInt()),
                name + QString::number(value.toInt()));
    }
    return text;
}

// A window, its controls and menus, and the tab order.
QString describeWindow(QWidget& window) {
    EXPECT_TRUE(window.minimumSize() == window.maximumSize() || window.inherits("QMainWindow"));
    EXPECT_FALSE(window.testAttribute(Qt::WA_WState_Created)) << "it is too late to move it";
    const auto controls = window.findChildren<QWidget*>(QRegularExpression("^(?!qt_)."));
    QStringList entries = {describe(window)};
    for (QWidget* control : controls)
        entries << describe(*control);
    entries << "Tab:";
    for (auto* next = window.nextInFocusChain(); next != &window; next = next->nextInFocusChain())
        if (controls.contains(next) && (next->focusPolicy() & Qt::TabFocus) && !next->focusProxy())
            entries.last() += ' ' + next->objectName();
    static const QRegularExpression line("(.{1,113})( |$)");
    return entries.join(" | ").replace(line, "\\1\n  ").trimmed() + '\n';
}

} // namespace

// On a dark desktop, where the program's own colours are visible.
TEST_F(Windows, AreAsInTheFile) {
    EXPECT_EQ(lightGround(), QBrush());
    QPalette dark(Qt::black);
    dark.setColor(QPalette::Mid, Qt::green);
    dark.setColor(QPalette::WindowText, Qt::lightGray);
    QApplication::setPalette(dark);
    modFunc::state().SelectedDevice = 14;
    modFunc::state().AutoCount = 0;
    QString windows;
    for (QWidget* window : std::initializer_list<QWidget*>{
             new mdiMain(machine), new frmFileLoad(nullptr), new frmBuffer(nullptr),
             new frmBufferFill(nullptr), new frmSelectDevice(nullptr), new frmFunction(nullptr),
             new frmEditAuto(nullptr), new frmSettings(nullptr), new frmHelp(nullptr),
             new frmAbout(nullptr, frmAbout::Purpose::About)}) {
        windows += describeWindow(*window);
        delete window;
    }
    QApplication::setPalette(QPalette());
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
    EXPECT_NE(addFrame(&owner, "", "04", {0, 0, 3000, 1500})->grab().toImage(),
              addFrame(&owner, "", "40", {0, 0, 3000, 1500})->grab().toImage());
    const auto fitted = [label = addLabel(&owner, "", "", {0, 0, 1500, 255})](const QString& text) {
        showText(label, text);
        return QSize(label->font().stretch(), label->font().pixelSize());
    };
    const QSize usual = fitted("short");
    EXPECT_EQ(fitted(QString(40, 'x')), QSize(70, 8)) << "as small as can just be read";
    EXPECT_EQ(fitted("short"), usual);
    EXPECT_LT(fitted(QString(22, 'x')).width(), usual.width());
    EXPECT_LT(fittedFont(sansFont(32), "H", {99, 16}).pixelSize(), 32);
}

TEST(List, KeepsItsHighlight) {
    QWidget owner;
    QListWidget* list = addList(&owner, "", "", {0, 0, 1500, 1500});
    list->addItems({"a", "b", "c"});
    owner.show();
    EXPECT_EQ(list->palette().color(QPalette::Window), list->palette().color(QPalette::Base));
    const int height = list->sizeHintForRow(0);
    EXPECT_EQ(list->viewport()->height() % height, 0) << "a row is shown in part";
    for (const auto key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End}) {
        list->setCurrentRow(1);
        list->clearSelection();
        EXPECT_EQ(highlightedRow(list), -1);
        QTest::keyClick(list, key);
        EXPECT_EQ(highlightedRow(list), 1) << "the row that has the focus";
    }
    QWidget* rows = list->viewport();
    const auto at = [&](int row) { return QPoint(20, height * row + 5); };
    QTest::mouseClick(rows, Qt::LeftButton, Qt::ControlModifier, at(1));
    EXPECT_EQ(highlightedRow(list), 1);
    QTest::mousePress(rows, Qt::LeftButton, {}, at(1));
    QTest::mouseMove(rows, at(-9));
    QTest::mouseRelease(rows, Qt::LeftButton, {}, at(4));
    QTest::mouseClick(rows, Qt::LeftButton, {}, at(4));
    EXPECT_EQ(highlightedRow(list), 1) << "not dragged off the rows";
    int used = 0;
    QObject::connect(list, &QListWidget::itemDoubleClicked, [&] { ++used; });
    for (const auto button : {Qt::RightButton, Qt::LeftButton}) {
        EXPECT_EQ(used, 0);
        QTest::mouseDClick(rows, button, {}, at(0));
        EXPECT_EQ(highlightedRow(list), 0);
    }
    EXPECT_EQ(used, 1);
}

TEST_F(Windows, AnErrorIsReportedWithItsCause) {
    const auto report = [](const auto& error) {
        try {
            throw error;
        } catch (...) {
            return Application::reportError();
        }
    };
    EXPECT_EQ(report(std::runtime_error("<b>")) + report(std::bad_alloc()) + report(1), 3);
    EXPECT_EQ(said(),
              "! QUORVEN: <b>! QUORVEN: There is not enough memory.! QUORVEN: Unknown error.");
}
