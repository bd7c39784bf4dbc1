#!/usr/bin/env bash
# Measures a release build on a virtual screen for about 75 seconds and prints one table. Run this
# script on an idle machine, because other load distorts the figures.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
cmake --preset release -B build/bench -DQUORVEN_BENCH=ON >/dev/null
cmake --build build/bench --target quorven_bench -- --quiet

echo "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores," \
    "Linux $(uname -r | cut -d- -f1), Qt $(qmake6 -query QT_VERSION), $(date +%F)"
LC_ALL=C.UTF-8 xvfb-run -a build/bench/bench-build/quorven_bench
