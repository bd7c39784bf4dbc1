#include "functions/device_run.h"

#include "app/family_traits.h"
#include "app/state.h"
#include "link/exchange.h"
#include "link/frames.h"

namespace modFunc {

// The socket stays powered between passes.
void DeviceRun::LockPasses() {
    for (int pass = 0; pass < TraitsOf(selectedDevice().Family).lockPasses; ++pass)
        LockDevice();
}

// One pass of three lock steps. The supplies are set once, to the values of the first step, and
// then stay unchanged.
void DeviceRun::LockDevice() {
    constexpr int supplyMs = 500;
    constexpr int stepMs = 100;
    if (!DeviceFits())
        return;
    if (!TraitsOf(selectedDevice().Family).canLock) {
        NotSupported();
        return;
    }
    const FamilyRec& family = selectedFamily();
    SetLine("Locking ...");
    Exchange(SuppliesFrame(family.Lock1), 1);
    WaitTimer(supplyMs);

    Exchange(SocketFrame(family, family.Lock1), 1);
    WaitTimer(stepMs);
    Exchange(LockFrame(family.Lock1), 1);
    Percent = 33; // shown after the pause
    WaitTimer(stepMs);
    ShowProgress();

    Exchange(SocketFrame(family, family.Lock2), 1);
    WaitTimer(stepMs);
    Exchange(LockFrame(family.Lock2), 1);
    WaitTimer(stepMs);
    SetPercent(66);

    SendAndWait(SocketFrame(family, family.Lock3), 1);
    WaitTimer(stepMs);
    ReadReply(); // after the pause, so that a late reply is not left for the next exchange
    Exchange(LockFrame(family.Lock3), 1);
    WaitTimer(stepMs);
    AppendToLine("   OK!");
    SetPercent(100);
}

} // namespace modFunc
