#!/usr/bin/env bash
# setup.sh [PACKAGE...]: installs from Debian's packages what building, running and testing need, and
# what is named beside. Says and does nothing when all of it is there.
set -euo pipefail

packages=(
    # building
    cmake ninja-build g++ qt6-base-dev qt6-serialport-dev libpng-dev
    # tests and their checks
    libgtest-dev clang-format clang-tidy
    # a screen of its own for the program, with a window manager, keys and pictures
    xvfb xauth openbox xdotool imagemagick
    # reading what the windows say: the accessibility bus and a client for it
    dbus-daemon at-spi2-core python3-gi gir1.2-atspi-2.0
    # an image in binary form, made by another's hex reader than ours
    binutils
    # a locale with a decimal comma, and one of Latin-1
    locales
    # the package, and those who judge it and what is in it
    dpkg-dev file lintian desktop-file-utils appstream mandoc bsdextrautils shellcheck
    # a clean Debian to try it in
    debootstrap
    "$@"
)

missing() {
    local package
    for package in "${packages[@]}"; do
        # A package removed but not purged is known to dpkg all the same: the state decides.
        grep -qx "$package installed" <<<"$installed" || echo "$package"
    done
}

as_root() {
    if [[ $(id -u) == 0 ]]; then
        "$@"
    else
        sudo "$@"
    fi
}

installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
mapfile -t wanted < <(missing)
if ((${#wanted[@]} == 0)); then
    exit 0
fi

echo "setup: installing ${wanted[*]}"
as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    -o DPkg::Lock::Timeout=120 "${wanted[@]}" </dev/null
