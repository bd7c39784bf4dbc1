#!/usr/bin/env bash
# Takes the pictures in docs/pictures: every window of the program at 100 % and, name-2x.png, at
# 200 %, each cropped to its frame.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
source scripts/lib/common.sh
source scripts/lib/screen.sh
source scripts/lib/session.sh

# Its name is seen in the status bar, so it is the same wherever this runs.
folder=/tmp/quorven
pictures=$PWD/docs/pictures

finish() {
    local status=$?
    ((status == 0)) || show_wreck "$folder"
    remove_screen
    rm -rf "$folder"
    exit "$status"
}

lay_out() {
    mkdir "$folder" || fail "$folder is there already; remove it if nobody needs it"
    trap finish EXIT
    mkdir -p "$pictures"
    cp data/* "$folder/"
}

# title_bar LETTERS: what the window manager draws there: N icon, L title, I minimise, M maximise,
# C close. It is one for all windows and heeds no window's wish, so it is told window by window.
title_bar() {
    local settings=$runtime_folder/home/.config/openbox
    mkdir -p "$settings"
    printf '%s<theme><titleLayout>%s</titleLayout></theme>%s\n' \
        '<openbox_config xmlns="http://openbox.org/3.4/rc">' "$1" '</openbox_config>' \
        >"$settings/rc.xml"
    [[ $1 == "${drawn_title_bar:-}" ]] || openbox --reconfigure
    drawn_title_bar=$1
}

# picture NAME TITLEBAR: of the active window with its frame.
picture() {
    title_bar "$2"
    wait_until 10 "the window to be drawn" drawn_twice_alike
    keep_shot "$1"
}
keep_shot() {
    convert "$folder/shot.png" -strip +dither -colors 128 "png8:$pictures/$1$suffix.png"
    echo "docs/pictures/$1$suffix.png"
}

# Whether two shots, some time apart, are equal: no redraw is on its way.
drawn_twice_alike() {
    shoot "$folder/before.png"
    sleep 0.3 # the time apart
    shoot "$folder/shot.png"
    [[ $(compare -metric AE "$folder/before.png" "$folder/shot.png" null: 2>&1) == 0 ]]
}
shoot() { import -silent -frame -window "$(xdotool getactivewindow)" "$1"; }

# dialog KEY ENTRY TITLE PICTURE TITLEBAR: opens it from the menu, takes its picture, leaves it.
dialog() {
    choose "$1" "$2"
    wait_for_window "$3"
    picture "$4" "$5"
    press Escape
    wait_until_gone "$3"
}

# The splash screen stands for a second only: it is shot as soon as it is painted.
start() {
    start_program "$PWD/build/quorven" "$folder"
    wait_for_line "label: USB Programmer"
    shoot "$folder/shot.png"
    keep_shot splash
    wait_for_window "Device Found!"
    picture device-found NLC
    press Return
    wait_for_window "$main_title"
}

main_and_file_options() {
    choose f Load
    wait_for_window Open
    type_text sample.hex
    wait_for_line "text: File name:: sample.hex"
    press Return
    wait_for_window "$file_title"
    picture file-options NLIMC
    press Return
    wait_for_line "frame: Buffer"
    wait_for_window "$main_title"
    press Right Right Down
    picture main NLIMC
}

function_window() {
    open_function_window
    run_function "$folder" Auto
    wait_for_end_of_run 60 "Programming ...   OK!" "Verifying ...   OK!"
    picture function NL
    close_function_window
}

# take_all SCALE SUFFIX
take_all() {
    program_environment=(QT_SCALE_FACTOR="$1")
    suffix=$2
    start_box build/simbox "$folder" --fill FF
    start
    main_and_file_options
    dialog b Fill "Buffer Fill" fill NLC
    dialog d Select "Select Device" select-device NLC
    function_window
    dialog o "Edit Auto" "Edit Auto" edit-auto NLC
    choose o Settings
    wait_for_window Settings
    picture settings NLC
    press Escape
    wait_for_window "Device Found!"
    press Return
    wait_for_window "$main_title"
    dialog h Contents "QUORVEN Help" help NLC
    dialog h About "" about NLIMC
    exit_program
    stop_box
}

lay_out
start_screen "$folder/screen" 2048x1536
start_reader
take_all 1 ""
take_all 2 -2x
