#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: status_test.sh BUILD
#
# End to end: real shares, the real share script, the daemon, the published file, the client.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# Sizes that depend on the file system's blocks become N; the units say on which side of each
# threshold they are. What there is to say depends on the day, but for the two lines that are left.
without_sizes() {
    sed -E 's/ +[0-9]+ ([KMG])  / N \1  /; s/^Published .* UTC\./Published WHEN./
        1s/^[0-9.]+( [KMG]B)? of [0-9.]+ [KMG]B used, [0-9.]+ [KMG]B free$/TOTAL/
        /full, with/d; /has an old backup/d; /have an old backup/d'
}

table='TOTAL

SHARE           USED  STATE               LAST BACKUP
Documents N K  1 (complete)        2026-11-18
Photos N M  0                   2026-11-20
Projects N K  unreadable          -
Media N G  -                   -
Empty N K  -                   -
Family Videos N M  2 (disk not found)  2026-11-15
Économies N K  1 (complete)        2026-10-31
Accounts N M  -                   -

Published WHEN. No collection is running.

Critical: The backup of Family Videos on 15 November 2026 has failed with state 2 (disk not found): see why, and back up again.
Warning: 1 of 8 shares has a backup report that cannot be read: Projects. What to do: have the backup reported again.
Warning: 3 of 8 shares have never been backed up: Media, Empty, Accounts. What to do: set up a backup.'

expect 'every internal share is published' "$table" "$(
    appliance sh -c 'startapp pelstatus && vokctl status --wait 60' | without_sizes
)"

expect 'without a collection there is no status' 6 "$(appliance vokctl status 2>/dev/null || echo $?)"

expect 'the table agrees with du, share by share' '' "$(
    appliance sh -c '
        startapp pelstatus && vokctl status --wait 60 >/tmp/table
        for folder in /share/*; do
            name=${folder#/share/}
            kib=$(du -sk "$folder" | cut -f 1)
            if [ "$kib" -le 1024 ]; then used="$kib K"
            elif [ "$kib" -le 1000000 ]; then used="$((kib / 1000)) M"
            else used="$((kib / 1000000)) G"; fi
            grep -q "^$name  *$used " /tmp/table || echo "$name: $used"
        done' | grep -v '^USB Stick: '
)"

expect 'a share that comes and one that goes' 'New,Documents gone' "$(
    appliance sh -c '
        collect() { startapp pelstatus; sleep 0.3; vokctl status --wait 60 --max-age 5 >/tmp/table; }
        php -r "(new PDO(\"sqlite:/usr/private/appliance.db\"))->exec(
            \"DELETE FROM share WHERE name = '"'"'Documents'"'"';
              INSERT INTO share VALUES ('"'"'New'"'"', '"'"'public'"'"', '"'"'internal'"'"')\");"
        mkdir /share/New
        collect
        grep -o "^New" /tmp/table | tr "\n" ","
        grep -q "^Documents" /tmp/table || echo "Documents gone"'
)"

expect 'the share script refuses what it does not know' \
    'api_share.php: no such function: "tovNoSuch"/1' "$(
    appliance sh -c 'sudo /usr/bin/php /etc/inc/api_share.php tovNoSuch 2>&1 | tr -d "\n"
                     sudo /usr/bin/php /etc/inc/api_share.php tovNoSuch 2>/dev/null || echo "/$?"'
)"

expect 'the share script says when it cannot write' 1 "$(
    appliance sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList /missing/file 2>/dev/null || echo $?
)"

expect 'the listing has one element a line' '<sharelist>
  <shareinfo>
  <sharename>Documents</sharename>
  <shareproperty>public</shareproperty>
  <sharelocation>internal</sharelocation>
  </shareinfo>' "$(
    appliance sh -c 'sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList /tmp/l; head -n 6 /tmp/l'
)"

expect 'a collection that cannot list the shares is published as one' \
    'The last collection could not get the list of shares.' "$(
    appliance sh -c 'rm /etc/inc/api_share.php; startapp pelstatus; vokctl status --wait 60' | sed -n 3p
)"

expect 'startapp knows its services' 'startapp: there is no service "nothing"' \
    "$(appliance startapp nothing 2>&1 || true)"

finish
