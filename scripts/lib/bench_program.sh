# Measures the program from outside: its runs over a line at 57600 baud, its start, what it takes of
# the machine. Sourced after common.sh, screen.sh and session.sh.
#
# What comes out goes to note() under these keys, medians of all runs later; SIZE is the device's in
# bytes, FUNCTION one of Program, Verify and Read:
#
#   run/FUNCTION/SIZE        milliseconds, by simbox's trace
#   wire/FUNCTION/SIZE       milliseconds that all its bytes and pauses take at the least
#   pauses/FUNCTION          milliseconds of pauses in that
#   processor/FUNCTION/SIZE  milliseconds of processor time
#   percent/FUNCTION/SIZE    the same in per cent of one core
#   start                    milliseconds from exec to the main window, less the fixed waits
#   pss/SIZE, resident/SIZE  MiB, an image loaded and the buffer view open
#   idle/WINDOWS, wakes/WINDOWS  per cent of one core, and how often it was woken, over 10 s

splash_ms=1000   # the splash screen stands for so long
discovery_ms=100 # and the box is given so long to answer
byte_us=173.6111 # 10 bits at 57600 baud

# The pauses of a whole run, by its function.
declare -A pauses_ms=([Program]=1200 [Verify]=900 [Read]=900)

# No accessibility bus here: answering it would be measured too. Windows are told by their titles.
active_title() { xdotool getactivewindow getwindowname 2>/dev/null || true; }
active_is() { [[ $(active_title) == "$1" ]]; }
active_is_not() { ! active_is "$1"; }
wait_for_title() { wait_until 20 "the window \"$1\"" active_is "$1"; }

# As wait_for_title, without a pause between two looks.
wait_at_once() {
    local deadline=$((SECONDS + 20))
    until active_is "$1"; do
        ((SECONDS <= deadline)) || fail "no window \"$1\""
    done
}

# processor_us PID: user and system time of all its threads so far, by the process's own clock.
processor_us() {
    /usr/bin/python3 -c \
        'import sys, time; print(time.clock_gettime_ns(~int(sys.argv[1]) << 3 | 2) // 1000)' "$1"
}

# How often a process has gone to sleep and been woken, all threads.
wakes() { awk '/^voluntary/ { sum += $2 } END { print sum }' "/proc/$1"/task/*/status; }

# lay_out FOLDER SIZE: a folder for the program with one device, of SIZE bytes.
lay_out() {
    rm -rf "$1"
    mkdir -p "$1"
    cp data/* tests/images/full64k.hex "$1/"
    printf '"%s bytes","","",4,%s,0,0,0\r\n' "$2" "$2" >"$1/quorven.dev"
    sed -i '2,3s/^[0-9]*/1/' "$1/quorven.cfg"
}

# Starts the program and answers its message box as soon as it is there. What is left of the time
# from exec to the main window, less the fixed waits and the time the box stood, is the start.
start_measured() {
    local started boxed answered
    started=$(now_ms)
    start_program "$PWD/build/quorven" "$1"
    wait_at_once "Device Found!"
    boxed=$(now_ms)
    press Return
    answered=$(now_ms)
    wait_at_once "$main_title"
    note start $(($(now_ms) - started - (answered - boxed) - splash_ms - discovery_ms))
}

# The window may not take the keys yet, so they are given again until the program is gone.
leave() {
    local tries deadline
    for ((tries = 20; tries > 0; --tries)); do
        press alt+f x
        deadline=$(($(now_ms) + 1000))
        while (($(now_ms) < deadline)); do
            if ended "$program_pid"; then
                expect_status 0 "$program_pid" quorven >/dev/null
                return
            fi
        done
    done
    fail "the program does not end"
}

measure_start() {
    start_box build/simbox "$1" --fill FF
    start_measured "$1"
    leave
    stop_box >/dev/null
}

load_image() {
    press alt+f l
    wait_for_title Open
    type_text full64k.hex
    press Return
    wait_until 20 "the file options" options_are_up
    press Return
    wait_for_title "$main_title" # the buffer window opens inside it
}
options_are_up() { [[ $(active_title) != Open && $(active_title) != "$main_title" ]]; }

note_memory() {
    note "resident/$1" "$(mebibytes "/proc/$program_pid/status" VmRSS)"
    note "pss/$1" "$(mebibytes "/proc/$program_pid/smaps_rollup" Pss)"
}
mebibytes() { awk -v item="$2:" '$1 == item { printf "%.1f\n", $2 / 1024 }' "$1"; }

# Runs that have ended, by the trace.
runs_over() { grep -c 'release socket$' "$1/trace.txt" || true; }
run_is_over() { (($(runs_over "$1") > $2)); }

# measure_run FOLDER FUNCTION SIZE: with the function window open. Its processor time is that from
# the key to the release of the socket.
measure_run() {
    local folder=$1 name=$2/$3 before began passed_ms busy_us runs
    runs=$(runs_over "$folder")
    press "${2:0:1}"
    sleep 0.2 # for the key's own work
    before=$(processor_us "$program_pid")
    began=$(now_ms)
    press Return
    wait_until 120 "$2 to end" run_is_over "$folder" "$runs"
    passed_ms=$(($(now_ms) - began))
    busy_us=$(($(processor_us "$program_pid") - before))
    note "processor/$name" "$(quotient $busy_us 1000)"
    note "percent/$name" "$(quotient $((busy_us / 10)) $passed_ms)"
    note_times "$folder" "$2" "$3"
}
quotient() { awk "BEGIN { printf \"%.3f\\n\", $1 / $2 }"; }

# The last run in the trace: from the first bit of its first frame to the end of its last reply, and
# the pause behind that; and the least that it can take. A frame's time in the trace is that of its
# last byte.
note_times() {
    local run wire
    read -r run wire < <(awk -v byte="$byte_us" '
        function bytes(line) {
            if (match(line, /\([0-9]+ bytes\)/)) return substr(line, RSTART + 1, RLENGTH - 8)
            sub(/^[0-9.]+ [<>] /, "", line)
            sub(/  .*/, "", line)
            return split(line, unused, " ")
        }
        / > .*  set supplies [1-9]/ { first = $1 - bytes($0) * byte / 1e6; sum = 0 }
        { sum += bytes($0); last = $1 }
        END { printf "%.1f %.1f\n", (last - first) * 1000, sum * byte / 1000 }
    ' "$1/trace.txt")
    note "run/$2/$3" "$(awk "BEGIN { print $run + 500 }")"
    note "wire/$2/$3" "$(awk "BEGIN { print $wire + ${pauses_ms[$2]} }")"
}

# Escape does nothing until the run's last pause is over.
close_function_window() {
    local tries
    for ((tries = 20; tries > 0; --tries)); do
        press Escape
        sleep 0.2
        ! active_is "$main_title" || return 0
    done
    fail "the function window does not close"
}

# It takes no keys until a run is over and the window has been drawn.
open_function_window() {
    local tries
    for ((tries = 20; tries > 0; --tries)); do
        press alt+d Down Return
        sleep 0.3
        ! active_is Function || return 0
    done
    fail "the function window does not open"
}

# measure_runs FOLDER SIZE: one start of the program; Program, Verify and Read of one device. What
# was asked for has to have happened, or the times say nothing.
measure_runs() {
    local folder=$1 size=$2 blocks=$(($2 / 256)) read_blocks
    rm -f "$folder/chip.bin"
    start_box build/simbox "$folder" --fill FF --chip "$folder/chip.bin"
    start_measured "$folder"
    load_image
    note_memory "$size"

    open_function_window
    measure_run "$folder" Program "$size"
    close_function_window
    open_function_window
    measure_run "$folder" Verify "$size"
    close_function_window
    open_function_window
    measure_run "$folder" Read "$size"

    sleep 1 # the pause at the end of Read, which has closed its window
    leave
    stop_box >/dev/null
    cmp -n "$size" "$folder/chip.bin" tests/images/full64k.bin ||
        fail "the chip is not what the image says"
    read_blocks=$(grep -c '  read block ' "$folder/trace.txt")
    ((read_blocks == 2 * blocks)) || fail "$read_blocks blocks read, not twice $blocks"
}

# measure_idle FOLDER: main window and buffer view, then the function window as well.
measure_idle() {
    start_box build/simbox "$1" --fill FF
    start_measured "$1"
    load_image
    note_idle main
    open_function_window
    note_idle function
    close_function_window
    leave
    stop_box >/dev/null
}

note_idle() {
    local busy_us woken
    sleep 1 # for what the windows still draw
    busy_us=$(processor_us "$program_pid")
    woken=$(wakes "$program_pid")
    sleep 10
    woken=$(($(wakes "$program_pid") - woken))
    busy_us=$(($(processor_us "$program_pid") - busy_us))
    note "idle/$1" "$(quotient $busy_us 100000)"
    note "wakes/$1" "$woken"
}
