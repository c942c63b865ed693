#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: backup_test.sh BUILD
#
# End to end: what backup clients report, the collection that finds it, the list that shows it, and the
# disks behind its last line.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# Sizes that depend on the file system's blocks become N, and the day of the test TODAY, in both of its
# forms. A test that runs through midnight sees two days.
days() {
    date -u '+%Y-%m-%d|%m%d%Y'
}
first_days=$(days)
without_sizes_and_days() {
    sed -E "s/ +[0-9]+ ([KMG])  / N \1  /; /^(Documents |__bk)/s/($first_days|$(days))\$/TODAY/"
}

expect 'what is reported is kept, collected and listed' 'vokctl: the report was stored
vokctl: the report was stored
vokctl: the report was stored
__bkanna=1TODAY
__bkjohannes=9TODAY
vokctl: a collection was started, unless one was running already
SHARE           USED  STATE               LAST BACKUP
Documents N K  3                   TODAY
Photos N M  0                   2026-11-20
Projects N K  unreadable          -
Media N G  -                   -
Empty N K  -                   -
Family Videos N M  2 (disk not found)  2026-11-15
Économies N K  1 (complete)        2026-10-31
Accounts N M  -                   -

The internal disk has 500 GB.
the list again: same' "$(
    appliance sh -c '
        vokctl backup report Documents --state 3
        vokctl backup report anna --state 12 --as-variable
        vokctl backup report johannes --state 9 --as-variable
        grep "^__bk" /etc/pelconfig/system_var
        vokctl service restart
        vokctl status --wait 60 >/dev/null
        vokctl backup list >/tmp/list
        cat /tmp/list
        vokctl status --wait 60 >/dev/null
        vokctl backup list | cmp -s - /tmp/list && echo "the list again: same"' 2>&1 |
        without_sizes_and_days
)"

# The disk that fdisk sees gets a size of its own: the mirror has 500 GB, too.
expect 'the capacity is that of the mirror, of one disk, and unknown' 'mirror: 500
one disk: 320
no disk: 0' "$(
    appliance sh -c '
        capacity() {
            vokctl status --wait 60 >/dev/null
            vokctl backup list --json | sed -n "s/.*\"capacity_gb\": \([0-9]*\),/$1: \1/p"
        }
        startapp pelstatus
        truncate -s 320G /dev/sda
        capacity mirror
        php -r "(new PDO(\"sqlite:/usr/private/appliance.db\"))->exec(
            \"DELETE FROM device WHERE node = '"'"'sdb'"'"'\");"
        capacity "one disk"
        rm /dev/sda
        capacity "no disk"'
)"

expect 'without a status the list starts a collection, for whoever asks next' '6
vokctl: no share status has been published yet; start a collection with "vokctl collect", then try again
8 shares' "$(
    appliance sh -c '
        code=0
        vokctl backup list 2>/tmp/why || code=$?
        echo "$code"
        cat /tmp/why
        vokctl status --wait 60 >/dev/null
        vokctl backup list --json | grep -c "\"name\"" | sed "s/\$/ shares/"'
)"

expect 'drives can be checked, and a report be refused' 'vokctl: the number of drives can be read
0
vokctl: the number of drives can be read
0
vokctl: The report could not be stored; see whether the appliance'\''s disk is full. (0xC2000002)
1
vokctl: The report could not be stored; see whether the appliance'\''s disk is full. (0xC2000002)
1' "$(
    appliance sh -c '
        code() { "$@"; echo $?; }
        code vokctl drives check
        mv /usr/bin/pelparam /usr/bin/away
        code vokctl drives check
        rm -r /etc/pelconfig/vokcontrol/__bksts /etc/pelconfig/system_var
        code vokctl backup report anna --state 1
        code vokctl backup report anna --state 1 --as-variable' 2>&1
)"

finish
