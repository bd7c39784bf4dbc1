#include "simbox/programmer.h"

#include <algorithm>
#include <utility>

namespace simbox {

namespace {

constexpr std::int64_t partialFrameLifeUs = 1'000'000;
constexpr std::size_t portionBytes = 32; // what a USB bridge hands over at once
constexpr std::uint8_t extraByte = 0xEE;

void applyFault(Reply& reply, const Fault& fault) {
    auto& bytes = reply.bytes;
    switch (fault.kind) {
    case FaultKind::Short:
        bytes.resize(std::min<std::size_t>(bytes.size(), fault.count));
        break;
    case FaultKind::Chatter:
        reply.gapIndex = bytes.size();
        reply.gapUs = fault.delayUs;
        [[fallthrough]];
    case FaultKind::Long:
        bytes.resize(bytes.size() + fault.count, extraByte);
        break;
    case FaultKind::Identify:
        bytes.resize(fault.count, extraByte);
        break;
    case FaultKind::Late:
        reply.delayUs += fault.delayUs;
        break;
    case FaultKind::Split:
        reply.gapIndex = fault.count;
        reply.gapUs = fault.delayUs;
        break;
    case FaultKind::Double: {
        const std::vector<std::uint8_t> once = bytes;
        bytes.insert(bytes.end(), once.begin(), once.end());
        break;
    }
    case FaultKind::Status:
        bytes = fault.bytes;
        break;
    case FaultKind::Silent:
    case FaultKind::SilentFrom:
        bytes.clear();
        break;
    default:
        return;
    }
    reply.meaning += " (injected fault)";
}

} // namespace

Programmer::Programmer(const Options& options)
    : faults_(options.faults), commands_(options), incomingPace_(options.baud),
      outgoingPace_(options.baud) {}

void Programmer::setTraceSink(std::function<void(const std::string&)> sink) {
    traceSink_ = std::move(sink);
}

void Programmer::setFaults(std::vector<Fault> faults) {
    faults_ = std::move(faults);
    silenced_ = false;
}

void Programmer::Receive(std::int64_t nowUs, std::span<const std::uint8_t> bytes) {
    advance(nowUs);
    if (pulled_)
        return;
    for (const std::uint8_t value : bytes)
        incoming_.push_back({incomingPace_.Next(nowUs, 1), value});
    advance(nowUs);
}

std::optional<std::int64_t> Programmer::nextEventUs() const {
    constexpr std::int64_t never = INT64_MAX;
    std::int64_t next = outgoing_.empty() ? never : outgoing_.front().atUs;
    if (!partial_.empty() || !incoming_.empty()) {
        const std::int64_t sinceUs = partial_.empty() ? incoming_.front().atUs : partialSinceUs_;
        next = std::min(next, sinceUs + partialFrameLifeUs);
        const bool lengthKnown = partial_.size() >= lengthFieldBytes;
        const std::size_t wholeBytes = lengthFieldBytes + (lengthKnown ? LengthOf(partial_) : 0);
        const std::size_t missing = wholeBytes - partial_.size();
        if (missing <= incoming_.size())
            next = std::min(next, incoming_[missing - 1].atUs);
    }
    return next == never ? std::nullopt : std::optional(next);
}

std::vector<std::uint8_t> Programmer::Take(std::int64_t nowUs) {
    advance(nowUs);
    std::vector<std::uint8_t> due;
    for (; !outgoing_.empty() && outgoing_.front().atUs <= nowUs; outgoing_.pop_front()) {
        const Portion& portion = outgoing_.front();
        if (traceSink_ && !portion.traceText.empty())
            traceSink_(portion.traceText);
        due.insert(due.end(), portion.bytes.begin(), portion.bytes.end());
    }
    return due;
}

void Programmer::advance(std::int64_t nowUs) {
    while (!incoming_.empty() && incoming_.front().atUs <= nowUs) {
        const IncomingByte byte = incoming_.front();
        incoming_.pop_front();
        receiveByte(byte);
    }
    dropPartial(nowUs);
}

void Programmer::receiveByte(IncomingByte byte) {
    dropPartial(byte.atUs);
    if (partial_.empty())
        partialSinceUs_ = byte.atUs;
    partial_.push_back(byte.value);
    if (partial_.size() < lengthFieldBytes)
        return;
    const std::uint32_t length = LengthOf(partial_);
    if (length > maxLength) {
        reportError(byte.atUs, "length " + std::to_string(length) + " is too large; input dropped");
        partial_.clear();
        incoming_.clear();
    } else if (partial_.size() == lengthFieldBytes + length) {
        finishFrame(byte.atUs);
    }
}

void Programmer::dropPartial(std::int64_t nowUs) {
    if (partial_.empty() || nowUs - partialSinceUs_ < partialFrameLifeUs)
        return;
    reportError(partialSinceUs_ + partialFrameLifeUs,
                "incomplete frame of " + std::to_string(partial_.size()) + " bytes dropped");
    partial_.clear();
}

void Programmer::finishFrame(std::int64_t timeUs) {
    const bool empty = partial_.size() == lengthFieldBytes;
    const char commandCode = empty ? char{0} : static_cast<char>(partial_[lengthFieldBytes]);
    const Frame frame{timeUs, commandCode, std::exchange(partial_, {})};
    frames_.push_back(frame);
    const std::uint32_t ofCommand = ++commandCounts_[commandCode];
    const std::string description = DescribeFrame(frame.bytes);
    trace(timeUs, '>', frame.bytes, description);

    std::vector<Fault> faults;
    for (const Fault& fault : faults_) {
        const std::size_t number = fault.commandCode == 0 ? frames_.size() : ofCommand;
        if ((fault.commandCode == 0 || fault.commandCode == commandCode) &&
            (fault.number == 0 || fault.number == number))
            faults.push_back(fault);
    }
    for (const Fault& fault : faults) {
        if (fault.kind == FaultKind::Pull)
            return pull(timeUs);
        silenced_ = silenced_ || fault.kind == FaultKind::SilentFrom;
    }

    try {
        Reply reply = commands_.Run(frame);
        for (const Fault& fault : faults)
            applyFault(reply, fault);
        queueReply(timeUs, reply);
    } catch (const ProtocolError& error) {
        reportError(timeUs, "frame " + std::to_string(frames_.size()) + ", " + description + ": " +
                                error.what());
    }
}

void Programmer::pull(std::int64_t timeUs) {
    pulled_ = true;
    incoming_.clear();
    std::erase_if(outgoing_, [timeUs](const Portion& portion) { return portion.atUs > timeUs; });
    trace(timeUs, '<', {}, "cable pulled");
}

void Programmer::queueReply(std::int64_t timeUs, const Reply& reply) {
    const std::int64_t readyUs = timeUs + reply.delayUs;
    if (reply.bytes.empty() || silenced_) {
        trace(readyUs, '<', {}, "no reply (injected fault)");
        return;
    }
    const auto bytes = std::span(reply.bytes);
    const std::size_t gap = std::min(reply.gapIndex, bytes.size());
    const std::int64_t endUs = queuePart(readyUs, bytes.first(gap), reply.meaning);
    queuePart(endUs + reply.gapUs, bytes.subspan(gap), reply.meaning + ", continued");
}

std::int64_t Programmer::queuePart(std::int64_t readyUs, std::span<const std::uint8_t> bytes,
                                   const std::string& meaning) {
    std::int64_t endUs = readyUs;
    for (std::size_t start = 0; start < bytes.size(); start += portionBytes) {
        const auto part = bytes.subspan(start, std::min(portionBytes, bytes.size() - start));
        endUs = outgoingPace_.Next(readyUs, part.size());
        outgoing_.push_back({endUs, {part.begin(), part.end()}, ""});
        if (start == 0 && traceSink_)
            outgoing_.back().traceText = TraceLine(endUs, '<', bytes, meaning);
    }
    return endUs;
}

void Programmer::reportError(std::int64_t timeUs, const std::string& text) {
    protocolErrors_.push_back(text);
    trace(timeUs, '!', {}, text);
}

void Programmer::trace(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                       const std::string& meaning) const {
    if (traceSink_)
        traceSink_(TraceLine(timeUs, direction, bytes, meaning));
}

} // namespace simbox
