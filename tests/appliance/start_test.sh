#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: start_test.sh BUILD
#
# The sample appliance, as somebody who starts it sees it.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

expect 'its exit code is the command'"'"'s' 7 "$(appliance sh -c 'exit 7' || echo $?)"
expect 'a missing command is 127 or 1, never 0' yes "$(appliance no-such-command 2>/dev/null || echo yes)"
expect 'arguments arrive as they are' '<a  b><$HOME>' "$(appliance printf '<%s>' 'a  b' '$HOME')"
expect 'a shell without a command' root "$(echo 'whoami; exit' | appliance)"
expect 'it has its own host name' appliance "$(appliance hostname)"
expect 'it has its own processes' 0 "$(appliance ps | grep -c start_test || true)"
expect 'it has its own network' 'lo' "$(appliance ifconfig | sed -n 's/ *Link encap.*//p')"
expect 'ifconfig prints addresses as the appliance does' 1 \
    "$(appliance ifconfig lo | grep -c 'inet addr:127.0.0.1')"
expect 'route prints its table' 'Kernel IP routing table' "$(appliance route -n | head -n 1)"
expect 'fdisk prints disks as the appliance does' 1 "$(appliance sh -c \
    'truncate -s 500107862016 /tmp/disk; fdisk -lu /tmp/disk' 2>/dev/null | grep -c '^Disk /tmp/disk: 4.*GB')"
expect 'du prints a number and a path' "$(printf '4\t/tmp/f')" \
    "$(appliance sh -c 'echo x >/tmp/f; du -sk /tmp/f')"
expect 'the host is out of sight' '' "$(appliance sh -c 'ls -d /home /boot /work 2>/dev/null' || true)"

expect 'nothing is kept' gone "$(
    appliance touch /share/mark
    appliance sh -c '[ -e /share/mark ] || echo gone'
)"
expect 'nothing is left behind' '' "$(ls "$roots")"

expect 'its history has the tables that vokctl makes' 'the same' "$(appliance sh -c '
    tables() {
        php -r "\$history = new PDO(\"sqlite:/var/lib/vokcontrol/history.db\");
            foreach ([\"SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY name\", \"PRAGMA user_version\"] as \$query) {
                echo implode(\"\n\", \$history->query(\$query)->fetchAll(PDO::FETCH_COLUMN)), \"\n\";
            }"
    }
    tables >/tmp/seeded
    rm /var/lib/vokcontrol/history.db
    vokctl collect --wait 60 2>/dev/null
    vokctl history --remember
    tables | cmp - /tmp/seeded && grep -q "^CREATE TABLE size" /tmp/seeded && echo "the same"
' 2>&1)"

state=$roots/state
expect 'a state folder keeps shares and settings' 'kept kept' "$(
    appliance --state "$state" sh -c 'echo kept >/share/mark; echo kept >/etc/pelconfig/mark'
    appliance --state "$state" sh -c 'echo $(cat /share/mark /etc/pelconfig/mark)'
)"
expect 'shares are made once' 9 "$(appliance --state "$state" sh -c 'ls /share | grep -vc mark')"
chmod -R u+rwX "$state" && rm -rf "$state"

# What begins a scene's findings; a disk of the appliance's own is known to the byte.
in_scene() {
    VOKCONTROL_ROOTS=$roots "$clone/appliance/start" --build "$build" --scene "$1" sh -c "$2"
}
expect 'a full disk' 'Critical: The disk is 98 % full, with 45 MB free: 4096' "$(in_scene full-disk '
    vokctl collect --wait 60 2>/dev/null
    echo "$(vokctl status | sed -n "s/ delete what.*//p") $(stat -f -c %s /share)"')"
expect 'a collection that was interrupted' 'Warning: The collection that began 1 hour ago was interrupted.' \
    "$(in_scene interrupted 'vokctl status' 2>/dev/null | grep -o '^Warning: The collection .* interrupted\.')"
expect 'more shares than a list can hold' '300, and 131 more are not measured' "$(in_scene many-shares '
    vokctl collect --wait 60 2>/dev/null
    echo "$(vokctl shares list | grep -c "^Archive"), $(vokctl status | grep -o "and 131 more are not measured")"')"
expect 'an unknown scene is said' 'start: there is no scene "lost"; see appliance/start --help' \
    "$(in_scene lost true 2>&1 || true)"

expect 'wrong usage ends with 2' 2 "$(appliance --unknown 2>/dev/null || echo $?)"
expect 'an option without its value ends with 2' 2 "$(appliance --state 2>/dev/null || echo $?)"
expect 'missing programs are said' "start: there is no /nowhere/vokcontrol yet; run scripts/build first" \
    "$(appliance --build /nowhere true 2>&1 || true)"

# A library's file and the target that makes it have different names.
expect 'the demo builds every program that the appliance starts with' \
    "$(sed -n 's/^for program in \(.*\); do$/\1/p' "$clone/appliance/start" | tr ' ' '\n' | sort)" \
    "$(sed -n 's/^ *add_custom_target(appliance_programs DEPENDS \(.*\))/\1/p' "$clone/CMakeLists.txt" |
        sed 's/vokcontrol_library/libvokcontrol.so/' | tr ' ' '\n' | sort)"
expect 'and that target is what it builds' 'appliance_programs' \
    "$(sed -n 's/^scripts\/build --progress release \(.*\)/\1/p' "$clone/scripts/demo")"

finish
