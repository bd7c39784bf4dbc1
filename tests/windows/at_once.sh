#!/usr/bin/env bash
# Runs a test program in many processes at once, each with its share of the tests. For tests that
# do nothing but wait for real time-outs.
#
#   at_once.sh PROCESSES PROGRAM [OPTION...]
set -euo pipefail

processes=$1
shift
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
export GTEST_TOTAL_SHARDS=$processes

pids=()
for ((i = 0; i < processes; ++i)); do
    GTEST_SHARD_INDEX=$i "$@" </dev/null >"$logs/$i" 2>&1 &
    pids+=("$!")
done
status=0
for i in "${!pids[@]}"; do
    if ! wait "${pids[i]}"; then
        status=1
        cat "$logs/$i"
    fi
done
passed=$(cat "$logs"/* | grep -c '^\[       OK ] ' || true)
echo "$passed tests passed"
((passed > 0 && status == 0))
