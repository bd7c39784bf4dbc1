#!/usr/bin/env bash
# The launcher, as installed, with a stand-in for the program that prints how it was started.
#
#   launcher_test.sh BUILD SCRATCH
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/preamble.sh"
launcher=$tree/bin/quorven
shipped=$tree/share/quorven
stubs=$scratch/stubs
elsewhere=$scratch/elsewhere # a current directory without data files
home="$scratch/Zoë Müller"   # blanks and letters beyond ASCII, as people's names have them
folder=$home/.local/share/quorven

# stub PATH: the command's text is read from the input.
stub() {
    { echo '#!/bin/sh' && cat; } >"$1"
    chmod +x "$1"
}

# launch [NAME=VALUE...] [-- ARGUMENT...]: from $elsewhere, nothing else in the environment. What
# happened is in $status, $scratch/{out,err,window}.
launch() {
    local environment=()
    while [[ ${1:-} == *=* ]]; do
        environment+=("$1")
        shift
    done
    [[ ${1:-} != -- ]] || shift
    rm -f "$scratch/window"
    status=0
    (cd "$elsewhere" && env -i PATH="$stubs:$PATH" "${environment[@]}" "$launcher" "$@") \
        >"$scratch/out" 2>"$scratch/err" || status=$?
}

# expect_started FOLDER: there, silently, and that the program's exit status comes through.
expect_started() {
    [[ $status == 7 && ! -s $scratch/err ]] || fail "status $status: $(<"$scratch/err")"
    [[ $(head -n 1 "$scratch/out") == "$1" ]] || fail "started in $(<"$scratch/out"), not in $1"
}

# expect_refused WORDS: not started, for a cause whose text has these words.
expect_refused() {
    [[ $status == 1 && ! -s $scratch/out ]] || fail "status $status: $(<"$scratch/out")"
    grep -qF -- "$1" "$scratch/err" || fail "the message is $(<"$scratch/err")"
}

# Nothing but the shipped files, whole.
expect_filled() {
    diff -r "$shipped" "$1" || fail "$1 does not hold the shipped files"
}

start_again() {
    step "$1"
    rm -rf "$stubs" "$elsewhere" "$home"
    mkdir -p "$stubs" "$elsewhere" "$home"
    stub "$tree/libexec/quorven/quorven" <<'END'
pwd
printf '<%s>\n' "$@"
exit 7
END
}

umask 022
start_again "The first start makes the folder"
launch HOME="$home" -- -style "two words"
expect_started "$folder"
[[ $(tail -n +2 "$scratch/out") == $'<-style>\n<two words>' ]] || fail "other arguments"
expect_filled "$folder"
[[ $(stat -c %a "$folder") == 700 && $(stat -c %a "$folder/quorven.cfg") == 644 ]] ||
    fail "the folder or its files have other rights"

step "Later starts touch nothing that is there and put back what is missing"
printf 'mine' >"$folder/quorven.cfg"
ln -sf nowhere "$folder/auto.cfg"
rm "$folder/quorven.dev"
ls -l --full-time "$folder"/*.cfg >"$scratch/before"
launch HOME="$home"
expect_started "$folder"
ls -l --full-time "$folder"/*.cfg | diff "$scratch/before" - || fail "the user's files were touched"
cmp "$folder/quorven.dev" "$shipped/quorven.dev"
[[ $(find "$folder" | wc -l) == 6 ]] || fail "something else is in the folder"

step "A folder that lacks nothing may be one that cannot be written to"
stub "$stubs/mktemp" <<'END'
exit 1
END
launch HOME="$home"
expect_started "$folder"

start_again "A current directory with quorven.cfg is used as it is"
touch "$elsewhere/quorven.cfg"
launch HOME="$home"
expect_started "$elsewhere"
[[ -z $(ls -A "$home") && $(ls -A "$elsewhere") == quorven.cfg ]] || fail "something was made"

start_again "XDG_DATA_HOME counts if it is absolute; a link to the launcher will do"
launcher=$scratch/a-link
ln -s usr/bin/quorven "$launcher"
launch HOME="$home" XDG_DATA_HOME="$elsewhere/my data"
expect_started "$elsewhere/my data/quorven"
expect_filled "$elsewhere/my data/quorven"
launcher=$tree/bin/quorven
launch HOME="$home" XDG_DATA_HOME=relative
expect_started "$folder"

start_again "Without HOME the password file decides"
stub "$stubs/getent" <<END
[ "\$1 \$2" = "passwd \$(id -u)" ] && echo "zoe:x:1:1:Zoë,,,:$home:/bin/sh"
END
launch
expect_started "$folder"
stub "$stubs/getent" <<'END'
exit 2
END
launch
expect_refused "HOME is not set"

start_again "A folder that cannot be created is reported, in a window too where there is a screen"
stub "$stubs/zenity" <<END
printf '%s\n' "\$@" >"$scratch/window"
END
touch "$home/.local"
launch HOME="$home" DISPLAY=:0
expect_refused "The folder $folder cannot be prepared."
grep -q 'Not a directory' "$scratch/err" || fail "the cause is not reported"
grep -qF -- "--text=$(sed 's/^quorven: //' "$scratch/err" | head -n 1)" "$scratch/window" ||
    fail "the window says something else"
launch HOME="$home"
expect_refused "cannot be prepared"
[[ ! -e $scratch/window ]] || fail "a window without a screen"

start_again "A disk that fills up leaves no half file, and the next start goes on"
stub "$stubs/cp" <<'END'
case $2 in
    *auto.cfg) exec /bin/cp "$@" ;;
    *) head -c 10 "$2" >"$3"; echo "cp: disk full" >&2; exit 1 ;;
esac
END
launch HOME="$home"
expect_refused "disk full"
[[ $(ls -A "$folder") == auto.cfg ]] || fail "there is more than the one whole file"
rm "$stubs/cp"
launch HOME="$home"
expect_started "$folder"
expect_filled "$folder"

start_again "A file that comes to be there in the meantime is spared"
stub "$stubs/cp" <<'END'
/bin/cp "$@"
echo theirs >"$(dirname "$(dirname "$3")")/$(basename "$3")"
END
stub "$stubs/mv" <<'END'
/bin/mv "$@"
[ ! -e "$4" ] # what was not moved is a failure to newer ones
END
launch HOME="$home"
expect_started "$folder"
[[ $(cat "$folder"/* | sort -u) == theirs && $(ls -A "$folder" | wc -l) == 5 ]] ||
    fail "it was overwritten"

step "Passed"
