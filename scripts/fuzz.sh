#!/usr/bin/env bash
# fuzz.sh SECONDS|COUNTx [TARGET...]: builds the fuzz targets with Clang and runs each TARGET
# (default: all in fuzz/) for that many seconds or executions, for example "fuzz.sh 60" or "fuzz.sh
# 1000000x intel_hex". Prints a line for each target; the exit status is 0 only if no fault was
# found. A target consists of a source in fuzz/, an entry in fuzz/CMakeLists.txt, an entry in
# max_bytes below, and a folder of inputs in fuzz/corpus/. Every test run replays these inputs. To
# do only that: ctest --preset dev -R replay.
#
# New inputs are kept in build/fuzz/corpus/. An input that reveals a fault is kept in
# build/fuzz/findings/ and its path is printed. Reproduce the fault with the first of these
# commands, minimise the input with the second, fix the cause, and copy the minimised input to
# fuzz/corpus/TARGET:
#
#   build/fuzz/fuzz-build/fuzz_TARGET INPUT
#   build/fuzz/fuzz-build/fuzz_TARGET -minimize_crash=1 -runs=100000 INPUT
#
# To add to fuzz/corpus/TARGET only those new inputs that reach additional code:
#
#   build/fuzz/fuzz-build/fuzz_TARGET -merge=1 -use_counters=0 \
#       fuzz/corpus/TARGET build/fuzz/corpus/TARGET
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Maximum input size in bytes: large enough to exercise every rule of the format except the limits
# on the length and the number of items; small enough for fast runs.
declare -A max_bytes=([delimited_text]=256 [intel_hex]=1024 [replies]=64 [rich_text]=512)

if [[ ! ${1:-} =~ ^[1-9][0-9]*x?$ ]]; then
    echo "usage: scripts/fuzz.sh SECONDS|COUNTx [TARGET...]; targets: ${!max_bytes[*]}" >&2
    exit 2
fi
limit=-max_total_time=$1
[[ $1 != *x ]] || limit=-runs=${1%x}
shift
found=0

# statistic LOG NAME: prints the final statistic NAME from libFuzzer's log file LOG.
statistic() { sed -n "s/^stat::$2: *//p" "$1"; }

scripts/setup.sh clang libclang-rt-dev
cmake --preset fuzz >/dev/null # errors are still printed
cmake --build --preset fuzz -- --quiet
(($# > 0)) || set -- "${!max_bytes[@]}"
for target in "$@"; do
    corpus=build/fuzz/corpus/$target log=build/fuzz/$target.log
    mkdir -p "$corpus" build/fuzz/findings
    cp -n "fuzz/corpus/$target"/* "$corpus"
    result="no fault"
    if ! ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=2 \
        "build/fuzz/fuzz-build/fuzz_$target" "$limit" -max_len="${max_bytes[$target]}" -timeout=10 \
        -rss_limit_mb=1024 -malloc_limit_mb=64 -reload=0 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$target-" "$corpus" >"$log" 2>&1 </dev/null; then
        found=1
        result="FOUND: $(sed -n 's/.*Test unit written to //p' "$log")"
    fi
    printf '%-14s %10s executions %8s/s  %s\n' "$target" "$(statistic "$log" number_of_executed_units)" \
        "$(statistic "$log" average_exec_per_sec)" "$result"
done
((found == 0))
