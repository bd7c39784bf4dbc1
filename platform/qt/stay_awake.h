#pragma once

#include <QDBusPendingCall>

// As long as it lives, the computer neither sleeps nor counts as idle: the session manager has been
// asked for that, where there is one. Nothing waits for its reply; Application has made the
// connection.
class StayAwake {
public:
    explicit StayAwake(const QString& why);

private:
    QDBusPendingCall inhibitor_; // its reply contains the descriptor that holds the request
};
