// Runs one function on one family with one to four faults of the programmer; the input selects the
// function, the family and the faults.
#include "fuzz/fuzz.h"
#include "tests/functions/fault_fixture.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    GTEST_FLAG_SET(break_on_failure, true);
    std::size_t position = 0;
    Faults().runAny([&] { return position < size ? data[position++] : std::uint8_t{0}; });
    return 0;
}
