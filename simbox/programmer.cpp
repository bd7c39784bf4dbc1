#include "simbox/programmer.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simbox {

namespace {

constexpr std::int64_t partialFrameLifeUs = 1'000'000;
constexpr std::size_t portionBytes = 32; // what a USB bridge hands over at once
constexpr std::uint8_t extraByte = 0xEE;

std::string nameOf(char commandCode) {
    if (commandCode >= '!' && commandCode <= '~') {
        return std::string("\"") + commandCode + "\"";
    }
    return "byte " + std::to_string(static_cast<unsigned char>(commandCode));
}

// One fault on one reply. The kinds that do not work on a reply leave it alone.
void spoilOnce(Reply& reply, const Fault& fault) {
    switch (fault.kind) {
    case FaultKind::Short:
        reply.bytes.resize(std::min<std::size_t>(reply.bytes.size(), fault.count));
        break;
    case FaultKind::Long:
        reply.bytes.resize(reply.bytes.size() + fault.count, extraByte);
        break;
    case FaultKind::Identify:
        reply.bytes.resize(fault.count, extraByte);
        break;
    case FaultKind::Late:
        reply.delayUs += fault.delayUs;
        break;
    case FaultKind::Torn:
        reply.gapIndex = fault.count;
        reply.gapUs = fault.delayUs;
        break;
    case FaultKind::Chatter:
        reply.gapIndex = reply.bytes.size();
        reply.gapUs = fault.delayUs;
        reply.bytes.resize(reply.bytes.size() + fault.count, extraByte);
        break;
    case FaultKind::Double: {
        const std::vector<std::uint8_t> once = reply.bytes;
        reply.bytes.insert(reply.bytes.end(), once.begin(), once.end());
        break;
    }
    case FaultKind::Status:
        reply.bytes = fault.bytes;
        break;
    case FaultKind::Silent:
    case FaultKind::SilentFrom:
        reply.bytes.clear();
        break;
    default:
        return;
    }
    reply.meaning += " (spoilt by a fault)";
}

} // namespace

Programmer::Programmer(Options options)
    : options_(std::move(options)), commands_(options_), incomingPace_(options_.baud),
      outgoingPace_(options_.baud) {}

void Programmer::setTraceSink(std::function<void(const std::string&)> sink) {
    traceSink_ = std::move(sink);
}

void Programmer::setFaults(std::vector<Fault> faults) {
    options_.faults = std::move(faults);
    silenced_ = false;
}

void Programmer::Receive(std::int64_t nowUs, std::span<const std::uint8_t> bytes) {
    advance(nowUs);
    if (pulled_) {
        return;
    }
    for (const std::uint8_t value : bytes) {
        incoming_.push_back({incomingPace_.Next(nowUs, 1), value});
    }
    advance(nowUs);
}

std::optional<std::int64_t> Programmer::nextEventUs() const {
    std::optional<std::int64_t> next;
    const auto consider = [&next](std::int64_t timeUs) {
        next = next ? std::min(*next, timeUs) : timeUs;
    };
    if (!outgoing_.empty()) {
        consider(outgoing_.front().atUs);
    }
    if (partial_.empty() && incoming_.empty()) {
        return next;
    }
    consider((partial_.empty() ? incoming_.front().atUs : partialSinceUs_) + partialFrameLifeUs);
    const std::size_t whole = partial_.size() < lengthFieldBytes
                                  ? lengthFieldBytes
                                  : lengthFieldBytes + LengthOf(partial_);
    const std::size_t missing = whole - partial_.size();
    if (missing <= incoming_.size()) {
        consider(incoming_[missing - 1].atUs);
    }
    return next;
}

std::vector<std::uint8_t> Programmer::Take(std::int64_t nowUs) {
    advance(nowUs);
    std::vector<std::uint8_t> due;
    for (; !outgoing_.empty() && outgoing_.front().atUs <= nowUs; outgoing_.pop_front()) {
        const Portion& portion = outgoing_.front();
        if (traceSink_ && !portion.traceText.empty()) {
            traceSink_(portion.traceText);
        }
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
    giveUpPartial(nowUs);
}

void Programmer::receiveByte(IncomingByte byte) {
    giveUpPartial(byte.atUs);
    if (partial_.empty()) {
        partialSinceUs_ = byte.atUs;
    }
    partial_.push_back(byte.value);
    if (partial_.size() < lengthFieldBytes) {
        return;
    }
    const std::uint32_t length = LengthOf(partial_);
    if (length > maxLength) {
        reportError(byte.atUs,
                    "length " + std::to_string(length) + " is no frame's; input dropped");
        partial_.clear();
        incoming_.clear();
    } else if (partial_.size() == lengthFieldBytes + length) {
        finishFrame(byte.atUs);
    }
}

void Programmer::giveUpPartial(std::int64_t nowUs) {
    if (!partial_.empty() && nowUs - partialSinceUs_ >= partialFrameLifeUs) {
        reportError(partialSinceUs_ + partialFrameLifeUs,
                    "incomplete frame of " + std::to_string(partial_.size()) + " bytes dropped");
        partial_.clear();
    }
}

void Programmer::finishFrame(std::int64_t timeUs) {
    Frame frame;
    frame.arrivedUs = timeUs;
    frame.bytes = std::exchange(partial_, {});
    if (frame.bytes.size() > lengthFieldBytes) {
        frame.commandCode = static_cast<char>(frame.bytes[lengthFieldBytes]);
    }
    frames_.push_back(frame);
    const auto ofAll = static_cast<std::uint32_t>(frames_.size());
    const std::uint32_t ofCommand = ++commandCounts_[frame.commandCode];
    trace(timeUs, '>', frame.bytes, DescribeFrame(frame.bytes));

    std::vector<Fault> faults;
    std::copy_if(
        options_.faults.begin(), options_.faults.end(), std::back_inserter(faults),
        [&](const Fault& f) { return MeansFrame(f, frame.commandCode, ofAll, ofCommand); });
    const auto struck = [&faults](FaultKind kind) {
        return std::any_of(faults.begin(), faults.end(),
                           [kind](const Fault& f) { return f.kind == kind; });
    };
    if (struck(FaultKind::Pull)) {
        pull(timeUs);
        return;
    }
    silenced_ = silenced_ || struck(FaultKind::SilentFrom);

    Outcome outcome = commands_.Run(frame);
    if (!outcome.reply) {
        reportError(timeUs, "frame " + std::to_string(ofAll) + ", " + nameOf(frame.commandCode) +
                                ": " + outcome.protocolError);
        return;
    }
    spoil(*outcome.reply, faults);
    queueReply(timeUs, *outcome.reply);
}

void Programmer::spoil(Reply& reply, std::span<const Fault> faults) const {
    for (const Fault& fault : faults) {
        spoilOnce(reply, fault);
    }
    if (silenced_) {
        reply.bytes.clear();
    }
}

void Programmer::pull(std::int64_t timeUs) {
    pulled_ = true;
    incoming_.clear();
    // A portion that has not filled by then is lost in the bridge.
    std::erase_if(outgoing_, [timeUs](const Portion& portion) { return portion.atUs > timeUs; });
    trace(timeUs, '<', {}, "cable pulled");
}

void Programmer::queueReply(std::int64_t timeUs, const Reply& reply) {
    const std::int64_t readyUs = timeUs + reply.delayUs;
    if (reply.bytes.empty()) {
        trace(readyUs, '<', {}, "no reply by a fault");
        return;
    }
    const auto bytes = std::span(reply.bytes);
    const std::size_t gap = std::min(reply.gapIndex, bytes.size());
    const std::int64_t endUs = queueUnit(readyUs, bytes.first(gap), reply.meaning);
    queueUnit(endUs + reply.gapUs, bytes.subspan(gap), reply.meaning + ", continued");
}

std::int64_t Programmer::queueUnit(std::int64_t readyUs, std::span<const std::uint8_t> bytes,
                                   const std::string& meaning) {
    std::int64_t endUs = readyUs;
    for (std::size_t start = 0; start < bytes.size(); start += portionBytes) {
        const auto part = bytes.subspan(start, std::min(portionBytes, bytes.size() - start));
        endUs = outgoingPace_.Next(readyUs, part.size());
        outgoing_.push_back({endUs,
                             {part.begin(), part.end()},
                             start == 0 ? TraceLine(endUs, '<', bytes, meaning) : ""});
    }
    return endUs;
}

void Programmer::reportError(std::int64_t timeUs, const std::string& text) {
    protocolErrors_.push_back(text);
    trace(timeUs, '!', {}, text);
}

void Programmer::trace(std::int64_t timeUs, char direction, std::span<const std::uint8_t> bytes,
                       const std::string& meaning) const {
    if (traceSink_) {
        traceSink_(TraceLine(timeUs, direction, bytes, meaning));
    }
}

} // namespace simbox
