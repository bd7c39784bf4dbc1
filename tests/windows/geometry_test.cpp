// Every window held against tests/windows/geometry.txt, and no text wider than its place.
#include "app/startup.h"
#include "app/state.h"
#include "buffer/frmBuffer.h"
#include "buffer/frmBufferFill.h"
#include "files/frmFileLoad.h"
#include "functions/frmFunction.h"
#include "platform/qt/controls.h"
#include "platform/qt/qt_machine.h"
#include "shell/frmAbout.h"
#include "shell/frmEditAuto.h"
#include "shell/frmSelectDevice.h"
#include "shell/frmSettings.h"
#include "tests/support/table_file.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

#include <gtest/gtest.h>
#include <map>
#include <memory>

using namespace modFunc;

namespace {

class Geometry : public testing::Test {
protected:
    Geometry() {
        ResetState();
        state().AppPath = SHIPPED_DATA;
        ReadSettings();
        state().ProgramVersion = "1.0";
        state().ProgramDate = "22/11/2026";
        ReadDeviceList();
        for (QWidget* window : std::initializer_list<QWidget*>{
                 new frmFunction(nullptr), new frmFileLoad(nullptr), new frmBuffer(nullptr),
                 new frmBufferFill(nullptr), new frmSelectDevice(nullptr), new frmSettings(nullptr),
                 new frmEditAuto(nullptr), new frmAbout(nullptr, frmAbout::Purpose::About)})
            windows[window->objectName().toStdString()].reset(window);
    }
    static QString textOf(const QWidget* widget) {
        if (widget->isWindow())
            return widget->windowTitle();
        const char* const property = widget->inherits("QGroupBox") ? "title" : "text";
        return widget->property(property).toString();
    }

    QtMachine machine{modFunc::state().AppPath};
    std::map<std::string, std::unique_ptr<QWidget>> windows;
};

} // namespace

TEST_F(Geometry, EveryControlStandsWhereItBelongs) {
    for (const auto& row : readTable(TEST_FILES "/windows/geometry.txt")) {
        SCOPED_TRACE(row.at(0) + " " + row.at(1));
        QWidget* widget = windows.at(row[0]).get();
        if (!row[1].empty())
            widget = widget->findChild<QWidget*>(QString::fromStdString(row[1]));
        ASSERT_NE(widget, nullptr);
        int left = 0, top = 0, width = 0, height = 0;
        std::istringstream(row.at(2)) >> left >> top >> width >> height;
        const QRect place = row[1].empty() ? widget->rect() : widget->geometry();
        EXPECT_NEAR(place.left(), left / 15.0, 1);
        EXPECT_NEAR(place.top(), top / 15.0, 1);
        EXPECT_NEAR(place.width(), width / 15.0, 1);
        EXPECT_NEAR(place.height(), height / 15.0, 1);
        if (row.size() > 3) {
            EXPECT_EQ(textOf(widget).toStdString(), row[3]);
        }
        EXPECT_TRUE(!row[1].empty() || widget->minimumSize() == widget->maximumSize());
    }
}

TEST_F(Geometry, TabGoesTheListedWay) {
    for (const auto& row : readTable(TEST_FILES "/windows/tab_order.txt")) {
        const QWidget* const window = windows.at(row.at(0)).get();
        std::string names;
        for (auto* next = window->nextInFocusChain(); next != window;
             next = next->nextInFocusChain())
            if ((next->focusPolicy() & Qt::TabFocus) && !next->focusProxy() &&
                !next->objectName().startsWith(QLatin1String("qt_")))
                names += (names.empty() ? "" : " ") + next->objectName().toStdString();
        EXPECT_EQ(names, row.at(1)) << row[0];
    }
}

TEST_F(Geometry, NoTextIsWiderThanItsPlace) {
    auto* line = windows["frmFunction"]->findChild<QLabel*>(QStringLiteral("lblMsg(0)"));
    showText(line, QStringLiteral("Blank Checking ...   Device Fault!"));
    for (const auto& [name, window] : windows) {
        SCOPED_TRACE(name);
        for (const auto* label : window->findChildren<QLabel*>()) {
            const QFontMetrics font = label->fontMetrics();
            const QString text = label->text();
            EXPECT_LE(font.horizontalAdvance(text), label->width()) << text.toStdString();
            EXPECT_LE(font.tightBoundingRect(text).height(), label->height()) << text.toStdString();
        }
        for (const auto* option : window->findChildren<QRadioButton*>())
            EXPECT_LE(option->sizeHint().width(), option->width()) << option->text().toStdString();
        for (const auto* button : window->findChildren<QPushButton*>())
            EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()), button->width() - 8)
                << button->text().toStdString();
    }
}

TEST_F(Geometry, ThePageFitsItsBoxWithTheFirstDigitSelected) {
    auto& window = static_cast<frmBuffer&>(*windows["frmBuffer"]);
    window.UpdateBuffer();
    window.show();
    auto* page = window.findChild<QTextEdit*>();
    EXPECT_EQ(page->toPlainText().size(), 1201 - 17 - 1); // line ends are one character here
    EXPECT_EQ(page->textCursor().selectedText(), QStringLiteral("0"));
    EXPECT_EQ(page->textCursor().selectionStart(), 69);
    EXPECT_LE(page->document()->size().height(), page->viewport()->height());
    EXPECT_LE(page->document()->idealWidth(),
              window.findChild<QScrollBar*>(QStringLiteral("vsc"))->x() - page->x());
}
