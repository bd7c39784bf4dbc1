// What the program asks of the machine it runs on. Each struct has one real implementation
// (platform/qt/) and one that turns a virtual clock (tests/support/), so that a time-out of a
// second costs a test nothing and every order of events can be played.
//
// All of it belongs to the one thread that runs everything. Texts are UTF-8.
#pragma once

#include "platform/bytes.h"

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace platform {

// An opening of the port that failed. what() names the port's path, if it has one, and the cause,
// in words for the user.
struct PortError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The serial line to the programmer: 57600 baud, byte transparent, no flow control, polled. A line
// that is lost while open raises no error: it takes and delivers no more bytes.
struct SerialPort {
    virtual ~SerialPort() = default;

    // 1..16; holds from the next opening on.
    virtual void setCommPort(int number) = 0;

    virtual bool PortOpen() const = 0;
    // Opens port `CommPort` with DTR asserted and RTS not. Throws PortError; the port is closed
    // then.
    virtual void Open() = 0;
    // Closes the port and drops what was queued. No effect on a closed port.
    virtual void Close() = 0;

    // Hands all bytes to the system at once and returns without waiting for them to leave.
    virtual void Output(const Bytes& frame) = 0;
    // Number of bytes that have arrived and wait, the system's own queue included; at most 32767.
    virtual std::int16_t InBufferCount() = 0;
    // Takes all waiting bytes; empty when none wait. On a line that delivers without end, about
    // 32767.
    virtual Bytes Input() = 0;

    // Power-down frames that are sent on a crash, when no code of ours runs any more. Empty: no
    // frames.
    virtual void setCrashFrames(const Bytes& frames) = 0;
};

// A repeating timer. Its ticks are events: they come out of EventQueue::Yield and of the loops of
// message boxes and dialogs.
struct Timer {
    virtual ~Timer() = default;
    // Milliseconds, at least 1. A running timer starts counting again.
    virtual void setInterval(int milliseconds) = 0;
    // Starts counting from now, or stops. Enabling a running timer changes nothing.
    virtual void setEnabled(bool enabled) = 0;

    std::function<void()> Tick; // called at each tick
};

struct EventQueue {
    virtual ~EventQueue() = default;
    // Handles the events that wait. When none does, sleeps until an event, a byte from the port
    // or a timer tick comes and handles that. Callers loop over a condition of their own.
    virtual void Yield() = 0;
};

struct MessageBox {
    enum class Icon { Critical, Information };

    virtual ~MessageBox() = default;
    // Returns when the user has pressed its one button, OK.
    virtual void Show(const std::string& title, const std::string& text, Icon icon) = 0;
};

// The main window's status bar `sbar`: panels 1 to 4 for port, device, size and file.
struct StatusBar {
    virtual ~StatusBar() = default;
    virtual void setPanel(int panel, const std::string& text) = 0;
};

// The one file dialog `cdia`. It lists all files, accepts names that do not exist, never asks
// before overwriting and adds nothing to a name.
struct FileDialog {
    virtual ~FileDialog() = default;
    // Let the user choose a name, beginning with the present FileName. False on Cancel, which
    // keeps FileName.
    virtual bool ShowOpen() = 0;
    virtual bool ShowSave() = 0;

    std::string FileName; // as the dialog gave it; stays between uses
};

// The machine as the core sees it: the invisible controls of the main window and of the function
// window. main() creates it before the main window.
struct Machine {
    SerialPort& cm;
    Timer& totmr;   // reply time-out, and the splash
    Timer& tmrWait; // settling pauses between frames
    EventQueue& events;
    MessageBox& msgBox;
    StatusBar& sbar;
    FileDialog& cdia;
};

// The machine in use. Calling machine() before useMachine() is a fault of the program.
Machine& machine();
void useMachine(Machine* inUse);

} // namespace platform
