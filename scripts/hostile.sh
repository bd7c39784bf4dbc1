#!/usr/bin/env bash
# Gives the release build files that are none of its own wherever it reads one: pipes, devices,
# endless ones, damage. Each has to be refused or read within seconds and to take no more than 64 MB
# beyond what the program has anyhow. Prints a line for each: what was read, what came of it (the
# title of the window in front), the memory taken at the most. Takes about four minutes.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh

folder=$PWD/build/hostile
program=${QUORVEN:-$PWD/build/quorven}
largest=$((16 * 1024 * 1024)) # the largest text file that is read
most_kb=$((64 * 1024))
no_port="Communication Port Error"
start_files=(quorven.cfg quorven.dev auto.cfg)
worst_kb=0
found=0

finish() {
    local status=$?
    remove_screen
    rm -rf "$folder"
    exit "$status"
}

# --- files -------------------------------------------------------------------------------------

# filled TEXT [END]: the text over and over, as much as is read of a file, then END.
# In one line: filled_line. Their first writers end by the pipe that is closed on them.
filled() (
    set +o pipefail
    yes "$1" | head -c "$((largest - 4000))"
    printf '%b' "${2:-}"
)
filled_line() (
    set +o pipefail
    yes "$1" | tr -d '\n' | head -c "$((largest - 4000))"
    printf '%b' "${2:-}"
)

# make_kind KIND PATH: what may lie in the place of the file PATH, which is a good one.
kinds=(pipe device folder sparse "one line" zeros "byte order mark" latin-1)
make_kind() {
    local good
    good=$(<"$2")
    rm -rf "$2"
    case $1 in
    pipe) mkfifo "$2" ;;
    device) ln -s /dev/zero "$2" ;;
    folder) mkdir "$2" ;;
    sparse) truncate -s 1G "$2" ;;
    "one line") filled_line x >"$2" ;;
    zeros) head -c "$((largest - 4000))" /dev/zero >"$2" ;;
    "byte order mark") printf '\xEF\xBB\xBF%s\n' "$good" >"$2" ;;
    latin-1)
        good=${good/\"1.0/\"$'\xE4'} # the version text
        printf '%s\n' "${good/[a-z]/$'\xE4'}" >"$2"
        ;;
    esac
}

# --- measuring ---------------------------------------------------------------------------------

title() { xdotool getactivewindow getwindowname 2>/dev/null | head -c 60 || true; }
memory_kb() { awk -v item="$1:" '$1 == item { print $2 }' "/proc/$program_pid/status" 2>/dev/null; }
bus_environment=(DBUS_SESSION_BUS_ADDRESS=disabled:) # what answers it would be measured too

# Until the program has nothing more to do: no processor time for half a second.
settle() {
    local before=-1 now deadline=$((SECONDS + 20))
    while now=$(processor_ms "$program_pid" 2>/dev/null) && [[ $now != "$before" ]]; do
        ((SECONDS <= deadline)) || return 1
        before=$now
        sleep 0.5
    done
}

# outcome WHAT: waits for the end of what was asked for and notes a line.
outcome() {
    local taken note=""
    if ! settle || ! within 5 window_is_up; then
        note="  HANGS"
    elif [[ -z $(memory_kb VmHWM) ]]; then
        note="  DIED"
    fi
    taken=$(($(memory_kb VmHWM || echo 0) - start_kb))
    ((taken <= most_kb)) || note+="  TOO MUCH"
    ((taken <= worst_kb)) || worst_kb=$taken
    [[ -z $note ]] || found=1
    printf '%-36s %-40s %7d kB%s\n' "$1" "$(title)" "$taken" "$note"
}

lay_out() {
    rm -rf "$folder/play"
    mkdir -p "$folder/play"
    cp data/* "$folder/play/"
}

begin() {
    start_program "$program" "$folder/play"
    within 20 message_is_up || true
    settle || true
}
within() {
    local deadline=$((SECONDS + $1))
    until "${@:2}"; do
        ((SECONDS <= deadline)) || return
        sleep 0.05
    done
}
window_is_up() { [[ -n $(title) ]] || ended "$program_pid"; }
message_is_up() { [[ $(title) == QUORVEN || $(title) == "$no_port" ]] || ended "$program_pid"; }

# Through the message box that comes where there is no port, to the main window.
to_main_window() {
    [[ $(title) == "$no_port" ]] || return 0
    press Return
    settle || true
}

# --- what is measured --------------------------------------------------------------------------

measure_start_files() {
    local file kind
    lay_out
    begin_for_windows
    stop "$program_pid"
    for file in "${start_files[@]}"; do
        for kind in "${kinds[@]}" "long texts"; do
            lay_out
            if [[ $kind == "long texts" ]]; then
                long_texts "$file"
            else
                make_kind "$kind" "$folder/play/$file"
            fi
            begin
            to_main_window
            outcome "$file: $kind"
            stop "$program_pid"
        done
    done
}

# Well formed, and beyond all measure.
long_texts() {
    cd "$folder/play"
    case $1 in
    quorven.cfg) { printf '5\n1\n1\n'; filled_line "x" '\n"d"\n'; } >"$1" ;;
    quorven.dev) { filled_line "x" ',a,b,1,4096,0,0,0\n'; cat "$OLDPWD/data/$1"; } >"$1" ;;
    auto.cfg) { printf '20\n'; filled_line "1,"; } >"$1" ;;
    esac
    cd "$OLDPWD"
}

# The peak so far is forgotten, not what is still held.
with_peak_anew() { echo 5 >"/proc/$program_pid/clear_refs"; }

measure_images() {
    local name
    cd "$folder/play"
    for name in h.hex b.bin; do
        for kind in "${kinds[@]}"; do
            cp sample.hex "$kind ${name}"
            make_kind "$kind" "$kind $name"
        done
    done
    filled :0000000000 >"tiny h.hex"
    filled :03000000010203F7 ':00000001FF\n' >"many h.hex"
    filled_line 00 '\n:00000001FF\n' | sed '1s/^/:01000000/' >"long h.hex"
    { for _ in {1..9999}; do printf ':00000000%01600d\n' 0; done; echo :00000001FF; } >"wide h.hex"
    cd "$OLDPWD"
    for name in "$folder"/play/*\ [hb].*; do
        [[ ! -d $name ]] || continue # the dialog goes into it
        load "$(basename "$name")"
    done
}

load() {
    with_peak_anew
    press alt+f l
    wait_until 20 "the file dialog" title_is Open
    type_text "$1"
    press Return
    wait_until 20 "the file options" options_are_up
    press Return
    within 20 load_is_over || true
    outcome "$1"
    while ! title_is "$main_title"; do
        press Return # of a message box
        within 2 title_is "$main_title" || true
    done
}
title_is() { [[ $(title) == "$1" ]]; }
load_is_over() { title_is "$main_title" || title_is "File Load Error"; }
options_are_up() { [[ $(title) != Open && $(title) != "$main_title" ]]; }

measure_help() {
    local kind text format help="$folder/play/quorven help.rtf"
    for kind in "${kinds[@]}"; do
        rm -rf "$help"
        cp "data/quorven help.rtf" "$help"
        make_kind "$kind" "$help"
        show_help "$kind"
    done
    rm -rf "$help"
    while IFS='|' read -r kind text; do
        { printf '{\\rtf1{\\colortbl;'; printf '\\red%d;' {1..250}; printf '}'; filled_line "$text"; } >"$help"
        show_help "$kind"
    done <<'END'
text|The quick brown fox
paragraphs|\par
runs|{\b a}{\i b}{\fs9 c}
formats|\fs9\cf1 a\fs8\cf7 b\fs7\cf9\b c\b0\par\fs33\cf3\highlight9 x\pard\li9\tx99\tx33 z\par
rows|\trowd\cellx99\intbl a\cell\row
cells|\trowd\cellx9\cellx99\cellx999\intbl\cell\cell\cell\row\trowd\cellx9\intbl\cell\row
fonts|{\fonttbl{\f1 A;}{\f2 B;}{\f3 C;}}
colours|{\colortbl;\red9;;;;;}
groups|{\b{\i
END
    for kind in 1700x1700 600x4900 6000x6000; do
        for format in png jpg; do
            convert -size "$kind" gradient: -interlace Plane "$format:-" | xxd -p | tr -d '\n' >"$folder/picture"
            {
                printf '{\\rtf1 '
                for _ in {1..9}; do
                    printf '{\\pict\\%sblip ' "${format/jpg/jpeg}"
                    cat "$folder/picture"
                    printf '}'
                done
            } >"$help"
            show_help "$format pictures of $kind"
        done
    done
}

# In a program of its own each time.
show_help() {
    begin_for_windows
    press F1
    within 60 title_is "QUORVEN Help" || true
    outcome "help: $1"
    stop "$program_pid"
}

# What a program has taken that nothing was asked of is in start_kb.
begin_for_windows() {
    begin
    to_main_window
    start_kb=$(memory_kb VmHWM)
}

mkdir -p "$folder"
trap finish EXIT
start_screen "$folder/screen"
measure_start_files
lay_out
begin_for_windows
measure_images
stop "$program_pid"
lay_out
measure_help
echo
echo "most taken: $worst_kb kB, allowed: $most_kb kB"
((found == 0))
