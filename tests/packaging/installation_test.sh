#!/usr/bin/env bash
# Tests the installed files, and the launcher with a stub program that prints how it was started.
#
#   installation_test.sh BUILD SCRATCH
set -Eeuo pipefail
trap 'echo "FAILED in line $LINENO" >&2' ERR

rm -rf "$2"
mkdir -p "$2"
scratch=$(realpath "$2")
tree=$scratch/usr
share=$tree/share
elsewhere=$scratch/elsewhere # a current directory without data files
home="$scratch/Zoë Müller"   # spaces and non-ASCII letters, as in people's names
folder=$home/.local/share/quorven

stub() { printf '#!/bin/sh\n%s\n' "$2" >"$scratch/stubs/$1" && chmod +x "$scratch/stubs/$1"; }

# Runs the launcher in $elsewhere, with only PATH and the given NAME=VALUE; prints its output,
# errors included, and its exit status.
launch() {
    (cd "$elsewhere" && env -i PATH="$scratch/stubs:$PATH" "$@" "$scratch/launcher" \
        -style "two words" 2>&1) || echo "status $?"
}
# What the launcher prints after the folder if it passes on the arguments and the exit status.
started=$'\n-style\ntwo words\nstatus 7'

cmake --install "$1" --prefix "$tree" >"$scratch/install.log"
mkdir -p "$scratch/stubs" "$elsewhere" "$home"
umask 022
ln -s usr/bin/quorven "$scratch/launcher"
stub ../usr/libexec/quorven/quorven 'printf "%s\n" "$PWD" "$@"; exit 7'
# After a full disk no partial file is left, and the next start completes the folder.
stub cp 'case $2 in *auto.cfg) exec /bin/cp "$@" ;; esac
    head -c 10 "$2" >"$3"; echo "disk full" >&2; exit 1'
[[ $(launch HOME="$home") == *"disk full"*"status 1" ]]
[[ $(ls -A "$folder") == auto.cfg ]]
rm "$scratch/stubs/cp"
[[ $(launch HOME="$home") == "$folder$started" ]]
diff -r "$share/quorven" "$folder"
[[ $(stat -c %a "$folder" "$folder/quorven.cfg") == $'700\n644' ]]

# Existing files are not touched, and missing ones are restored. A complete folder may be read-only.
echo mine >"$folder/quorven.cfg"
ln -sf nowhere "$folder/auto.cfg"
rm "$folder/quorven.dev"
before=$(stat -c '%N %i %y' "$folder"/*.cfg)
[[ $(launch HOME="$home" XDG_DATA_HOME=relative) == "$folder$started" ]]
[[ $(stat -c '%N %i %y' "$folder"/*.cfg) == "$before" && $(<"$folder/quorven.cfg") == mine ]]
cmp "$folder/quorven.dev" "$share/quorven/quorven.dev"
[[ $(find "$folder" | wc -l) == 6 ]]
stub mktemp 'exit 1'
stub getent "echo 'zoe:x:1:1:Zoë,,,:$home:/bin/sh'"
[[ $(launch) == "$folder$started" ]]
rm "$scratch/stubs/mktemp"

# With a display, the cause is also shown in a window.
stub zenity "printf '%s\n' \"\$@\" >'$scratch/window'"
touch "$elsewhere/file"
[[ $(launch XDG_DATA_HOME="$elsewhere/file" DISPLAY=:0) == *"Not a directory"*"status 1" ]]
grep -qxF -- "--text=The folder $elsewhere/file/quorven cannot be prepared." "$scratch/window"
stub getent 'exit 2'
[[ $(launch) == *"HOME is not set"*"status 1" ]]
[[ $(launch XDG_DATA_HOME="$elsewhere/my data") == "$elsewhere/my data/quorven$started" ]]
touch "$elsewhere/quorven.cfg"
[[ $(launch HOME="$home") == "$elsewhere$started" ]]
[[ $(ls -A "$elsewhere") == $'file\nmy data\nquorven.cfg' ]]
