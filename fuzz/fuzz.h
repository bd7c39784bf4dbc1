// Shared by all targets. A target is one LLVMFuzzerTestOneInput: it gives the input to the program
// as if it came from outside and checks what must hold for any input.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process, naming the property, when it does not hold.
inline void check(bool holds, const char* property) {
    if (!holds)
        throw std::logic_error(property);
}

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
