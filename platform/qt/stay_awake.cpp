#include "platform/qt/stay_awake.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

namespace {

QDBusMessage request(const QString& why) {
    QDBusMessage inhibit = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    inhibit.setAutoStartService(false);
    inhibit << QStringLiteral("sleep:idle") << QCoreApplication::applicationName() << why
            << QStringLiteral("block");
    return inhibit;
}

} // namespace

StayAwake::StayAwake(const QString& why)
    : inhibitor_(QDBusConnection::systemBus().asyncCall(request(why))) {}
