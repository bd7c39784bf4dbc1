#pragma once

#include <cstdint>
#include <vector>

// Bytes on the wire or in a file: no text, no terminator, 00 and FF like any other.
using Bytes = std::vector<std::uint8_t>;
