// The machine in virtual time: the clock advances only in Yield, directly to the next event, so
// waiting takes no real time and timing is exact. The port is connected to the simulated programmer
// in the same process.
#pragma once

#include "link/exchange.h"
#include "platform/machine.h"
#include "simbox/programmer.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// "00 FF 1A"
inline std::string hexText(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + simbox::HexText(byte, 2);
    return text;
}

// Faults of the simulated programmer, separated by blanks.
inline std::vector<simbox::Fault> parseFaults(const std::string& text) {
    std::vector<simbox::Fault> faults;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        faults.push_back(std::get<simbox::Fault>(simbox::ParseFault(word)));
    return faults;
}

struct VirtualTimer final : platform::Timer {
    explicit VirtualTimer(const std::int64_t& clock) : nowUs(clock) {}
    void setInterval(int milliseconds) override {
        intervalMs = milliseconds;
        dueUs = nowUs + std::int64_t{1000} * intervalMs;
    }
    void setEnabled(bool on) override {
        if (on && !enabled)
            dueUs = nowUs + std::int64_t{1000} * intervalMs;
        enabled = on;
    }

    const std::int64_t& nowUs;
    int intervalMs = 7; // nothing may rely on an earlier interval
    bool enabled = false;
    std::int64_t dueUs = 0;
};

struct ProgrammerPort final : platform::SerialPort {
    explicit ProgrammerPort(const std::int64_t& clock) : nowUs(clock) {}
    void setCommPort(int number) override {
        if (open)
            throw std::logic_error("the number of an open port cannot be changed");
        commPort = number;
    }
    bool PortOpen() const override { return open; }
    void Open() override {
        if (open)
            throw std::logic_error("an open port cannot be opened");
        if (!openError.empty())
            throw platform::PortError(openError);
        open = true;
    }
    void Close() override { open = false; }
    void Output(const Bytes& frame) override {
        if (!open)
            return;
        lastCommandCode = static_cast<char>(frame.at(4));
        programmer->Receive(nowUs, frame);
    }
    std::int16_t InBufferCount() override {
        const Bytes arrived = programmer->Take(nowUs);
        if (open)
            queue.insert(queue.end(), arrived.begin(), arrived.end());
        return static_cast<std::int16_t>(std::min<std::size_t>(queue.size(), INT16_MAX));
    }
    Bytes Input() override {
        InBufferCount();
        taken.emplace_back(lastCommandCode, queue);
        return std::exchange(queue, {});
    }
    void setCrashFrames(const Bytes& frames) override { crashFrames = frames; }

    const std::int64_t& nowUs;
    std::unique_ptr<simbox::Programmer> programmer;
    std::string openError; // if not empty, opening fails with this error
    int commPort = 0;
    bool open = false;
    Bytes crashFrames;
    Bytes queue; // arrived and not read, kept while the port is closed
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
    VirtualMachine() {
        replaceProgrammer({});
        totmr.Tick = [] { modFunc::totmr_Timer(); };
        platform::useMachine(&machine_);
    }
    VirtualMachine(const VirtualMachine&) = delete;
    VirtualMachine& operator=(const VirtualMachine&) = delete;
    ~VirtualMachine() { platform::useMachine(nullptr); }

    simbox::Programmer& programmer() { return *port.programmer; }
    // A new programmer with other options on the same port.
    void replaceProgrammer(const simbox::Options& options) {
        port.programmer = std::make_unique<simbox::Programmer>(options);
        port.queue.clear();
    }
    // Runs `action` from the event queue at this time of the clock.
    void at(std::int64_t milliseconds, std::function<void()> action) {
        actions_.emplace(milliseconds * 1000, std::move(action));
    }
    double nowMs() const { return static_cast<double>(nowUs_) / 1000; }
    std::string& fileName() { return FileName; }

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
    void Yield() override {
        constexpr std::int64_t never = INT64_MAX;
        std::int64_t next = actions_.empty() ? never : actions_.begin()->first;
        for (const VirtualTimer* timer : {&totmr, &tmrWait})
            next = timer->enabled ? std::min(next, timer->dueUs) : next;
        if (port.open)
            next = std::min(next, port.programmer->nextEventUs().value_or(never));
        if (next == never)
            throw std::logic_error("waiting for an event that never comes");
        nowUs_ = std::max(nowUs_, next);

        port.InBufferCount();
        for (VirtualTimer* timer : {&totmr, &tmrWait}) {
            if (timer->enabled && timer->dueUs <= nowUs_) {
                timer->dueUs += std::int64_t{1000} * timer->intervalMs;
                timer->Tick();
            }
        }
        while (!actions_.empty() && actions_.begin()->first <= nowUs_)
            actions_.extract(actions_.begin()).mapped()();
    }
    void Show(const std::string& title, const std::string& text, Icon icon) override {
        messages.push_back({title, text, icon});
        if (onMessage)
            onMessage();
    }
    void setPanel(int panel, const std::string& text) override { panels[panel] = text; }
    bool ShowOpen() override { return true; }
    bool ShowSave() override { return true; }

    platform::Machine machine_{port, totmr, tmrWait, *this, *this, *this, *this};
};
