// The machine in virtual time: the clock advances only in Yield, directly to the next event, so
// waiting takes no real time and timing is exact. The port is connected to the simulated programmer
// in the same process.
#pragma once

#include "link/exchange.h"
#include "platform/machine.h"
#include "simbox/programmer.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>

// "00 FF 1A"
inline std::string hexText(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + simbox::HexText(byte, 2);
    return text;
}

// Faults of the simulated programmer, separated by spaces.
inline std::vector<simbox::Fault> parseFaults(const std::string& text) {
    std::vector<simbox::Fault> faults;
    std::istringstream words(text);
    for (std::string word; words >> word;)
        faults.push_back(std::get<simbox::Fault>(simbox::ParseFault(word)));
    return faults;
}

inline constexpr std::int64_t never = INT64_MAX;

struct VirtualTimer final : platform::Timer {
    explicit VirtualTimer(const std::int64_t& clock) : nowUs(clock) {}
    void setInterval(int milliseconds) override {
        intervalUs = std::int64_t{1000} * milliseconds;
        dueUs = dueUs == never ? never : nowUs + intervalUs;
    }
    void setEnabled(bool on) override { // a running timer is due within its interval
        dueUs = on ? std::min(dueUs, nowUs + intervalUs) : never;
    }

    const std::int64_t& nowUs;
    std::int64_t intervalUs = 7000; // nothing may rely on an earlier interval
    std::int64_t dueUs = never;
};

struct VirtualMachine final : platform::EventQueue,
                              platform::SerialPort,
                              platform::MessageBox,
                              platform::StatusBar,
                              platform::FileDialog {
    VirtualMachine() {
        totmr.Tick = modFunc::totmr_Timer;
        platform::useMachine(&machine);
    }
    ~VirtualMachine() override { platform::useMachine(nullptr); }

    void Yield() override {
        const std::int64_t next =
            std::min({programmer.nextEventUs().value_or(never), totmr.dueUs, tmrWait.dueUs,
                      actions.empty() ? never : actions.begin()->first});
        if (next == never)
            throw std::logic_error("waiting for an event that never comes");
        nowUs = std::max(nowUs, next);

        InBufferCount();
        for (VirtualTimer* timer : {&totmr, &tmrWait}) {
            if (timer->dueUs <= nowUs) {
                timer->dueUs += timer->intervalUs;
                timer->Tick();
            }
        }
        while (!actions.empty() && actions.begin()->first <= nowUs)
            actions.extract(actions.begin()).mapped()();
    }

    void setCommPort(int number) override { commPort = number; }
    void Open() override {
        if (open || commPort == 16)
            throw platform::PortError("/dev/ttyUSB2: gone");
        open = true;
    }
    void Close() override { open = false; }
    void Output(const Bytes& frame) override {
        lastCommandCode = char(frame.at(4));
        if (open)
            programmer.Receive(nowUs, frame);
    }
    std::int16_t InBufferCount() override {
        const Bytes arrived = programmer.Take(nowUs);
        if (open)
            queue.insert(queue.end(), arrived.begin(), arrived.end());
        return std::int16_t(queue.size());
    }
    Bytes Input() override {
        InBufferCount();
        taken.emplace_back(lastCommandCode, queue);
        return std::exchange(queue, {});
    }
    void setCrashFrames(const Bytes& frames) override { crashFrames = frames; }
    void Show(const std::string& title, const std::string& text, Icon icon) override {
        messages.push_back((icon == Icon::Critical ? "! " : "") + title + ": " + text);
        onMessage();
    }
    void setPanel(int panel, const std::string& text) override { panels[panel] = text; }
    bool ShowOpen() override { return true; }
    bool ShowSave() override { return true; }

    std::int64_t nowUs = 0;
    // Yield runs each one when the clock reaches its key, in microseconds.
    std::multimap<std::int64_t, std::function<void()>> actions;
    VirtualTimer totmr{nowUs}, tmrWait{nowUs};
    simbox::Programmer programmer; // at the other end of the line
    bool open = false;
    int commPort = 0; // 16 cannot be opened
    Bytes crashFrames;
    Bytes queue; // arrived and not read, kept while the port is closed
    // What was read, each time with the command code of the last frame sent.
    std::vector<std::pair<char, Bytes>> taken;
    char lastCommandCode = 0;
    std::vector<std::string> messages;       // "! Title: text", without "! " if not critical
    std::function<void()> onMessage = [] {}; // while a message box is open
    std::map<int, std::string> panels;

    platform::Machine machine{*this, totmr, tmrWait, *this, *this, *this, *this};
};
