#!/usr/bin/env bash
# package_test.sh PACKAGE: lintian's whole list, and the hardening that lintian does not look for.
set -euo pipefail

package=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

lintian --allow-root --info --display-experimental --display-info --pedantic \
    --fail-on error,warning,info,pedantic,experimental "$package"

dpkg-deb --extract "$package" "$scratch"
for program in usr/bin/simbox usr/libexec/quorven/quorven; do
    nm --dynamic "$scratch/$program" >"$scratch/symbols"
    objdump --disassemble "$scratch/$program" >"$scratch/code"
    for symbol in __stack_chk_fail glibcxx_assert_fail; do
        grep -q "$symbol" "$scratch/symbols" || { echo "$program: no call of $symbol" >&2 && exit 1; }
    done
    if grep -q 'format elf64-x86-64' "$scratch/code"; then
        grep -q endbr64 "$scratch/code" || { echo "$program: no endbr64" >&2 && exit 1; }
    fi
done
