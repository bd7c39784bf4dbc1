// The frames of the wire protocol, one function each: values in, the whole frame out.
//
// A frame, program to box, multi-byte fields most significant byte first:
//
//   offset  size        field       meaning
//   0       4           Length      number of bytes behind this field, the letter included
//   4       1           Command     ASCII letter
//   5       Length - 1  Parameters  as drawn at each function, from offset 5 on
//
// The parameters come byte for byte from the device's family row (app/family_table.h). Nothing is
// escaped, and no frame carries a check of its own.
//
// A reply is a fixed number of bytes without framing, given at each function. Order, time limits
// and examples: docs/protocol.md.
#pragma once

#include "app/family_table.h"
#include "platform/bytes.h"

#include <cstdint>
#include <span>

namespace modFunc {

inline constexpr int blockBytes = 256;       // of every "R", and of "D" and "W" in block form
inline constexpr int largestPageBytes = 128; // of "D" and "W" in page form
inline constexpr int identifyReplyBytes = 12;
inline constexpr int readReplyBytes = 260;
inline constexpr int readReplyHeaderBytes = 4; // in front of the 256 data bytes, not looked at

// "I": identify. No parameters. Reply: 12 characters of firmware text.
Bytes IdentifyFrame();

// "V": set supplies. Reply: 1 byte.
//   5  SupplyV1
//   6  SupplyV2
//   7  SupplyV3
Bytes SuppliesFrame(const FamilyGroup& step);
// "V" 00 00 00: all supplies off.
Bytes SuppliesOffFrame();

// "S": set up socket with the pin pattern of a step. Reply: 1 byte.
//   5  ClassByte
//   6  SetupByte1
//   7  SetupByte2
//   8  PinP of the step
//   9  PinQ of the step
Bytes SocketFrame(const FamilyRec& family, const FamilyGroup& step);
// "S" 00: release the socket; Length 2, the class byte is 00 and nothing follows it.
Bytes ReleaseFrame();

// "T": set up socket for writing, on families below 20. Reply: 1 byte.
//   5   ClassByte
//   6   SetupByte1
//   7   SetupByte2
//   8   PinP of the Program group
//   9   PinQ of the Program group
//   10  PinP of the Read group
//   11  PinQ of the Read group
Bytes WriteSocketFrame(const FamilyRec& family);

// "D": load data; the box keeps it for the "W" that follows. Reply: 1 byte.
//   5 on  the data: 256 bytes in block form, a page in page form
Bytes DataFrame(std::span<const std::uint8_t> data);

// "W": write the data loaded before, a 256-byte block. Reply: 1 status byte, "N" written, or "E"
// and then the failing address in 2 bytes, high byte first.
//   5   first address, high byte
//   6   first address, low byte: 00
//   7   last address, high byte
//   8   last address, low byte: FF
//   9   ChipCode
//   10  WriteOption of the Program group
//   11  WriteMode
// `address` is the first address, 0..65280, a multiple of 256.
Bytes WriteBlockFrame(const FamilyRec& family, std::int32_t address);

// "W": write a page; as the block form, but for
//   6   first address, low byte
//   8   last address, low byte
//   11  bytes a page
// `address` is the first address, 0..65535; `pageBytes` is 1..128, and the page does not cross a
// 256-byte boundary.
Bytes WritePageFrame(const FamilyRec& family, std::int32_t address, int pageBytes);

// "R": read a 256-byte block. Reply: 4 bytes not looked at, then the 256 bytes in address order.
//   5  first address, high byte
//   6  first address, low byte: 00
//   7  last address, high byte
//   8  last address, low byte: FF
//   9  ChipCode
Bytes ReadBlockFrame(const FamilyRec& family, std::int32_t address);

// "E": erase. Reply: 1 byte; on families 30 to 39 a second byte follows it.
//   5  00 on families below 20, ChipCode on families 30 to 39
Bytes EraseFrame(std::uint8_t chipCode);

// "L": one lock step. Reply: 1 byte.
//   5  LockA
//   6  LockB
Bytes LockFrame(const FamilyGroup& step);

} // namespace modFunc
