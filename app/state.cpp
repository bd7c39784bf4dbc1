#include "app/state.h"

namespace modFunc {

State& state() {
    static State record;
    return record;
}

void ResetState() {
    state() = {};
}

const DeviceRec& selectedDevice() {
    return state().DeviceList.at(static_cast<std::size_t>(state().SelectedDevice));
}

const FamilyRec& selectedFamily() {
    return state().FamilyTable.at(static_cast<std::size_t>(selectedDevice().Family));
}

} // namespace modFunc
