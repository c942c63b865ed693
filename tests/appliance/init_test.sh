#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: init_test.sh BUILD
#
# The init script, which the sample appliance boots with: service, boot collection, and one after the other.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

expect 'the appliance boots with it: the service listens, and goes on without whoever started it' \
    'vokcontrol: the service runs (process PID)
srw-rw----
vokserve: ready
parent: 1' "$(appliance sh -c '
    pid=$(cat /run/vokserve.pid)
    /etc/init.d/vokcontrol status | sed "s/process $pid/process PID/"
    stat -c %A /run/vokcontrol.sock
    cat /var/log/vokserve.log
    read -r _ _ _ parent _ <"/proc/$pid/stat"
    echo "parent: $parent"
' 2>&1)"

expect 'it starts once, stops and starts again' 'vokcontrol: it runs already
0
the same
0
gone: no socket, no pid file
vokcontrol: the service does not run
3
0
another' "$(appliance sh -c '
    before=$(cat /run/vokserve.pid)
    /etc/init.d/vokcontrol start
    echo $?
    [ "$(cat /run/vokserve.pid)" = "$before" ] && echo "the same"
    /etc/init.d/vokcontrol stop
    echo $?
    ls /run/vokserve.pid /run/vokcontrol.sock 2>/dev/null || echo "gone: no socket, no pid file"
    /etc/init.d/vokcontrol status
    echo $?
    /etc/init.d/vokcontrol restart
    echo $?
    [ "$(cat /run/vokserve.pid)" != "$before" ] && echo "another"
' 2>&1)"

expect 'a number that another process has got is no service' 'vokcontrol: the service does not run
0
the other one lives' "$(appliance sh -c '
    /etc/init.d/vokcontrol stop
    sleep 100 &
    echo $! >/run/vokserve.pid
    /etc/init.d/vokcontrol status
    /etc/init.d/vokcontrol stop
    echo $?
    kill -0 $! && echo "the other one lives"
' 2>&1)"

expect 'a service that cannot start is a failure, and says why' 'vokserve: cannot listen on /etc: File exists
1' "$(appliance sh -c '
    /etc/init.d/vokcontrol stop
    echo "options=\"--socket /etc\"" >>/etc/default/vokcontrol
    /etc/init.d/vokcontrol start
    echo $?
' 2>&1)"

# Without a status the boot collection makes one; the next ones come by themselves, and are remembered.
expect 'it collects after boot, and regularly, until it is stopped' 'no status yet
collected after boot
collected again
remembered
collecting processes: 0
work files in /tmp: none' "$(appliance sh -c '
    status=/etc/pelconfig/vokcontrol/__shrStatus
    printf "boot=yes\ninterval=2\nwatch=1\n" >/etc/default/vokcontrol
    await() {
        tries=0
        until [ -e "$status" ] || [ "$tries" -ge 300 ]; do
            tries=$((tries + 1))
            usleep 100000
        done
        [ -e "$status" ] && echo "$1"
        rm -f "$status"
    }
    entries() { vokctl history --csv 2>/dev/null | wc -l; }
    before=$(entries)
    [ -e "$status" ] || echo "no status yet"
    /etc/init.d/vokcontrol start >/dev/null
    await "collected after boot"
    await "collected again"
    tries=0
    until [ "$(entries)" -gt "$before" ]; do
        tries=$((tries + 1))
        [ "$tries" -lt 300 ] || break
        usleep 100000
    done
    [ "$tries" -lt 300 ] && echo "remembered"
    /etc/init.d/vokcontrol stop
    while pidof vokcollect >/dev/null; do usleep 100000; done
    rm -f "$status"
    sleep 3
    [ -e "$status" ] && echo "and once more"
    echo "collecting processes: $(ps -o comm | grep -c "^vokc\|^sleep")"
    echo "work files in /tmp: $(ls /tmp | grep . || echo none)"
' 2>&1)"

finish
