// The frames of the wire protocol. Each function except PowerDownFrames returns one whole frame;
// its parameters supply whatever varies in this kind of frame.
//
// The layout of a frame from the program to the programmer. Multi-byte fields have the most
// significant byte first.
//
//   offset  size        field       meaning
//   0       4           Length      number of bytes after this field, including the command code
//   4       1           Command     command code, an ASCII letter
//   5       Length - 1  Parameters  listed with their offsets at each function
//
// Parameters named after a field of FamilyRec or FamilyGroup are copied unchanged from the device's
// family row (app/family_table.h). No byte is escaped, and frames have no checksum.
//
// A reply has no framing; its length is given at each function. For time-outs, examples and the
// order of frames, see docs/protocol.md.
#pragma once

#include "app/family_table.h"
#include "platform/bytes.h"

#include <cstdint>
#include <span>

namespace modFunc {

// Bytes in a block. An "R" reads one block; in block form, a "D" loads one and a "W" writes one.
inline constexpr int blockBytes = 256;
// Maximum number of bytes that a "D" loads and a "W" writes in page form.
inline constexpr int maxPageBytes = 128;
inline constexpr int identifyReplyBytes = 12;
inline constexpr int readReplyBytes = 260;
inline constexpr int readReplyHeaderBytes = 4; // ignored; they precede the 256 data bytes

// "I": identify. No parameters. Reply: 12 characters of firmware text.
Bytes IdentifyFrame();

// "V": set supplies. Reply: 1 byte.
//   5  SupplyV1
//   6  SupplyV2
//   7  SupplyV3
Bytes SuppliesFrame(const FamilyGroup& step);
// "V" 00 00 00: all supplies off.
Bytes SuppliesOffFrame();

// "S": set up the socket with the pin pattern of a step. Reply: 1 byte.
//   5  ClassByte
//   6  SetupByte1
//   7  SetupByte2
//   8  PinP of the step
//   9  PinQ of the step
Bytes SocketFrame(const FamilyRec& family, const FamilyGroup& step);
// "S" 00: release the socket. Length is 2: the class byte is 00, and no other parameter follows it.
Bytes ReleaseFrame();

// SuppliesOffFrame, then ReleaseFrame: powers the socket down from any state.
Bytes PowerDownFrames();

// "T": set up the socket for writing. Reply: 1 byte.
//   5   ClassByte
//   6   SetupByte1
//   7   SetupByte2
//   8   PinP of the Program group
//   9   PinQ of the Program group
//   10  PinP of the Read group
//   11  PinQ of the Read group
Bytes WriteSocketFrame(const FamilyRec& family);

// "D": load data; the programmer keeps it for the "W" that follows. Reply: 1 byte.
//   5 on  the data: 256 bytes in block form, a page in page form
Bytes DataFrame(std::span<const std::uint8_t> data);

// "W": write the 256-byte block loaded by the last "D". Reply: 1 status byte. "N": the block was
// written. "E": a byte failed; its address follows in 2 bytes, high byte first. Any other status is
// a fault without an address.
//   5   first address, high byte
//   6   first address, low byte: 00
//   7   last address, high byte
//   8   last address, low byte: FF
//   9   ChipCode
//   10  WriteOption of the Program group
//   11  WriteMode
// `address` is the first address, 0..65280, a multiple of 256.
Bytes WriteBlockFrame(const FamilyRec& family, std::int32_t address);

// "W": write the page loaded by the last "D". Has the parameters of the block form, except:
//   6   first address, low byte
//   8   last address, low byte
//   11  bytes per page
// `address` is the first address, 0..65535; `pageBytes` is 1..128, and the page does not cross a
// 256-byte boundary.
Bytes WritePageFrame(const FamilyRec& family, std::int32_t address, int pageBytes);

// "R": read a 256-byte block. Reply: 4 bytes that are ignored, then the 256 bytes in address order.
//   5  first address, high byte
//   6  first address, low byte: 00
//   7  last address, high byte
//   8  last address, low byte: FF
//   9  ChipCode
// `address` is the first address, 0..65280, a multiple of 256.
Bytes ReadBlockFrame(const FamilyRec& family, std::int32_t address);

// "E": erase. Reply: 1 byte; if a chip code is sent, a second byte follows when the chip has been
// erased.
//   5  ChipCode, or 00 for a pulse (see ErasePath in app/family_traits.h)
Bytes EraseFrame(std::uint8_t chipCode);

// "L": one lock step. Reply: 1 byte.
//   5  LockA
//   6  LockB
Bytes LockFrame(const FamilyGroup& step);

} // namespace modFunc
