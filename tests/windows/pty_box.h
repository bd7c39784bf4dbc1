// A simulated box on a real pseudo-terminal, served from the test's own event queue.
#pragma once

#include "platform/bytes.h"
#include "simbox/box.h"

#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <string>

// The two ends of a pseudo-terminal in raw mode. The program gets the name, the test the other end.
class Pty {
public:
    Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;
    ~Pty() { hangUp(); }

    void write(const Bytes& bytes) const;
    Bytes read() const; // what has come, without waiting
    void hangUp();      // as when the cable is pulled
    int descriptor() const { return master_; }
    const std::string& name() const { return name_; }

private:
    int master_;
    std::string name_;
};

class PtyBox {
public:
    PtyBox();
    PtyBox(const PtyBox&) = delete;
    PtyBox& operator=(const PtyBox&) = delete;

    Pty pty;
    std::unique_ptr<simbox::Box> box;

private:
    void serve();

    QElapsedTimer clock_;
    QTimer due_;
    QSocketNotifier arrived_;
};
