#pragma once

#include <string>

namespace platform {

// Ports are numbered from 1.
inline constexpr int portCount = 16;

// The system's name of serial port `number`, looked up at every call; empty for a number outside
// 1..portCount:
//   1. com<number>, in lower case, in `directory`, usually a symbolic link: the path it leads to,
//      or its own path where it leads nowhere;
//   2. the fixed table: 1-4 /dev/ttyS0-3, 5-12 /dev/ttyUSB0-7, 13-16 /dev/ttyACM0-3;
//      on Windows COM<number>.
// The name does not depend on which devices are connected, except where the link com<number> does;
// which device the system gives a ttyUSB or ttyACM name does depend on it.
std::string PortName(int number, const std::string& directory);

} // namespace platform
