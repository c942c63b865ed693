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
        find / \( -path /proc -o -path /dev -o -path /tmp \) -prune -o -print | sort
    }
    section() { echo "== $1"; }

    section people
    for account in "Zoë B. Müller/pa\$\$w#rd \$HOME" "J. R. Smith/#1; & | < > * ? ~ !" "日本語 2026/\$"; do
        printf "%s\n" "${account#*/}" | vokctl users create "${account%%/*}" 2>&1
        printf "%s\n" "${account#*/}" | vokctl users verify "${account%%/*}" 2>&1
    done
    vokctl users list

    section attempts
    everything >/tmp/before
    gate_attempts send /run/vokcontrol.sock || true
    everything >/tmp/after
    section files
    diff /tmp/before /tmp/after | sed -n "s/^[<>] //p"
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
section files
section log
section alive
section past

finish
