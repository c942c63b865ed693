#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: gate_test.sh BUILD
#
# Thousands of attempts to make the appliance run a program, through the service and to the real scripts;
# what people legitimately use; and the same attempts past the service, where some of them succeed.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# The appliance gets the program that makes the attempts, and the one that these try to run.
state=$roots/state
mkdir -p "$state/usr/bin"
cp "$build/gate_attempts" "$state/usr/bin/"
printf '#!/bin/sh\n: >"/tmp/canary$1"\n' >"$state/usr/bin/fire"
printf '#!/bin/sh\n: >/tmp/canary\n' >"$state/usr/bin/f"
chmod +x "$state/usr/bin/fire" "$state/usr/bin/f"

found=$(appliance --state "$state" sh -c '
    everything() {
        find / \( -path /proc -o -path /dev -o -path /tmp -o -path /run/vokcontrol/tmp \) -prune -o -print | sort
    }
    section() { echo "== $1"; }

    section people
    for account in "Zoë B. Müller/pa\$\$w#rd \$HOME" "J. R. Smith/#1; & | < > * ? ~ !" "日本語 2026/\$"; do
        printf "%s\n" "${account#*/}" | vokctl users create "${account%%/*}" 2>&1
        printf "%s\n" "${account#*/}" | vokctl users verify "${account%%/*}" 2>&1
    done
    vokctl users list

    # Wrong passwords by the hundred: the pauses after them would take hours.
    killall vokserve
    while pidof vokserve >/dev/null; do usleep 10000; done
    vokserve --password-pause 0 2>>/var/log/vokserve.log </dev/null >/dev/null &
    until [ -S /run/vokcontrol.sock ]; do usleep 10000; done

    section attempts
    everything >/tmp/before
    gate_attempts send /run/vokcontrol.sock || true
    everything >/tmp/after
    section files
    # Lines with their sign; the two of the heading go.
    diff /tmp/before /tmp/after | sed -n "3,\$s/^\([+-]\)/\1/p" >/tmp/changes
    grep -c "^+/share/[^/]*$" /tmp/changes
    grep -c "^+/etc/pelconfig/vokcontrol/__bksts/__bk[^/]*$" /tmp/changes
    grep -v "^+/share/[^/]*$\|^+/etc/pelconfig/vokcontrol/__bksts/__bk[^/]*$" /tmp/changes
    section log
    grep -c "fire\|canary" /var/log/vokserve.log
    grep -vc "^vokserve: " /var/log/vokserve.log
    grep -c "its process failed\|took too long\|could not be started" /var/log/vokserve.log
    section alive
    vokctl users list

    section past
    gate_attempts carry
' || true)

# section NAME: what stands under a heading.
section() {
    printf '%s\n' "$found" | sed -n "/^== $1\$/,/^== /{/^== /!p;}"
}

expect 'names and passwords that people use pass, and verify' \
    'vokctl: the user Zoë B. Müller was created
vokctl: the password is right
vokctl: the user J. R. Smith was created
vokctl: the password is right
vokctl: the user 日本語 2026 was created
vokctl: the password is right
anna
bob
Élise
Zoë B. Müller
J. R. Smith
日本語 2026' "$(section people)"

attempts=$(section attempts)
expect 'no attempt has run anything' "${attempts%% *} attempts, nothing executed" "$attempts"
expect 'there were at least 5000' yes "$([ "${attempts%% *}" -ge 5000 ] && echo yes)"
files=$(section files)
expect 'some attempts are good names, of shares and of backup reports' yes "$(
    [ "$(sed -n 1p <<<"$files")" -gt 0 ] && [ "$(sed -n 2p <<<"$files")" -gt 0 ] && echo yes
)"
expect 'beside those no file has come or gone, but for the module'"'"'s own' \
    '+/etc/pelconfig/system_var_bak
+/etc/pelconfig/system_var_lck
+/etc/pelconfig/system_var_tmp
+/etc/pelconfig/vokcontrol/vokcontrol-private.txt' "$(sed 1,2d <<<"$files")"
expect 'the log holds no text of theirs, only the service'"'"'s own lines, and no process that failed' \
    '0
0
0' "$(section log)"
expect 'the service is alive, and the people are still there' \
    'anna
bob
Élise
Zoë B. Müller
J. R. Smith
日本語 2026' "$(section alive | head -n 6)"

# Whatever a shell sees can run programs, once nobody stands before it.
past=$(section past)
expect 'past the gate, every parameter that a shell sees is a way in' "$(
    printf '%s: executed\n' 'crat user' 'crat password' 'gsp1 share' 'gspc share' \
        'gspc share behind a length of 10' 'host time' 'host host name' 'host work group' 'host language' \
        'pshr guest' 'pshr share' 'shar user' 'shar share' 'spvt size' 'spvt content' 'sub1 user' \
        'subs user' 'subs user behind a length of 10' 'wags entity' 'wags user' 'wasu user' \
        'wasu first value'
)" "$past"

finish
