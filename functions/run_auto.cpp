#include "functions/device_run.h"

#include "app/state.h"

namespace modFunc {

// Runs the entries of AutoList in order, each on its own message line; the sixth and all later ones
// share the last line. A difference found by Blank or Verify ends the sequence, as does a write
// status other than success; a missing or incomplete reply does not.
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
