#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: examples_test.sh BUILD
#
# The examples for programs, Python module and script, do on the sample appliance what docs/programs.md says.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# The sample appliance sees the host's libraries, Python's among them, but not its program.
state=$roots/state
mkdir -p "$state/usr/bin" "$state/examples"
cp "$(readlink -f /usr/bin/python3)" "$state/usr/bin/python3"
cp "$clone/docs/examples/vokcontrol.py" "$clone/docs/examples/nightly" "$state/examples/"

cat >"$state/examples/use.py" <<'PYTHON'
import vokcontrol

appliance = vokcontrol.Appliance(timeout=300)


def failure(function, *arguments):
    try:
        return function(*arguments)
    except vokcontrol.Failure as failure:
        return type(failure).__name__, failure.code, str(failure)


print(failure(appliance.status))
appliance.collect(300)
print([share["name"] for share in appliance.status(max_age=3600, wait=300)["shares"]])
print(appliance.version())
print(appliance.shares()[-1], appliance.share("Media"))
appliance.create_user("carla", "dépôt")
print(appliance.users(), appliance.is_password("carla", "dépôt"), appliance.is_password("carla", "x"))
print(failure(appliance.create_user, "carla", "again"))
appliance.create_share("Music", user="carla")
appliance.create_share("Films")
print(appliance.share("Music"), appliance.share("Films"))
print(failure(appliance.share, "--help"))
appliance.report_backup("Documents", 3)
appliance.collect(300)
print(next(s["backup_state"] for s in appliance.backups()["shares"] if s["name"] == "Documents"))
print([check["result"] for check in appliance.doctor("php", "group")["checks"]])
# The collection ends after it has published.
appliance.status(wait=300)
print(failure(vokcontrol.Appliance(socket="/run/none").users))
PYTHON

expect 'the Python module asks and changes' "$(
    cat <<'TEXT'
('NoData', 6, 'no share status has been published yet. Start a collection with "vokctl collect", then try again.')
['Documents', 'Photos', 'Projects', 'Media', 'Empty', 'Family Videos', 'Économies', 'Accounts']
vokcontrol sample appliance 1.0 - build 2026-11-21 - 
{'name': 'USB Stick', 'property': 'public'} {'name': 'Media', 'property': 'public'}
['anna', 'bob', 'Élise', 'carla'] True False
('Refused', 1, 'A user of this name exists already, or the name is reserved. (0x10000001)')
{'name': 'Music', 'property': 'private'} {'name': 'Films', 'property': 'public'}
('Refused', 1, 'there is no share --help; "vokctl shares list" shows all shares')
3
['good', 'wrong']
('Unreachable', 3, 'cannot reach the service at /run/none: No such file or directory. Is vokserve running?')
TEXT
)" "$(appliance --state "$state" sh -c 'sed -i /^vokcontrol/d /etc/group; cd /examples && python3 use.py' 2>&1)"

expect 'the script says what somebody should look at' "$(
    cat <<'TEXT'
VOKCONTROL WARNING - 1 of 10 shares has a backup report that cannot be read: Projects. What to do: have the backup reported again. 5 of 10 shares have never been backed up: Media, Empty, Accounts, Music, Films. What to do: set up a backup.
== broken
VOKCONTROL WARNING - 1 of 10 shares has a backup report that cannot be read: Projects. What to do: have the backup reported again. 5 of 10 shares have never been backed up: Media, Empty, Accounts, Music, Films. What to do: set up a backup.
api_pel.php          There is no /etc/inc/api_pel.php. What to do: install the appliance's administration scripts.
tools                These are missing in /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin: killall. What to do: install them, or set path in /etc/vokcontrol.conf.
== well
TEXT
)" "$(appliance --state "$state" sh -c '
    printf "[thresholds]\nfull-warning = 100\nfull-critical = 100\nbackup-age = 3650\n" >/etc/vokcontrol.conf
    /examples/nightly
    echo "== broken"
    mv /etc/inc/api_pel.php /usr/bin/killall /root
    /examples/nightly
    echo "== well"
    mv /root/api_pel.php /etc/inc
    mv /root/killall /usr/bin
    for folder in /share/*; do
        printf 011202026 >"/etc/pelconfig/vokcontrol/__bksts/__bk${folder#/share/}"
    done
    /examples/nightly' 2>&1)"

finish
