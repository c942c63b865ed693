# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# sandbox.sh: makes a throwaway root, for the sample appliance and for the tests. To be sourced.
#
# A plain folder becomes the root of a bubblewrap sandbox with its own processes, network, host name
# and IPC. Its commands are busybox's; the host's libraries are bound into it, read-only. Nothing else
# of the host is visible from inside. It needs no root if user namespaces are allowed.

die() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit "${2:-1}"
}

# sandbox_find PROGRAM PACKAGE: prints the full path of one of the host's programs.
sandbox_find() {
    local path
    path=$(command -v "$1") || die "\"$1\" is missing; run scripts/setup, or install the package $2"
    readlink -f "$path"
}

# sandbox_new_root CLONE: makes an empty folder for a root, below build/roots of a clone (or below
# VOKCONTROL_ROOTS), and prints its path.
sandbox_new_root() {
    local roots=${VOKCONTROL_ROOTS:-$1/build/roots}
    mkdir -p "$roots"
    mktemp -d "$roots/root.XXXXXX"
}

# sandbox_lay_out ROOT: makes the folders and links that every root needs, and busybox's commands.
sandbox_lay_out() {
    local root=$1 folder
    for folder in dev etc proc root run share tmp usr/bin usr/lib usr/private usr/share var; do
        mkdir -p "$root/$folder"
    done
    ln -sfn usr/bin "$root/bin"
    ln -sfn usr/bin "$root/sbin"
    ln -sfn bin "$root/usr/sbin"
    ln -sfn usr/lib "$root/lib"
    if [ -d /usr/lib64 ]; then
        mkdir -p "$root/usr/lib64"
        ln -sfn usr/lib64 "$root/lib64"
    fi
    printf 'root:x:0:0:root:/root:/bin/sh\n' >"$root/etc/passwd"
    printf 'root:x:0:\n' >"$root/etc/group"
    sandbox_run "$root" -- /usr/bin/busybox --install -s /usr/bin
}

# sandbox_run ROOT [BWRAP-OPTION...] -- COMMAND...: runs a command in a root, and returns its exit code.
# With sandbox_accounts=yes commands can become other accounts than root. That needs root on the host,
# because a separate user space would have only one account.
sandbox_run() {
    local root=$1 bwrap busybox
    local -a spaces=(--unshare-all --cap-drop ALL)
    if [ -n "${sandbox_accounts-}" ]; then
        spaces=(--unshare-ipc --unshare-pid --unshare-net --unshare-uts --unshare-cgroup-try
            --cap-drop ALL --cap-add CAP_SETUID --cap-add CAP_SETGID --cap-add CAP_CHOWN)
    fi
    shift
    bwrap=$(sandbox_find bwrap bubblewrap) || exit 1
    busybox=$(sandbox_find busybox busybox-static) || exit 1

    local -a options=(
        "${spaces[@]}" --die-with-parent --hostname appliance
        --bind "$root" /
        --ro-bind /usr/lib /usr/lib
        --ro-bind "$busybox" /usr/bin/busybox
        --proc /proc --dev /dev
        --clearenv
        --setenv PATH /usr/bin --setenv HOME /root --setenv LANG C.UTF-8
        --setenv TERM "${TERM:-dumb}"
    )
    if [ -d /usr/lib64 ]; then
        options+=(--ro-bind /usr/lib64 /usr/lib64)
    fi
    if [ "$(id -u)" -ne 0 ]; then
        options+=(--unshare-user --uid 0 --gid 0)
    fi
    while [ "$1" != -- ]; do
        options+=("$1")
        shift
    done
    shift
    "$bwrap" "${options[@]}" -- "$@"
}
