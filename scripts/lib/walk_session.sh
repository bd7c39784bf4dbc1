#!/usr/bin/env bash
# What the new user does with the installed program, see scripts/walk.sh. The screen and the hands
# are this machine's, everything of the program is the clean Debian's.
#
#   walk_session.sh ROOT HOME SHARE
#
# HOME is the user's in the clean Debian ROOT; SHARE is a folder with one path in both.
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
source "$here/common.sh"
source "$here/screen.sh"
source "$here/session.sh"

root=$1 home=$2 share=$3
folder=$home/.local/share/quorven
picture_folder=$share/pictures
shipped=$root/usr/share/quorven

finish() {
    local status=$?
    ((status == 0)) || show_wreck "$share"
    remove_screen
    exit "$status"
}

# becoming COMMAND...: what becomes the command in the clean Debian, without this script's power to
# go there.
becoming=(/usr/sbin/chroot "$root" /usr/bin/setpriv --ambient-caps=-all --inh-caps=-all --)

# As a desktop does it: the entry's command, from the home folder.
start_from_menu() {
    local command
    command=$(sed -n 's/^Exec=//p' "$root/usr/share/applications/quorven.desktop")
    program_environment=(HOME="$home" PATH=/usr/local/bin:/usr/bin:/bin)
    background "$share/console.txt" on_screen "${becoming[@]}" /bin/sh -c "cd && exec $command"
    program_pid=$!
}

installed_simbox() { exec "${becoming[@]}" /usr/bin/simbox "$@"; }

expect_silent_console() {
    [[ ! -s $share/console.txt ]] || fail "on the console: $(<"$share/console.txt")"
}

# The shipped files, as they were shipped, and nothing else.
expect_folder() { diff -r "$shipped" "$root$folder" || fail "$folder is not as shipped"; }

starts_without_a_box() {
    step "The first start, without a box, makes the folder"
    start_from_menu
    answer "Communication Port Error" \
        "COM5, /dev/ttyUSB0: there is no such device. Is the programmer plugged in?" no-box
    wait_for_window "$main_title"
    say "$main_title" first-start
    exit_program
    expect_silent_console
    expect_folder
    find "$root$folder" -printf '%M %u %s %f\n'
}

# The chip holds A5 everywhere, so that only an erase makes room. simbox heeds the last --link.
programs_a_chip() {
    step "The installed simbox is linked as com5 in the folder; the program finds it"
    start_box installed_simbox "$share" --link "$folder/com5" --chip "$share/chip.bin" --fill A5
    start_from_menu
    answer "Device Found!" "Firmware: SimBox v1.00" device-found
    wait_for_window "$main_title"

    step "File Load: the sample; Device Function: the shipped Auto sequence"
    load_file sample.hex "Intel Hex"
    say "$main_title" loaded
    open_function_window
    run_function "$share" Auto
    wait_for_end_of_run 60 "Erasing ...OK" "Blank Checking ...   OK!" "Programming ...   OK!" \
        "Verifying ...   OK!"
    say Function auto
    close_function_window

    expected_chip "$shipped/sample.hex" "$(device_size "$root$folder")" "$share/expected.bin"
    compare_chip "$share/chip.bin" "$share/expected.bin"
}

shows_its_guide() {
    step "F1: the guide"
    look_at_the_guide
}

ends() {
    step "File Exit"
    exit_program
    expect_silent_console
    stop_box
    expect_folder
}

trap finish EXIT
start_screen "$share/screen"
start_reader
starts_without_a_box
programs_a_chip
shows_its_guide
ends
