// Everything that depends on a chip family's number, except the bytes of the family's row in
// FamilyTable. This is the only place where family numbers are compared.
#pragma once

#include "app/family_table.h"

namespace modFunc {

// How Erase works.
enum class ErasePath {
    None,    // not supported
    Pulses,  // supplies set, socket set up, then two erase frames with parameter 00
    ChipCode // socket set up, then one erase frame with the chip code; the frame has two replies
};

// How Program works after the supplies are set.
enum class WritePath {
    None,   // Program ends without writing anything
    Blocks, // 256 bytes at a time
    Pages   // as many bytes at a time as the device's PageSize
};

// The frame that sets up the socket for Program.
enum class WriteSetUp {
    WriteSocket, // "T", with the pin patterns of Program and Read
    ReadSocket   // "S", with the pin pattern of Read
};

// The chip shown in the socket drawing.
enum class ChipOutline { Long, Middle, Short };

struct FamilyTraits {
    bool inTable = false; // FamilyTable has a row with this number; the row may be empty
    ErasePath erase = ErasePath::None;
    int erasePasses = 1; // of an Erase that runs on its own; as an Auto entry, it makes one pass
    WritePath write = WritePath::None;
    WriteSetUp writeSetUp = WriteSetUp::ReadSocket;
    bool canLock = false;
    int lockPasses = 2; // made even if canLock is false; each then only shows "not supported"
    ChipOutline outline = ChipOutline::Short;
};

// Accepts any number. The device functions reject a device if inTable is false for its Family.
constexpr FamilyTraits TraitsOf(int family) {
    FamilyTraits traits;
    traits.inTable = family >= 0 && family <= lastFamily;
    if (family < 20) {
        traits.erase = ErasePath::Pulses;
        traits.erasePasses = family == 4 ? 2 : 1;
        traits.write = WritePath::Blocks;
        traits.writeSetUp = WriteSetUp::WriteSocket;
        traits.canLock = true;
        traits.lockPasses = family == 2 || family == 4 ? 3 : 2;
        traits.outline = family < 10 ? ChipOutline::Long : ChipOutline::Middle;
    } else if (family < 30) {
        traits.write = WritePath::Pages;
    } else if (family < 40) {
        traits.erase = ErasePath::ChipCode;
        traits.write = WritePath::Blocks;
    }
    return traits;
}

} // namespace modFunc
