#include "fuzz/start_file.h"

using namespace modFunc;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (!fuzz::readsAs("auto.cfg", ReadAutoFile, fuzz::Input(data, size).rest()))
        return 0;
    State& s = state();
    fuzz::check(s.AutoCount >= 0 && s.AutoCount <= 20, "the sequence stays within AutoList");

    const auto before = s.AutoList;
    WriteAutoFile();
    ReadAutoFile();
    fuzz::check(s.AutoList == before, "the sequence reads back as it was written");
    return 0;
}
