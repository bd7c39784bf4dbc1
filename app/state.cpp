#include "app/state.h"

#include <memory>

namespace modFunc {

namespace {
// On the heap because the record is too large for the stack, as is the temporary that a reset would
// create. Created at its first use, when a lack of memory can be reported.
std::unique_ptr<State>& theState() {
    static auto record = std::make_unique<State>();
    return record;
}
} // namespace

State& state() {
    return *theState();
}

void ResetState() {
    theState() = std::make_unique<State>();
}

const DeviceRec& selectedDevice() {
    return state().DeviceList.at(static_cast<std::size_t>(state().SelectedDevice));
}

const FamilyRec& selectedFamily() {
    return state().FamilyTable.at(static_cast<std::size_t>(selectedDevice().Family));
}

} // namespace modFunc
