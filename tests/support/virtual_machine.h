// The machine in virtual time: the clock moves only in Yield, straight to the next event that is
// due, so a second costs nothing and 99 ms differ from 101 ms. The port leads to the simulated
// programmer in the same process.
#pragma once

#include "platform/machine.h"
#include "simbox/programmer.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct VirtualTimer final : platform::Timer {
    explicit VirtualTimer(const std::int64_t& clock) : nowUs(clock) {}
    void setInterval(int milliseconds) override;
    void setEnabled(bool on) override;

    const std::int64_t& nowUs;
    int intervalMs = 7; // nothing may rely on an earlier interval
    bool enabled = false;
    std::int64_t dueUs = 0;
};

struct ProgrammerPort final : platform::SerialPort {
    explicit ProgrammerPort(const std::int64_t& clock) : nowUs(clock) {}
    void setCommPort(int number) override;
    bool PortOpen() const override { return open; }
    void Open() override;
    void Close() override;
    void Output(const Bytes& frame) override;
    std::int16_t InBufferCount() override;
    Bytes Input() override;
    void setCrashFrames(const Bytes& frames) override { crashFrames = frames; }

    const std::int64_t& nowUs;
    std::unique_ptr<simbox::Programmer> programmer;
    std::string openError; // not empty: opening fails with it
    int commPort = 0;
    bool open = false;
    Bytes crashFrames;
    Bytes queue;       // arrived and not read
    Bytes staleAtOpen; // waits on the port when it is opened
    // What was read, each time with the command code of the last frame sent.
    std::vector<std::pair<char, Bytes>> taken;
    char lastCommandCode = 0;
};

struct ShownMessage {
    std::string title;
    std::string text;
    platform::MessageBox::Icon icon;
    bool operator==(const ShownMessage&) const = default;
};

class VirtualMachine final : platform::EventQueue,
                             platform::MessageBox,
                             platform::StatusBar,
                             platform::FileDialog {
public:
    explicit VirtualMachine(simbox::Options options = {});
    VirtualMachine(const VirtualMachine&) = delete;
    VirtualMachine& operator=(const VirtualMachine&) = delete;
    ~VirtualMachine();

    simbox::Programmer& programmer() { return *port.programmer; }
    // A fresh one with other options on the same port.
    void replaceProgrammer(simbox::Options options);
    // Runs `action` from the event queue at this time of the clock.
    void at(std::int64_t milliseconds, std::function<void()> action);
    double nowMs() const { return static_cast<double>(nowUs_) / 1000; }
    std::string& fileName() { return FileName; }
    // The same machine with another port, whose bytes arrive by at().
    platform::Machine with(platform::SerialPort& other) {
        return {other, totmr, tmrWait, *this, *this, *this, *this};
    }

private:
    std::int64_t nowUs_ = 0;
    std::multimap<std::int64_t, std::function<void()>> actions_;

public:
    ProgrammerPort port{nowUs_};
    VirtualTimer totmr{nowUs_};
    VirtualTimer tmrWait{nowUs_};
    std::vector<ShownMessage> messages;
    std::function<void()> onMessage; // while a message box is open
    std::map<int, std::string> panels;

private:
    void Yield() override;
    void Show(const std::string& title, const std::string& text, Icon icon) override;
    void setPanel(int panel, const std::string& text) override { panels[panel] = text; }
    bool ShowOpen() override { return true; }
    bool ShowSave() override { return true; }

    platform::Machine machine_{port, totmr, tmrWait, *this, *this, *this, *this};
};

// "00 FF 1A"
std::string hexText(const Bytes& bytes);
