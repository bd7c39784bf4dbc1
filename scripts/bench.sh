#!/usr/bin/env bash
# Measures the release build: what it does in process (bench/), programming against the clock of
# the wire, and what the program takes of the machine. Prints one table; medians of a few runs.
# Takes about three minutes.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh

bench_build=$PWD/build/bench
folder=$bench_build/play
row_64k_family_4=8
program_runs=3
start_runs=7
bench_repetitions=5
splash_ms=1000    # the splash screen stands for so long
discovery_ms=100  # and the box is given so long to answer

declare -A bench_us=()
run_ms=() wire_ms=() processor_percent=() resident_kb=() pss_kb=() start_ms=()

# No accessibility bus here: answering it would be measured too. Windows are told by their titles.
active_title() { xdotool getactivewindow getwindowname 2>/dev/null || true; }
active_is() { [[ $(active_title) == "$1" ]]; }
wait_for_title() { wait_until 20 "the window \"$1\"" active_is "$1"; }

measure_in_process() {
    local name time
    cmake --preset release -B "$bench_build" -DQUORVEN_BENCH=ON >/dev/null
    cmake --build "$bench_build" --target quorven_bench -- --quiet
    while IFS=, read -r name _ time _; do
        name=${name//\"/}
        [[ $name != *_median ]] || bench_us[${name%_median}]=$time
    done < <(on_screen QT_QPA_PLATFORM=offscreen "$bench_build/bench-build/quorven_bench" \
        --benchmark_repetitions="$bench_repetitions" --benchmark_format=csv \
        2>"$folder/quorven_bench.log")
    ((${#bench_us[@]} > 0)) || fail "quorven_bench measured nothing, see $folder/quorven_bench.log"
}

lay_out() {
    rm -rf "$folder"
    mkdir -p "$folder"
    cp data/* tests/images/full64k.hex "$folder/"
    sed -i "3s/^[0-9]*/$row_64k_family_4/" "$folder/quorven.cfg"
}

# Starts the program and answers its message box as soon as it is there. What is left of the time
# from exec to the main window, less the fixed waits and the time the box stood, goes to start_ms.
start_measured() {
    local started boxed answered
    started=$(now_ms)
    start_program "$PWD/build/quorven" "$folder"
    wait_at_once "Device Found!"
    boxed=$(now_ms)
    press Return
    answered=$(now_ms)
    wait_at_once "$main_title"
    start_ms+=($(($(now_ms) - started - (answered - boxed) - splash_ms - discovery_ms)))
}

# As wait_for_title, without a pause between two looks.
wait_at_once() {
    local deadline=$((SECONDS + 20))
    until active_is "$1"; do
        ((SECONDS <= deadline)) || fail "no window \"$1\""
    done
}

# The window may not take the keys yet, so they are given again until the program is gone.
leave() {
    local tries
    for ((tries = 20; tries > 0; --tries)); do
        press alt+f x
        local deadline=$(($(now_ms) + 1000))
        while (($(now_ms) < deadline)); do
            if ended "$program_pid"; then
                expect_status 0 "$program_pid" quorven >/dev/null
                return
            fi
        done
    done
    fail "the program does not end"
}

memory_kb() { awk -v item="$2:" '$1 == item { print $2 }' "$1"; }

# Two words, from the trace: the time from the first bit of the run's first frame ("set supplies")
# to the end of its last reply, and what all bytes both ways take on the wire. A frame's time in
# the trace is that of its last byte. Both in milliseconds, without the pause at the end.
run_and_wire_ms() {
    awk '
        function bytes(line) {
            if (match(line, /\([0-9]+ bytes\)/)) return substr(line, RSTART + 1, RLENGTH - 8)
            sub(/^[0-9.]+ [<>] /, "", line)
            sub(/  .*/, "", line)
            return split(line, unused, " ")
        }
        / > .*  set supplies/ && !begun { begun = 1; first = $1 - bytes($0) * 10 / 57600 }
        begun { sum += bytes($0); last = $1 }
        END { printf "%d %d\n", (last - first) * 1000 + 0.5, sum * 10000 / 57600 + 0.5 }
    ' "$folder/trace.txt"
}

# note_run RUN WIRE. The pauses: 500 and 200 ms before the blocks, 500 ms behind the last reply.
note_run() {
    run_ms+=($(($1 + 500)))
    wire_ms+=($(($2 + 500 + 200 + 500)))
}

load_image() {
    press alt+f l
    wait_for_title Open
    type_text full64k.hex
    press Return
    wait_until 20 "the file options" options_are_up
    press Return
    wait_for_title "$main_title" # the buffer window opens inside it
}
options_are_up() { [[ $(active_title) != Open && $(active_title) != "$main_title" ]]; }

run_over() { grep -q 'release socket$' "$folder/trace.txt"; }

# Escape does nothing until the run's last pause is over.
close_function_window() {
    local tries
    for ((tries = 20; tries > 0; --tries)); do
        press Escape
        sleep 0.2
        ! active_is "$main_title" || return 0
    done
    fail "the function window does not close"
}

measure_program_run() {
    local before after began run wire
    rm -f "$folder/chip.bin"
    start_box build/simbox "$folder" --fill FF --chip "$folder/chip.bin"
    start_measured
    load_image
    press alt+d Down Return
    wait_for_title Function
    press p

    before=$(processor_ms "$program_pid")
    began=$(now_ms)
    press Return
    wait_until 120 "the run to end" run_over
    after=$(processor_ms "$program_pid")
    processor_percent+=($(((after - before) * 1000 / ($(now_ms) - began)))) # tenths
    close_function_window
    resident_kb+=("$(memory_kb "/proc/$program_pid/status" VmRSS)")
    pss_kb+=("$(memory_kb "/proc/$program_pid/smaps_rollup" Pss)")

    leave
    stop_box >/dev/null
    cmp "$folder/chip.bin" tests/images/full64k.bin || fail "the chip is not what the image says"
    read -r run wire <<<"$(run_and_wire_ms)"
    note_run "$run" "$wire"
}

measure_start() {
    start_box build/simbox "$folder" --fill FF
    start_measured
    leave
    stop_box >/dev/null
}

median() { printf '%s\n' "$@" | sort -n | sed -n "$((($# + 1) / 2))p"; }
tenths() { printf '%d.%d' $(($1 / 10)) $(($1 % 10)); }
row() { printf '%-48s %10s %10s %6s\n' "$@"; }

# The goals stand in the table of bench/README.md, where a row may name a sum of benchmarks.
print_in_process() {
    local names name goal sum
    while IFS='|' read -r names goal; do
        sum=0
        for name in ${names//+/}; do
            [[ -n ${bench_us[$name]:-} ]] || fail "quorven_bench has no $name"
            sum=$(awk "BEGIN { print $sum + ${bench_us[$name]} }")
        done
        row "$names" "$(printf '%.1f us' "$sum")" "$goal us" \
            "$(awk "BEGIN { printf \"%.3f\", $sum / $goal }")"
    done < <(sed -nE 's/^\| (`.*`) \|.*\| below ([0-9]+) us.*/\1|\2/p' bench/README.md | tr -d '`')
}

print_table() {
    local run wire
    run=$(median "${run_ms[@]}")
    wire=$(median "${wire_ms[@]}")
    echo
    row what measured reference ratio
    print_in_process
    row "Program, 64 KiB at 57600 baud" "$run ms" "$wire ms" \
        "$(awk "BEGIN { printf \"%.3f\", $run / $wire }")"
    row "processor time during that, of one core" \
        "$(tenths "$(median "${processor_percent[@]}")") %" - -
    row "resident memory, image loaded, buffer view open" \
        "$(median "${resident_kb[@]}") KiB" - -
    row "its proportional share (PSS)" "$(median "${pss_kb[@]}") KiB" - -
    row "start to main window, fixed waits taken off" "$(median "${start_ms[@]}") ms" - -
    cat <<END

The first rows: what bench/README.md says, median of $bench_repetitions, against its goal.
Program: from the first bit of the run's first frame to the end of its last reply, by simbox's
trace, and the pause of 500 ms at the end; the reference is the bytes of all frames and replies at
10 bits each and the pauses of 500, 200 and 500 ms. Median of ${#run_ms[@]}: ${run_ms[*]}.
Processor time: user and system, from Run to the release of the socket. Of ${#run_ms[@]} runs.
Start: from exec to the main window active under the window manager, less $splash_ms ms of splash
screen, $discovery_ms ms of looking for the box and the time from the message box active to Return
pressed. Median of ${#start_ms[@]}: ${start_ms[*]}.
END
}

trap remove_screen EXIT
lay_out
start_screen "$folder/screen"
measure_in_process
for ((i = 0; i < program_runs; ++i)); do measure_program_run; done
for ((i = 0; i < start_runs; ++i)); do measure_start; done
print_table
