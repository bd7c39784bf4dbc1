#include "functions/device_run.h"

#include "link/exchange.h"
#include "link/frames.h"

namespace modFunc {

// Powers the socket down, whatever came before. Replies left behind by an earlier failure go with
// the reads here, which take all that waits.
void DeviceRun::EndFunction() {
    constexpr int restMs = 500;
    Exchange(SuppliesOffFrame(), 1);
    Exchange(ReleaseFrame(), 1);
    WaitTimer(restMs);
}

} // namespace modFunc
