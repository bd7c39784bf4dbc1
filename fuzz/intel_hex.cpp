// Reads the input as a file, then writes it as an image and reads that file.
#include "files/hex_file.h"

#include "app/state.h"
#include "fuzz/fuzz.h"
#include "platform/file_error.h"

#include <algorithm>

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    State& s = state();
    try {
        ReadHexText("f", textOf(data, size));
    } catch (const platform::FileError& error) {
        check(std::string(error.what()).starts_with("f"), "a rejection names the file");
    }

    s.DeviceList[0].Size = static_cast<std::int32_t>(size);
    std::copy_n(data, size, s.BufferData.begin());
    check(ReadHexText("f", HexFileText()) == HexResult::Complete, "a written file can be read");
    for (std::size_t i = 0; i < size; ++i) {
        const HexRec& record = s.HexRecords[1 + i / 16];
        check(record.Address == int(i / 16 * 16) && record.Data[i % 16] == data[i],
              "it contains the image");
    }
    return 0;
}
