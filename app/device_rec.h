#pragma once

#include <cstdint>
#include <string>

namespace modFunc {

// One row of the device catalogue, in the order of the file. An empty row has empty strings and
// zeros. The file's numbers are taken as they stand: a device function refuses what is outside the
// ranges told here.
struct DeviceRec {
    std::string Name;          // shown to the user
    std::string Text2;         // held, not used
    std::string Text3;         // held, not used
    std::int16_t Family = 0;   // row of FamilyTable, 0..50
    std::int32_t Size = 0;     // bytes of chip memory, 0..65536
    std::int16_t PageSize = 0; // bytes a page on families 20 to 29, 1..128, dividing 256
    std::int16_t Value7 = 0;   // held, not used
    std::int16_t Value8 = 0;   // held, not used
};

} // namespace modFunc
