#!/usr/bin/env bash
# The real program is ended from outside in the middle of Program. The box must be told to power the
# socket down, whatever the way; where the program can still act, its settings are written too.
#
#   sudden_end_test.sh QUORVEN SIMBOX SCRATCH THROWING_READ
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/preamble.sh"

powered_down() {
    [[ $(grep ' > ' "$scratch/trace.txt" | tail -n 2 | sed 's/.*  //' | tr '\n' ',') == \
        "set supplies 0 0 0,release socket," ]]
}

start_programming() {
    cp "$data"/* "$scratch/"
    sed -i "3s/^[0-9]*/$row_64k_family_4/" "$scratch/quorven.cfg"
    start_box "$simbox" "$scratch" --fill FF
    start_program "$quorven" "$scratch"
    answer "Device Found!" "Firmware: SimBox v1.00" found
    wait_for_window "$main_title"
    open_function_window
    run_function "$scratch" Program
    wait_until 30 "ten blocks to be written" blocks_written 10
    rm "$scratch/quorven.cfg"
}

expect_powered_down() {
    wait_until 20 "the box to be told to power down" powered_down
    stop_box
}

ends_properly_on() {
    step "Signal $1: power-down, settings, status 0"
    start_programming
    kill -s "$1" "$program_pid"
    expect_status 0 "$program_pid" quorven
    expect_powered_down
    [[ $(setting "$scratch" 3) == "$row_64k_family_4" ]] || fail "the settings were not written"
    [[ ! -s $scratch/console.txt ]] || fail "the program wrote to its console"
}

powers_down_on() {
    step "Signal $1: power-down"
    start_programming
    kill -s "$1" "$program_pid"
    wait "$program_pid" 2>/dev/null || true
    expect_powered_down
}

powers_down_on_an_error_that_nothing_handles() {
    step "An exception: power-down, a message, status 1"
    program_environment=("LD_PRELOAD=$throwing_read" "THROW_WHEN=$scratch/throw"
                         "ASAN_OPTIONS=verify_asan_link_order=0")
    start_programming
    touch "$scratch/throw"
    wait_for_window QUORVEN
    expect_powered_down # while the message waits for its answer
    answer QUORVEN "no reading to be had" error
    expect_status 1 "$program_pid" quorven
    program_environment=()
}

powers_down_without_its_display() {
    step "The display goes: power-down"
    start_programming
    kill -KILL "$screen_pid"
    wait "$program_pid" 2>/dev/null || true
    expect_powered_down
}

throwing_read=$(realpath "$4")
trap finish EXIT
start_screen "$scratch/screen"
screen_pid=${started_pids[0]}
start_reader
ends_properly_on TERM
ends_properly_on INT
ends_properly_on HUP
powers_down_on ABRT
powers_down_on SEGV
powers_down_on QUIT
powers_down_on_an_error_that_nothing_handles
powers_down_without_its_display
step "Passed"
