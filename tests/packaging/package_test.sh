#!/usr/bin/env bash
# package_test.sh PACKAGE: all lintian checks, and the hardening that lintian does not check.
set -euo pipefail

lintian --allow-root --info --display-experimental --display-info --pedantic \
    --fail-on error,warning,info,pedantic,experimental "$1"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
dpkg-deb --extract "$1" "$scratch"
marks='stack_chk_fail glibcxx_assert_fail'
[[ $(dpkg --print-architecture) != amd64 ]] || marks+=' endbr64'
for program in usr/bin/simbox usr/libexec/quorven/quorven; do
    code=$(nm --dynamic "$scratch/$program" && objdump --disassemble "$scratch/$program")
    for mark in $marks; do
        [[ $code == *"$mark"* ]] || { echo "$program: no $mark" >&2 && exit 1; }
    done
done
