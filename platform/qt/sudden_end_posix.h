// The ends of the program that it does not choose itself. No chip may be left under power by one.
#pragma once

#include <QObject>

#include <functional>

// SIGTERM, SIGINT and SIGHUP arrive as events for as long as it lives: `end` is called out of the
// event queue, in whatever loop the program then is. One that was ignored at the start stays so,
// and the signals of failed writes are ignored from then on. One object at a time.
class EndSignals : public QObject {
    Q_OBJECT

public:
    explicit EndSignals(std::function<void()> end);
    ~EndSignals() override;
};

// For ends without an event queue (an abort, a crash, a display that has gone): while there are
// last bytes and a guarded port, they are written raw to it before the process goes. Only a kill
// that no process can answer passes by.
void GuardPort(int descriptor); // -1: the port has been closed
// The bytes must stay where they are until others are set; null: nothing is to be written.
void SetLastBytes(const char* bytes, int count);
