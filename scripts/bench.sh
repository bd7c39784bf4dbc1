#!/usr/bin/env bash
# Measures the release build: what it does in process (bench/), its runs against the clock of the
# wire, and what it takes of the machine. Prints two tables in Markdown, medians of a few runs; what
# stands in them is told in bench/README.md. Takes about eight minutes, and wants the machine for
# itself.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh
source scripts/lib/bench_program.sh
source scripts/lib/bench_table.sh

bench_build=$PWD/build/bench
folder=$bench_build/play
sizes=(256 4096 65536)
run_repetitions=3
start_repetitions=9
bench_repetitions=5
reference_repetitions=21

# Everything measured: values of one key, separated by blanks.
declare -A measured=()
note() { measured[$1]+=" $2"; }

# run_benchmarks PLATFORM PREFIX [OPTION...]: quorven_bench with its windows on PLATFORM.
run_benchmarks() {
    local platform=$1 prefix=$2 name value
    shift 2
    while read -r name value; do
        note "$prefix$name" "$value"
    done < <(on_screen QT_QPA_PLATFORM="$platform" "$bench_build/bench-build/quorven_bench" \
        --benchmark_repetitions="$bench_repetitions" --benchmark_format=json "$@" \
        2>"$folder.log" | /usr/bin/python3 scripts/lib/bench_medians.py)
}

measure_in_process() {
    cmake --preset release -B "$bench_build" -DQUORVEN_BENCH=ON >/dev/null
    cmake --build "$bench_build" --target quorven_bench -- --quiet
    run_benchmarks offscreen ""
    run_benchmarks xcb screen/ --benchmark_filter=keyInView
}

# Microseconds that a command takes from exec to exit.
time_us() {
    local began=${EPOCHREALTIME/./}
    "$@"
    echo $((${EPOCHREALTIME/./} - began))
}

# Another program's rewriting of the image, less that of a file of one record: its start, that is.
measure_references() {
    local i whole empty=$folder/empty.hex out=$folder/out.hex
    { head -n 1 tests/images/full64k.hex; tail -n 1 tests/images/full64k.hex; } >"$empty"
    for ((i = 0; i < reference_repetitions; ++i)); do
        whole=$(time_us objcopy -I ihex -O ihex tests/images/full64k.hex "$out")
        note objcopy $((whole - $(time_us objcopy -I ihex -O ihex "$empty" "$out")))
    done
    command -v srec_cat >/dev/null || return 0
    for ((i = 0; i < reference_repetitions; ++i)); do
        whole=$(time_us srec_cat tests/images/full64k.hex -Intel -o "$out" -Intel)
        note srec_cat $((whole - $(time_us srec_cat "$empty" -Intel -o "$out" -Intel)))
    done
}

measure_program() {
    local i size
    for size in "${sizes[@]}"; do
        lay_out "$folder" "$size"
        for ((i = 0; i < run_repetitions; ++i)); do measure_runs "$folder" "$size"; done
    done
    measure_idle "$folder"
    for ((i = 0; i < start_repetitions; ++i)); do measure_start "$folder"; done
}

trap remove_screen EXIT
lay_out "$folder" 65536
start_screen "$bench_build/screen"
measure_in_process
measure_references
measure_program
print_tables
