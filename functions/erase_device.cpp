#include "functions/device_run.h"

#include "app/family_traits.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

namespace modFunc {

// Erases the chip. The replies are used only for timing. They do not show whether the chip is
// erased; Blank shows that.
void DeviceRun::EraseDevice() {
    constexpr int settleMs = 200;
    if (!DeviceFits())
        return;
    const FamilyRec& family = selectedFamily();
    switch (TraitsOf(selectedDevice().Family).erase) {
    case ErasePath::None:
        NotSupported();
        return;
    case ErasePath::Pulses:
        Exchange(SuppliesFrame(family.Erase), 1);
        WaitTimer(settleMs);
        Exchange(SocketFrame(family, family.Erase), 1);
        WaitTimer(settleMs);
        SetLine("Erasing ...");
        for (int pulse = 0; pulse < 2; ++pulse) {
            Exchange(EraseFrame(0), 1);
            WaitTimer(settleMs);
        }
        break;
    case ErasePath::ChipCode:
        Exchange(SocketFrame(family, family.Erase), 1);
        WaitTimer(settleMs);
        Exchange(EraseFrame(family.ChipCode), 1);
        SetLine("Erasing ...");
        // A second reply arrives when the chip has been erased.
        state().RxExpected = 1;
        WaitReply();
        ReadReply();
        // Waits up to one more second. A third byte, which is not expected, would end this wait and
        // be left for the next exchange to read.
        WaitReply();
        break;
    }
    AppendToLine("OK");
    SetPercent(100);
}

} // namespace modFunc
