#include "app/state.h"
#include "files/frmFileLoad.h"
#include "functions/frmFunction.h"
#include "shell/frmAbout.h"
#include "tests/support/virtual_machine.h"

#include <QApplication>
#include <QGroupBox>
#include <QImage>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

using namespace modFunc;

namespace {

struct Window {
    const char* name;
    Form* (*open)();
    bool escapeCloses;
    friend void PrintTo(const Window& window, std::ostream* out) { *out << window.name; }
};
const Window windows[] = {
    {"FileLoad", []() -> Form* { return new frmFileLoad(nullptr); }, true},
    {"About", []() -> Form* { return new frmAbout(nullptr, frmAbout::Purpose::About); }, true},
    {"Splash", []() -> Form* { return new frmAbout(nullptr, frmAbout::Purpose::Splash); }, false},
};

class WithoutTitleBar : public testing::TestWithParam<Window> {};

} // namespace

TEST_P(WithoutTitleBar, IsCentredFromTheBeginningAndIgnoresACloseRequest) {
    ResetState();
    VirtualMachine machine;
    const std::unique_ptr<Form> form(GetParam().open());
    EXPECT_FALSE(form->testAttribute(Qt::WA_WState_Created)) << "it is too late to move it";
    EXPECT_EQ(form->geometry().center(), form->screen()->availableGeometry().center());
    form->show();
    EXPECT_FALSE(form->close());
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(state().FileCancelled);
    QTest::keyClick(form.get(), Qt::Key_Escape);
    EXPECT_NE(form->isVisible(), GetParam().escapeCloses);
}
INSTANTIATE_TEST_SUITE_P(, WithoutTitleBar, testing::ValuesIn(windows),
                         [](const auto& row) { return row.param.name; });

TEST(DarkDesktop, HasALightGroundUpToTheLinesOfTheMessageFrame) {
    ResetState();
    const QPalette desktop = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::black));
    frmFunction form(nullptr);
    const QImage frame = form.findChild<QGroupBox*>(QStringLiteral("Frame1"))->grab().toImage();
    QApplication::setPalette(desktop);
    const QRect inside = frame.rect().adjusted(2, 16, -2, -2);
    for (const QPoint corner :
         {inside.topLeft(), inside.topRight(), inside.bottomLeft(), inside.bottomRight()})
        EXPECT_EQ(frame.pixelColor(corner), QColor(239, 239, 239))
            << corner.x() << "," << corner.y();
}
