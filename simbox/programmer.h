#pragma once

#include "simbox/commands.h"
#include "simbox/wire.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simbox {

// The simulated programmer as its serial line shows it: bytes and time in, bytes and times out. It
// reads no clock and never sleeps; all times are microseconds of the caller's clock, which does not
// go back.
//
// A frame is received when its last byte is in. The programmer then replies to it or rejects it: a
// rejected frame changes nothing, has no reply and is a protocol error. So is an incomplete frame,
// which is dropped one second after its first byte. No byte sequence does harm.
//
// Unless unthrottled, a reply arrives as from a USB bridge: in portions of 32 bytes, each when its
// last byte has come over the wire, and the rest at the time of its last byte. The two parts of a
// reply with a gap are divided separately. A pulled cable loses the portion that was filling.
class Programmer {
public:
    explicit Programmer(const Options& options = {});

    // Bytes from the program, all handed over at `nowUs`. Each takes its time on the wire, after
    // those still there, before it is received. Ignored once the cable is pulled.
    void Receive(std::int64_t nowUs, std::span<const std::uint8_t> bytes);

    // When something is next due: a portion of a reply, a frame being complete, an incomplete frame
    // being dropped. May be in the past. nullopt: nothing, ever, without further bytes.
    std::optional<std::int64_t> nextEventUs() const;

    // Lets time pass up to `nowUs` and returns the reply bytes due by then, in order, once. Frames
    // that are complete by then are carried out here (or in `Receive`), not before.
    std::vector<std::uint8_t> Take(std::int64_t nowUs);

    // After a pull fault: portions due before it still come out of `Take`, nothing after.
    bool cablePulled() const { return pulled_; }

    const std::vector<std::string>& protocolErrors() const { return protocolErrors_; }
    // Every whole frame in order of arrival, rejected ones included.
    const std::vector<Frame>& frames() const { return frames_; }

    // Replaces the faults that name a frame. Replies already on their way are unchanged.
    void setFaults(std::vector<Fault> faults);

    Chip& chip() { return commands_.chip(); }
    bool powered() const { return commands_.powered(); }
    bool socketReleased() const { return commands_.socketReleased(); }

    // Gets one line for each frame, reply and protocol error, without line end. A reply's line
    // comes with its first portion. An empty function: no trace.
    void setTraceSink(std::function<void(const std::string&)> sink);

private:
    struct IncomingByte {
        std::int64_t atUs;
        std::uint8_t value;
    };
    // Reply bytes that arrive together.
    struct Portion {
        std::int64_t atUs;
        std::vector<std::uint8_t> bytes;
        std::string traceText; // empty for those after the first of a reply
    };

    void advance(std::int64_t nowUs);
    void receiveByte(IncomingByte byte);
    void dropPartial(std::int64_t nowUs);
    void finishFrame(std::int64_t timeUs);
    void pull(std::int64_t timeUs);
    void queueReply(std::int64_t timeUs, const Reply& reply);
    // Queues bytes that follow each other without a gap and returns the time of the last.
    std::int64_t queuePart(std::int64_t readyUs, std::span<const std::uint8_t> bytes,
                           const std::string& meaning);
    void reportError(std::int64_t timeUs, const std::string& text);
    void trace(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
               const std::string& meaning) const;

    std::vector<Fault> faults_;
    Commands commands_;
    WirePace incomingPace_;
    WirePace outgoingPace_;
    std::deque<IncomingByte> incoming_; // still on the wire
    std::vector<std::uint8_t> partial_; // received, of a frame not yet complete
    std::int64_t partialSinceUs_ = 0;
    std::deque<Portion> outgoing_;
    std::vector<Frame> frames_;
    std::map<char, std::uint32_t> commandCounts_;
    std::vector<std::string> protocolErrors_;
    std::function<void(const std::string&)> traceSink_;
    bool silenced_ = false;
    bool pulled_ = false;
};

} // namespace simbox
