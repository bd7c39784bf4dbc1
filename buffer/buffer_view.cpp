#include "buffer/buffer_view.h"

#include <cassert>

namespace modFunc {

namespace {
BufferView* theView = nullptr;
}

BufferView& bufferView() {
    assert(theView && "useBufferView() comes first");
    return *theView;
}

void useBufferView(BufferView* inUse) {
    theView = inUse;
}

} // namespace modFunc
