#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: guard_test.sh BUILD
#
# Texts that would run in a shell stand wherever the appliance stores one, and everything that reads
# them is used: every command of the service, the pages, what the units start. Nothing runs. The same
# programs without their guard are used in the same way, so that the test is known to see what runs.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# The appliance's programs without their guard.
bare=$roots/bare
mkdir "$bare"
for program in vokctl vokcontrol libvokcontrol.so libvokcontrol.so.0; do
    ln -s "$build/$program" "$bare/$program"
done
ln -s "$build/vokcontrol" "$bare/vokcollect"
ln -s "$build/bare_vokserve" "$bare/vokserve"
ln -s "$build/bare_vokpage" "$bare/vokpage"

# make_state FOLDER: the appliance gets the texts, and the program that these try to run.
make_state() {
    mkdir -p "$1/usr/bin"
    cp "$here/plant.php" "$1/usr/bin/"
    printf '#!/bin/sh\n: >"/tmp/canary-$1"\n' >"$1/usr/bin/fire"
    chmod +x "$1/usr/bin/fire"
}

# What happens inside: for each of the texts, which of the stored places have run with what was used.
inside='
    # ask CODE COUNT LINE...: one request.
    ask() {
        code=$1 count=$2
        shift 2
        for line in "$@"; do
            set -- "$@" --line "$line"
            shift
        done
        vokctl raw "$code" --count "$count" "$@" >/dev/null 2>>/tmp/complaints || true
    }
    # used WHAT: tells which canaries are there, and takes them away.
    used() {
        for canary in /tmp/canary-* /run/vokcontrol/tmp/canary-*; do
            [ ! -e "$canary" ] || echo "$1: ${canary##*/canary-}"
        done
        rm -f /tmp/canary-* /run/vokcontrol/tmp/canary-*
    }
    serve() {
        rm -f /etc/pelconfig/vokcontrol/__shrStatus
        for code in lsts lstu frst qlps gub1 gubs grst gps1 gpsn gpvt vers; do
            ask "$code" 0
            # This one may start a collection.
            [ "$code" != gub1 ] || vokctl status --wait 60 >/dev/null 2>&1
            used "$code"
        done
        ask gsp1 1 Documents && used gsp1
        ask pshr 3 guest "Public $1" && used pshr
        ask shar 3 anna "Private $1" && used shar
        ask crat 2 "user $1" password && used crat
        ask getv 1 firsttime && used getv
        ask getv 1 pel_language && used getv
        ask getv 1 machine_name && used getv
        ask wags 2 system && used wags
        ask wags 2 user anna && used wags
        ask subs 0 && used subs
    }
    # The administrator has logged in just now.
    token=0123456789abcdef0123456789abcdef
    log_in() {
        now=$(cut -d. -f1 /proc/uptime)
        session=/run/vokpage/sessions/$(printf %s "$token" | sha256sum | cut -d" " -f1)
        (umask 077 && mkdir -p "${session%/*}" &&
            printf "%012d\n%012d\n%s\nanna\n" "$now" "$now" "$token" >"$session")
    }
    visit() {
        log_in
        for place in "" /setup /sync; do
            env -i PATH=/usr/bin REQUEST_METHOD=GET HTTP_HOST=127.0.0.1 PATH_INFO="$place" \
                HTTP_COOKIE="vokpage_session=$token" /www/cgi-bin/vokpage >>/tmp/pages
            used "page"
        done
    }
    collect() {
        rm -f /etc/pelconfig/vokcontrol/__shrStatus
        "$@" >>/tmp/collected 2>&1
        vokctl status --wait 60 >/dev/null 2>&1
        used "$1"
    }
    for number in $NUMBERS; do
        php /usr/bin/plant.php "$number"
        serve "$number"
        visit
        collect vokcollect
    done
    collect startapp pelstatus
    collect vokcollect boot
    echo "$(grep -c "Status: 200" /tmp/pages) pages"
    echo "$(grep -c " ms=" /var/log/vokserve.log) requests"
    echo "$(grep -c "took too long\|process failed\|could not" /var/log/vokserve.log) failures"
    sed -n "s/^.*: a shell line was refused: /refused: /p" /var/log/vokserve.log /tmp/collected | sort | uniq -c
'

# use BUILD NUMBERS: uses the appliance with these programs and texts.
use() {
    make_state "$roots/${1##*/}"
    "$clone/appliance/start" --build "$1" --state "$roots/${1##*/}" env "NUMBERS=$2" sh -c "$inside"
}

expect 'nothing that is stored has run; a share is not measured where that would not be safe' '84 pages
588 requests
0 failures
     13 refused: measuring a share, share' "$(use "$build" "$(seq -s ' ' 0 27)")"

expect 'without the guard it has: past the service, and in what the units start' '0 failures
42 requests
6 pages
crat: user
frst: variable
gpvt: private
gub1: report
gub1: share
lsts: share
lstu: user
pshr: share
qlps: setting
shar: share
shar: user
startapp: report
startapp: share
vokcollect: report
vokcollect: share
wags: variable' "$(use "$bare" '0 2' | sort -u)"

finish
