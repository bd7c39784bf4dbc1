#include "fuzz/start_file.h"

#include <tuple>

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (!fuzz::readsAs("quorven.cfg", ReadSettings, fuzz::Input(data, size).rest()))
        return 0;
    State& s = state();
    fuzz::check(s.DeviceCount >= 0 && s.DeviceCount <= 50 && s.SelectedDevice >= 0 &&
                    s.SelectedDevice <= 50,
                "settings stay within DeviceList");

    const auto settings = [&s] {
        return std::tuple(s.ComPort, s.DeviceCount, s.SelectedDevice, s.ProgramVersion,
                          s.ProgramDate);
    };
    const auto before = settings();
    WriteSettings();
    s.ProgramVersion = s.ProgramDate = "";
    ReadSettings();
    fuzz::check(settings() == before, "settings read back as they were written");
    return 0;
}
