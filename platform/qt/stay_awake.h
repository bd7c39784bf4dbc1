#pragma once

#include <QDBusPendingCall>

// During its lifetime, asks the session manager (logind) not to suspend the computer or treat it as
// idle. Does not wait for the reply; no effect without a session manager. Requires Application,
// which opens the D-Bus connection.
class StayAwake {
public:
    explicit StayAwake(const QString& why);

private:
    QDBusPendingCall inhibitor_; // its reply owns the descriptor that keeps the request active
};
