#!/usr/bin/env bash
# fuzz.sh SECONDS|COUNTx [TARGET...]: builds the fuzzers with Clang and runs each target (all of
# fuzz/ where none is named) for so many seconds, or for so many executions: "fuzz.sh 60",
# "fuzz.sh 1000000x intel_hex". What is learned stays in build/fuzz/corpus/. Prints a line for each
# target; the status is 0 only if nothing was found. A finding's input is kept, its path printed.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/lib/common.sh

usage() {
    echo "usage: scripts/fuzz.sh SECONDS|COUNTx [TARGET...]" >&2
    exit 2
}

[[ ${1:-} =~ ^[1-9][0-9]*x?$ ]] || usage
limit=-max_total_time=$1
[[ $1 != *x ]] || limit=-runs=${1%x}
targets=("${@:2}")
scratch=""
found=0

# Bytes of the longest input: enough for every rule there is, and few enough to be fast.
declare -A longest=([auto_file]=256 [settings]=256 [device_list]=512 [intel_hex]=1024 [binary]=256
                    [rich_text]=512 [replies]=256 [discovery]=128)

finish() {
    local status=$?
    stop_all
    [[ -z $scratch ]] || rm -rf "$scratch"
    exit "$status"
}

build() {
    scripts/setup.sh clang libclang-rt-dev
    cmake --preset fuzz >/dev/null # what goes wrong is on the error output
    cmake --build --preset fuzz -- --quiet
}

# statistic LOG NAME: what libFuzzer says of itself at its end.
statistic() { sed -n "s/^stat::$2: *//p" "$1"; }

# fuzz TARGET: the files that the program is to read are kept in memory while it runs.
fuzz() {
    local target=$1 status=0 corpus=build/fuzz/corpus/$1 log=build/fuzz/$1.log before result
    mkdir -p "$corpus" build/fuzz/findings
    cp -n "fuzz/corpus/$target"/* "$corpus"
    before=$(find "$corpus" -type f | wc -l)
    background "$log" env TMPDIR="$scratch" ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=2 \
        "build/fuzz/fuzz-build/fuzz_$target" "$limit" -max_len="${longest[$target]}" -timeout=10 \
        -rss_limit_mb=1024 -malloc_limit_mb=64 -reload=0 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$target-" "$corpus"
    wait "$!" || status=$?
    started_pids=()
    result="no finding"
    if ((status != 0)); then
        found=1
        result="FOUND: $(sed -n 's/.*Test unit written to //p' "$log")"
    fi
    printf '%-12s %10s executions %8s/s %5d new files  %s\n' "$target" \
        "$(statistic "$log" number_of_executed_units)" \
        "$(statistic "$log" average_exec_per_sec)" \
        "$(($(find "$corpus" -type f | wc -l) - before))" "$result"
}

for target in "${targets[@]}"; do
    [[ -n ${longest[$target]:-} ]] || fail "no target $target; there are: ${!longest[*]}"
done
((${#targets[@]} > 0)) || mapfile -t targets < <(printf '%s\n' "${!longest[@]}" | sort)
trap finish EXIT
trap 'exit 130' INT TERM
build
scratch=$(mktemp -d "$([[ -w /dev/shm ]] && echo /dev/shm || echo "${TMPDIR:-/tmp}")/quorven.XXXXXX")
for target in "${targets[@]}"; do
    fuzz "$target"
done
((found == 0))
