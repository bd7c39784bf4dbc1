// The interfaces through which the program uses the machine it runs on. Each has a real
// implementation (platform/qt/) and a fake with a virtual clock (tests/support/), so that tests
// need not wait for time-outs and can produce any order of events.
//
// The code of the program runs in one thread; nothing here is thread-safe. Texts are UTF-8.
#pragma once

#include "platform/bytes.h"

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace platform {

// Thrown when the port cannot be opened. what() is a message for the user: the port's path, if it
// has one, and the cause.
struct PortError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The serial line to the programmer: 57600 baud, 8 data bits, no parity, 1 stop bit, no flow
// control. Every byte value is passed on unchanged. The program polls the port for received bytes.
// A port that is closed, or that has lost its connection while open, neither accepts nor delivers
// bytes; this raises no error.
struct SerialPort {
    virtual ~SerialPort() = default;

    // Selects the port, 1..16. Takes effect at the next Open().
    virtual void setCommPort(int number) = 0;
    // Opens the port selected by setCommPort(), with DTR asserted and RTS deasserted; the port must
    // be closed. On failure, or for a number outside 1..16, throws PortError and leaves the port
    // closed.
    virtual void Open() = 0;
    // Closes the port and discards received bytes that have not been read. No effect on a closed
    // port.
    virtual void Close() = 0;

    // Passes all bytes to the system immediately and returns without waiting for their
    // transmission.
    virtual void Output(const Bytes& frame) = 0;
    // Number of received bytes that have not been read, including those in the system's own queue;
    // at most 32767.
    virtual std::int16_t InBufferCount() = 0;
    // Removes and returns all received bytes; the result is empty if no bytes have been received.
    // If bytes keep arriving, stops after about 32767 bytes.
    virtual Bytes Input() = 0;

    // Sets the power-down frames to send if the process is terminated or crashes. If `frames` is
    // empty, nothing is sent.
    virtual void setCrashFrames(const Bytes& frames) = 0;
};

// A repeating timer. Ticks are delivered as events, by EventQueue::Yield and by the event loops of
// message boxes and dialogs. The timer is stopped at first.
struct Timer {
    virtual ~Timer() = default;
    // `milliseconds` is at least 1. If the timer is running, the interval starts again.
    virtual void setInterval(int milliseconds) = 0;
    // Starts or stops the timer. Enabling a running timer has no effect.
    virtual void setEnabled(bool enabled) = 0;

    std::function<void()> Tick; // if empty, ticks have no effect
};

struct EventQueue {
    virtual ~EventQueue() = default;
    // Handles all pending events. If no event is pending, sleeps until an event, a byte from the
    // port or a timer tick arrives, and handles it. Callers loop until their own condition is met.
    virtual void Yield() = 0;
};

struct MessageBox {
    enum class Icon { Critical, Information };

    virtual ~MessageBox() = default;
    // Returns after the user has closed the message box. Until then, timers and other events are
    // handled.
    virtual void Show(const std::string& title, const std::string& text, Icon icon) = 0;
};

// The main window's status bar `sbar`: panels 1 to 4 for port, device, size and file.
struct StatusBar {
    virtual ~StatusBar() = default;
    // No effect before the main window exists.
    virtual void setPanel(int panel, const std::string& text) = 0;
};

// The only file dialog, `cdia`. It lists all files, accepts names that do not exist, never asks
// before overwriting and appends nothing to a name.
struct FileDialog {
    virtual ~FileDialog() = default;
    // Lets the user choose a name; FileName is the initial name, or empty for the current
    // directory. Returns false on Cancel, which leaves FileName unchanged. A chosen name is an
    // absolute path.
    virtual bool ShowOpen() = 0;
    virtual bool ShowSave() = 0;

    std::string FileName; // the last name chosen; kept between calls
};

// The machine as the core uses it. main() creates it before the main window.
struct Machine {
    SerialPort& cm;
    Timer& totmr;   // reply time-out; also times discovery and the splash screen
    Timer& tmrWait; // settling pauses between frames
    EventQueue& events;
    MessageBox& msgBox;
    StatusBar& sbar;
    FileDialog& cdia;
};

// The machine in use. machine() may be called only after useMachine().
Machine& machine();
void useMachine(Machine* inUse);

} // namespace platform
