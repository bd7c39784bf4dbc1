#pragma once

#include <string>

namespace platform {

// Ports are numbered from 1.
inline constexpr int portCount = 16;

// The system's name for serial port `number`; empty for a number outside 1..portCount. The name is
// looked up at every call:
//   1. if `directory` contains com<number> (lower case, usually a symbolic link): its target,
//      or its own path if the link is dangling;
//   2. otherwise from a fixed table: 1-4 /dev/ttyS0-3, 5-12 /dev/ttyUSB0-7, 13-16 /dev/ttyACM0-3;
//      on Windows COM<number>.
// The names in the table do not depend on the connected devices, but the system decides which
// device a ttyUSB or ttyACM name refers to.
std::string PortName(int number, const std::string& directory);

} // namespace platform
