#include "simbox/commands.h"

#include <algorithm>
#include <string_view>

namespace simbox {

namespace {

constexpr std::uint8_t acknowledge = 0x06;
constexpr std::size_t readHeaderBytes = 4;
constexpr std::size_t blockBytes = 256;
constexpr int lockStepsOfAPass = 3;
constexpr std::int64_t eraseTimeUs = 50'000; // between the two reply bytes of a class 4 erase

std::uint16_t addressAt(std::span<const std::uint8_t> p) {
    return static_cast<std::uint16_t>(p[0] << 8U | p[1]);
}

} // namespace

Commands::Commands(const Options& options) : options_(options), chip_(options.fill) {}

Reply Commands::Run(const Frame& frame) {
    const std::size_t length = frame.bytes.size() - lengthFieldBytes;
    if (!KnownCommand(frame.commandCode))
        throw ProtocolError("unknown command code " +
                            HexText(static_cast<std::uint8_t>(frame.commandCode), 2));
    if (!LengthFits(frame.commandCode, length))
        throw ProtocolError("wrong length " + std::to_string(length));
    const Parameters p = Parameters(frame.bytes).subspan(lengthFieldBytes + 1);
    check(frame.commandCode, p);
    switch (frame.commandCode) {
    case 'I':
        return {{options_.firmware.begin(), options_.firmware.end()},
                "firmware " + options_.firmware};
    case 'V':
        setSupplies(p);
        break;
    case 'S':
    case 'T':
        setUpSocket(frame.commandCode, p[0]);
        break;
    case 'D':
        held_.assign(p.begin(), p.end());
        break;
    case 'W':
        return writeBlock(addressAt(p));
    case 'R':
        return readBlock(addressAt(p));
    case 'E':
        return erase();
    default:
        lockStep();
    }
    return {{acknowledge}, "acknowledge"};
}

// Parameters that the frame does not have count as 0 here.
//
//   index  0 1            2 3           4          5             6
//   "W"    first address  last address  chip code  write option  write mode or page size
//   "R"    first address  last address  chip code
void Commands::check(char commandCode, Parameters parameters) const {
    const auto reject = [commandCode](std::string_view codes, bool wrong, const char* why) {
        if (wrong && codes.find(commandCode) != std::string_view::npos)
            throw ProtocolError(why);
    };
    std::array<std::uint8_t, 7> p{};
    std::copy_n(parameters.begin(), std::min(parameters.size(), p.size()), p.begin());
    const bool release = parameters.size() == 1;
    const bool powerDown = p == decltype(p){};
    const int rangeBytes = addressAt(Parameters(p).subspan(2)) - addressAt(p) + 1;
    const auto heldBytes = static_cast<int>(held_.size());

    reject("S", release && p[0] != 0, "release with a class byte other than 00");
    reject("ST", !release && (p[0] < 1 || p[0] > 4), "unknown class");
    reject("T", p[0] > 2, "set-up for writing is for classes 1 and 2 only");
    reject("VS", heldBytes > 0 && !powerDown, "loaded data is waiting for its write");
    reject("TDREL", heldBytes > 0, "loaded data is waiting for its write");
    reject("DWREL", setUp_ == SetUp::None, "socket is not set up");
    reject("WREL", class1Or2() && !powered_, "supplies are off");
    reject("D", (parameters.size() == blockBytes) == (class_ == 3),
           "class 3 takes pages, all other classes blocks");
    reject("W", heldBytes == 0, "no data is loaded");
    reject("W", class1Or2() && setUp_ != SetUp::ForWriting, "socket is not set up for writing");
    reject("W", p[0] != p[2] || rangeBytes != heldBytes, "range does not match the loaded data");
    reject("W", class_ == 3 && p[6] != heldBytes, "page size does not match the loaded data");
    reject("R", p[1] != 0x00 || p[2] != p[0] || p[3] != 0xFF, "range is not a whole block");
    reject("EL", class_ == 3, "class 3 has neither erase nor lock");
    reject("EL", setUp_ == SetUp::ForWriting, "socket is set up for writing");
    reject("E", class1Or2() && p[0] != 0x00, "erase parameter is not 00");
    reject("L", class_ == 4, "class 4 has no lock");
    reject("L", !freshSetUp_, "only one lock step after each socket set-up");
}

void Commands::setSupplies(Parameters p) {
    powered_ = std::any_of(p.begin(), p.end(), [](std::uint8_t value) { return value != 0; });
    held_.clear(); // a failed function turns the supplies off, and its data is no longer needed
    lockSteps_ = 0;
}

void Commands::setUpSocket(char commandCode, std::uint8_t classByte) {
    setUp_ = classByte == 0 ? SetUp::None : commandCode == 'T' ? SetUp::ForWriting : SetUp::Plain;
    class_ = classByte;
    held_.clear();
    freshSetUp_ = true;
}

Reply Commands::writeBlock(std::uint16_t first) {
    const std::optional<std::uint16_t> failed = program(first);
    held_.clear();
    if (!failed)
        return {.bytes = {'N'}, .meaning = "status N", .delayUs = options_.writeTimeUs};
    return {.bytes = {'E', static_cast<std::uint8_t>(*failed >> 8U),
                      static_cast<std::uint8_t>(*failed & 0xFFU)},
            .meaning = "status E at " + HexText(*failed, 4),
            .delayUs = options_.writeTimeUs};
}

// Writes the held data up to the first byte that fails. Returns the address of that byte; nullopt
// if no byte fails.
std::optional<std::uint16_t> Commands::program(std::uint16_t first) {
    std::uint16_t address = first;
    for (const std::uint8_t data : held_) {
        if (faultAt(FaultKind::ProgramError, address) ||
            (!faultAt(FaultKind::Lie, address) && !chip_.Write(address, data, cells())))
            return address;
        ++address;
    }
    return std::nullopt;
}

bool Commands::faultAt(FaultKind kind, std::uint16_t address) const {
    return std::any_of(options_.faults.begin(), options_.faults.end(), [=](const Fault& fault) {
        return fault.kind == kind && fault.address == address;
    });
}

Reply Commands::readBlock(std::uint16_t first) const {
    std::vector<std::uint8_t> bytes(readHeaderBytes, acknowledge);
    for (std::size_t index = 0; index < blockBytes; ++index)
        bytes.push_back(chip_.Read(static_cast<std::uint16_t>(first + index), cells()));
    return {std::move(bytes), "data of block " + HexText(first, 4)};
}

Reply Commands::erase() {
    chip_.Erase();
    lockSteps_ = 0;
    if (class_ != 4)
        return {{acknowledge}, "acknowledge"};
    return {.bytes = {acknowledge, acknowledge},
            .meaning = "acknowledge",
            .gapIndex = 1,
            .gapUs = eraseTimeUs};
}

void Commands::lockStep() {
    freshSetUp_ = false;
    if (++lockSteps_ < lockStepsOfAPass)
        return;
    chip_.setLocked(true);
    lockSteps_ = 0;
}

} // namespace simbox
