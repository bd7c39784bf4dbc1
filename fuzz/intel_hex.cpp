// Reads the input as an Intel HEX file.
#include "files/hex_file.h"
#include "fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string error = errorOf([&] { modFunc::ReadHexText("f", textOf(data, size)); });
    check(error.empty() || error.starts_with("f"), "a rejection names the file");
    return 0;
}
