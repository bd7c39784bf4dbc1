#include "functions/device_run.h"

#include "app/state.h"
#include "buffer/buffer_view.h"
#include "link/frames.h"

namespace modFunc {

// Copies the chip's contents into BufferData block by block; blocks read before a failure stay
// there. On success the function window closes and the hex view shows the data. The rest of the run
// has no window.
void DeviceRun::ReadDevice() {
    const bool done = ReadBlocks("Reading ...", [this] {
        for (ByteIndex = 0; ByteIndex < blockBytes; ++ByteIndex)
            state().BufferData.at(static_cast<std::size_t>(BlockAddress() + ByteIndex)) =
                ReplyByte();
        return true;
    });
    if (!done)
        return;
    if (window_) {
        window_->Close();
        window_ = nullptr;
    }
    bufferView().Reopen();
}

} // namespace modFunc
