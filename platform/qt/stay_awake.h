#pragma once

#include <QDBusPendingCall>

// Asks the login manager (logind) not to suspend the computer or treat it as idle while this
// object exists. Does not wait for the reply. Without a login manager, this class has no effect.
// Requires Application, which opens the D-Bus connection.
class StayAwake {
public:
    explicit StayAwake(const QString& why);

private:
    QDBusPendingCall inhibitor_; // its reply owns the descriptor that keeps the request active
};
