// Reads the input as quorven.cfg, quorven.dev or auto.cfg; its first byte selects which.
#include "app/delimited_text.h"
#include "app/startup.h"
#include "app/state.h"
#include "fuzz/fuzz.h"
#include "tests/support/temporary_folder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr void (*readers[])(modFunc::DelimitedReader&) = {
        modFunc::ParseSettings, modFunc::ParseDeviceList, modFunc::ParseAutoFile};
    modFunc::DelimitedReader reader("f", textOf(data, size).substr(size > 0));
    modFunc::state().DeviceCount = modFunc::lastDeviceRow; // ParseDeviceList reads that many rows
    const std::string error = errorOf([&] { readers[size > 0 ? data[0] % 3 : 0](reader); });
    check(error.empty() || (error.starts_with("f, line ") && error.size() < 250),
          "a rejection names file and line and fits a message box");
    return 0;
}
