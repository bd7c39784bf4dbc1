// What runs in process: files, the page's text, and a key in the hex view. bench/README.md has the
// goals.
#include "app/family_table.h"
#include "app/state.h"
#include "buffer/buffer_view.h"
#include "buffer/frmBuffer.h"
#include "buffer/image.h"
#include "buffer/page_text.h"
#include "files/hex_file.h"
#include "tests/support/virtual_machine.h"

#include <QApplication>
#include <QKeyEvent>

#include <benchmark/benchmark.h>

using namespace modFunc;

namespace {

struct NoView final : BufferView {
    void Reopen() override {}
};

// Parse and place a file of 64 KiB, reading it included.
void loadIntelHex64K(benchmark::State& bench) {
    VirtualMachine machine;
    NoView view;
    useBufferView(&view);
    machine.fileName() = BENCH_IMAGES "/full64k.hex";
    for (auto _ : bench)
        OpenHexFile();
    useBufferView(nullptr);
}
BENCHMARK(loadIntelHex64K)->Unit(benchmark::kMicrosecond);

void buildIntelHexText(benchmark::State& bench) {
    state().DeviceList[1].Size = static_cast<std::int32_t>(bench.range(0));
    for (auto _ : bench)
        benchmark::DoNotOptimize(HexFileText());
}
BENCHMARK(buildIntelHexText)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

void pageText(benchmark::State& bench) {
    for (auto _ : bench)
        benchmark::DoNotOptimize(PageText(100));
}
BENCHMARK(pageText)->Unit(benchmark::kMicrosecond);

void checkSum(benchmark::State& bench) {
    state().DeviceList[1].Size = static_cast<std::int32_t>(bench.range(0));
    for (auto _ : bench)
        ComputeCheckSum();
}
BENCHMARK(checkSum)->Arg(256)->Arg(4096)->Arg(65536)->Unit(benchmark::kMicrosecond);

// From the key event to the painted page: a digit typed, and the page scrolled by one line.
void keyInView(benchmark::State& bench, int key, const QString& text) {
    state().DeviceList[1].Size = 65536;
    frmBuffer window(nullptr);
    window.show();
    auto* page = window.findChild<PageBox*>();
    for (int down = 0; down < pageLines; ++down) {
        QKeyEvent toTheLastLine(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QApplication::sendEvent(page, &toTheLastLine);
    }
    for (auto _ : bench) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(page, &event);
        QApplication::processEvents();
    }
}
BENCHMARK_CAPTURE(keyInView, digit, Qt::Key_5, QStringLiteral("5"))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keyInView, scroll, Qt::Key_Down, QString())->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    ResetState();
    InitFamilyTable();
    state().SelectedDevice = 1;
    ClearImage();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
