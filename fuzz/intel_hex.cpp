// Reads the input as an Intel HEX file. Then writes the input, as an image, to an Intel HEX file
// and reads that file.
#include "app/state.h"
#include "files/hex_file.h"
#include "fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    modFunc::State& s = modFunc::state();
    const std::string error = errorOf([&] { modFunc::ReadHexText("f", textOf(data, size)); });
    check(error.empty() || error.starts_with("f"), "a rejection names the file");
    s.DeviceList[0].Size = static_cast<std::int32_t>(size);
    std::copy_n(data, size, s.BufferData.begin());
    modFunc::ReadHexText("f", modFunc::HexFileText());
    for (std::size_t i = 0; i < size; ++i)
        check(s.HexRecords[1 + i / 16].Data[i % 16] == data[i], "it contains the image");
    return 0;
}
