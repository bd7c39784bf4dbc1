#!/usr/bin/env bash
# Sets up, builds, and runs the program with the simulated box at port 5, in build/run. Where
# there is no display the program is played through on a virtual one instead, with real keys; the
# steps stand in scripts/lib/play.sh.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh
source scripts/lib/play.sh

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

make_run_folder
if [[ -n ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    run_for_a_person
else
    play "$PWD/build/quorven" "$PWD/build/simbox" "$PWD/build/play" "$run_folder/pictures"
    step "All played; pictures: build/run/pictures"
fi
