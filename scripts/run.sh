#!/usr/bin/env bash
# Sets up, builds, and runs the program with the simulated programmer at port 5, in build/run; the
# exit status is the program's. Without a display it runs the demo of scripts/demo.py on a virtual
# one instead, with pictures in build/run/pictures.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
[[ -d build/run ]] || cp -r data build/run # kept between runs, with the user's settings
if [[ -z ${DISPLAY:-}${WAYLAND_DISPLAY:-} ]]; then
    mkdir -p build/run/pictures
    exec scripts/demo.py build/quorven build/simbox build/demo build/run/pictures
fi

cd build/run
exec {ready}< <(exec ../simbox --link com5 --trace trace.txt --chip chip.bin --fill FF)
started=$!
trap 'kill $started 2>/dev/null || true; wait' EXIT
read -ru "$ready"
# In the background, so that a signal to this script is handled at once.
../quorven &
started="$! $started"
wait "$!"
