#!/usr/bin/env bash
# Tests the installed files, and the launcher with a stub program that prints how it was started.
#
#   installation_test.sh BUILD SCRATCH [CASE...]
set -Eeuo pipefail

rm -rf "$2"
mkdir -p "$2"
scratch=$(realpath "$2")
tree=$scratch/usr
share=$tree/share
elsewhere=$scratch/elsewhere # a current directory without data files
home="$scratch/Zoë Müller"   # spaces and non-ASCII letters, as in people's names
folder=$home/.local/share/quorven

stub() { printf '#!/bin/sh\n%s\n' "$2" >"$scratch/stubs/$1" && chmod +x "$scratch/stubs/$1"; }

# launch STATUS OUTPUT ERRORS [NAME=VALUE...]: runs the launcher in $elsewhere, with only PATH and
# these variables, and compares its results. ERRORS is a pattern.
launch() {
    local status=0 out
    out=$(cd "$elsewhere" && env -i PATH="$scratch/stubs:$PATH" "${@:4}" "$scratch/launcher" \
        -style "two words" 2>"$scratch/err") || status=$?
    [[ $status == "$1" && $out == "$2" && $(<"$scratch/err") == $3 ]] ||
        { echo "status $status; output: $out; errors: $(<"$scratch/err")" >&2 && return 1; }
}

# Starts the program in this folder without errors and passes arguments and exit status through.
starts() { launch 7 "$1"$'\n-style\ntwo words' "" "${@:2}"; }

# Fails with an error that contains this text.
rejects() { launch 1 "" "*$1*" "${@:2}"; }

files() {
    diff - <(cd "$tree" && find . -type f | LC_ALL=C sort) < <(printf './%s\n' \
        bin/{quorven,simbox} libexec/quorven/quorven share/applications/quorven.desktop \
        share/doc/quorven/{changelog.gz,copyright,examples/70-usb-programmer.rules} \
        share/icons/hicolor/{16x16,256x256,32x32,48x48}/apps/quorven.png \
        share/icons/hicolor/scalable/apps/quorven.svg \
        share/lintian/overrides/quorven share/man/man1/{quorven,simbox}.1.gz \
        share/metainfo/example.norvane.quorven.metainfo.xml \
        share/quorven/{auto.cfg,'quorven help.rtf',quorven.cfg,quorven.dev,sample.hex})
    desktop-file-validate "$share/applications/quorven.desktop"
    grep -qx Exec=quorven "$share/applications/quorven.desktop"
    appstreamcli validate-tree --no-net --no-color "$scratch"
    shellcheck "$tree/bin/quorven"
}

# The help and the manual page list the same options and faults. In the help they are at the start
# of a line, before the explanation; in the page they are indented by 7.
man_pages() {
    for page in quorven simbox; do
        gunzip <"$share/man/man1/$page.1.gz" >"$scratch/$page.1"
        mandoc -T lint -W warning "$scratch/$page.1"
    done
    diff <("$tree/bin/simbox" --help | sed -nE 's/^  ([-a-z]+[^ ]*( [A-Z]+)?)  .*/\1/p') \
        <(mandoc -T ascii "$scratch/simbox.1" | col -bx | sed -n '/^OPTIONS/,/^EXIT/s/^ \{7\}//p' |
            grep -oE '^(--[-a-z]+( [A-Z]+\b)?|[-a-z]+[@:][^ ]*)')
}

first_start() {
    starts "$folder" HOME="$home"
    diff -r "$share/quorven" "$folder"
    [[ $(stat -c %a "$folder" "$folder/quorven.cfg") == $'700\n644' ]]
}

# Existing files are not touched, and missing ones are restored. A complete folder may be read-only.
later_start() {
    starts "$folder" HOME="$home"
    echo mine >"$folder/quorven.cfg"
    ln -sf nowhere "$folder/auto.cfg"
    rm "$folder/quorven.dev"
    before=$(stat -c '%N %i %y' "$folder"/*.cfg)
    starts "$folder" HOME="$home"
    [[ $(stat -c '%N %i %y' "$folder"/*.cfg) == "$before" && $(<"$folder/quorven.cfg") == mine ]]
    cmp "$folder/quorven.dev" "$share/quorven/quorven.dev"
    [[ $(find "$folder" | wc -l) == 6 ]]
    stub mktemp 'exit 1'
    starts "$folder" HOME="$home"
}

folder_with_settings() {
    touch "$elsewhere/quorven.cfg"
    starts "$elsewhere" HOME="$home"
    [[ -z $(ls -A "$home") && $(ls -A "$elsewhere") == quorven.cfg ]]
}

other_folders() {
    starts "$elsewhere/my data/quorven" HOME="$home" XDG_DATA_HOME="$elsewhere/my data"
    starts "$folder" HOME="$home" XDG_DATA_HOME=relative
    stub getent "echo 'zoe:x:1:1:Zoë,,,:$home:/bin/sh'"
    starts "$folder"
    stub getent 'exit 2'
    rejects "HOME is not set"
}

# With a display, the cause is also shown in a window.
no_folder() {
    stub zenity "printf '%s\n' \"\$@\" >'$scratch/window'"
    touch "$home/.local"
    rejects "The folder $folder cannot be prepared." HOME="$home"
    [[ ! -e $scratch/window ]]
    rejects "Not a directory" HOME="$home" DISPLAY=:0
    grep -qxF -- "--text=The folder $folder cannot be prepared." "$scratch/window"
}

# No partial file is left, and the next start completes the folder.
full_disk() {
    stub cp 'case $2 in *auto.cfg) exec /bin/cp "$@" ;; esac
        head -c 10 "$2" >"$3"; echo "disk full" >&2; exit 1'
    rejects "disk full" HOME="$home"
    [[ $(ls -A "$folder") == auto.cfg ]]
    rm "$scratch/stubs/cp"
    first_start
}

two_first_starts() {
    stub cp '/bin/cp "$@"; echo theirs >"$(dirname "$(dirname "$3")")/$(basename "$3")"'
    starts "$folder" HOME="$home"
    [[ $(sort -u "$folder"/*) == theirs ]]
}

cmake --install "$1" --prefix "$tree" >"$scratch/install.log"
umask 022
ln -s usr/bin/quorven "$scratch/launcher"
cases=(files man_pages first_start later_start folder_with_settings other_folders no_folder
    full_disk two_first_starts)
[[ $# == 2 ]] || cases=("${@:3}")
failed=0
for name in "${cases[@]}"; do
    rm -rf "$scratch/stubs" "$elsewhere" "$home"
    mkdir -p "$scratch/stubs" "$elsewhere" "$home"
    stub ../usr/libexec/quorven/quorven 'printf "%s\n" "$PWD" "$@"; exit 7'
    (trap 'echo "FAILED: $name, line $LINENO" >&2' ERR && "$name") & # ends at the first error
    wait $! || failed=1
done
exit "$failed"
