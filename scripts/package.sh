#!/usr/bin/env bash
# Builds the Debian package from the release build: build/package/quorven_VERSION_ARCHITECTURE.deb.
# The same sources give the same bytes on the same Debian release; every timestamp in the package is
# the date of the newest entry in the change log. Then runs all checks of lintian, validates the
# desktop entry, the AppStream data, the launcher and the manual pages, and checks the hardening
# that lintian does not cover.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l build/packaging-build/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
umask 022 # determines the mode of the folders in the package
rm -rf build/package
(cd build && cpack >package.log 2>&1) || { cat build/package.log >&2; exit 1; }
rm -r build/package/_CPack_Packages
package=$(echo build/package/*.deb)
echo "$package: $(stat -c %s "$package") bytes"

lintian --allow-root --info --display-experimental --display-info --pedantic \
    --fail-on error,warning,info,pedantic,experimental "$package"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg-deb --extract "$package" "$scratch"
share=$scratch/usr/share
desktop-file-validate "$share/applications/quorven.desktop"
appstreamcli validate-tree --no-net --no-color "$scratch"
shellcheck "$scratch/usr/bin/quorven"
for page in quorven simbox; do
    gunzip <"$share/man/man1/$page.1.gz" >"$scratch/$page.1"
    mandoc -T lint -W warning "$scratch/$page.1"
done
# The help and the manual page list the same options and faults. In the help, each is indented by
# two spaces and followed by its explanation; in the manual page, each is indented by seven spaces.
diff <(build/simbox --help | sed -nE 's/^  ([-a-z]+[^ ]*( [A-Z]+)?)  .*/\1/p') \
    <(mandoc -T ascii "$scratch/simbox.1" | col -bx | sed -n '/^OPTIONS/,/^EXIT/s/^ \{7\}//p' |
        grep -oE '^(--[-a-z]+( [A-Z]+\b)?|[-a-z]+[@:][^ ]*)')
marks='stack_chk_fail glibcxx_assert_fail'
[[ $(dpkg --print-architecture) != amd64 ]] || marks+=' endbr64'
for program in usr/bin/simbox usr/libexec/quorven/quorven; do
    code=$(nm --dynamic "$scratch/$program" && objdump --disassemble "$scratch/$program")
    for mark in $marks; do
        [[ $code == *"$mark"* ]] || { echo "$program: no $mark" >&2 && exit 1; }
    done
done
