# A screen without a monitor, and the verbs to use a program on it as a person would: press keys,
# wait for windows, read what they say, take pictures.
# Sourced after common.sh.

lib_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# start_screen FOLDER [SIZE]: a virtual X screen and a window manager, logs in FOLDER.
start_screen() {
    local size=${2:-1024x768}
    screen_folder=$1
    # Sockets live here: their names may not be long, so it is not in FOLDER. Only ours (0700).
    runtime_folder=$(mktemp -d "${TMPDIR:-/tmp}/quorven.XXXXXX")
    mkdir -p "$screen_folder" "$runtime_folder/home"

    # The server picks a free display number and says so once it is ready.
    local number_file=$runtime_folder/display
    : >"$number_file"
    background "$screen_folder/xvfb.log" \
        Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp 3>"$number_file"
    wait_until 20 "the virtual screen" test -s "$number_file"
    DISPLAY=:$(<"$number_file")
    export DISPLAY

    background "$screen_folder/openbox.log" env HOME="$runtime_folder/home" openbox
    wait_until 20 "the window manager" window_manager_ready
}

window_manager_ready() { [[ $(xdotool get_num_desktops 2>/dev/null) -ge 1 ]]; }

# An accessibility bus of this screen's own, so that its windows can be read and no other's are.
# Every process is started here, for the bus's own way of starting them leaves them to no one.
start_reader() {
    export XDG_RUNTIME_DIR=$runtime_folder
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$runtime_folder/bus
    bus_environment=("DBUS_SESSION_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS"
                     QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1)
    background "$screen_folder/dbus.log" \
        dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
    wait_until 20 "the message bus" test -S "$runtime_folder/bus"
    background "$screen_folder/a11y-bus.log" /usr/libexec/at-spi-bus-launcher --launch-immediately
    background "$screen_folder/a11y-registry.log" /usr/libexec/at-spi2-registryd
    wait_until 20 "the accessibility bus" grep -qs 'is running' "$screen_folder/a11y-registry.log"
}

remove_screen() {
    stop_all
    [[ -z ${runtime_folder:-} ]] || rm -rf "$runtime_folder"
}

# What a program on this screen is told of message buses. Without a reader: that there is none, or
# it would have one started that outlives it.
bus_environment=(DBUS_SESSION_BUS_ADDRESS=disabled:)
# What else it is told, NAME=VALUE each.
program_environment=()

# on_screen COMMAND...: becomes the command, as a program on this screen, with nothing of the
# caller's environment that could change what it looks like or where it keeps what.
on_screen() {
    local name kept=()
    for name in ASAN_OPTIONS UBSAN_OPTIONS LSAN_OPTIONS; do
        [[ -z ${!name:-} ]] || kept+=("$name=${!name}")
    done
    exec env -i "${kept[@]}" "${bus_environment[@]}" PATH="$PATH" HOME="$runtime_folder/home" \
        LC_ALL=C.UTF-8 XDG_RUNTIME_DIR="$runtime_folder" DISPLAY="$DISPLAY" QT_QPA_PLATFORM=xcb \
        "${program_environment[@]}" "$@"
}

# --- reading -----------------------------------------------------------------------------------

# The text of all windows, or of the one with the title $1.
read_windows() { /usr/bin/python3 "$lib_folder/window_texts.py" "$@"; }

# The text of the label that follows the label $2 in the window with the title $1.
label_after() { read_windows "$1" | sed 's/^ *label: //' | grep -xF -A 1 -- "$2" | tail -n +2; }

# The rows of the list $2 in the window with the title $1, one a line.
rows_of() {
    read_windows "$1" | awk -v list="list: $2" '
        /list item: / { if (inside) { sub(/^ *list item: /, ""); sub(/ \(selected\)$/, ""); print } next }
        { sub(/^ */, ""); inside = $0 == list }'
}

# Whether any window has this very line, blanks in front aside.
shows() {
    local said
    said=$(read_windows | sed 's/^ *//')
    grep -qxF -- "$1" <<<"$said"
}
shows_not() { ! shows "$1"; }

wait_for_line() { wait_until "${2:-20}" "a window with the line \"$1\"" shows "$1"; }
wait_for_window() { wait_for_line "window \"$1\" (active)" "${2:-20}"; }
wait_until_gone() {
    wait_until "${2:-20}" "the window \"$1\" to close" shows_not "window \"$1\" (active)"
}

# --- keys --------------------------------------------------------------------------------------

press() { xdotool key --delay 30 "$@"; }
# The text is UTF-8, whatever locale the script was started in.
type_text() { LC_ALL=C.UTF-8 xdotool type --delay 20 "$1"; }

# open_menu KEY ENTRY: opens the menu whose access key is Alt+KEY, on which ENTRY stands. A window
# that takes no input for the moment drops the key, so it is pressed again until the menu is there.
open_menu() {
    local tries
    for ((tries = 10; tries > 0; --tries)); do
        press "alt+$1"
        if within_a_second shows "menu item: $2"; then
            return
        fi
    done
    fail "the menu with the entry \"$2\" does not open"
}

within_a_second() {
    local deadline=$(($(now_ms) + 1000))
    until "$@"; do
        (($(now_ms) < deadline)) || return
    done
}

# choose KEY ENTRY: opens that menu and carries out ENTRY.
choose() {
    open_menu "$1" "$2"
    move_to Down "menu item: $2"
    press Return
}

# move_to KEY ITEM: presses the key until ITEM, "role: name", has the focus.
move_to() {
    local before tries
    for ((tries = 20; tries > 0; --tries)); do
        before=$(focused_items)
        ! grep -qxF -- "$2" <<<"$before" || return 0
        press "$1"
        within_a_second focus_left "$before" || true # the key is pressed again
    done
    fail "the focus does not come to \"$2\""
}
focused_items() { read_windows --focus; }
focus_left() { [[ $(focused_items) != "$1" ]]; }

# fill_in BOX TEXT: goes to the text box and replaces what stands there.
fill_in() {
    move_to Tab "text: $1"
    press ctrl+a
    type_text "$2"
    wait_for_line "text: $1: $2"
}

# --- pictures ----------------------------------------------------------------------------------

# take_picture NAME: the whole screen into $picture_folder, numbered in the order taken. Does
# nothing where no folder is set.
picture_number=0
take_picture() {
    [[ -n ${picture_folder:-} ]] || return 0
    picture_number=$((picture_number + 1))
    import -silent -window root "$picture_folder/$(printf '%02d' "$picture_number")-$1.png"
}
