// The memory image: one array of bytes, the same for all devices. Its first Size bytes (Size of the
// selected device) correspond to the chip's memory.
#pragma once

#include <cstdint>

namespace modFunc {

inline constexpr std::uint8_t erasedByte = 0xFF;

// Sets every byte of BufferData, 0..70000, to FF.
void ClearImage();

// Sets FillLength bytes of BufferData, from FillStart on, to FillByte. The range must be within the
// image, as frmBufferFill ensures.
void FillImage();

// Sets BufferCheckSum to the sum of the first Size bytes of BufferData (Size of the selected
// device; bytes are unsigned), modulo 65536. If Size is larger than the image, the whole image is
// summed; if Size is 0 or below, the sum is 0.
void ComputeCheckSum();

} // namespace modFunc
