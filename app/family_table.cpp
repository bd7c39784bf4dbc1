#include "app/family_table.h"

#include "app/state.h"

namespace modFunc {

namespace {

// Fields that a block does not list are 0; a copied family keeps those of its original.
constexpr FamilyRec family1{
    .Program = {.PinP = 250, .PinQ = 192, .WriteOption = 4, .SupplyV1 = 12, .SupplyV3 = 50},
    .Read = {.PinP = 248, .PinQ = 192, .SupplyV1 = 5, .SupplyV3 = 50},
    .Lock1 = {.PinP = 251, .PinQ = 192, .LockA = 255, .SupplyV1 = 12, .SupplyV3 = 50},
    .Lock2 = {.PinP = 251, .LockA = 255},
    .Lock3 = {.PinP = 249, .PinQ = 64, .LockA = 255},
    .Erase = {.PinP = 249, .SupplyV1 = 12, .SupplyV3 = 50},
    .Spare7 = {.PinP = 248, .SupplyV1 = 5, .SupplyV3 = 50},
    .SetupByte1 = 160,
    .SetupByte2 = 63,
    .ChipCode = 8,
    .WriteMode = 1,
    .ClassByte = 1,
};

constexpr FamilyRec family2 = [] {
    FamilyRec family = family1;
    family.Program.PinQ = 200;
    family.Program.WriteOption = 0;
    family.Lock1.PinQ = 200;
    family.Lock2.PinQ = 8;
    family.Lock3.PinQ = 72;
    family.Spare5 = {.PinP = 251, .PinQ = 64, .SupplyV1 = 5, .SupplyV3 = 50};
    family.Erase.PinQ = 8;
    family.SetupByte1 = 128;
    family.SetupByte2 = 55;
    family.WriteMode = 2;
    return family;
}();

constexpr FamilyRec family3 = [] {
    FamilyRec family = family1;
    family.Erase.PinQ = 8;
    family.SetupByte1 = 128;
    family.WriteMode = 2;
    return family;
}();

constexpr FamilyRec family4 = [] {
    FamilyRec family = family2;
    family.Lock1.SupplyV3 = 65;
    family.Erase.SupplyV3 = 65;
    family.SetupByte2 = 39;
    family.ChipCode = 4;
    return family;
}();

constexpr FamilyRec family5 = [] {
    FamilyRec family = family1;
    family.Read.SupplyV1 = 12;
    family.Lock1 = {.PinP = 249, .PinQ = 64, .SupplyV1 = 12, .SupplyV3 = 50};
    family.Lock2 = {.PinP = 249, .PinQ = 64};
    family.Lock3 = {.PinP = 249, .PinQ = 64};
    family.WriteMode = 2;
    return family;
}();

constexpr FamilyRec family10{
    .Program = {.PinP = 14, .SupplyV2 = 5, .SupplyV3 = 50},
    .Read = {.PinP = 12, .SupplyV2 = 5, .SupplyV3 = 50},
    .Lock1 = {.PinP = 15, .SupplyV2 = 5, .SupplyV3 = 50},
    .Lock2 = {.PinP = 3, .SupplyV2 = 5, .SupplyV3 = 50},
    .Erase = {.PinP = 1, .SupplyV2 = 5, .SupplyV3 = 50},
    .Spare7 = {.SupplyV2 = 5, .SupplyV3 = 50},
    .ChipCode = 8,
    .ClassByte = 2,
};

// These families have no supply values and no pin patterns.
constexpr FamilyRec family20{.ChipCode = 20, .ClassByte = 3};
constexpr FamilyRec family21{.ChipCode = 21, .ClassByte = 3};
constexpr FamilyRec family30{.ChipCode = 7, .ClassByte = 4};
constexpr FamilyRec family31{.ChipCode = 8, .ClassByte = 4};
constexpr FamilyRec family32{.ChipCode = 9, .ClassByte = 4};

} // namespace

void InitFamilyTable() {
    auto& table = state().FamilyTable;
    table.fill({});
    table[1] = family1;
    table[2] = family2;
    table[3] = family3;
    table[4] = family4;
    table[5] = family5;
    table[10] = family10;
    table[20] = family20;
    table[21] = family21;
    table[30] = family30;
    table[31] = family31;
    table[32] = family32;
}

} // namespace modFunc
