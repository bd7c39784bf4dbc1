#include "functions/device_run.h"

#include "app/state.h"

namespace modFunc {

// Runs the entries of AutoList in order, each on its own message line; the sixth and all later ones
// share the last line. A failure reported by the chip ends the sequence; a missing reply does not.
void DeviceRun::RunAuto() {
    const State& s = state();
    for (AutoIndex = 1; AutoIndex <= s.AutoCount; ++AutoIndex) {
        DropStaleBytes();
        RunFunction(s.AutoList.at(static_cast<std::size_t>(AutoIndex)));
        if (StopAuto)
            return;
        if (MsgLine < messageLines - 1)
            ++MsgLine;
    }
}

} // namespace modFunc
