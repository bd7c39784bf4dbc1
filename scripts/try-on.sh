#!/usr/bin/env bash
# try-on.sh RELEASE [PACKAGE]: tests QUORVEN on a Debian release (bookworm or trixie) in minimal
# root file systems. Runs scripts/test.sh; builds the package a second time, in another folder as
# another user, and compares the two packages; installs the package in a clean root, uses the
# program, removes the package and looks for remaining files. With PACKAGE, skips the builds and
# tests and starts by installing that file.
#
# Needs root and the network; the tested programs have no access to the network. The roots as
# installed, the builds, package, logs and pictures are kept in build/try-on/RELEASE. When this
# script exits, its mounts are removed and its processes are killed.
set -euo pipefail

if [[ $(id -u) != 0 || $# == 0 ]]; then
    sed -n '2,10s/^# \{0,1\}//p' "$0" >&2
    exit 1
fi
[[ ${QUORVEN_NAMESPACES:-} ]] || QUORVEN_NAMESPACES=1 exec unshare --mount --pid --fork --kill-child \
    --mount-proc "$0" "$@"

release=$1 package=${2:+$(realpath "$2")}
cd "$(dirname "${BASH_SOURCE[0]}")/.."
cache=$PWD/build/try-on/$release
work=$cache/work
tools=$work/tools      # a root with everything that setup.sh installs
clean=$tools/clean     # a root with only the package; in $tools, whose programs enter it
user_home="/home/Zoë Müller" # a space and a non-ASCII letter, as in real names
folder=$user_home/.local/share/quorven
user=59871

step() { printf '\n== %s\n' "$*"; }
fail() { echo "try-on: FAILED: $*" >&2 && exit 1; }

# in_root ROOT COMMAND...: runs the command in ROOT as root, with the network.
in_root() {
    local root=$1
    shift
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# as_user COMMAND...: runs the command in $tools as the user, without the network and without any of
# root's capabilities except the one to enter $clean.
as_user() {
    unshare --net chroot "$tools" setpriv --reuid="$user" --regid="$user" --clear-groups \
        --bounding-set=-all,+sys_chroot --inh-caps=-all,+sys_chroot --ambient-caps=+sys_chroot \
        env -i PATH=/usr/bin:/bin HOME="$user_home" LC_ALL=C.UTF-8 "$@"
}

# logged NAME COMMAND...: runs the command and writes its output to NAME.log; on failure, prints the
# end of this log.
logged() {
    local log=$cache/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null || { tail -n 30 "$log" >&2 && fail "$*"; }
}

# mount_root ROOT LOWER UPPER: mounts LOWER at ROOT; changes are stored in UPPER.
mount_root() {
    mkdir -p "$1" "$3" "$3.work"
    mount -t overlay overlay -o "lowerdir=$2,upperdir=$3,workdir=$3.work" "$1"
    mount -t proc proc "$1/proc"
    mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts "$1/dev/pts"
    mount --bind "$cache/archives" "$1/var/cache/apt/archives"
    cp /etc/resolv.conf "$1/etc/"
}

make_cached_roots() {
    local mirror
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Label: Debian' \
        'Component: main' | sed -n 1p)
    mkdir -p "$cache/archives/partial"
    if [[ ! -d $cache/bare ]]; then
        rm -rf --one-file-system "$cache/part"
        logged debootstrap debootstrap --variant=minbase "$release" "$cache/part" \
            "${mirror:-http://deb.debian.org/debian}"
        mv "$cache/part" "$cache/bare"
    fi
    mount_root "$work" "$cache/bare" "$cache/tools"
    mkdir -p "$work/opt/scripts"
    cp scripts/setup.sh "$work/opt/scripts/"
    logged setup in_root "$work" /opt/scripts/setup.sh
    umount --recursive "$work"
}

# Both roots share the folder for temporary files and the user's home; $clean is inside $tools.
mount_roots() {
    local root
    mount -t tmpfs tmpfs "$work"
    mount_root "$tools" "$cache/tools:$cache/bare" "$work/tools-changes"
    mount_root "$clean" "$cache/bare" "$work/clean-changes"
    mkdir -p "$work/home"
    chown "$user:$user" "$work/home"
    for root in "$tools" "$clean"; do
        echo "zoe:x:$user:$user::$user_home:/bin/sh" >>"$root/etc/passwd"
        mkdir -p "$root$user_home"
        mount --bind "$work/home" "$root$user_home"
        [[ $root == "$tools" ]] || mount --bind "$tools/tmp" "$root/tmp"
    done
}

# copy_sources FOLDER BUILD: copies the sources to FOLDER in $tools and mounts $cache/BUILD there as
# the folder build.
copy_sources() {
    mkdir -p "$tools$1/build" "$cache/$2"
    mount --bind "$cache/$2" "$tools$1/build"
    tar --exclude=./build --exclude=./.git -c . | tar -x --no-same-owner -C "$tools$1"
}

test_and_build() {
    step "scripts/test.sh on $release"
    copy_sources "$user_home/quorven" build
    copy_sources /srv/again again # before the tests, during which the sources might change
    chown -R "$user:$user" "$tools$user_home/quorven"
    as_user sh -c 'cd ~/quorven && scripts/test.sh'

    step "The package again, by another user in another folder"
    logged again unshare --net chroot "$tools" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin TZ=Asia/Tokyo \
        sh -c 'umask 077 && cd /srv/again && scripts/package.sh'
    rm -rf "$cache/package"
    cp -r "$cache/build/package" "$cache/package"
    package=$(echo "$cache"/package/*.deb)
    cmp "$package" "$cache/again/package/$(basename "$package")" || fail "the packages differ"
    sha256sum "$package"
}

files_in_clean() {
    find "$clean" -xdev -path "$clean/var/cache/apt/archives" -prune -o -printf '/%P\n' | sort
}

# Installs no recommended packages, because the dependencies alone must suffice.
install_package() {
    step "apt install ./$(basename "$package") on $release"
    logged update in_root "$clean" apt-get update
    files_in_clean >"$work/before"
    cp "$package" "$clean/tmp/"
    logged install in_root "$clean" apt-get install -y --no-install-recommends \
        "/tmp/$(basename "$package")"
    grep -c '^Setting up' "$cache/install.log"
    in_root "$clean" dpkg --verify quorven
}

use_program() {
    step "The installed program"
    local name
    mkdir -p "$tools/srv/quorven/bin" "$cache/pictures"
    cp -r data scripts "$tools/srv/quorven/"
    # Wrappers that enter $clean, drop the capability to do so, and run the programs there.
    for name in quorven simbox; do
        printf '#!/bin/sh\nexec %s "$PWD" %s "$@"\n' \
            "/usr/sbin/chroot /clean setpriv --ambient-caps=-all --inh-caps=-all -- sh -c 'cd \"\$0\" && exec \"\$@\"'" \
            "/usr/bin/$name" >"$tools/srv/quorven/bin/$name"
        chmod +x "$tools/srv/quorven/bin/$name"
    done
    # Without a display, the first start only prepares the user's folder.
    as_user /srv/quorven/bin/quorven >"$cache/first-start.log" 2>&1 || true
    diff -r "$clean/usr/share/quorven" "$clean$folder" || fail "the first start did not copy the data files"
    as_user mkdir "$user_home/pictures"
    as_user /srv/quorven/scripts/demo.py /srv/quorven/bin/quorven \
        /srv/quorven/bin/simbox "$folder" "$user_home/pictures"
    cp "$tools$user_home"/pictures/* "$cache/pictures/"
    rm -r "$tools$user_home/pictures"
}

# After the purge, the same files must exist as before the installation, except for records of apt
# and debconf; contents are not compared. The user's folder must remain.
remove_package() {
    step "apt purge quorven and its dependencies"
    logged purge in_root "$clean" apt-get purge --autoremove -y quorven
    files_in_clean >"$work/after"
    diff "$work/before" "$work/after" | grep '^[<>]' |
        grep -vE '/var/(lib/apt/extended_states|log/apt/[^/]*|cache/debconf/tmp.ci)$' >"$work/changes" || true
    cat "$work/changes"
    [[ ! -s $work/changes ]] || fail "these files were left, or are missing"
    [[ -f $clean$folder/quorven.cfg ]] || fail "the purge removed the user's folder"
}

make_cached_roots
mount_roots
[[ $package ]] || test_and_build
install_package
use_program
remove_package
step "Tried on $release; pictures: build/try-on/$release/pictures"
