# A screen without a monitor, and the verbs to use a program on it as a person would: press keys,
# wait for windows, read what they say, take pictures.
# Sourced after common.sh.

lib_folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# start_screen FOLDER: a virtual X screen and a window manager, logs in FOLDER.
start_screen() {
    screen_folder=$1
    # Sockets live here: their names may not be long, so it is not in FOLDER. Only ours (0700).
    runtime_folder=$(mktemp -d "${TMPDIR:-/tmp}/quorven.XXXXXX")
    mkdir -p "$screen_folder" "$runtime_folder/home"

    # The server picks a free display number and says so once it is ready.
    local number_file=$runtime_folder/display
    : >"$number_file"
    background "$screen_folder/xvfb.log" \
        Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$number_file"
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

# on_screen COMMAND...: becomes the command, as a program on this screen, with nothing of the
# caller's environment that could change what it looks like or where it keeps what.
on_screen() {
    local name kept=()
    for name in ASAN_OPTIONS UBSAN_OPTIONS LSAN_OPTIONS; do
        [[ -z ${!name:-} ]] || kept+=("$name=${!name}")
    done
    exec env -i "${kept[@]}" "${bus_environment[@]}" PATH="$PATH" HOME="$runtime_folder/home" \
        LC_ALL=C.UTF-8 XDG_RUNTIME_DIR="$runtime_folder" DISPLAY="$DISPLAY" QT_QPA_PLATFORM=xcb \
        "$@"
}

# --- reading -----------------------------------------------------------------------------------

# The text of all windows, or of the one with the title $1.
read_windows() { /usr/bin/python3 "$lib_folder/window_texts.py" "$@"; }

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
type_text() { xdotool type --delay 20 "$1"; }

# open_menu KEY ENTRY: opens the menu whose access key is Alt+KEY, on which ENTRY stands. A window
# that takes no input for the moment drops the key, so it is pressed again until the menu is there.
open_menu() {
    local tries
    for ((tries = 10; tries > 0; --tries)); do
        press "alt+$1"
        local deadline=$(($(now_ms) + 1000))
        while (($(now_ms) < deadline)); do
            if shows "menu item: $2"; then
                return
            fi
        done
    done
    fail "the menu with the entry \"$2\" does not open"
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
