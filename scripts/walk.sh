#!/usr/bin/env bash
# The package as a new user meets it, in a clean Debian of its own: installed by apt, started from
# its desktop entry, a chip programmed, removed again; then nothing of it may be left but the
# user's own folder. Pictures: build/walk/pictures.
#
# Needs root and the network. The clean Debian is kept in build/walk for the next time.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
if [[ $(id -u) != 0 ]]; then
    echo "walk: only root can make a Debian of its own and enter it: sudo scripts/walk.sh" >&2
    exit 1
fi
# What is mounted from here on is seen by this script and its children alone.
[[ ${1:-} == apart ]] || exec unshare --mount scripts/walk.sh apart

source scripts/lib/common.sh
export LC_ALL=C.UTF-8

release=bookworm
mirror=http://deb.debian.org/debian
cache=$PWD/build/walk
bare=$cache/$release.tar
user=zoe
user_id=59871
user_home="/home/Zoë Müller" # a blank and letters beyond ASCII, as people's names have them
user_folder=$user_home/.local/share/quorven

finish() {
    local status=$?
    stop_all
    if [[ -n ${work:-} ]]; then
        if mountpoint -q "$root"; then
            umount --recursive "$root" || umount --recursive --lazy "$root"
        fi
        ! mountpoint -q /etc/passwd || umount /etc/passwd
        rm -rf --one-file-system "$work" "$cache/root"
    fi
    ((status == 0)) || echo "The walk has failed." >&2
    exit "$status"
}

# in_root COMMAND...: as root in the clean Debian.
in_root() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@"
}

# quietly LOG COMMAND...: shows what the command said only if it fails.
quietly() {
    local log=$work/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null || { tail -n 20 "$log" >&2 && fail "$*"; }
}

# apt's own words on what it does to packages.
packages_in() { grep -cE "^$2 " "$work/$1.log" || true; }

make_bare_root() {
    mkdir -p "$cache/archives/partial" "$cache/root"
    if [[ ! -e $bare ]]; then
        step "A bare Debian, once (debootstrap, $release)"
        quietly debootstrap debootstrap --variant=minbase "$release" "$cache/root" "$mirror"
        rm -f "$cache/root"/var/cache/apt/archives/*.deb
        tar -C "$cache/root" --numeric-owner --xattrs -cf "$bare.part" .
        mv "$bare.part" "$bare"
    else
        tar -C "$cache/root" --numeric-owner --xattrs -xpf "$bare"
    fi
}

# The same path leads to $work inside and outside, so that sockets have one name. Terminals are the
# clean Debian's own, and there is no device of this machine.
enter_root() {
    mount --bind "$cache/root" "$root"
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    mount -t proc proc "$root/proc"
    mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts "$root/dev/pts"
    mount --bind "$cache/archives" "$root/var/cache/apt/archives"
    mkdir -p "$root$work/share"
    mount --bind "$work/share" "$root$work/share"
    # Other screens' sockets, left over perhaps, are not the user's to replace.
    mkdir -p /tmp/.X11-unix "$root/tmp/.X11-unix"
    mount -t tmpfs -o mode=1777 tmpfs /tmp/.X11-unix
    mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"
}

# Known in the clean Debian, and by number to those programs of this machine that make the screen.
make_user() {
    in_root useradd --create-home --home-dir "$user_home" --uid "$user_id" --shell /bin/sh "$user"
    ! getent passwd "$user_id" >/dev/null || fail "this machine has a user $user_id already"
    { cat /etc/passwd && echo "$user:x:$user_id:$user_id::/nonexistent:/bin/sh"; } >"$work/passwd"
    mount --bind "$work/passwd" /etc/passwd
}

# All but what is mounted there.
files_in_root() {
    find "$root" -xdev \( -path "$root/tmp" -o -path "$root/var/cache/apt/archives" \) -prune -o \
        -printf '/%P\n' | sort
}

# Without what a package merely recommends: what it depends on has to do.
install_package() {
    step "apt install ./$(basename "$package")"
    quietly update in_root apt-get update
    files_in_root >"$work/before"
    cp "$package" "$work/share/"
    quietly install in_root apt-get install -y --no-install-recommends \
        "$work/share/$(basename "$package")"
    echo "$(packages_in install "Setting up") packages set up"
    in_root dpkg --verify quorven
}

# What happens on the screen, as the user: scripts/lib/walk_session.sh, which may enter the clean
# Debian and has no other of root's powers.
use_program() {
    mkdir -p "$work/scripts" "$work/data" "$pictures"
    cp -r scripts/lib "$work/scripts/"
    cp data/quorven.cfg "$work/data/"
    mkdir "$work/share/tmp" "$work/share/pictures"
    chown -R "$user_id:$user_id" "$work/share"
    chmod 755 "$work"
    local status=0
    (
        cd /
        exec setpriv --reuid="$user_id" --regid="$user_id" --clear-groups \
            --inh-caps=+sys_chroot --ambient-caps=+sys_chroot \
            env -i PATH="$PATH" TMPDIR="$work/share/tmp" \
            "$work/scripts/lib/walk_session.sh" "$root" "$user_home" "$work/share"
    ) &
    started_pids+=("$!")
    wait "$!" || status=$?
    cp "$work"/share/pictures/* "$pictures/" || true
    ((status == 0)) || fail "the program did not do what it should"
}

# apt's own diary.
is_bookkeeping='^/var/(lib/apt/extended_states|log/apt/[^/]*)$'

remove_package() {
    step "apt purge quorven, then what was installed for it"
    quietly purge in_root apt-get purge -y quorven
    quietly autoremove in_root apt-get autoremove --purge -y
    files_in_root >"$work/after"
    comm -13 "$work/before" "$work/after" >"$work/left"
    echo "left of it:"
    grep -vE "$is_bookkeeping" "$work/left" >"$work/kept" || fail "the user's folder is gone, too"
    sed 's/^/  /' "$work/kept"
    ! grep -vE "^$user_home/\.local(/share(/quorven(/.*)?)?)?$" "$work/kept" ||
        fail "that is more than the user's folder"
    ! grep -E 'quorven|simbox' "$work/left" | grep -vF "$user_folder" || fail "that bears its name"
    comm -23 "$work/before" "$work/after" >"$work/gone"
    ! grep -vE "$is_bookkeeping" "$work/gone" || fail "that was there before"
}

scripts/package.sh
package=$(echo "$PWD"/build/package/*.deb)
pictures=$cache/pictures
rm -rf "$pictures"
work=$(mktemp -d /tmp/quorven-walk.XXXXXX)
root=$work/root
trap finish EXIT
mkdir "$root" "$work/share"
rm -rf --one-file-system "$cache/root"

make_bare_root
enter_root
make_user
install_package
use_program
remove_package
step "Walked; pictures: build/walk/pictures"
