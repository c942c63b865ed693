#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: accounts_test.sh BUILD
#
# Who may ask the service, with accounts of the system: one that may do everything, one that may only look,
# and one that is in neither group. Becoming another account takes root on this host.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

if [ "$(id -u)" -ne 0 ]; then
    echo 'skipped: only root can become other accounts'
    exit 0
fi

# shellcheck disable=SC2154  # lib.sh sets it
accounts=$inside_helpers'
    add() { echo "$1:x:$2:$2::/root:/bin/sh" >>/etc/passwd; echo "$1:x:$2:" >>/etc/group; }
    as() { try su "$1" -c "$2"; }
    # Starts the service anew, which looks up its groups then.
    restart() {
        killall vokserve
        while pidof vokserve >/dev/null; do usleep 10000; done
        vokserve "$@" 2>>/var/log/vokserve.log &
        until [ -S /run/vokcontrol.sock ]; do usleep 10000; done
        stat -c "%A %u %g" /run/vokcontrol.sock
    }
    sed -i /^vokcontrol/d /etc/group
    chmod 1777 /tmp
    add member 1001
    add viewer 1002
    add stranger 1003
    echo "vokcontrol:x:4001:member" >>/etc/group
'

refused="vokctl: This account may not ask for that. Members of the group vokcontrol may ask for everything, members of vokcontrol-view only for what changes nothing; ask root to add you. (0x53000005) = 4"
expect 'a viewer may list and not create, a stranger may nothing' "srw-rw-rw- 0 4001
anna
bob
Élise = 0
vokctl: the share Mine was created = 0
anna
bob
Élise = 0
public = 0
$refused
$refused
$refused
$refused
$refused
$refused
vokserve: ready
vokserve: uid=1001 pid=N: 1 lstu count=0 answer=26 ms=N
vokserve: uid=1001 pid=N: 2 shar count=3 answer=4 ms=N
vokserve: uid=1002 pid=N: 3 lstu count=0 answer=26 ms=N
vokserve: uid=1002 pid=N: 4 gsp1 count=1 answer=12 ms=N
vokserve: uid=1002 pid=N: 5 lsts count=0 answer=173 ms=N
vokserve: uid=1002 pid=N: may only look, not send shar; the request was refused
vokserve: uid=1002 pid=N: may only look, not send crat; the request was refused
vokserve: uid=1002 pid=N: may only look, not send wall; the request was refused
vokserve: uid=1002 pid=N: may only look, not send gpvt; the request was refused
vokserve: uid=1003 pid=N: may not use the service; the connection was refused
vokserve: uid=1003 pid=N: may not use the service; the connection was refused
Mine" "$(appliance --accounts sh -c "$accounts"'
    echo "vokcontrol-view:x:4002:viewer" >>/etc/group
    # The socket is there before the service says that it is ready.
    until grep -q ready /var/log/vokserve.log; do usleep 10000; done
    : >/var/log/vokserve.log
    restart >/tmp/socket
    cat /tmp/socket
    as member "vokctl users list"
    as member "vokctl shares create Mine --for anna"
    as viewer "vokctl users list"
    as viewer "vokctl shares show Documents"
    as viewer "vokctl shares create Yours --for anna"
    as viewer "echo word | vokctl users create carla"
    as viewer "echo word | vokctl users verify anna"
    as viewer "vokctl private get /tmp/file"
    as stranger "vokctl users list"
    as stranger "vokctl shares create Theirs --for anna"
    sed "s/\(ms\|pid\)=[0-9]*/\1=N/g" /var/log/vokserve.log | sed "/stopped/d"
    vokctl shares list | grep -oE "Mine|Yours|Theirs"')"

expect 'settings are believed of root and of oneself' "anna
bob
Élise = 0
vokctl: /tmp/settings: others can change this file; it must belong to root, and only its owner may write it (chown root, chmod go-w) = 2
vokctl: /tmp/settings: others can change this file; it must belong to root, and only its owner may write it (chown root, chmod go-w) = 2
vokserve: /tmp/settings: others can change this file; it must belong to root, and only its owner may write it (chown root, chmod go-w) = 2
anna
bob
Élise = 0" "$(appliance --accounts sh -c "$accounts"'
    echo "vokcontrol-view:x:4002:viewer" >>/etc/group
    restart >/dev/null
    su member -c "echo [client] >/tmp/settings"
    as member "vokctl users list --config /tmp/settings"
    as viewer "vokctl users list --config /tmp/settings"
    try vokctl users list --config /tmp/settings
    try vokserve --config /tmp/settings
    echo "[client]" >/etc/vokcontrol.conf
    as viewer "vokctl users list"')"

expect 'without the group of viewers nobody else gets to the socket' \
    "srw-rw---- 0 4001
anna
bob
Élise = 0
vokctl: cannot reach the service at /run/vokcontrol.sock: Permission denied. Ask root to add you to the group vokcontrol, or try again as root. = 4" \
    "$(appliance --accounts sh -c "$accounts"'
    restart
    as member "vokctl users list"
    as stranger "vokctl users list"')"

finish
