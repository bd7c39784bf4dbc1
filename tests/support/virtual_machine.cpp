#include "tests/support/virtual_machine.h"

#include "link/exchange.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>

void VirtualTimer::setInterval(int milliseconds) {
    intervalMs = milliseconds;
    dueUs = nowUs + std::int64_t{1000} * intervalMs;
}

void VirtualTimer::setEnabled(bool on) {
    if (on && !enabled)
        dueUs = nowUs + std::int64_t{1000} * intervalMs;
    enabled = on;
}

void ProgrammerPort::setCommPort(int number) {
    if (open)
        throw std::logic_error("the number of an open port cannot be changed");
    commPort = number;
}

void ProgrammerPort::Open() {
    if (open)
        throw std::logic_error("an open port cannot be opened");
    if (!openError.empty())
        throw platform::PortError(openError);
    open = true;
    queue = staleAtOpen;
}

void ProgrammerPort::Close() {
    open = false;
    queue.clear();
}

void ProgrammerPort::Output(const Bytes& frame) {
    if (!open)
        return;
    lastCommandCode = static_cast<char>(frame.at(4));
    programmer->Receive(nowUs, frame);
}

std::int16_t ProgrammerPort::InBufferCount() {
    const Bytes arrived = programmer->Take(nowUs);
    if (open)
        queue.insert(queue.end(), arrived.begin(), arrived.end());
    return static_cast<std::int16_t>(std::min<std::size_t>(queue.size(), INT16_MAX));
}

Bytes ProgrammerPort::Input() {
    InBufferCount();
    taken.emplace_back(lastCommandCode, queue);
    return std::exchange(queue, {});
}

VirtualMachine::VirtualMachine(simbox::Options options) {
    replaceProgrammer(std::move(options));
    totmr.Tick = [] { modFunc::totmr_Timer(); };
    platform::useMachine(&machine_);
}

VirtualMachine::~VirtualMachine() {
    platform::useMachine(nullptr);
}

void VirtualMachine::replaceProgrammer(simbox::Options options) {
    port.programmer = std::make_unique<simbox::Programmer>(std::move(options));
}

void VirtualMachine::at(std::int64_t milliseconds, std::function<void()> action) {
    actions_.emplace(milliseconds * 1000, std::move(action));
}

void VirtualMachine::Yield() {
    constexpr std::int64_t never = INT64_MAX;
    std::int64_t next =
        std::min(totmr.enabled ? totmr.dueUs : never, tmrWait.enabled ? tmrWait.dueUs : never);
    if (port.open)
        next = std::min(next, port.programmer->nextEventUs().value_or(never));
    if (!actions_.empty())
        next = std::min(next, actions_.begin()->first);
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

void VirtualMachine::Show(const std::string& title, const std::string& text, Icon icon) {
    messages.push_back({title, text, icon});
    if (onMessage)
        onMessage();
}

std::string hexText(const Bytes& bytes) {
    std::ostringstream text;
    text << std::hex << std::uppercase << std::setfill('0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        text << (i ? " " : "") << std::setw(2) << int{bytes[i]};
    return text.str();
}
