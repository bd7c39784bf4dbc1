#!/usr/bin/env bash
# What is installed beside the programs, by the judges that desktops and distributions use.
#
#   installed_files_test.sh BUILD SCRATCH
set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/preamble.sh"

# expect_silence COMMAND...: good status, and not a word.
expect_silence() {
    local said
    said=$("$@" 2>&1) || fail "$1 refuses: $said"
    [[ -z $said ]] || fail "$1 says: $said"
}

# The values of a desktop entry's key.
entry() { sed -n "s/^$1=//p" "$tree/share/applications/quorven.desktop"; }

step "Desktop entry, metainfo, launcher"
expect_silence desktop-file-validate "$tree/share/applications/quorven.desktop"
appstreamcli validate-tree --no-net --no-color "$scratch"
expect_silence shellcheck "$tree/bin/quorven"
[[ -x $tree/bin/$(entry Exec) && -x $tree/bin/$(entry TryExec) ]] ||
    fail "the desktop entry starts nothing that is installed"

step "Icons: each of the size that its folder says"
icons=$tree/share/icons/hicolor
for size in 16 32 48 256; do
    [[ $(identify -format %wx%h "$icons/${size}x$size/apps/$(entry Icon).png") == "${size}x$size" ]]
done
[[ $(file --brief --mime-type "$icons/scalable/apps/$(entry Icon).svg") == image/svg+xml ]]

step "Man pages"
for name in quorven simbox; do
    gzip -dc "$tree/share/man/man1/$name.1.gz" >"$scratch/$name.1"
    expect_silence mandoc -T lint -W warning "$scratch/$name.1"
done

# The words that a user types stand in front of their explanations in both, on lines of their own
# in the help, and indented by 7 in the page.
step "simbox(1) has the options and the faults of simbox --help, and no others"
"$tree/bin/simbox" --help | sed -nE 's/^  ([-a-z]+[^ ]*( [A-Z]+)?)  .*/\1/p' >"$scratch/help"
mandoc -T ascii "$scratch/simbox.1" | col -bx | sed -n '/^OPTIONS/,/^EXIT/s/^ \{7\}//p' |
    grep -oE '^(--[-a-z]+( [A-Z]+\b)?|[-a-z]+[@:][^ ]*)' >"$scratch/page"
(($(wc -l <"$scratch/help") > 20)) || fail "the help is not what it was"
diff "$scratch/help" "$scratch/page" || fail "the man page and --help differ"

step "Debian's changelog and copyright"
gzip -dc "$tree/share/doc/quorven/changelog.gz" >"$scratch/changelog"
dpkg-parsechangelog -l "$scratch/changelog" >"$scratch/parsed"
version=$(sed -n '4s/[^0-9.]//gp' "$tree/share/quorven/quorven.cfg")
grep -qx "Version: $version" "$scratch/parsed" || fail "the changelog's newest version is another"
tr -s ' \n' ' ' <"$(dirname "$0")/../../LICENSE" | sed 's/.*Permission is/Permission is/' \
    >"$scratch/licence"
sed -n '/^License:/,$p' "$tree/share/doc/quorven/copyright" | tail -n +2 | sed 's/^ \.$//' |
    tr -s ' \n' ' ' | sed 's/^ //' | cmp - "$scratch/licence" || fail "the licence is another text"

step "Passed"
