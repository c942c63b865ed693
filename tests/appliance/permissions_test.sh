#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: permissions_test.sh BUILD
#
# Whom the files are open to that service and module leave: the variables and their lock, the private
# file, the traces. What other accounts can do with them is tried if the test runs as root.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"
state=$roots/state
kept=etc/pelconfig

expect 'files that hold secrets, and the lock, are for root alone' 'vokctl: the settings were applied = 0
vokctl: the private file was replaced = 0
600 /etc/pelconfig/system_var
600 /etc/pelconfig/system_var_bak
600 /etc/pelconfig/system_var_tmp
600 /etc/pelconfig/system_var_lck
600 /etc/pelconfig/vokcontrol/vokcontrol-private.txt
language_current=fr
http_start_page=/real_index.asp' "$("$clone/appliance/start" --build "$build" --state "$state" sh -c "$inside_helpers"'
    cd /etc/pelconfig
    chmod 600 system_var
    try vokctl host set --language fr --time 2030-12-31T23:59:58
    echo hello >/root/private
    try vokctl private put /root/private
    for file in system_var system_var_bak system_var_tmp system_var_lck vokcontrol/vokcontrol-private.txt; do
        stat -c "%a %n" "/etc/pelconfig/$file"
    done
    grep -E "^(language_current|http_start_page)=" system_var')"

expect 'a mode that the owner has chosen stays' '640 644 664' "$(appliance sh -c '
    for mode in 640 644 664; do
        chmod "$mode" /etc/pelconfig/system_var
        vokctl host set --language it --time 2030-12-31T23:59:58 2>/dev/null
        stat -c %a /etc/pelconfig/system_var
    done | xargs')"

expect 'a password leaves no trace' '0
0
all else is traced' "$(appliance sh -c '
    echo verysecret | vokctl users create carla 2>/dev/null
    grep -rc verysecret /run/vokcontrol/tmp/dbg_vokcontrol.txt
    grep -rl verysecret /tmp /run /var /etc 2>/dev/null | wc -l
    vokctl users list >/dev/null
    [ -s /run/vokcontrol/tmp/dbg_vokcontrol.txt ] && echo all else is traced')"

if [ "$(id -u)" -eq 0 ]; then
    # What others find is the files' own mode; the folder of this test is closed to them.
    beside=$(mktemp -d)
    chmod 755 "$beside"
    trap 'rm -rf "$beside"; chmod -R u+rwX "$roots" && rm -rf "$roots"' EXIT
    cp -p "$state/$kept/system_var_lck" "$beside/lock"
    : >"$beside/open" && chmod 644 "$beside/open"
    lock() { setpriv --reuid=65534 --regid=65534 --clear-groups flock -n "$1" echo locked 2>&1 || true; }
    expect 'another account cannot lock the variables' 'locked
flock: cannot open lock file '"$beside/lock: Permission denied" "$(lock "$beside/open"; lock "$beside/lock")"

    # In a sandbox without a user space of its own, where there are other accounts.
    # shellcheck source=appliance/sandbox.sh
    . "$clone/appliance/sandbox.sh"
    libraries=(--ro-bind /usr/lib /usr/lib)
    [ ! -d /usr/lib64 ] || libraries+=(--ro-bind /usr/lib64 /usr/lib64)
    [ ! -d "$build/emulation" ] || libraries+=(--ro-bind "$build" /build)
    chown 1000:100 "$state/$kept/system_var" && chmod 640 "$state/$kept/system_var"
    expect 'an owner that is not root keeps the variables' '1000 100 640' "$(
        bwrap --unshare-pid --unshare-net --unshare-ipc --die-with-parent --bind "$state" / "${libraries[@]}" \
            --ro-bind "$(sandbox_find busybox busybox-static)" /usr/bin/busybox \
            --ro-bind "$(sandbox_find php php-cli)" /usr/bin/php --ro-bind /etc/php /etc/php \
            --proc /proc --dev /dev --tmpfs /tmp --tmpfs /run --cap-drop ALL --cap-add CAP_CHOWN \
            --cap-add CAP_FOWNER --cap-add CAP_DAC_OVERRIDE --clearenv --setenv PATH /usr/bin \
            --setenv LD_LIBRARY_PATH /usr/local/lib sh -c '
            vokserve --shared-tmp 2>/root/log &
            tries=0
            until [ -S /run/vokcontrol.sock ] || [ "$tries" -ge 3000 ]; do
                tries=$((tries + 1))
                usleep 10000
            done
            vokctl host set --language sp --time 2030-12-31T23:59:58 2>/dev/null
            grep -q language_current=sp /etc/pelconfig/system_var &&
                stat -c "%u %g %a" /etc/pelconfig/system_var')"
fi

finish
