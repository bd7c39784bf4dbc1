# What all scripts share: messages, waiting for a condition, ending what was started.
# Sourced, not run. The sourcing script has set -euo pipefail.

# Processes started by background(), in the order of their start.
started_pids=()
# The processor's clock in /proc, ticks a second.
clock_ticks=$(getconf CLK_TCK)

step() { printf '\n== %s\n' "$*"; }

fail() {
    printf '\nFAILED: %s\n' "$*" >&2
    exit 1
}

# wait_until SECONDS WHAT COMMAND...: polls until the command succeeds; fails at the limit, naming
# WHAT was waited for.
wait_until() {
    local limit=$1 what=$2 deadline
    shift 2
    deadline=$((SECONDS + limit))
    until "$@"; do
        ((SECONDS <= deadline)) || fail "waited $limit s in vain: $what"
        sleep 0.05
    done
}

# background LOG COMMAND...: starts it with no input and its output in LOG; its process id is in
# $! and noted for stop_all.
background() {
    local log=$1
    shift
    "$@" </dev/null >"$log" 2>&1 &
    started_pids+=("$!")
}

ended() { ! kill -0 "$1" 2>/dev/null; }

# Ends a process of ours and takes it off the books. It gets time to end well.
stop() {
    local pid=$1 tries=100
    kill "$pid" 2>/dev/null || true
    until ended "$pid"; do
        ((tries-- > 0)) || kill -KILL "$pid" 2>/dev/null || true
        sleep 0.05
    done
    wait "$pid" 2>/dev/null || true
}

# Last started, first ended: clients go before the servers they talk to.
stop_all() {
    local i
    for ((i = ${#started_pids[@]} - 1; i >= 0; --i)); do
        stop "${started_pids[i]}"
    done
    started_pids=()
}

# Processor time of a process so far, user and system, in milliseconds.
processor_ms() {
    local stat
    stat=$(<"/proc/$1/stat")
    # The second item is the program's name in brackets and may hold blanks.
    read -ra stat <<<"${stat##*) }"
    echo $(((stat[11] + stat[12]) * 1000 / clock_ticks))
}

now_ms() { echo $((${EPOCHREALTIME/./} / 1000)); }
