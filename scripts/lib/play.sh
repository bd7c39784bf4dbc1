# The program played through as a person would use it, every command of its menus, each result
# checked by what the windows say and by other programs' reading of the files.
# Sourced after common.sh, screen.sh and session.sh.

# play QUORVEN SIMBOX FOLDER PICTURES: in FOLDER, which is made anew, so that nobody's settings
# are touched; pictures go to PICTURES.
play() {
    quorven=$1 simbox=$2 play_folder=$3 picture_folder=$4
    chip=$play_folder/chip.bin
    image=$play_folder/expected.bin
    trap finish_play EXIT
    prepare_play

    find_the_box
    build_the_auto_sequence
    load_the_sample
    run_the_auto_sequence
    read_the_chip

    type_over_the_first_byte
    fill_a_range
    save_clear_and_load
    choose_another_device
    leave_the_settings
    look_at_help_and_about

    see_verify_fail
    program_step_by_step
    lock_the_chip

    step "File Exit"
    exit_program
    stop_box
}

finish_play() {
    local status=$?
    ((status == 0)) || show_wreck "$play_folder"
    remove_screen
    exit "$status"
}

# The sequence that is there at first is another than the one to be built, and the chip is not
# blank, so that only an erase makes room for the image.
prepare_play() {
    rm -rf "$play_folder" "$picture_folder"
    mkdir -p "$play_folder" "$picture_folder"
    cp data/* "$play_folder/"
    printf '%d\r\n' 1 5 >"$play_folder/auto.cfg"
    size=$(device_size "$play_folder")
    expected_chip "$play_folder/sample.hex" "$size" "$image"
    start_screen "$play_folder/screen"
    start_reader
    start_box "$simbox" "$play_folder" --fill A5 --chip "$chip"
}

# --- the main job ------------------------------------------------------------------------------

find_the_box() {
    step "Start: the program finds the box"
    start_program "$quorven" "$play_folder"
    answer "Device Found!" "Firmware: SimBox v1.00" device-found
    wait_for_window "$main_title"
}

build_the_auto_sequence() {
    local name rows=""
    step "Options Edit Auto: \"<<\", then Erase, Blank, Program, Verify, each by \">\""
    choose o "Edit Auto"
    wait_for_window "Edit Auto"
    press_button shift+Tab "Remove all"
    wait_until 5 "an empty sequence" sequence_is ""
    for name in Erase Blank Program Verify; do
        move_to Tab "list: Functions"
        press "${name:0:1}"
        wait_for_line "list item: $name (selected)"
        press_button shift+Tab Add
        rows+=${rows:+$'\n'}$name
        wait_until 5 "the row $name" sequence_is "$rows"
    done
    say "Edit Auto" edit-auto
    press_button Tab OK
    wait_until_gone "Edit Auto"
    [[ $(tr -d '\r' <"$play_folder/auto.cfg" | xargs) == "4 1 2 3 4" ]] ||
        fail "auto.cfg does not hold the sequence"
    echo "auto.cfg holds 4, 1, 2, 3, 4"
}
sequence_is() { [[ $(rows_of "Edit Auto" "Auto sequence") == "$1" ]]; }

# press_button KEY NAME: goes there with the key and presses it.
press_button() {
    move_to "$1" "push button: $2"
    press space
}

load_the_sample() {
    step "File Load: sample.hex"
    load_file sample.hex "Intel Hex"
    say "$main_title" loaded
    page=$(buffer_page)
}

run_the_auto_sequence() {
    open_function_window
    run_one Blank "Blank Error at 0000"
    step "Device Function: Auto, on that chip, which holds A5 everywhere"
    run_function "$play_folder" Auto
    wait_for_end_of_run 60 "Erasing ...OK" "Blank Checking ...   OK!" "Programming ...   OK!" \
        "Verifying ...   OK!"
    say Function auto
    close_function_window
    compare_chip "$chip" "$image"
}

read_the_chip() {
    step "Buffer Clear, then close the buffer window: what Read brings comes from the chip"
    clear_buffer
    press ctrl+w
    wait_until 20 "the buffer window to close" buffer_window_closed

    step "Device Function: Read closes its window and opens the buffer window"
    open_function_window
    run_function "$play_folder" Read
    wait_until_gone Function 60
    wait_for_line "frame: Buffer"
    say "$main_title" read
    [[ $(buffer_page) == "$page" ]] || fail "Read brought another page than was loaded"
}

clear_buffer() {
    choose b Clear
    wait_until 20 "a cleared page" page_is_erased
}
page_is_erased() { [[ $(buffer_page | grep -cE '=(FF ){16}') == 16 ]]; }

# --- work on the image -------------------------------------------------------------------------

# What is done to the image is done to $image as well, without the program: checksums and
# comparisons are made with that.

# poke ADDRESS HEXBYTE COUNT: writes into $image.
poke() {
    local i
    for ((i = 0; i < $3; ++i)); do printf '%b' "\\x$2"; done |
        dd of="$image" bs=1 seek="$(($1))" conv=notrunc status=none
}

# The sum of the device's bytes in $image, the low 16 bits, as four digits.
image_sum() {
    head -c "$size" "$image" | od -An -v -tu1 |
        awk '{ for (i = 1; i <= NF; ++i) sum += $i } END { printf "%04X\n", sum % 65536 }'
}

expect_label() {
    local said
    said=$(label_after "$main_title" "$1")
    [[ $said == "$2" ]] || fail "behind \"$1\" stands $said, not $2"
    echo "$1 $said"
}

# line_shows ADDRESS TEXT: whether the page's line at ADDRESS begins with these bytes.
line_shows() { buffer_page | grep -q "^$1=$2"; }

type_over_the_first_byte() {
    step "Buffer Edit, then 7 and 1 typed over the first byte"
    choose b Edit # Read may still be in its last pause, when no key is taken: this waits for it
    wait_for_window "$main_title"
    expect_label "Address:" 0000
    expect_label "CheckSum:" "$(image_sum)"
    press 7 1
    wait_until 5 "the byte on the page" line_shows 0000 "71 "
    poke 0 71 1
    say "$main_title" typed
    expect_label "Address:" 0001
    expect_label "CheckSum:" "$(image_sum)"
}

fill_a_range() {
    step "Buffer Fill: 3C, 30H bytes from 0010H on"
    choose b Fill
    wait_for_window "Buffer Fill"
    fill_in "Fill with" 3C
    fill_in Start 0010
    fill_in Length 30
    say "Buffer Fill" fill
    press Return
    wait_until_gone "Buffer Fill"
    poke 0x10 3C 0x30
    say "$main_title" filled
    local line
    for line in 0010 0020 0030; do
        line_shows "$line" "$(printf '3C %.0s' {1..16})<<<<<<<<<<<<<<<<" ||
            fail "line $line is not filled"
    done
    ! line_shows 0040 "3C " || fail "the fill went too far"
    expect_label "CheckSum:" "$(image_sum)"
}

save_clear_and_load() {
    local hex=$play_folder/edited.hex bin=$play_folder/edited.bin
    step "File Save: edited.hex and edited.bin"
    page=$(buffer_page)
    save_file edited.hex "Intel Hex"
    wait_for_line "label: File: $hex"
    save_file edited.bin Binary
    wait_for_line "label: File: $bin"
    head -c "$size" "$image" | cmp - "$bin" || fail "edited.bin is not the image"
    objcopy -I ihex -O binary "$hex" "$hex.bin"
    cmp "$hex.bin" "$bin" || fail "edited.hex says another thing than edited.bin"
    echo "edited.hex, read by objcopy, and edited.bin hold the image, byte for byte"

    local file
    for file in "edited.hex:Intel Hex" edited.bin:Binary; do
        step "Buffer Clear, then File Load: ${file%:*}"
        clear_buffer
        load_file "${file%:*}" "${file#*:}"
        [[ $(buffer_page) == "$page" ]] || fail "another page came back than was saved"
        expect_label "CheckSum:" "$(image_sum)"
    done
}

# --- other windows -----------------------------------------------------------------------------

choose_another_device() {
    step "Device Select: the last of the list, and back to the first"
    select_device End "SO8 32K type 32" "Size: 8000H"
    select_device Home "DIP40 4K type 1" "Size: 1000H"
}

select_device() {
    choose b Edit
    wait_for_line "frame: Buffer"
    choose d Select
    wait_for_window "Select Device"
    press "$1"
    wait_for_line "list item: $2 (selected)"
    say "Select Device" select-device
    press Return
    wait_until_gone "Select Device"
    wait_for_line "label: Device: $2"
    wait_for_line "label: $3"
    wait_until 5 "the buffer window to close" buffer_window_closed
    say "$main_title" device-selected
}

leave_the_settings() {
    step "Options Settings: left by Cancel, the program looks for the box again"
    choose o Settings
    wait_for_window Settings
    wait_for_line "text: COM5"
    say Settings settings
    press Escape
    answer "Device Found!" "Firmware: SimBox v1.00" found-again
    wait_for_window "$main_title"
}

look_at_help_and_about() {
    step "F1: Help; Help About"
    look_at_the_guide
    choose h About
    wait_for_line "label: Version $(setting "$play_folder" 4), $(setting "$play_folder" 5)"
    say "" about
    press Return
    wait_for_window "$main_title"
}

# --- the functions one by one ------------------------------------------------------------------

# run_one NAME LINE: in the open function window.
run_one() {
    step "Device Function: $1"
    run_function "$play_folder" "$1"
    wait_for_end_of_run 60 "$2"
    say Function "${1,,}"
}

see_verify_fail() {
    open_function_window
    run_one Verify "Verify Error at 0000"
}

program_step_by_step() {
    run_one Erase "Erasing ...OK"
    run_one Blank "Blank Checking ...   OK!"
    run_one Program "Programming ...   OK!"
    run_one Verify "Verifying ...   OK!"
    compare_chip "$chip" "$image"
}

lock_the_chip() {
    [[ ! -e $chip.lock ]] || fail "the chip is locked before Lock"
    run_one Lock "Locking ...   OK!"
    wait_until 5 "the box to keep the lock" test -e "$chip.lock"
    echo "the chip is locked, and holds what it held"
    compare_chip "$chip" "$image"
    close_function_window
}
