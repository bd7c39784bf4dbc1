#pragma once

#include "simbox/chip.h"
#include "simbox/commands.h"
#include "simbox/options.h"
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

// The simulated box as its serial line shows it: bytes and time in, bytes and times out. It reads
// no clock and sleeps nowhere; all times are microseconds of the caller's clock, never going back.
//
// A frame counts as received when its last byte is in. It is then answered, or refused: a refused
// frame changes nothing, gets no reply and leaves a protocol error. An incomplete frame is dropped
// with a protocol error one second after its first byte. Any byte sequence is survived.
//
// With pacing a reply arrives as from a USB bridge: in portions of 32 bytes, each when its last
// byte has come over the wire, and the rest at the time of its last byte. The two parts of a reply
// with a gap are divided into portions separately. A pulled cable loses the portion that was
// filling.
class Programmer {
public:
    explicit Programmer(Options options = {});

    // Bytes from the program, all handed over at `nowUs`. With pacing each takes its wire time,
    // behind those still on the wire, before the box has it. Ignored once the cable is pulled.
    void Receive(std::int64_t nowUs, std::span<const std::uint8_t> bytes);

    // When something is next due: a reply byte, a frame being complete, an incomplete frame being
    // given up. May lie before the present. nullopt: nothing, ever, without further bytes.
    std::optional<std::int64_t> nextEventUs() const;

    // Lets time pass up to `nowUs` and gives the reply bytes due by then, in order, once. Frames
    // that complete by then are carried out here (or in `Receive`), not before.
    std::vector<std::uint8_t> Take(std::int64_t nowUs);

    // A pull fault has struck: portions due before it still come out of `Take`, nothing after.
    bool cablePulled() const { return pulled_; }

    const std::vector<std::string>& protocolErrors() const { return protocolErrors_; }
    // Every whole frame in order of arrival, refused ones included.
    const std::vector<Frame>& frames() const { return frames_; }

    // The faults that name a frame, from now on. What is already on its way stays as it is.
    void setFaults(std::vector<Fault> faults);

    Chip& chip() { return commands_.chip(); }
    bool powered() const { return commands_.powered(); }
    bool socketReleased() const { return commands_.socketReleased(); }

    // Gets one line for each frame, reply and protocol error, without line end. Replies are told
    // when their first byte is taken. An empty function: no trace.
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
    void giveUpPartial(std::int64_t nowUs);
    void finishFrame(std::int64_t timeUs);
    void spoil(Reply& reply, std::span<const Fault> faults) const;
    void pull(std::int64_t timeUs);
    void queueReply(std::int64_t timeUs, const Reply& reply);
    // Queues bytes that follow each other without a gap, and gives the time of the last.
    std::int64_t queueUnit(std::int64_t readyUs, std::span<const std::uint8_t> bytes,
                           const std::string& meaning);
    void reportError(std::int64_t timeUs, const std::string& text);
    void trace(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
               const std::string& meaning) const;

    Options options_;
    Commands commands_;
    WirePace incomingPace_;
    WirePace outgoingPace_;
    std::deque<IncomingByte> incoming_; // still on the wire
    std::vector<std::uint8_t> partial_; // bytes in, of a frame not yet complete
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
