#include "functions/device_run.h"

#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

namespace modFunc {

namespace {
constexpr int settleMs = 200;
}

// Erases the chip. The replies pace the frames and say nothing, so a failed erase is not known
// here; Blank check tells.
void DeviceRun::EraseDevice() {
    if (!DeviceFits())
        return;
    const int number = selectedDevice().Family;
    const FamilyRec& family = selectedFamily();
    if (number < 20) {
        Exchange(SuppliesFrame(family.Erase), 1);
        WaitTimer(settleMs);
        Exchange(SocketFrame(family, family.Erase), 1);
        WaitTimer(settleMs);
        SetLine("Erasing ...");
        for (int pulse = 0; pulse < 2; ++pulse) {
            Exchange(EraseFrame(0), 1);
            WaitTimer(settleMs);
        }
    } else if (number >= 30 && number <= 39) {
        Exchange(SocketFrame(family, family.Erase), 1);
        WaitTimer(settleMs);
        Exchange(EraseFrame(family.ChipCode), 1);
        SetLine("Erasing ...");
        // The box answers a second time when the chip is done.
        state().RxExpected = 1;
        WaitReply();
        ReadReply();
        // Should it send a third byte, that one stays on the port for the next exchange.
        WaitReply();
    } else {
        NotSupported();
        return;
    }
    AppendToLine("OK");
    SetPercent(100);
}

} // namespace modFunc
