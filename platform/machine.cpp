#include "platform/machine.h"

#include <cassert>

namespace platform {

namespace {
Machine* theMachine = nullptr;
}

Machine& machine() {
    assert(theMachine && "useMachine() comes first");
    return *theMachine;
}

void useMachine(Machine* inUse) {
    theMachine = inUse;
}

} // namespace platform
