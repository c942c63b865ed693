#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: processes_test.sh BUILD
#
# How many processes a subcommand of vokctl starts in all: the client, the request, its shell lines and
# what these start. The appliance numbers its processes one by one.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

found=$(appliance sh -c '
    # The last number that was given to a process; reading it starts none.
    now() { read -r _ _ _ _ last </proc/loadavg; }
    count() {
        now
        before=$last
        vokctl "$@" >/dev/null 2>&1
        now
        echo "$((last - before)) $*"
    }
    startapp pelstatus
    vokctl status --wait 60 >/dev/null
    sleep 1
    count version
    echo appliance | tee /tmp/password | vokctl users verify anna
    count users verify anna </tmp/password
    count users list
    count shares list
    count backup list
')

printf '%s\n' "$found"
# at_most NUMBER SUBCOMMAND
at_most() {
    local number
    number=$(sed -n "s/^\([0-9]*\) $2.*/\1/p" <<<"$found")
    expect "\"$2\" starts at most $1 processes" yes "$([ "${number:-999}" -le "$1" ] && echo yes || echo "no: $number")"
}
at_most 4 version
at_most 4 'users verify'
at_most 10 'users list'
at_most 10 'shares list'
at_most 20 'backup list'
finish
