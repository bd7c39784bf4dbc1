#include "platform/qt/application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    alarm(600); // a dialog that a fault leaves open would wait forever
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    // No window may make Qt print a warning, except the one that this platform always prints.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type != QtDebugMsg && type != QtInfoMsg && !text.contains("propagateSizeHints"))
            ADD_FAILURE() << text.toStdString();
    });
    return RUN_ALL_TESTS();
}
