#include "functions/device_run.h"

#include "app/family_traits.h"
#include "app/hex_text.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

#include <span>

namespace modFunc {

namespace {

// A page that crosses a 256-byte boundary cannot be addressed, so the page size must divide 256. A
// page size of 256 does not fit in the frame's one-byte field. A partial last block or page would
// not be written, so Size must be a multiple of the block or page size.
bool canBeWritten(const DeviceRec& device, WritePath path) {
    if (path == WritePath::Blocks)
        return device.Size % blockBytes == 0;
    return device.PageSize >= 1 && device.PageSize <= maxPageBytes &&
           blockBytes % device.PageSize == 0 && device.Size % device.PageSize == 0;
}

} // namespace

// Writes the first Size bytes of the image (Size of the selected device) to the chip. No byte is
// skipped and nothing is retried: the first block or page that fails ends the function.
void DeviceRun::ProgramDevice() {
    constexpr int supplyMs = 500;
    constexpr int settleMs = 200;
    if (!DeviceFits())
        return;
    const DeviceRec& device = selectedDevice();
    const FamilyTraits traits = TraitsOf(device.Family);
    const bool hasPath = traits.write != WritePath::None;
    if (hasPath && !canBeWritten(device, traits.write)) {
        NotSupported();
        return;
    }

    const FamilyRec& family = selectedFamily();
    Exchange(SuppliesFrame(family.Program), 1);
    WaitTimer(supplyMs);
    if (!hasPath)
        return;
    Exchange(traits.writeSetUp == WriteSetUp::WriteSocket ? WriteSocketFrame(family)
                                                          : SocketFrame(family, family.Read),
             1);
    WaitTimer(settleMs);
    SetLine("Programming ...");
    if (!WriteBlocks(traits.write == WritePath::Pages ? device.PageSize : blockBytes))
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
    if (s.TimedOut)
        return CommunicationFailure();
    const bool pages = TraitsOf(selectedDevice().Family).write == WritePath::Pages;
    Exchange(pages ? WritePageFrame(family, address, bytes) : WriteBlockFrame(family, address), 1);
    s.RxBytes = s.RxText;
    return WriteSucceeded();
}

// True if the write status in RxBytes reports success. Otherwise shows the failure.
bool DeviceRun::WriteSucceeded() {
    constexpr std::uint8_t written = 'N';
    constexpr std::uint8_t failed = 'E';
    State& s = state();
    if (s.RxBytes.empty())
        return CommunicationFailure();
    if (s.RxBytes[0] == written)
        return true;
    if (s.RxBytes[0] != failed) {
        AppendToLine("   Device Fault!");
        StopAuto = true;
        return false;
    }
    // The failing address may have been read together with the status. This wait then times out
    // although the reply is complete, so the bytes are counted and TimedOut is not checked.
    s.RxExpected = 2;
    WaitReply();
    ReadReplyTail();
    s.RxBytes = s.RxText;
    if (s.RxBytes.size() < 3)
        return CommunicationFailure();
    SetLine("Program Error at " + HexByte(s.RxBytes[1]) + HexByte(s.RxBytes[2]));
    StopAuto = true;
    return false;
}

} // namespace modFunc
