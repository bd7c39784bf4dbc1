#!/usr/bin/env bash
# Builds the release: build/quorven and build/simbox.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
cmake --preset release >/dev/null # errors are still printed
cmake --build --preset release -- --quiet

for program in build/quorven build/simbox; do
    # If Qt is missing, CMake leaves out quorven but still reports success.
    [[ -x $program ]] || { echo "build: $program was not built" >&2; exit 1; }
done
