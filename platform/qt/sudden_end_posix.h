// The ends of the program that it does not choose itself. No chip may be left under power by one.
#pragma once

#include <QObject>

#include <functional>

// SIGTERM, SIGINT and SIGHUP arrive as events: `end` is called out of the event queue, in whatever
// loop the program then is.
class EndSignals : public QObject {
    Q_OBJECT

public:
    explicit EndSignals(std::function<void()> end);
    ~EndSignals() override;
};

// For ends without an event queue (an abort, a crash, a display that has gone): while `lastBytes`
// are set, they are written raw to `descriptor` before the process goes. The bytes must stay where
// they are. Only a kill that no process can answer passes by.
void GuardPort(int descriptor);
void SetLastBytes(const char* bytes, int count); // null: nothing is to be written
