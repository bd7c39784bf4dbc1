#include "functions/device_run.h"

#include "app/state.h"

namespace modFunc {

// Reads the chip and looks for the first byte that differs from the image.
void DeviceRun::VerifyDevice() {
    ReadBlocks("Verifying ...", [this] {
        return CompareBlock("Verify Error at ", [this] {
            return state().BufferData.at(static_cast<std::size_t>(BlockAddress() + ByteIndex));
        });
    });
}

} // namespace modFunc
