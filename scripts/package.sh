#!/usr/bin/env bash
# The Debian package, from the release build: build/package/quorven_VERSION_ARCHITECTURE.deb.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh

rm -rf build/package
(cd build && cpack >package.log 2>&1) || { cat build/package.log >&2; exit 1; }
rm -r build/package/_CPack_Packages
packages=(build/package/*.deb)
echo "${packages[0]}: $(stat -c %s "${packages[0]}") bytes"
