#!/usr/bin/env bash
# Builds the Debian package from the release build: build/package/quorven_VERSION_ARCHITECTURE.deb.
# The same source gives the same bytes on the same Debian release; all timestamps in it are the
# changelog's.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l build/packaging-build/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
umask 022 # directories get their mode from it
rm -rf build/package
(cd build && cpack >package.log 2>&1) || { cat build/package.log >&2; exit 1; }
rm -r build/package/_CPack_Packages
packages=(build/package/*.deb)
echo "${packages[0]}: $(stat -c %s "${packages[0]}") bytes"
