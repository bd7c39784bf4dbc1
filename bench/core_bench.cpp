// Files and the page's text, by the size of the device.
#include "app/state.h"
#include "buffer/buffer_view.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "files/hex_file.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/virtual_machine.h"

#include <benchmark/benchmark.h>

using namespace modFunc;

namespace {

struct NoView final : BufferView {
    void Reopen() override {}
};

void selectSize(const benchmark::State& bench) {
    state().DeviceList[1].Size = static_cast<std::int32_t>(bench.range(0));
}

// An image in which no digit stands still.
void fillImage() {
    std::uint8_t value = 0;
    for (std::uint8_t& byte : state().BufferData)
        byte = value += 37;
}

// Parse and place a file that a device of that size was saved to, reading it included.
void loadIntelHex(benchmark::State& bench) {
    const TemporaryFolder folder;
    VirtualMachine machine;
    NoView view;
    useBufferView(&view);
    selectSize(bench);
    fillImage();
    machine.fileName() = folder.file("image.hex");
    folder.write("image.hex", HexFileText());
    for (auto _ : bench)
        OpenHexFile();
    useBufferView(nullptr);
}
BENCHMARK(loadIntelHex)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

void buildIntelHexText(benchmark::State& bench) {
    selectSize(bench);
    fillImage();
    for (auto _ : bench)
        benchmark::DoNotOptimize(HexFileText());
}
BENCHMARK(buildIntelHexText)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

void pageText(benchmark::State& bench) {
    selectSize(bench);
    fillImage();
    for (auto _ : bench)
        benchmark::DoNotOptimize(
            PageText(LastTopLine(state().DeviceList[1].Size), state().BufferData));
}
BENCHMARK(pageText)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

void checkSum(benchmark::State& bench) {
    selectSize(bench);
    fillImage();
    for (auto _ : bench)
        ComputeCheckSum();
}
BENCHMARK(checkSum)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

} // namespace
