// Every kind of fault that the simulated programmer has; % is its frame or address.
#pragma once

#include "tests/support/virtual_machine.h"

#include <string>
#include <vector>

inline const std::vector<std::string> faultKinds = {
    "silent@%",      "silent-from@%",    "short@%:1",           "short@%:259",
    "long@%:1",      "long@%:300",       "late@%:999ms",        "late@%:1001ms",
    "late@%:5000ms", "torn@%:1:500ms",   "torn@%:2:999ms",      "torn@%:1:1500ms",
    "double@%",      "chatter@%:1:0ms",  "chatter@%:300:250ms", "status@%:00",
    "status@%:4E",   "status@%:45",      "status@%:45012345",   "pull@%",
    "lie:01%",       "program-error:0%0"};

// The fault at the frame of this number or, for a fault of the chip, at a part of an address.
inline std::string faultAt(std::string kind, std::size_t place) {
    const bool ofFrame = kind.find('@') != std::string::npos;
    return kind.replace(kind.find('%'), 1,
                        ofFrame ? std::to_string(place) : hexText({std::uint8_t(place)}));
}
