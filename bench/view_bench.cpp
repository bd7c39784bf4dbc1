// A key in the hex view, from its event to the painted page.
#include "app/state.h"
#include "buffer/frmBuffer.h"
#include "buffer/page_text.h"

#include <QApplication>
#include <QKeyEvent>

#include <benchmark/benchmark.h>

using namespace modFunc;

namespace {

// A digit typed; and Down on the last line of the page, which scrolls it by a line.
void keyInView(benchmark::State& bench, int key, const QString& text) {
    state().DeviceList[1].Size = static_cast<std::int32_t>(bench.range(0));
    frmBuffer window(nullptr);
    window.show();
    auto* page = window.findChild<PageBox*>();
    const auto press = [page](int pressed, const QString& character) {
        QKeyEvent event(QEvent::KeyPress, pressed, Qt::NoModifier, character);
        QApplication::sendEvent(page, &event);
        QApplication::processEvents();
    };
    for (int down = 0; down < pageLines; ++down)
        press(Qt::Key_Down, {});
    for (auto _ : bench)
        press(key, text);
}
BENCHMARK_CAPTURE(keyInView, digit, Qt::Key_5, QStringLiteral("5"))
    ->Arg(256)
    ->Arg(4096)
    ->Arg(65536)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(keyInView, scroll, Qt::Key_Down, QString())
    ->Arg(65536)
    ->Unit(benchmark::kMicrosecond);

} // namespace
