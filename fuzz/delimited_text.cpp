// The three start files; the first byte selects which.
#include "app/delimited_text.h"
#include "app/startup.h"
#include "fuzz/fuzz.h"
#include "platform/file_error.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr void (*readers[])(modFunc::DelimitedReader&) = {
        modFunc::ParseSettings, modFunc::ParseDeviceList, modFunc::ParseAutoFile};
    try {
        modFunc::DelimitedReader reader("f", textOf(data, size).substr(size > 0));
        readers[size > 0 ? data[0] % 3 : 0](reader);
    } catch (const platform::FileError& error) {
        const std::string text = error.what();
        check(text.starts_with("f, line ") && text.size() < 250,
              "a rejection names file and line and fits a message box");
    }
    return 0;
}
