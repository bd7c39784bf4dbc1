#!/usr/bin/env bash
# A thousand runs in one process with faults by chance, on a release build: prints what the process
# takes along the way; the status is 0 only if it did not grow. Takes about half an hour.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
cmake -S . -B build/soak -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUORVEN_TESTS=ON \
    -DQUORVEN_BENCH=ON >/dev/null
cmake --build build/soak --target soak -- --quiet
exec build/soak/bench-build/soak
