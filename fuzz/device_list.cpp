#include "fuzz/start_file.h"

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    State& s = state();
    s.DeviceCount = 3;
    if (!fuzz::readsAs("quorven.dev", ReadDeviceList, fuzz::Input(data, size).rest()))
        return 0;
    for (const DeviceRec& row : s.DeviceList)
        fuzz::check(row.Name.find_first_of("\r\n") == std::string::npos, "a name is one line");
    fuzz::check(s.DeviceList[0].Name.empty() && s.DeviceList[4].Name.empty(),
                "no other row is filled");
    return 0;
}
