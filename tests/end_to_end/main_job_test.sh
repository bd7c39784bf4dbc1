#!/usr/bin/env bash
# The real program against the simulated box on a real pseudo-terminal, under a virtual X screen:
# the main job from start to exit, the cable lost in the middle of it, the box found again, and a
# full disk.
#
#   main_job_test.sh QUORVEN SIMBOX SCRATCH
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/preamble.sh"
chip=$scratch/chip.bin

# Fresh start files, the device as given by its row.
lay_out_start_files() {
    cp "$data"/* "$scratch/"
    sed -i "3s/^[0-9]*/$1/" "$scratch/quorven.cfg"
    cp "$scratch/quorven.cfg" "$scratch/settings-before"
}

# Sanitizer reports and the toolkit's warnings go there; the program itself prints nothing.
expect_silent_console() {
    [[ ! -s $scratch/console.txt ]] || fail "the program wrote to its console"
}

expect_settings_kept() {
    cmp "$scratch/quorven.cfg" "$scratch/settings-before" || fail "the settings file has changed"
}

start_and_find_box() {
    start_program "$quorven" "$scratch"
    answer "Device Found!" "Firmware: SimBox v1.00" found
    wait_for_window "$main_title"
    wait_for_line "label: COM5"
}

programs_a_chip_from_a_hex_file() {
    step "Load, Program, Exit"
    lay_out_start_files 1
    expected_chip "$scratch/sample.hex" 4096 "$scratch/expected.bin"
    start_box "$simbox" "$scratch" --fill FF --chip "$chip"
    start_and_find_box

    load_file sample.hex "Intel Hex"
    open_function_window
    run_function "$scratch" Program
    wait_for_end_of_run 60 "Programming ...   OK!"
    wait_for_line "label: 100%"
    close_function_window
    exit_program

    compare_chip "$chip" "$scratch/expected.bin"
    stop_box
    expect_settings_kept
    expect_silent_console
}

# A program that goes on listening to a dead line would take a whole core.
expect_idle() {
    local before after start passed used
    start=$(now_ms)
    before=$(processor_ms "$program_pid")
    sleep 2 # the length of the measurement
    after=$(processor_ms "$program_pid")
    passed=$(($(now_ms) - start))
    used=$((after - before))
    echo "$used ms of processor time in $passed ms"
    ((used * 100 < 5 * passed)) || fail "the program is busy though nothing happens"
}

survives_the_loss_of_the_box() {
    step "The box dies in the middle of Program"
    lay_out_start_files "$row_64k_family_4"
    start_box "$simbox" "$scratch" --fill FF
    start_and_find_box
    wait_for_line "label: Size: 10000H"
    open_function_window
    run_function "$scratch" Program
    wait_until 30 "twenty blocks to be written" blocks_written 20

    expect_run_under_way
    kill -KILL "$box_pid"
    wait "$box_pid" 2>/dev/null || true # the shell's own word on its end

    answer "Device Error" "Communication Error!" error
    wait_for_line "label: Programming ...   Device Fault!"
    wait_for_line "push button: Run"
    expect_idle
    close_function_window
}

expect_run_under_way() {
    shows "push button: Close (off)" || fail "the run was over before the box was killed"
}

# In the same session. Another firmware text tells the new box from what is left of the old one.
finds_the_box_again() {
    step "The box is back: found by leaving the settings"
    start_box "$simbox" "$scratch" --fill FF --firmware "SimBox again"
    choose o Settings
    wait_for_window Settings
    press Escape
    answer "Device Found!" "Firmware: SimBox again" found-again
    wait_for_window "$main_title"
    open_function_window
    run_function "$scratch" Erase
    wait_for_end_of_run 60 "Erasing ...OK"
    close_function_window
    exit_program
    stop_box
    expect_settings_kept
    expect_silent_console
}

# What cannot be written is reported, and the old file stays.
says_what_a_full_disk_keeps_from_being_saved() {
    step "A full disk"
    lay_out_start_files 1
    cp "$scratch/auto.cfg" "$scratch/auto-before"
    start_box "$simbox" "$scratch" --fill FF
    start_and_find_box
    prlimit --pid "$program_pid" --fsize=0
    choose o "Edit Auto"
    wait_for_window "Edit Auto"
    press Return
    answer QUORVEN "$scratch/auto.cfg: the file cannot be written: File too large." full-disk
    expect_status 1 "$program_pid" quorven
    stop_box
    cmp "$scratch/auto.cfg" "$scratch/auto-before" || fail "the Auto file has changed"
    expect_settings_kept
    expect_silent_console
}

trap finish EXIT
start_screen "$scratch/screen"
start_reader
programs_a_chip_from_a_hex_file
survives_the_loss_of_the_box
finds_the_box_again
says_what_a_full_disk_keeps_from_being_saved
step "Passed"
