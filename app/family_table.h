// The electrical parameters of each chip family. The programmer does not know the families: it gets
// these bytes unchanged, inside the frames of link/frames.h.
#pragma once

#include <cstdint>

namespace modFunc {

inline constexpr int lastFamily = 50; // families are numbered from 0

// Nine bytes for one step of an operation. In this file, "S", "T" and other capitals in double
// quotes are the command codes of frames.
struct FamilyGroup {
    std::uint8_t Reserved = 0;
    std::uint8_t PinP = 0;        // pin pattern, first byte, sent in "S" or "T"
    std::uint8_t PinQ = 0;        // pin pattern, second byte
    std::uint8_t LockA = 0;       // first parameter of "L"
    std::uint8_t LockB = 0;       // second parameter of "L"
    std::uint8_t WriteOption = 0; // write option of "W"
    std::uint8_t SupplyV1 = 0;    // supply bytes of "V"
    std::uint8_t SupplyV2 = 0;
    std::uint8_t SupplyV3 = 0;
};

// One row: ten groups, then five bytes common to the family. The fields are in the order of their
// offsets in the row, 0 to 94.
struct FamilyRec {
    FamilyGroup Program{};       // offsets 0-8
    FamilyGroup Read{};          // 9-17; also used by Blank, Verify and Program
    FamilyGroup Lock1{};         // 18-26; its supplies are used for all lock steps
    FamilyGroup Lock2{};         // 27-35; its supplies are not sent
    FamilyGroup Lock3{};         // 36-44; its supplies are not sent
    FamilyGroup Spare5{};        // 45-53; not sent
    FamilyGroup Erase{};         // 54-62
    FamilyGroup Spare7{};        // 63-71; not sent
    FamilyGroup Spare8{};        // 72-80; zero
    FamilyGroup Spare9{};        // 81-89; zero
    std::uint8_t SetupByte1 = 0; // 90; in every "T" and in every "S" except "S" 00
    std::uint8_t SetupByte2 = 0; // 91; likewise
    std::uint8_t ChipCode = 0;   // 92; in "R", "W" and the form of "E" that has a chip code
    std::uint8_t WriteMode = 0;  // 93; last byte of "W" in block form
    std::uint8_t ClassByte = 0;  // 94; class of the family, first parameter of "S" and "T"
};
static_assert(sizeof(FamilyRec) == 95);

// Fills State::FamilyTable. Rows that belong to no family contain zeros.
void InitFamilyTable();

} // namespace modFunc
