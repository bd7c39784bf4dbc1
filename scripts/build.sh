#!/usr/bin/env bash
# The release build: build/quorven and build/simbox.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
cmake --preset release >/dev/null # what goes wrong is on the error output
cmake --build --preset release -- --quiet

for program in build/quorven build/simbox; do
    # CMake leaves the windows out where Qt is missing, and calls that a success.
    [[ -x $program ]] || { echo "build: $program was not built" >&2; exit 1; }
done
