#pragma once

#include "simbox/faults.h"

#include <cstdint>
#include <string>
#include <vector>

namespace simbox {

struct Options {
    std::uint32_t baud = 57600;            // 10 bits a byte; 0: no pace, wire time is nothing
    std::string firmware = "SimBox v1.00"; // identify reply; the program expects 12 characters
    std::int64_t writeTimeUs = 0;          // from a "W" frame's arrival to the start of its reply
    std::uint8_t fill = 0xA5;              // every byte of a fresh chip
    std::vector<Fault> faults;             // several may hit one frame: applied in this order
};

} // namespace simbox
