// The memory image: one array of bytes for every device, whose first Size bytes are the device's.
#pragma once

#include <cstdint>

namespace modFunc {

inline constexpr std::uint8_t erasedByte = 0xFF;

// Every byte of BufferData, 0..70000, becomes FF.
void ClearImage();

// FillLength bytes of BufferData from FillStart on become FillByte. The range is within
// the image: frmBufferFill accepts no other.
void FillImage();

// BufferCheckSum := the sum of the selected device's bytes modulo 65536, each byte 0..255. A Size
// beyond the image sums the image; a Size of 0 or below gives 0.
void ComputeCheckSum();

} // namespace modFunc
