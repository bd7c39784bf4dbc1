#include "app/family_table.h"
#include "app/state.h"
#include "buffer/image.h"

#include <QApplication>

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    modFunc::ResetState();
    modFunc::InitFamilyTable();
    modFunc::state().SelectedDevice = 1;
    modFunc::ClearImage();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
