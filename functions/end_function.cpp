#include "functions/device_run.h"

#include "link/exchange.h"
#include "link/frames.h"

namespace modFunc {

// Powers the socket down after every outcome. Reading the replies to these two frames also discards
// replies that arrive late after a failure.
void DeviceRun::EndFunction() {
    constexpr int restMs = 500;
    Exchange(SuppliesOffFrame(), 1);
    Exchange(ReleaseFrame(), 1);
    WaitTimer(restMs);
}

} // namespace modFunc
