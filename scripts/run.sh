#!/usr/bin/env bash
# Installs missing packages, builds the release, and runs the program in build/run with the
# simulated programmer as port 5. The exit status is that of the program. If there is no display,
# this script runs scripts/demo.py on a virtual screen instead and saves the pictures in
# build/run/pictures.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
[[ -d build/run ]] || cp -r data build/run # kept between runs, with the user's settings
if [[ -z ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    mkdir -p build/run/pictures
    scripts/demo.py build/quorven build/simbox build/demo build/run/pictures
    echo "The demo ran without an error. Pictures of the windows: build/run/pictures"
    exit
fi

cd build/run
exec {ready}< <(exec ../simbox --link com5 --trace trace.txt --chip chip.bin --fill FF)
started=$!
trap 'kill $started 2>/dev/null || true; wait' EXIT
read -ru "$ready"
# The program runs in the background, so that this script handles a signal at once.
../quorven &
started="$! $started"
wait "$!"
