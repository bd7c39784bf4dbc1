#pragma once

#include <cstdint>
#include <string>

namespace modFunc {

// One row of the device list. The fields are in the same order as in the file. An empty row has
// empty strings and zeros. The file may contain numbers outside the ranges given here. The device
// functions reject a device whose Family or Size is outside its range. Program also rejects a Size
// that is not a whole number of blocks or pages and, for a family that writes pages, a PageSize
// outside its range.
struct DeviceRec {
    std::string Name;        // shown to the user
    std::string Text2;       // not used
    std::string Text3;       // not used
    std::int16_t Family = 0; // row of FamilyTable, 0..50
    std::int32_t Size = 0;   // bytes of chip memory, 0..65536
    // Page size in bytes if the family writes pages: 1..128, a divisor of 256.
    std::int16_t PageSize = 0;
    std::int16_t Value7 = 0; // not used
    std::int16_t Value8 = 0; // not used
};

} // namespace modFunc
