#include "functions/device_run.h"

#include "app/hex_text.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

#include <cmath>

namespace modFunc {

bool DeviceRun::ReadBlocks(const std::string& openingText, const std::function<bool()>& take) {
    constexpr int settleMs = 200;
    if (!DeviceFits())
        return false;
    State& s = state();
    const FamilyRec& family = selectedFamily();
    Exchange(SuppliesFrame(family.Read), 1);
    WaitTimer(settleMs);
    Exchange(SocketFrame(family, family.Read), 1);
    WaitTimer(settleMs);
    SetLine(openingText);

    // A partial last block is not read. The divisor of the percentage is the size in blocks,
    // rounded to the nearest whole number.
    const std::int32_t size = selectedDevice().Size;
    const std::int32_t blocks = size / blockBytes;
    const auto divisor =
        static_cast<std::int32_t>(std::nearbyint(static_cast<double>(size) / blockBytes));
    for (BlockIndex = 0; BlockIndex < blocks; ++BlockIndex) {
        SetBlockAddress(BlockIndex * blockBytes);
        SendAndWait(ReadBlockFrame(family, BlockAddress()), readReplyBytes);
        if (s.TimedOut) // a partial reply is left for the next exchange to read
            return CommunicationFailure();
        ReadReply();
        s.RxBytes = s.RxText;
        if (s.RxBytes.size() < readReplyBytes) // the line was lost after the bytes were counted
            return CommunicationFailure();
        if (!take())
            return false;
        SetPercent(BlockIndex * 100 / divisor);
    }
    SetPercent(100);
    AppendToLine("   OK!");
    return true;
}

std::uint8_t DeviceRun::ReplyByte() const {
    return state().RxBytes[static_cast<std::size_t>(ByteIndex + readReplyHeaderBytes)];
}

bool DeviceRun::CompareBlock(const std::string& errorText,
                             const std::function<std::uint8_t()>& expected) {
    for (ByteIndex = 0; ByteIndex < blockBytes; ++ByteIndex) {
        if (ReplyByte() == expected())
            continue;
        SetLine(errorText + HexWord(BlockAddress() + ByteIndex));
        StopAuto = true;
        return false;
    }
    return true;
}

} // namespace modFunc
