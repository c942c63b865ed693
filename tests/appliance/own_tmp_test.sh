#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: own_tmp_test.sh BUILD
#
# Files, links and FIFOs that somebody has laid down in /tmp under the names of the module's work files
# change nothing that the service and the collections that it starts do. With everybody's /tmp they do,
# so that the test is known to see it.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

own_tmp='
    own=/run/vokcontrol/tmp
    restart() {
        killall vokserve
        while pidof vokserve >/dev/null; do usleep 10000; done
        vokserve --timeout 2 "$@" 2>>/var/log/vokserve.log </dev/null >/dev/null &
        until vokctl raw gubs >/dev/null 2>&1; do usleep 10000; done
    }
    planted="dbg_vokcontrol.txt outbuf1 outbuf2 outbuf3 outbuf4 outbuf5 outbuf6 vokcontrol.tmp pelsts1.tmp vokcontrol2.tmp"
    plant() {
        echo kept >/root/target
        rm -rf /tmp/*
        mkfifo -m 666 /tmp/dbg_vokcontrol.txt /tmp/pelsts1.tmp
        for i in 1 2 3 4 5 6; do ln -s /root/target "/tmp/outbuf$i"; done
        echo forged >/tmp/vokcontrol.tmp
        mkdir /tmp/vokcontrol2.tmp
        look >/root/planted
    }
    look() {
        (cd /tmp && stat -c "%n %F %i %s %y" $planted 2>&1)
        cat /root/target
    }
    ask() {
        try vokctl version
        try vokctl users list
        try vokctl drives check
        echo "a private file" >/root/mine
        try vokctl private put /root/mine
        try vokctl private get /root/back
        cmp /root/mine /root/back
    }
    collect() {
        rm -f /etc/pelconfig/vokcontrol/__shrStatus
        try vokctl service restart
        vokctl status --wait 20 | grep -oE "^(Documents|Photos|Projects|Media|Empty|Family|Accounts) " | xargs
    }'

# inside COMMANDS: a new appliance's output, what went wrong among it.
inside() {
    appliance sh -c "$inside_helpers$own_tmp$1" 2>&1
}

expect 'what lies in /tmp beforehand changes nothing' 'the answers are the same
vokctl: a collection was started, unless one was running already = 0
Documents Photos Projects Media Empty Family Accounts
the shares are the same
what was planted is as it was
the collection has left its traces
700 700
nothing else is in /tmp' "$(inside '
    ask >/root/asked
    collect >/root/collected
    plant
    restart
    ask | cmp - /root/asked && echo the answers are the same
    collect
    collect | cmp - /root/collected && echo the shares are the same
    look | cmp - /root/planted && echo what was planted is as it was
    grep -q "Documents" $own/dbg_vokcontrol.txt && echo the collection has left its traces
    stat -c %a /run/vokcontrol $own | xargs
    [ "$(ls /tmp | wc -w)" = "$(echo $planted | wc -w)" ] && echo nothing else is in /tmp')"

expect "with everybody's /tmp it does" 'other answers
something was touched' "$(inside '
    ask >/root/asked
    plant
    restart --shared-tmp
    ask 2>&1 | cmp -s - /root/asked || echo other answers
    look | cmp -s - /root/planted || echo something was touched')"

expect 'what others mount later arrives, and nobody else sees the mount of /tmp' 'in the service: disk
here: nothing of its /tmp' "$(inside '
    mount --make-rshared /
    restart
    service=$(pidof vokserve)
    mount -t tmpfs disk /share/Documents
    echo disk >/share/Documents/name
    echo "in the service: $(cat /proc/$service/root/share/Documents/name)"
    grep -q " /tmp .*vokcontrol" /proc/self/mountinfo || [ -e /tmp/dbg_vokcontrol.txt ] || echo "here: nothing of its /tmp"')"

expect 'a /tmp that is the folder already needs no right to mount' 'ready' "$(inside '
    killall vokserve
    while pidof vokserve >/dev/null; do usleep 10000; done
    mount -o bind $own /tmp
    mounts=$(wc -l </proc/self/mountinfo)
    vokserve --socket /run/other 2>/root/log &
    until grep -qs ready /root/log; do usleep 10000; done
    [ "$(wc -l </proc/$!/mountinfo)" = "$mounts" ] && sed "s/vokserve: //" /root/log')"

expect "a socket in everybody's /tmp is found there, and goes with the service" 'anna
gone
/run/vokcontrol/tmp' "$(inside '
    killall vokserve
    while pidof vokserve >/dev/null; do usleep 10000; done
    vokserve --socket /tmp/socket 2>/root/log &
    until grep -qs ready /root/log; do usleep 10000; done
    vokctl users list --socket /tmp/socket | head -n 1
    sed -n "s,^[^ ]* [^ ]* [^ ]* .*\(/vokcontrol/tmp\) /tmp .*,/run\1,p" /proc/$!/mountinfo >/root/mounted
    killall vokserve
    while pidof vokserve >/dev/null; do usleep 10000; done
    [ -e /tmp/socket ] || echo gone
    cat /root/mounted')"

expect 'a folder that is not its own is refused' 'vokserve: cannot have a /tmp of its own: /run/vokcontrol/tmp: Not a directory. Other accounts can forge the work files in a shared /tmp; to use it anyway: --shared-tmp = 1' "$(inside '
    killall vokserve
    while pidof vokserve >/dev/null; do usleep 10000; done
    rm -r $own && ln -s /root $own
    try vokserve')"

finish
