#include "app/hex_text.h"
#include "app/state.h"
#include "buffer/frmBuffer.h"
#include "buffer/frmBufferFill.h"
#include "buffer/image.h"
#include "tests/support/virtual_machine.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTextBlock>

#include <algorithm>
#include <gtest/gtest.h>

using namespace modFunc;

namespace {

class View : public testing::Test {
protected:
    View() {
        ResetState();
        window.UpdateBuffer();
        window.show();
        QApplication::processEvents();
    }
    // The address after a press at a point of the page.
    std::string pressed(QPoint at, QEvent::Type type = QEvent::MouseButtonPress) {
        QMouseEvent event(type, at, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(page->viewport(), &event);
        return window.findChild<QLabel*>(QStringLiteral("lblAddress"))->text().toStdString();
    }
    // Where a character of the page is drawn.
    QRect cell(int row, int column) {
        QTextCursor cursor(page->document()->findBlockByNumber(row + 1));
        cursor.setPosition(cursor.position() + column);
        QRect cell = page->cursorRect(cursor);
        cursor.movePosition(QTextCursor::NextCharacter);
        cell.setRight(page->cursorRect(cursor).left() - 1);
        return cell;
    }

    frmBuffer window{nullptr};
    QTextEdit* page = window.findChild<QTextEdit*>();
};

} // namespace

// Line by line of 14 pixels, the heading first.
TEST_F(View, EveryPixelOfADigitSelectsIt) {
    for (int row = 0; row < 16; ++row) {
        EXPECT_EQ(cell(row, 8).center().y() / 14, row + 1);
        const std::string address = HexWord(row * 16 + 1);
        for (int y = 14 * (row + 1); y < 14 * (row + 2); ++y)
            for (const int x : {cell(row, 8).left() + 1, cell(row, 9).right() - 1}) {
                pressed(cell(15 - row, 50).center());
                EXPECT_EQ(pressed({x, y}), address) << x << ", " << y;
            }
    }
}

TEST_F(View, OtherPressesLeaveTheCaretAlone) {
    pressed(cell(2, 8).center());
    EXPECT_EQ(pressed(cell(3, 7).center()), "0021") << "a blank";
    EXPECT_EQ(pressed(cell(3, 53).center()), "0021") << "the characters";
    EXPECT_EQ(pressed(cell(-1, 8).center()), "0021") << "the heading";
    EXPECT_EQ(pressed({50, 238}), "0021") << "below the last line";
    EXPECT_EQ(pressed(cell(2, 11).center(), QEvent::MouseButtonDblClick), "0021")
        << "the second press of a double click";
}

TEST(Fill, ReachesTheLastByteOfTheImageAndNoFurther) {
    ResetState();
    VirtualMachine machine;
    const auto fill = [](const char* length) {
        frmBufferFill dialog(nullptr);
        dialog.findChild<QLineEdit*>(QStringLiteral("txtStart"))->setText(QStringLiteral("FFFF"));
        dialog.findChild<QLineEdit*>(QStringLiteral("txtLength"))
            ->setText(QString::fromLatin1(length));
        dialog.findChild<QPushButton*>(QStringLiteral("cmdOk"))->click();
        return state().FillConfirmed;
    };
    EXPECT_FALSE(fill("1173"));
    EXPECT_EQ(machine.messages.size(), 1U);
    EXPECT_TRUE(fill("1172"));
    FillImage();
    EXPECT_EQ(std::ranges::count(state().BufferData, 0xFF), 0x1172);
    EXPECT_EQ(state().BufferData[70000], 0xFF);
}
