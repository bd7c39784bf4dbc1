#!/usr/bin/env bash
# The release build: build/quorven and build/simbox.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
cmake --preset release >/dev/null # errors go to the error output
cmake --build --preset release -- --quiet

for program in build/quorven build/simbox; do
    # Without Qt, CMake leaves the windows out and still reports success.
    [[ -x $program ]] || { echo "build: $program was not built" >&2; exit 1; }
done
