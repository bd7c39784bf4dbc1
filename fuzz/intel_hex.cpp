#include "files/hex_file.h"

#include "fuzz/image_file.h"

#include <algorithm>

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ImageFile image;
    State& s = image.s;
    image.take({data, size});
    const bool loaded = image.loads(OpenHexFile);

    const std::int64_t first = std::int64_t{s.FileAddress} + s.BufferAddress;
    const auto kept = loaded || image.tooLong() ? std::min<std::int64_t>(first, lastBufferIndex + 1)
                                                : lastBufferIndex + 1;
    fuzz::check(
        std::equal(s.BufferData.begin(), s.BufferData.begin() + kept, image.untouched.begin()),
        "nothing changes below the offsets, nor by a file that is rejected");
    if (!loaded)
        return 0;

    constexpr std::int32_t deviceBytes = 512;
    s.DeviceList[0].Size = deviceBytes;
    const Bytes before(s.BufferData.begin(), s.BufferData.begin() + deviceBytes);
    image.file.hold(HexFileText());
    std::fill_n(s.BufferData.begin(), deviceBytes, std::uint8_t{0});
    s.FileAddress = s.BufferAddress = 0;
    fuzz::check(image.loads(OpenHexFile), "a saved file loads");
    fuzz::check(std::equal(before.begin(), before.end(), s.BufferData.begin()),
                "a saved file loads back the same");
    return 0;
}
