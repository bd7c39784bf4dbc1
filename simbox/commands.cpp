#include "simbox/commands.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace simbox {

namespace {

constexpr std::uint8_t acknowledge = 0x06;
constexpr std::size_t readHeaderBytes = 4;
constexpr std::size_t blockBytes = 256;
constexpr int lockStepsOfAPass = 3;
constexpr std::int64_t eraseTimeUs = 50'000; // between the two bytes of a class 4 erase

Outcome refused(std::string why) {
    return {std::nullopt, std::move(why)};
}

Outcome replied(std::vector<std::uint8_t> bytes, std::string meaning) {
    return {Reply{.bytes = std::move(bytes), .meaning = std::move(meaning)}, ""};
}

Outcome acknowledged() {
    return replied({acknowledge}, "acknowledge");
}

std::string addressText(std::uint16_t address) {
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "%04X", address);
    return text.data();
}

std::uint16_t addressAt(std::span<const std::uint8_t> p) {
    return static_cast<std::uint16_t>(p[0] << 8U | p[1]);
}

} // namespace

Commands::Commands(const Options& options)
    : firmware_(options.firmware), writeTimeUs_(options.writeTimeUs), chip_(options.fill) {
    std::copy_if(options.faults.begin(), options.faults.end(), std::back_inserter(addressFaults_),
                 [](const Fault& fault) {
                     return fault.kind == FaultKind::ProgramError || fault.kind == FaultKind::Lie;
                 });
}

Outcome Commands::Run(const Frame& frame) {
    const std::size_t length = frame.bytes.size() - lengthFieldBytes;
    if (length == 0) {
        return refused("frame of length 0");
    }
    if (!KnownCommand(frame.commandCode)) {
        return refused("unknown command code");
    }
    if (!LengthFits(frame.commandCode, length)) {
        return refused("wrong length " + std::to_string(length));
    }
    if (std::string why = whyNotNow(frame.commandCode); !why.empty()) {
        return refused(std::move(why));
    }
    const Parameters p = Parameters(frame.bytes).subspan(lengthFieldBytes + 1);
    switch (frame.commandCode) {
    case 'I':
        return identify();
    case 'V':
        return setSupplies(p);
    case 'S':
    case 'T':
        return setUpSocket(frame.commandCode, p);
    case 'D':
        return loadData(p);
    case 'W':
        return writeBlock(p);
    case 'R':
        return readBlock(p);
    case 'E':
        return erase(p);
    default:
        return lockStep();
    }
}

// What can be said from the command code alone; empty when the frame may come now.
std::string Commands::whyNotNow(char commandCode) const {
    const auto oneOf = [commandCode](const char* letters) {
        return std::string(letters).find(commandCode) != std::string::npos;
    };
    if (!held_.empty() && oneOf("TDREL")) {
        return "loaded data is waiting for its write";
    }
    if (oneOf("DWREL") && setUp_ == SetUp::None) {
        return "socket is not set up";
    }
    if (oneOf("WREL") && lowClass() && !powered_) {
        return "supplies are off";
    }
    if (oneOf("EL") && class_ == 3) {
        return "page devices have neither erase nor lock";
    }
    if (commandCode == 'L' && class_ == 4) {
        return "class 4 has no lock";
    }
    if (oneOf("EL") && setUp_ == SetUp::ForWriting) {
        return "socket is set up for writing";
    }
    if (commandCode == 'L' && !freshSetUp_) {
        return "lock step without a socket set-up of its own";
    }
    return "";
}

Outcome Commands::identify() const {
    return replied({firmware_.begin(), firmware_.end()}, "firmware " + firmware_);
}

Outcome Commands::setSupplies(Parameters p) {
    const bool on = std::any_of(p.begin(), p.end(), [](std::uint8_t v) { return v != 0; });
    if (on && !held_.empty()) {
        return refused("loaded data is waiting for its write");
    }
    powered_ = on;
    held_.clear(); // a failed function ends with the supplies off, its data is void
    lockSteps_ = 0;
    return acknowledged();
}

Outcome Commands::setUpSocket(char commandCode, Parameters p) {
    const std::uint8_t classByte = p[0];
    if (p.size() == 1) {
        if (classByte != 0) {
            return refused("release with a class byte other than 00");
        }
        setUp_ = SetUp::None;
        class_ = 0;
        held_.clear();
        return acknowledged();
    }
    if (!held_.empty()) {
        return refused("loaded data is waiting for its write");
    }
    if (classByte < 1 || classByte > 4) {
        return refused("class " + std::to_string(classByte) + " is not known");
    }
    if (commandCode == 'T' && classByte > 2) {
        return refused("set-up for writing is for classes 1 and 2 only");
    }
    setUp_ = commandCode == 'T' ? SetUp::ForWriting : SetUp::Plain;
    class_ = classByte;
    freshSetUp_ = true;
    return acknowledged();
}

Outcome Commands::loadData(Parameters p) {
    if ((p.size() == blockBytes) == (class_ == 3)) {
        return refused(class_ == 3 ? "page devices take pages, not blocks"
                                   : "only page devices take pages");
    }
    held_.assign(p.begin(), p.end());
    return acknowledged();
}

//   parameter  0 1            2 3           4          5             6
//              first address  last address  chip code  write option  write mode or page size
std::string Commands::whyNoWrite(Parameters p) const {
    if (held_.empty()) {
        return "no data is loaded";
    }
    if (lowClass() && setUp_ != SetUp::ForWriting) {
        return "socket is not set up for writing";
    }
    const std::uint16_t first = addressAt(p);
    const std::uint16_t last = addressAt(p.subspan(2));
    if (p[0] != p[2] || last - first + 1 != static_cast<int>(held_.size())) {
        return "range " + addressText(first) + "-" + addressText(last) + " does not match the " +
               std::to_string(held_.size()) + " bytes loaded";
    }
    if (class_ == 3 && p[6] != held_.size()) {
        return "page size " + std::to_string(p[6]) + " does not match the " +
               std::to_string(held_.size()) + " bytes loaded";
    }
    return "";
}

Outcome Commands::writeBlock(Parameters p) {
    if (std::string why = whyNoWrite(p); !why.empty()) {
        return refused(std::move(why));
    }
    const std::optional<std::uint16_t> failed = program(addressAt(p));
    held_.clear();
    Outcome outcome = replied({'N'}, "status N");
    if (failed) {
        const auto high = static_cast<std::uint8_t>(*failed >> 8U);
        const auto low = static_cast<std::uint8_t>(*failed & 0xFFU);
        outcome = replied({'E', high, low}, "status E at " + addressText(*failed));
    }
    outcome.reply->delayUs = writeTimeUs_;
    return outcome;
}

// Writes the held data and gives the address of the first byte that fails, where it stops.
std::optional<std::uint16_t> Commands::program(std::uint16_t first) {
    std::uint16_t address = first;
    for (const std::uint8_t data : held_) {
        if (faultAt(FaultKind::ProgramError, address)) {
            return address;
        }
        if (!faultAt(FaultKind::Lie, address) && !chip_.Write(address, data, cells())) {
            return address;
        }
        ++address;
    }
    return std::nullopt;
}

bool Commands::faultAt(FaultKind kind, std::uint16_t address) const {
    return std::any_of(addressFaults_.begin(), addressFaults_.end(), [&](const Fault& fault) {
        return fault.kind == kind && fault.address == address;
    });
}

//   parameter  0 1            2 3           4
//              first address  last address  chip code
Outcome Commands::readBlock(Parameters p) const {
    if (p[1] != 0x00 || p[2] != p[0] || p[3] != 0xFF) {
        return refused("range " + addressText(addressAt(p)) + "-" +
                       addressText(addressAt(p.subspan(2))) + " is no whole block");
    }
    std::vector<std::uint8_t> bytes(readHeaderBytes, acknowledge);
    for (std::size_t index = 0; index < blockBytes; ++index) {
        const auto address = static_cast<std::uint16_t>(addressAt(p) + index);
        bytes.push_back(chip_.Read(address, cells()));
    }
    return replied(std::move(bytes), "data of block " + addressText(addressAt(p)));
}

Outcome Commands::erase(Parameters p) {
    if (lowClass() && p[0] != 0x00) {
        return refused("erase parameter is not 00");
    }
    chip_.Erase();
    lockSteps_ = 0;
    if (class_ != 4) {
        return acknowledged();
    }
    Outcome outcome = replied({acknowledge, acknowledge}, "acknowledge");
    outcome.reply->gapIndex = 1;
    outcome.reply->gapUs = eraseTimeUs;
    return outcome;
}

Outcome Commands::lockStep() {
    freshSetUp_ = false;
    if (++lockSteps_ == lockStepsOfAPass) {
        chip_.setLocked(true);
        lockSteps_ = 0;
    }
    return acknowledged();
}

} // namespace simbox
