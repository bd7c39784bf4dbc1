#include "link/frames.h"

#include <initializer_list>

namespace modFunc {

namespace {

constexpr std::size_t lengthBytes = 4;

std::uint8_t byteOf(std::size_t value, int position) {
    return static_cast<std::uint8_t>(value >> (8 * position));
}

std::uint8_t highByte(std::int32_t address) {
    return byteOf(static_cast<std::size_t>(address), 1);
}
std::uint8_t lowByte(std::int32_t address) {
    return byteOf(static_cast<std::size_t>(address), 0);
}

Bytes frame(char command, std::span<const std::uint8_t> parameters) {
    const std::size_t length = 1 + parameters.size();
    Bytes bytes;
    bytes.reserve(lengthBytes + length);
    for (int position = 3; position >= 0; --position)
        bytes.push_back(byteOf(length, position));
    bytes.push_back(static_cast<std::uint8_t>(command));
    for (const std::uint8_t parameter : parameters) // GCC 14 wrongly warns of an insert() here
        bytes.push_back(parameter);
    return bytes;
}

Bytes frame(char command, std::initializer_list<std::uint8_t> parameters) {
    return frame(command, std::span(parameters.begin(), parameters.size()));
}

} // namespace

Bytes IdentifyFrame() {
    return frame('I', {});
}

Bytes SuppliesFrame(const FamilyGroup& step) {
    return frame('V', {step.SupplyV1, step.SupplyV2, step.SupplyV3});
}

Bytes SuppliesOffFrame() {
    return frame('V', {0, 0, 0});
}

Bytes SocketFrame(const FamilyRec& family, const FamilyGroup& step) {
    return frame('S',
                 {family.ClassByte, family.SetupByte1, family.SetupByte2, step.PinP, step.PinQ});
}

Bytes ReleaseFrame() {
    return frame('S', {0});
}

Bytes PowerDownFrames() {
    Bytes frames = SuppliesOffFrame();
    const Bytes release = ReleaseFrame();
    frames.insert(frames.end(), release.begin(), release.end());
    return frames;
}

Bytes WriteSocketFrame(const FamilyRec& family) {
    return frame('T', {family.ClassByte, family.SetupByte1, family.SetupByte2, family.Program.PinP,
                       family.Program.PinQ, family.Read.PinP, family.Read.PinQ});
}

Bytes DataFrame(std::span<const std::uint8_t> data) {
    return frame('D', data);
}

Bytes WriteBlockFrame(const FamilyRec& family, std::int32_t address) {
    return frame('W', {highByte(address), lowByte(address), highByte(address), 0xFF,
                       family.ChipCode, family.Program.WriteOption, family.WriteMode});
}

Bytes WritePageFrame(const FamilyRec& family, std::int32_t address, int pageBytes) {
    return frame('W', {highByte(address), lowByte(address), highByte(address),
                       lowByte(address + pageBytes - 1), family.ChipCode,
                       family.Program.WriteOption, static_cast<std::uint8_t>(pageBytes)});
}

Bytes ReadBlockFrame(const FamilyRec& family, std::int32_t address) {
    return frame('R',
                 {highByte(address), lowByte(address), highByte(address), 0xFF, family.ChipCode});
}

Bytes EraseFrame(std::uint8_t chipCode) {
    return frame('E', {chipCode});
}

Bytes LockFrame(const FamilyGroup& step) {
    return frame('L', {step.LockA, step.LockB});
}

} // namespace modFunc
