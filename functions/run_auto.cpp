#include "functions/device_run.h"

#include "app/state.h"

namespace modFunc {

// Runs the entries of AutoList one after the other, each on the next message line, all from the
// sixth on sharing the last line. A chip failure ends the sequence; a lost reply does not.
void DeviceRun::RunAuto() {
    const State& s = state();
    for (AutoIndex = 1; AutoIndex <= s.AutoCount; ++AutoIndex) {
        DropLeftovers();
        const int code = s.AutoList.at(static_cast<std::size_t>(AutoIndex));
        if (code == Erase) { // one pass for every family: the second belongs to Run alone
            EraseDevice();
            EndFunction();
        } else if (code != Auto) {
            RunFunction(code);
        }
        if (StopAuto)
            return;
        if (MsgLine < messageLines - 1)
            ++MsgLine;
    }
}

} // namespace modFunc
