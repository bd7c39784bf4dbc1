#pragma once

#include <QDBusPendingCall>

// Asks the session manager (logind), for as long as it lives, not to suspend the computer or treat
// it as idle. Does not wait for the reply; without a session manager it has no effect. Application
// has opened the connection.
class StayAwake {
public:
    explicit StayAwake(const QString& why);

private:
    QDBusPendingCall inhibitor_; // its reply contains the descriptor that holds the request
};
