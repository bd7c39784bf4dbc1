// Shared by all targets. A target defines LLVMFuzzerTestOneInput, which uses the input as the
// contents of a file or to select the faults of the programmer, and checks what must hold for any
// input.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// If the property does not hold, prints its name and aborts the process.
inline void check(bool holds, const char* property) {
    if (!holds)
        throw std::logic_error(property);
}

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
