// A programmer that replies as the input says, in virtual time.
//
// The input: two numbers, the call of the port at which the line is lost and the one at which a
// byte arrives by itself (0: never). Then one byte for each frame: 0 for the reply of the simulated
// programmer; else the number of pieces (0..3) in its low bits, and that reply after them with
// bit 2. A piece is its delay in ms, its length and the one byte it consists of. For a message box:
// the milliseconds that it stays open.
#pragma once

#include "fuzz/fuzz.h"
#include "simbox/commands.h"
#include "tests/support/virtual_machine.h"

#include <algorithm>
#include <array>
#include <utility>

namespace fuzz {

class ScriptedProgrammer final : platform::SerialPort {
public:
    ScriptedProgrammer(fuzz::Input input, std::uint8_t chipFill)
        : input_(input), loseAt_(input_.number(0x3FF)), byteAt_(input_.number(0x3FF)) {
        commands().chip().Fill(chipFill);
        commands().chip().setLocked(false);
        vm.onMessage = [this] { keepMessageOpen(); };
        platform::useMachine(&machine_);
    }
    ScriptedProgrammer(const ScriptedProgrammer&) = delete;
    ScriptedProgrammer& operator=(const ScriptedProgrammer&) = delete;

    // The simulated programmer. It is kept between inputs; each run ends with it powered down.
    static simbox::Commands& commands() {
        static simbox::Commands programmer{{}};
        return programmer;
    }
    double busyMs() const { return vm.nowMs() - shownMs_; }

    VirtualMachine vm;
    std::string commandCodes;    // of all frames, in order
    std::array<Bytes, 2> last;   // frames
    std::string refusal;         // why the simulated programmer rejected one
    std::array<int, 256> took{}; // how often the program took each byte
    bool open = true;
    bool cannotOpen = false;
    bool unasked = false;            // the byte that arrives by itself has arrived
    std::size_t waitedAtMessage = 0; // bytes, when the last message box opened

private:
    void setCommPort(int) override { check(!open, "an open port keeps its number"); }
    void setCrashFrames(const Bytes&) override {}
    bool PortOpen() const override { return open; }
    void Open() override {
        if (cannotOpen)
            throw platform::PortError("gone");
        open = true;
    }
    void Close() override {
        open = false;
        waiting_.clear();
    }
    void Output(const Bytes& frame) override {
        countCall();
        check(open && frame.size() >= 5 && frame[0] == 0 && frame[1] == 0 &&
                  frame[2] * 256U + frame[3] + 4 == frame.size(),
              "a frame contains its length");
        commandCodes += static_cast<char>(frame[4]);
        last = {last[1], frame};
        simbox::Reply reply;
        try {
            reply = commands().Run({0, commandCodes.back(), frame});
        } catch (const simbox::ProtocolError& error) {
            refusal += error.what();
        }
        sendReply(reply);
    }
    std::int16_t InBufferCount() override {
        countCall();
        return static_cast<std::int16_t>(waiting_.size());
    }
    Bytes Input() override {
        countCall();
        for (const std::uint8_t byte : waiting_)
            ++took[byte];
        return std::exchange(waiting_, {});
    }

    void countCall() {
        if (++calls_ == byteAt_) {
            arrive(Bytes{0xEE});
            unasked = true;
        }
        if (calls_ >= loseAt_ && loseAt_ > 0)
            waiting_.clear();
    }
    void arrive(const Bytes& bytes) { waiting_.insert(waiting_.end(), bytes.begin(), bytes.end()); }
    void sendReply(const simbox::Reply& reply) {
        const int plan = input_.byte();
        for (int piece = 0; piece < (plan & 3); ++piece) {
            const int delayMs = input_.number(0x7FF);
            const auto length = static_cast<std::size_t>(input_.number(0x1FF));
            send(delayMs, Bytes(length, input_.byte()));
        }
        if (plan != 0 && !(plan & 4))
            return;
        const auto gap = std::min(reply.gapIndex, reply.bytes.size());
        const auto middle = reply.bytes.begin() + static_cast<std::ptrdiff_t>(gap);
        send(0, {reply.bytes.begin(), middle});
        send(reply.gapUs / 1000, {middle, reply.bytes.end()});
    }
    // The line keeps the order of the bytes.
    void send(std::int64_t delayMs, Bytes bytes) {
        freeMs_ = std::max(freeMs_, static_cast<std::int64_t>(vm.nowMs())) + delayMs;
        vm.at(freeMs_, [this, sent = std::move(bytes)] { arrive(sent); });
    }
    void keepMessageOpen() {
        waitedAtMessage = waiting_.size();
        const double began = vm.nowMs();
        bool closed = false;
        vm.at(static_cast<std::int64_t>(began) + input_.number(0xFFF), [&] { closed = true; });
        while (!closed)
            machine_.events.Yield();
        shownMs_ += vm.nowMs() - began;
    }

    fuzz::Input input_;
    int loseAt_;
    int byteAt_;
    int calls_ = 0;
    std::int64_t freeMs_ = 0; // the line is busy until then
    double shownMs_ = 0;      // time that message boxes were open
    Bytes waiting_;
    platform::Machine machine_ = vm.with(*this);
};

} // namespace fuzz
