#!/usr/bin/env bash
# Sets up, builds, and runs the program with the simulated box at port 5, in build/run. Where
# there is no display the main job is played on a virtual one: load an image, program the chip,
# read it back.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh

run_folder=$PWD/build/run

# A folder that is there holds the user's settings and is kept.
make_run_folder() {
    [[ -d $run_folder ]] && return
    mkdir -p "$run_folder"
    cp data/* "$run_folder/"
}

# The program's exit status is ours.
run_for_a_person() {
    local status=0
    trap stop_all EXIT
    start_box build/simbox "$run_folder" --fill FF --chip "$run_folder/chip.bin"
    echo "The simulated box is at port 5; its trace: build/run/trace.txt"
    # Not in the foreground: a signal to this script is then acted upon at once.
    (cd "$run_folder" && exec ../quorven) &
    started_pids+=("$!")
    wait "$!" || status=$?
    return "$status"
}

finish_play() {
    local status=$?
    ((status == 0)) || show_wreck "$run_folder"
    remove_screen
    exit "$status"
}

check_settings() {
    [[ $(setting "$run_folder" 1) == 5 ]] ||
        fail "the settings in build/run say port $(setting "$run_folder" 1), the box is at port 5;" \
             "remove build/run for a fresh start"
}

prepare_play() {
    picture_folder=$run_folder/pictures
    chip=$run_folder/chip-of-the-play.bin
    rm -rf "$picture_folder" "$chip" "$chip.lock"
    mkdir -p "$picture_folder"
    expected_chip data/sample.hex "$(device_size "$run_folder")" "$run_folder/expected.bin"
    cp data/sample.hex "$run_folder/"
    start_screen "$run_folder/screen"
    start_reader
    start_box build/simbox "$run_folder" --fill FF --chip "$chip"
}

play_main_job() {
    local page
    trap finish_play EXIT
    check_settings
    prepare_play

    step "Start: the program finds the box"
    start_program "$PWD/build/quorven" "$run_folder"
    answer "Device Found!" "Firmware: SimBox v1.00" device-found
    wait_for_window "$main_title"

    step "File Load: sample.hex"
    load_hex_file sample.hex
    say "$main_title" loaded
    page=$(buffer_page)

    step "Device Function: Program"
    open_function_window
    run_function "$run_folder" Program
    wait_for_end_of_run "Programming ...   OK!" 60
    say Function programmed
    close_function_window
    compare_chip "$chip" "$run_folder/expected.bin"

    step "Buffer Clear, then close the buffer window: what Read brings comes from the chip"
    open_menu b Clear
    press c
    wait_until 20 "a cleared buffer" page_is_not "$page"
    press ctrl+w
    wait_until 20 "the buffer window to close" buffer_window_closed

    step "Device Function: Read closes its window and opens the buffer window"
    open_function_window
    run_function "$run_folder" Read
    wait_until_gone Function 60
    wait_for_line "frame: Buffer"
    say "$main_title" read
    [[ $(buffer_page) == "$page" ]] || fail "Read brought another page than was loaded"

    step "File Exit"
    exit_program
    stop_box
    step "The main job is done; pictures: build/run/pictures"
}

page_is_not() { [[ $(buffer_page) != "$1" ]]; }

make_run_folder
if [[ -n ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    run_for_a_person
else
    play_main_job
fi
