#include <QApplication>

#include <gtest/gtest.h>

namespace {

// No window may make Qt print a warning, except those that this platform always prints.
void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type != QtDebugMsg && type != QtInfoMsg &&
        message != QLatin1String("This plugin does not support propagateSizeHints()"))
        ADD_FAILURE() << message.toStdString();
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    qInstallMessageHandler(failOnWarning);
    return RUN_ALL_TESTS();
}
