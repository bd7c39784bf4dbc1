#include "functions/device_run.h"

#include "buffer/image.h"

namespace modFunc {

// Reads the chip and looks for the first byte that is not erased.
void DeviceRun::BlankCheckDevice() {
    ReadBlocks("Blank Checking ...",
               [this] { return CompareBlock("Blank Error at ", [] { return erasedByte; }); });
}

} // namespace modFunc
