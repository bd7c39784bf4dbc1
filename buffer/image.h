// The memory image: one array of bytes for every device, whose first Size bytes are the device's.
#pragma once

#include <cstdint>

namespace modFunc {

inline constexpr std::uint8_t erasedByte = 0xFF;

// Sets every byte of BufferData, 0..70000, to FF.
void ClearImage();

// Sets FillLength bytes of BufferData from FillStart on to FillByte. The range must be within the
// image, as frmBufferFill ensures.
void FillImage();

// Sets BufferCheckSum to the sum of the selected device's unsigned bytes modulo 65536. A Size
// beyond the image sums the whole image; a Size of 0 or below gives 0.
void ComputeCheckSum();

} // namespace modFunc
