#pragma once

#include <cstdint>
#include <vector>

// Raw bytes, on the wire or in a file. There is no terminator, and no value is special.
using Bytes = std::vector<std::uint8_t>;
