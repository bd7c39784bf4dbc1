#include "buffer/image.h"

#include "app/state.h"

#include <algorithm>
#include <numeric>

namespace modFunc {

void ClearImage() {
    std::ranges::fill(state().BufferData, erasedByte);
}

void FillImage() {
    State& s = state();
    for (std::int32_t index = s.FillStart; index < s.FillStart + s.FillLength; ++index)
        s.BufferData.at(static_cast<std::size_t>(index)) = s.FillByte;
}

void ComputeCheckSum() {
    State& s = state();
    const auto bytes = std::clamp<std::int32_t>(selectedDevice().Size, 0, lastBufferIndex + 1);
    const std::uint32_t sum =
        std::accumulate(s.BufferData.begin(), s.BufferData.begin() + bytes, std::uint32_t{0});
    s.BufferCheckSum = static_cast<std::int32_t>(sum % 65536);
}

} // namespace modFunc
