#!/usr/bin/env bash
# setup.sh [PACKAGE...]: installs the Debian packages that are needed to build, run and test
# QUORVEN, and also every PACKAGE that is given. If all of these packages are installed, this script
# prints nothing and changes nothing. The packages in the list below exist in Debian 12 and 13.
set -euo pipefail

packages=(
    # building
    cmake ninja-build g++ qt6-base-dev qt6-serialport-dev libpng-dev
    # tests; the formatter and the linter in fixed versions, because the results depend on the
    # version
    libgtest-dev clang-format-19 clang-tidy-19
    # a virtual screen, a window manager, key input, screenshots, metric-compatible fonts, and Qt's
    # Wayland plugin
    xvfb xauth openbox xdotool imagemagick fonts-liberation qt6-wayland
    # the accessibility bus and a client, to read what the windows show
    dbus-daemon at-spi2-core python3-gi gir1.2-atspi-2.0
    # locales with a decimal comma
    locales
    # building and checking the package and its files
    dpkg-dev file lintian desktop-file-utils appstream mandoc bsdextrautils shellcheck
    # minimal root file systems of Debian
    debootstrap
    "$@"
)

missing() {
    local package
    for package in "${packages[@]}"; do
        # dpkg also lists packages that were removed but not purged, so check the state.
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
