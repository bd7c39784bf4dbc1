// No gesture takes the highlight of a list away, and what runs is the highlighted row.
#include "app/state.h"
#include "functions/frmFunction.h"
#include "shell/frmEditAuto.h"
#include "shell/frmSelectDevice.h"
#include "tests/support/virtual_machine.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace modFunc;

namespace {

constexpr int below = 100; // the last row
constexpr int outside = -1;

// On a list with row 1 highlighted: a key, or presses on a row and a release on another one.
struct Gesture {
    const char* name;
    Qt::Key key;
    Qt::MouseButton button;
    Qt::KeyboardModifier modifier;
    int presses, from, to;
    int highlighted; // afterwards
    friend void PrintTo(const Gesture& gesture, std::ostream* out) { *out << gesture.name; }
};
const Gesture gestures[] = {
    {"CtrlSpace", Qt::Key_Space, Qt::NoButton, Qt::ControlModifier, 0, 0, 0, 1},
    {"CtrlDown", Qt::Key_Down, Qt::NoButton, Qt::ControlModifier, 0, 0, 0, 2},
    {"CtrlClick", {}, Qt::LeftButton, Qt::ControlModifier, 1, 1, 1, 1},
    {"ShiftClick", {}, Qt::LeftButton, Qt::ShiftModifier, 1, 2, 2, 2},
    {"ClickBelowTheRows", {}, Qt::LeftButton, Qt::NoModifier, 1, below, below, 1},
    {"DoubleClickBelowTheRows", {}, Qt::LeftButton, Qt::NoModifier, 2, below, below, 1},
    {"DragOff", {}, Qt::LeftButton, Qt::NoModifier, 1, 1, outside, 1},
    {"DragBelowTheRows", {}, Qt::LeftButton, Qt::NoModifier, 1, 1, below, 1},
    {"CtrlDrag", {}, Qt::LeftButton, Qt::ControlModifier, 1, 1, 2, 2},
    {"RightDoubleClick", {}, Qt::RightButton, Qt::NoModifier, 2, 1, 1, 1},
};

void make(const Gesture& gesture, QListWidget& list) {
    if (gesture.button == Qt::NoButton)
        return QTest::keyClick(&list, gesture.key, gesture.modifier);
    const auto point = [&list](int row) {
        const QRect last = list.visualItemRect(list.item(list.count() - 1));
        return row == outside ? QPoint(-50, 10)
               : row == below ? last.bottomLeft() + QPoint(10, 5)
                              : list.visualItemRect(list.item(row)).center();
    };
    const auto send = [&](QEvent::Type type, int row, Qt::MouseButton changed,
                          Qt::MouseButton held) {
        QMouseEvent event(type, point(row), list.viewport()->mapToGlobal(point(row)), changed, held,
                          gesture.modifier);
        QApplication::sendEvent(list.viewport(), &event);
    };
    const QEvent::Type presses[] = {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick};
    for (int press = 0; press < gesture.presses; ++press) {
        send(presses[press], gesture.from, gesture.button, gesture.button);
        send(QEvent::MouseMove, gesture.to, Qt::NoButton, gesture.button);
        send(QEvent::MouseButtonRelease, gesture.to, gesture.button, Qt::NoButton);
    }
}

// A window and what it does with the highlighted row: `use` returns the row that it acted on.
struct Window {
    const char* name;
    Form* (*open)();
    int (*use)(Form& form, const QListWidget& list);
    friend void PrintTo(const Window& window, std::ostream* out) { *out << window.name; }
};

void click(Form& form, const char* button) {
    form.findChild<QPushButton*>(QString::fromLatin1(button))->click();
}

const Window windows[] = {
    {"Function", []() -> Form* { return new frmFunction(nullptr); },
     [](Form& form, const QListWidget&) {
         click(form, "cmdRun");
         const QString line = form.findChild<QLabel*>(QStringLiteral("lblMsg(0)"))->text();
         return line.startsWith(QLatin1String("Erasing")) ? 1
                : line.startsWith(QLatin1String("Blank")) ? 2
                                                          : -1;
     }},
    {"SelectDevice", []() -> Form* { return new frmSelectDevice(nullptr); },
     [](Form& form, const QListWidget&) {
         click(form, "cmdOk");
         return state().SelectedDevice - 1;
     }},
    {"EditAuto", []() -> Form* { return new frmEditAuto(nullptr); },
     [](Form& form, const QListWidget& list) {
         click(form, "cmdMoveRight");
         const auto* sequence = form.findChild<QListWidget*>(QStringLiteral("lstOut"));
         if (sequence->count() == 0)
             return -1;
         return list.row(list.findItems(sequence->item(0)->text(), Qt::MatchExactly).value(0));
     }},
};

class List : public testing::TestWithParam<std::tuple<Window, Gesture>> {};

} // namespace

TEST_P(List, KeepsItsHighlight) {
    const auto& [window, gesture] = GetParam();
    ResetState();
    VirtualMachine machine;
    state().ProgrammerFound = true;
    state().DeviceCount = 3;
    state().SelectedDevice = 2;
    for (DeviceRec& device : state().DeviceList)
        device = {.Name = "device", .Family = 1, .Size = 256};
    const std::unique_ptr<Form> form(window.open());
    form->show();
    auto* list = form->findChild<QListWidget*>();
    list->setCurrentRow(1);
    make(gesture, *list);
    EXPECT_TRUE(form->isVisible());
    ASSERT_EQ(list->selectedItems().size(), 1);
    EXPECT_EQ(list->row(list->selectedItems()[0]), gesture.highlighted);
    EXPECT_EQ(window.use(*form, *list), gesture.highlighted);
}
INSTANTIATE_TEST_SUITE_P(, List,
                         testing::Combine(testing::ValuesIn(windows), testing::ValuesIn(gestures)),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });
