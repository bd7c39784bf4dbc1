// Any replies of the programmer, at any time, to any function on any device.
#include "fuzz/fuzz.h"
#include "tests/functions/fault_fixture.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    GTEST_FLAG_SET(break_on_failure, true);
    std::size_t position = 0;
    Faults().runAny([&] { return position < size ? data[position++] : std::uint8_t{0}; });
    return 0;
}
