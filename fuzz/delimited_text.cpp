// The three start files; the first byte selects which.
#include "app/delimited_text.h"

#include "app/startup.h"
#include "app/state.h"
#include "fuzz/fuzz.h"
#include "platform/file_error.h"

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr void (*readers[])(DelimitedReader&) = {ParseSettings, ParseDeviceList, ParseAutoFile};
    if (size == 0)
        return 0;
    State& s = state();
    s.DeviceCount = 3;
    try {
        DelimitedReader reader("f", textOf(data + 1, size - 1));
        readers[data[0] % 3](reader);
    } catch (const platform::FileError& error) {
        const std::string text = error.what();
        check(text.starts_with("f, line ") && text.size() < 250,
              "a rejection names file and line and fits a message box");
    }
    check(s.DeviceCount >= 0 && s.DeviceCount <= 50 && s.SelectedDevice >= 0 &&
              s.SelectedDevice <= 50 && s.AutoCount >= 0 && s.AutoCount <= 20,
          "counts stay within their lists");
    check(s.DeviceList[0].Name.empty() && s.DeviceList[4].Name.empty(), "no other row is filled");
    return 0;
}
