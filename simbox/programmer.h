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

// The simulated programmer as seen from its serial line: bytes and times in, bytes and times out.
// It reads no clock and never sleeps; all times are microseconds of the caller's clock, which must
// not go backwards.
//
// A frame is received when its last byte has arrived. The programmer then replies to it or rejects
// it. A rejected frame changes nothing, has no reply and is a protocol error. An incomplete frame
// is dropped one second after its first byte; this is a protocol error too. A length above
// maxLength is also a protocol error: the frame and all bytes still on the wire are dropped at
// once. Any byte sequence may be sent safely.
//
// If the line has a speed, a reply arrives the way a USB bridge would deliver it: in portions of 32
// bytes, the last of which may be shorter. Each portion arrives when its last byte has been
// transmitted. If a reply has a gap, its two parts are divided into portions separately. When the
// cable is pulled, all portions that have not arrived are lost.
class Programmer {
public:
    explicit Programmer(const Options& options = {});

    // Takes bytes that the program sends at `nowUs`. Each byte is received after its transmission
    // time, which starts when all earlier bytes have been transmitted. Bytes are ignored once the
    // cable has been pulled.
    void Receive(std::int64_t nowUs, std::span<const std::uint8_t> bytes);

    // The time of the next event: a portion of a reply arrives, a length field or a frame is
    // complete, or an incomplete frame is dropped. May be in the past. nullopt if nothing will
    // happen until more bytes are received.
    std::optional<std::int64_t> nextEventUs() const;

    // Advances time to `nowUs` and returns the reply bytes due by then, in order and each only
    // once. Frames that are complete by then are executed by this call unless `Receive` has already
    // executed them.
    std::vector<std::uint8_t> Take(std::int64_t nowUs);

    // True after a pull fault. `Take` still returns the portions due by the time of the pull, but
    // no others.
    bool cablePulled() const { return pulled_; }

    const std::vector<std::string>& protocolErrors() const { return protocolErrors_; }
    // Every complete frame in order of arrival, including rejected frames.
    const std::vector<Frame>& frames() const { return frames_; }

    // Replaces all faults except those at a chip address (ProgramError, Lie), and ends a SilentFrom
    // that is in effect. Replies that are already being sent are unchanged.
    void setFaults(std::vector<Fault> faults);

    Chip& chip() { return commands_.chip(); }
    bool powered() const { return commands_.powered(); }
    bool socketReleased() const { return commands_.socketReleased(); }

    // `sink` gets one line, without a line end, for each frame, each part of a reply, each protocol
    // error, each reply suppressed by a fault, and when the cable is pulled. `sink` gets the line
    // for a part of a reply when `Take` returns the first portion of that part. If `sink` is empty,
    // there is no trace.
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
        std::string traceText; // empty except in the first portion of a part
    };

    void advance(std::int64_t nowUs);
    void receiveByte(IncomingByte byte);
    void dropPartial(std::int64_t nowUs);
    void finishFrame(std::int64_t timeUs);
    void pull(std::int64_t timeUs);
    void queueReply(std::int64_t timeUs, const Reply& reply);
    // Queues bytes that follow each other without a gap and returns the time at which the last byte
    // arrives.
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
    std::vector<std::uint8_t> partial_; // received bytes of an incomplete frame
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
