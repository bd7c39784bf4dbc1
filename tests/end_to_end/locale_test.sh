#!/usr/bin/env bash
# The main job where numbers have a comma, in a locale of UTF-8 and in one of Latin-1, in a folder
# and with files whose names have blanks and letters beyond ASCII.
#
#   locale_test.sh QUORVEN SIMBOX SCRATCH
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/preamble.sh"

works_in() {
    local locale=$1 charset=$2 folder="$scratch/Prüfstand Ä $1"
    step "Locale $locale, $charset"
    localedef -i de_DE -f "$charset" "$scratch/locales/$locale"
    program_environment=("LOCPATH=$scratch/locales" "LC_ALL=$locale" "LANG=$locale")
    [[ $(env "${program_environment[@]}" locale charmap) == "$charset" ]] ||
        fail "the locale does not work here"

    mkdir "$folder"
    cp "$data"/* "$folder/"
    mv "$folder/sample.hex" "$folder/Gerät № 1.hex"
    expected_chip "$folder/Gerät № 1.hex" 4096 "$folder/expected.bin"
    start_box "$simbox" "$folder" --fill FF --chip "$folder/chip.bin"
    start_program "$quorven" "$folder"
    answer "Device Found!" "Firmware: SimBox v1.00" found
    wait_for_window "$main_title"
    load_file "Gerät № 1.hex" "Intel Hex"
    wait_for_line "label: File: $folder/Gerät № 1.hex"
    open_function_window
    run_function "$folder" Program
    wait_for_end_of_run 60 "Programming ...   OK!"
    wait_for_line "label: 100%"
    close_function_window
    save_file "Kopie für später.hex" "Intel Hex"
    wait_for_line "label: File: $folder/Kopie für später.hex"
    exit_program

    compare_chip "$folder/chip.bin" "$folder/expected.bin"
    stop_box
    expected_chip "$folder/Kopie für später.hex" 4096 "$folder/saved.bin"
    cmp "$folder/saved.bin" "$folder/expected.bin" || fail "the saved file is another image"
    cmp "$folder/quorven.cfg" "$data/quorven.cfg" || fail "the settings file has changed"
    [[ ! -s $folder/console.txt ]] || fail "the program wrote to its console"
}

trap finish EXIT
mkdir "$scratch/locales"
start_screen "$scratch/screen"
start_reader
works_in de_DE.UTF-8 UTF-8
works_in de_DE ISO-8859-1
step "Passed"
