# The program and the simulated box, and the verbs of a session with them.
# Sourced after common.sh and screen.sh.

shipped_settings=$lib_folder/../../data/quorven.cfg
main_title="QUORVEN ~ USB Programmer - Ver.$(sed -n 4p "$shipped_settings" | tr -d '\r"')"
file_title=""          # the file options have no title
chip_file_bytes=65536  # simbox keeps the largest chip there is

# start_box SIMBOX FOLDER [OPTION...]: the simulated box, plugged in at port 5 of FOLDER. Its
# process id is in box_pid, its trace in FOLDER/trace.txt.
start_box() {
    local simbox=$1 folder=$2
    shift 2
    background "$folder/simbox.log" \
        "$simbox" --link "$folder/com5" --trace "$folder/trace.txt" "$@"
    box_pid=$!
    wait_until 20 "simbox to be ready (see $folder/simbox.log)" \
        grep -qs '^simbox ready' "$folder/simbox.log"
}

# start_program QUORVEN FOLDER: the program with FOLDER as its current directory, what it prints
# in FOLDER/console.txt. Its process id is in program_pid.
start_program() {
    background "$2/console.txt" enter_and_run "$2" "$1"
    program_pid=$!
}
enter_and_run() {
    cd "$1" || exit
    on_screen "$2"
}

# expect_status STATUS PID NAME: waits for the process to end by itself and checks its exit status.
expect_status() {
    local expected=$1 pid=$2 name=$3 status=0
    wait_until 20 "$name to end" ended "$pid"
    wait "$pid" || status=$?
    ((status == expected)) || fail "$name ended with status $status, not $expected"
    echo "$name ended with status $status"
}

# The box is told to end and has to say that nothing it received was nonsense.
stop_box() {
    kill "$box_pid"
    expect_status 0 "$box_pid" simbox
}

# --- windows -----------------------------------------------------------------------------------

# say TITLE PICTURE: prints what the window says and takes the picture.
say() {
    read_windows "$1"
    take_picture "$2"
}

# answer TITLE TEXT PICTURE: waits for the message box, shows it, presses its OK.
answer() {
    wait_for_window "$1"
    wait_for_line "label: $2"
    say "$1" "$3"
    press Return
    wait_until_gone "$1"
}

# load_file NAME TYPE: File Load of a file in the program's current directory, both offsets 0.
load_file() {
    choose f Load
    name_file Open "$1" "$2"
    press Return
    wait_for_line "frame: Buffer"
    wait_for_window "$main_title"
}

# save_file NAME TYPE: File Save into the program's current directory.
save_file() {
    choose f Save
    name_file "Save As" "$1" "$2"
    press Return
    wait_for_window "$main_title"
}

# name_file TITLE NAME TYPE: goes through the file dialog to the file options, which have to
# propose TYPE.
name_file() {
    wait_for_window "$1"
    type_name "$2"
    press Return
    wait_for_window "$file_title"
    wait_for_line "radio button: $3 (chosen)"
    say "$file_title" "file-options-$2"
}

# A letter that the keyboard does not have is typed by changing the keyboard for it; a program that
# learns of that too late misses the letter, so the name is typed until it stands there.
type_name() {
    local tries
    for ((tries = 5; tries > 0; --tries)); do
        press ctrl+a
        type_text "$1"
        ! within_a_second shows "text: File name:: $1" || return 0
    done
    fail "the file dialog does not take the name $1"
}

open_function_window() {
    choose d Function
    wait_for_window Function
}

# run_function FOLDER NAME: picks the function in the open window by its first letter, presses Run.
run_function() {
    trace=$1/trace.txt
    releases_before=$(releases)
    press "${2:0:1}"
    wait_for_line "list item: $2 (selected)"
    press Return
}

# wait_for_end_of_run SECONDS LINE...: waits for the end of the run just started and checks that it
# left each LINE among the messages.
wait_for_end_of_run() {
    local line seconds=$1
    shift
    wait_until "$seconds" "the run to end" run_is_over
    for line in "$@"; do
        shows "label: $line" || fail "the run did not end with the line \"$line\""
    done
}

# A run ends with the release of the socket. Until that is there, an enabled Run button means that
# the run has not begun.
run_is_over() { (($(releases) > releases_before)) && shows "push button: Run"; }
releases() { grep -c 'release socket$' "$trace" || true; }

close_function_window() {
    press Escape
    wait_until_gone Function
}

# The text of the buffer window's page; empty while the window is closed.
buffer_page() { read_windows "$main_title" | sed 's/^ *//' | grep -E '^[0-9A-F]{4,5}=' || true; }

buffer_window_closed() { shows_not "frame: Buffer"; }

look_at_the_guide() {
    press F1
    wait_for_window "QUORVEN Help"
    wait_for_line "text: Help: QUORVEN"
    take_picture help
    press Escape
    wait_until_gone "QUORVEN Help"
}

exit_program() {
    choose f Exit
    expect_status 0 "$program_pid" quorven
}

# --- results -----------------------------------------------------------------------------------

# setting FOLDER N: item N of the settings file.
setting() { sed -n "${2}p" "$1/quorven.cfg" | tr -d '\r"'; }

# The selected device's size in bytes, from the device list. No name in it holds a comma.
device_size() {
    sed -n "$(setting "$1" 3)p" "$1/quorven.dev" | tr -d '\r' | cut -d, -f5
}

# expected_chip HEXFILE SIZE OUTPUT: an erased chip after the image went in, as far as a device of
# SIZE bytes reaches. The hex file is read by objcopy, not by anything of this program.
expected_chip() {
    local whole=$3.whole
    objcopy -I ihex -O binary --gap-fill 0xFF --pad-to "$chip_file_bytes" "$1" "$whole"
    # What objcopy writes begins at the first byte of data.
    (($(stat -c %s "$whole") == chip_file_bytes)) || fail "$1 does not start at address 0"
    {
        head -c "$2" "$whole"
        head -c $((chip_file_bytes - $2)) /dev/zero | tr '\0' '\377'
    } >"$3"
    rm "$whole"
}

# compare_chip CHIPFILE EXPECTED: byte for byte, behind the device's size too.
compare_chip() {
    cmp "$1" "$2" || fail "the chip is not what the image says"
    echo "the chip holds the image, byte for byte"
}

# Shown when something went wrong, before all is taken down.
show_wreck() {
    local folder=$1
    echo "--- windows:"
    read_windows || true
    echo "--- the program's console:"
    cat "$folder/console.txt" || true
    echo "--- the last frames:"
    tail -n 12 "$folder/trace.txt" || true
    take_picture failed || true
} >&2
