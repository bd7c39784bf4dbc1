#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace modFunc {

inline constexpr int hexRecordDataBytes = 51;

// One record of an Intel HEX file.
struct HexRec {
    std::string Line;            // the record's text, truncated to the maximum length of a record
    std::int16_t Length = 0;     // byte count field, 0..51 in an accepted data record
    std::int32_t Address = 0;    // address field, 0..65535
    std::int16_t RecordType = 0; // 0: data; any other value ends the data
    std::array<std::uint8_t, hexRecordDataBytes> Data{};
    std::int16_t CheckSum = 0; // check byte (the last two characters of the line), 0..255
};

} // namespace modFunc
