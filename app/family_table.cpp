#include "app/family_table.h"

#include "app/state.h"

namespace modFunc {

namespace {

using Rec = FamilyRec;
using Grp = FamilyGroup;

constexpr int parallelFamilies[] = {1, 2, 3, 4, 5, 10};
constexpr std::size_t parallelCount = std::size(parallelFamilies);

struct GroupLine {
    Grp Rec::*group;
    std::uint8_t Grp::*field;
    std::uint8_t values[parallelCount];
};

struct CommonLine {
    std::uint8_t Rec::*field;
    std::uint8_t values[parallelCount];
};

// clang-format off
constexpr GroupLine groupLines[] = {
    //                                  family  1    2    3    4    5   10
    {&Rec::Program, &Grp::PinP,             {250, 250, 250, 250, 250,  14}},
    {&Rec::Program, &Grp::PinQ,             {192, 200, 192, 200, 192,   0}},
    {&Rec::Program, &Grp::WriteOption,      {  4,   0,   4,   0,   4,   0}},
    {&Rec::Program, &Grp::SupplyV1,         { 12,  12,  12,  12,  12,   0}},
    {&Rec::Program, &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Program, &Grp::SupplyV3,         { 50,  50,  50,  50,  50,  50}},

    {&Rec::Read,    &Grp::PinP,             {248, 248, 248, 248, 248,  12}},
    {&Rec::Read,    &Grp::PinQ,             {192, 192, 192, 192, 192,   0}},
    {&Rec::Read,    &Grp::SupplyV1,         {  5,   5,   5,   5,  12,   0}},
    {&Rec::Read,    &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Read,    &Grp::SupplyV3,         { 50,  50,  50,  50,  50,  50}},

    {&Rec::Lock1,   &Grp::PinP,             {251, 251, 251, 251, 249,  15}},
    {&Rec::Lock1,   &Grp::PinQ,             {192, 200, 192, 200,  64,   0}},
    {&Rec::Lock1,   &Grp::LockA,            {255, 255, 255, 255,   0,   0}},
    {&Rec::Lock1,   &Grp::LockB,            {  0,   0,   0,   0,   0,   0}},
    {&Rec::Lock1,   &Grp::SupplyV1,         { 12,  12,  12,  12,  12,   0}},
    {&Rec::Lock1,   &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Lock1,   &Grp::SupplyV3,         { 50,  50,  50,  65,  50,  50}},

    {&Rec::Lock2,   &Grp::PinP,             {251, 251, 251, 251, 249,   3}},
    {&Rec::Lock2,   &Grp::PinQ,             {  0,   8,   0,   8,  64,   0}},
    {&Rec::Lock2,   &Grp::LockA,            {255, 255, 255, 255,   0,   0}},
    {&Rec::Lock2,   &Grp::LockB,            {  0,   0,   0,   0,   0,   0}},
    {&Rec::Lock2,   &Grp::SupplyV1,         {  0,   0,   0,   0,   0,   0}},
    {&Rec::Lock2,   &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Lock2,   &Grp::SupplyV3,         {  0,   0,   0,   0,   0,  50}},

    {&Rec::Lock3,   &Grp::PinP,             {249, 249, 249, 249, 249,   0}},
    {&Rec::Lock3,   &Grp::PinQ,             { 64,  72,  64,  72,  64,   0}},
    {&Rec::Lock3,   &Grp::LockA,            {255, 255, 255, 255,   0,   0}},
    {&Rec::Lock3,   &Grp::LockB,            {  0,   0,   0,   0,   0,   0}},

    {&Rec::Spare5,  &Grp::PinP,             {  0, 251,   0, 251,   0,   0}},
    {&Rec::Spare5,  &Grp::PinQ,             {  0,  64,   0,  64,   0,   0}},
    {&Rec::Spare5,  &Grp::SupplyV1,         {  0,   5,   0,   5,   0,   0}},
    {&Rec::Spare5,  &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   0}},
    {&Rec::Spare5,  &Grp::SupplyV3,         {  0,  50,   0,  50,   0,   0}},

    {&Rec::Erase,   &Grp::PinP,             {249, 249, 249, 249, 249,   1}},
    {&Rec::Erase,   &Grp::PinQ,             {  0,   8,   8,   8,   0,   0}},
    {&Rec::Erase,   &Grp::SupplyV1,         { 12,  12,  12,  12,  12,   0}},
    {&Rec::Erase,   &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Erase,   &Grp::SupplyV3,         { 50,  50,  50,  65,  50,  50}},

    {&Rec::Spare7,  &Grp::PinP,             {248, 248, 248, 248, 248,   0}},
    {&Rec::Spare7,  &Grp::PinQ,             {  0,   0,   0,   0,   0,   0}},
    {&Rec::Spare7,  &Grp::SupplyV1,         {  5,   5,   5,   5,   5,   0}},
    {&Rec::Spare7,  &Grp::SupplyV2,         {  0,   0,   0,   0,   0,   5}},
    {&Rec::Spare7,  &Grp::SupplyV3,         { 50,  50,  50,  50,  50,  50}},
};

constexpr CommonLine commonLines[] = {
    //                                  family  1    2    3    4    5   10
    {&Rec::SetupByte1,                      {160, 128, 128, 128, 160,   0}},
    {&Rec::SetupByte2,                      { 63,  55,  63,  39,  63,   0}},
    {&Rec::ChipCode,                        {  8,   8,   8,   4,   8,   8}},
    {&Rec::WriteMode,                       {  1,   2,   2,   2,   2,   0}},
    {&Rec::ClassByte,                       {  1,   1,   1,   1,   1,   2}},
};

// The serial families: no supplies, no pin patterns.
struct SerialFamily {
    int family;
    std::uint8_t chipCode;
    std::uint8_t classByte;
};
constexpr SerialFamily serialFamilies[] = {
    {20, 20, 3},
    {21, 21, 3},
    {30,  7, 4},
    {31,  8, 4},
    {32,  9, 4},
};
// clang-format on

} // namespace

void InitFamilyTable() {
    auto& table = state().FamilyTable;
    table.fill(FamilyRec{});
    for (std::size_t column = 0; column < parallelCount; ++column) {
        FamilyRec& row = table.at(static_cast<std::size_t>(parallelFamilies[column]));
        for (const GroupLine& line : groupLines)
            row.*line.group.*line.field = line.values[column];
        for (const CommonLine& line : commonLines)
            row.*line.field = line.values[column];
    }
    for (const SerialFamily& serial : serialFamilies) {
        FamilyRec& row = table.at(static_cast<std::size_t>(serial.family));
        row.ChipCode = serial.chipCode;
        row.ClassByte = serial.classByte;
    }
}

} // namespace modFunc
