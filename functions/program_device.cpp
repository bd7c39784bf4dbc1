#include "functions/device_run.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

#include <span>

namespace modFunc {

namespace {

bool isPageFamily(int family) {
    return family >= 20 && family <= 29;
}

// A block that crossed a 256-byte boundary could not be addressed, and a page above 128 bytes does
// not fit the one byte of its length; a rest of the device that fills no block would be lost.
bool canBeWritten(const DeviceRec& device) {
    if (!isPageFamily(device.Family))
        return device.Size % blockBytes == 0;
    return device.PageSize >= 1 && device.PageSize <= largestPageBytes &&
           blockBytes % device.PageSize == 0 && device.Size % device.PageSize == 0;
}

} // namespace

// Writes the image, as far as the device reaches, into the chip. No byte is skipped and nothing is
// tried twice: the first failed block ends the function.
void DeviceRun::ProgramDevice() {
    constexpr int supplyMs = 500;
    constexpr int settleMs = 200;
    if (!DeviceFits())
        return;
    const DeviceRec& device = selectedDevice();
    const bool hasPath = device.Family < 40;
    if (hasPath && !canBeWritten(device)) {
        NotSupported();
        return;
    }

    const FamilyRec& family = selectedFamily();
    Exchange(SuppliesFrame(family.Program), 1);
    WaitTimer(supplyMs);
    if (!hasPath)
        return;
    Exchange(device.Family < 20 ? WriteSocketFrame(family) : SocketFrame(family, family.Read), 1);
    WaitTimer(settleMs);
    SetLine("Programming ...");
    if (!WriteBlocks(isPageFamily(device.Family) ? device.PageSize : blockBytes))
        return;
    SetPercent(100);
    AppendToLine("   OK!");
}

bool DeviceRun::WriteBlocks(std::int32_t bytes) {
    const std::int32_t blocks = selectedDevice().Size / bytes;
    for (BlockIndex = 0; BlockIndex < blocks; ++BlockIndex) {
        SetPercent(BlockIndex * 100 / blocks);
        SetBlockAddress(BlockIndex * bytes);
        if (!WriteBlock(bytes))
            return false;
    }
    return true;
}

bool DeviceRun::WriteBlock(std::int32_t bytes) {
    State& s = state();
    const std::int32_t address = BlockAddress();
    const FamilyRec& family = selectedFamily();
    Exchange(
        DataFrame(std::span(s.BufferData)
                      .subspan(static_cast<std::size_t>(address), static_cast<std::size_t>(bytes))),
        1);
    if (s.TimedOut) {
        CommunicationFailure();
        return false;
    }
    Exchange(isPageFamily(selectedDevice().Family) ? WritePageFrame(family, address, bytes)
                                                   : WriteBlockFrame(family, address),
             1);
    s.RxBytes = s.RxText;
    return WriteSucceeded();
}

// Looks at the status of a write in RxBytes.
bool DeviceRun::WriteSucceeded() {
    constexpr std::uint8_t written = 'N';
    constexpr std::uint8_t failed = 'E';
    State& s = state();
    if (s.RxBytes.empty()) {
        CommunicationFailure();
        return false;
    }
    if (s.RxBytes[0] == written)
        return true;
    if (s.RxBytes[0] != failed) {
        AppendToLine("   Device Fault!");
        StopAuto = true;
        return false;
    }
    // The failing address may have come with the status. Then this wait ends in a time-out with
    // the reply complete, so the bytes are counted and TimedOut is not the test.
    s.RxExpected = 2;
    WaitReply();
    ReadReplyTail();
    s.RxBytes = s.RxText;
    if (s.RxBytes.size() < 3) {
        CommunicationFailure();
        return false;
    }
    SetLine("Program Error at " + HexByte(s.RxBytes[1]) + HexByte(s.RxBytes[2]));
    StopAuto = true;
    return false;
}

} // namespace modFunc
