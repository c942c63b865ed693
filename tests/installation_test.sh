#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: installation_test.sh [PACKAGE]
#
# The Debian package in a whole Debian with systemd running: installed with the sample appliance's scripts,
# upgraded while a client waits, removed and purged. The Debian is made from the mirror once, below
# build/debian. Needs root, as systemd has to be process 1 of something; without root nothing is tried.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the other Debian's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/expect.sh
. "$here/support/expect.sh"
clone=${here%/*}
if [ "$(id -u)" -ne 0 ]; then
    echo "skipped: this needs root"
    exit 0
fi

# make_debian: what the package depends on, and systemd, as an archive to unpack for each test.
make_debian() {
    local packages=systemd-sysv,procps,php-sqlite3
    packages=$packages,$(dpkg-deb -f "$package" Depends | sed 's/ ([^)]*)//g; s/, /,/g')
    archive=$clone/build/debian/$(cksum <<<"$packages" | cut -d ' ' -f 1).tar
    [ ! -e "$archive" ] || return 0
    mkdir -p "${archive%/*}"
    mmdebstrap --quiet --format=tar --variant=minbase --include="$packages" --aptopt='Acquire::Retries "3"' \
        bookworm "$archive.new" http://deb.debian.org/debian
    mv "$archive.new" "$archive"
}

# start_systemd: as process 1 of spaces of its own, with the root in $root. Its clock is everybody's: nothing in
# there may set it.
start_systemd() {
    unshare --pid --mount --cgroup --ipc --uts --net --fork --kill-child=KILL \
        sh "$here/support/start_systemd" "$root" >"$folder/console" 2>&1 &
    machine=$!
    for _ in $(seq 300); do
        init=$(pgrep --parent "$machine" || true)
        case $(inside 'systemctl is-system-running' 2>&1) in
            running | degraded) return 0 ;;
        esac
        sleep 0.1
    done
    echo "systemd does not come up" >&2
    cat "$folder/console" >&2
    return 1
}

inside() {
    timeout 120 nsenter --target "$init" --all \
        env -i PATH=/usr/local/sbin:/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive sh -c "$1"
}

# with_version VERSION: the package again, with another version; prints its path in the other Debian.
with_version() {
    dpkg-deb -R "$package" "$folder/unpacked"
    sed -i "s/^Version: .*/Version: $1/" "$folder/unpacked/DEBIAN/control"
    dpkg-deb --root-owner-group -b "$folder/unpacked" "$root/vokcontrol_$1.deb" >/dev/null
    rm -r "$folder/unpacked"
    echo "/vokcontrol_$1.deb"
}

package=${1:-$("$clone/scripts/package" | tail -n 1)}
folder=$(mktemp -d)
machine=
trap '[ -z "$machine" ] || kill -KILL "$machine"; wait 2>/dev/null; rm -rf "$folder"' EXIT
root=$folder/root
make_debian
mkdir "$root"
tar -x -f "$archive" -C "$root"
older=$(with_version 0.1.0)
newer=$(with_version 0.2.0)
# The sample appliance's scripts, and its shares.
cp -R "$clone/appliance/root/etc/inc" "$clone/appliance/root/etc/buildinfo.txt" "$root/etc/"
cp "$clone"/appliance/root/usr/bin/{mdadm,pelparam,ra-enabled,ractl,runwebhooks,startapp} "$root/usr/bin/"
mkdir -p "$root/usr/private" "$root/share"
# Its "ps" lists every process with its arguments.
mv "$root/usr/bin/ps" "$root/usr/bin/ps.debian"
printf '#!/bin/sh\nexec ps.debian -e -o pid,args\n' >"$root/usr/bin/ps"
chmod +x "$root/usr/bin/ps"
chroot "$root" php /etc/inc/seed.php
start_systemd

units='vokserve.socket vokcontrol-collect.timer vokcontrol-history.path vokcontrol-notify.timer vokcontrol-boot.service'
expect 'it is installed: units are enabled, the socket is there' "ii  vokcontrol 0.1.0
vokserve.socket enabled active
vokcontrol-collect.timer enabled active
vokcontrol-history.path enabled active
vokcontrol-notify.timer enabled active
vokcontrol-boot.service enabled inactive
vokserve.service static inactive
vokcontrol vokcontrol-view
600 root /etc/pelconfig/system_var_lck" "$(inside '
    dpkg -i '"$older"' >/tmp/log 2>&1 || cat /tmp/log
    dpkg-query -W -f "\${db:Status-Abbrev} \${Package} \${Version}\n" vokcontrol
    for unit in '"$units"' vokserve.service; do
        echo "$unit $(systemctl is-enabled "$unit") $(systemctl is-active "$unit")"
    done
    echo $(getent group vokcontrol vokcontrol-view | cut -d : -f 1)
    stat -c "%a %U %n" /etc/pelconfig/system_var_lck
')"

# With all that the unit takes away.
expect 'the service does its work with what its unit permits' 'vokctl: the user carla was created
vokctl: the share Music was created
vokctl: the number of drives can be read
carla
vokctl: the private file was replaced
0
vokctl: a collection was started, unless one was running already
Music 4 K' "$(inside '
    exec 2>&1
    echo sesame | vokctl users create carla
    vokctl shares create Music --for carla
    vokctl drives check
    vokctl users list | grep carla
    vokctl private put /etc/buildinfo.txt
    vokctl private get - | cmp /etc/buildinfo.txt -
    echo $?
    vokctl service restart
    vokctl status --wait 60 | sed -n "s/ \+/ /g; s/^\(Music 4 K\).*/\1/p"
')"
expect 'so does a collection that a unit starts' '0
Music 4 K' "$(inside '
    exec 2>&1
    rm /etc/pelconfig/vokcontrol/__shr*
    systemctl start vokcontrol-collect.service
    echo $?
    vokctl status --wait 60 | sed -n "s/ \+/ /g; s/^\(Music 4 K\).*/\1/p"
')"

expect 'each published status is remembered' 'remembered: yes
700 /var/lib/vokcontrol' "$(inside '
    exec 2>&1
    vokctl collect --wait 60 2>/dev/null
    published=$(date -u -d "@$(stat -c %Y /etc/pelconfig/vokcontrol/__shrStatus)" +%Y-%m-%dT%H:%M:%SZ)
    for _ in $(seq 100); do
        ! vokctl history --csv 2>/dev/null | grep -q "^$published," || break
        sleep 0.1
    done
    echo "remembered: $(vokctl history --csv | grep -q "^$published," && echo yes)"
    stat -c "%a %n" /var/lib/vokcontrol
')"

# A request in hand keeps the service from ending; another client comes meanwhile, and waits for the next one.
expect 'upgraded: a client that connects during the restart is served' 'ii  vokcontrol 0.2.0
before: vokctl: the number of drives can be read
meanwhile, while it is deactivating: vokcontrol sample appliance 1.0
service: another process
socket: the same' "$(inside '
    exec 2>&1
    cp -p /usr/bin/pelparam /tmp/pelparam
    printf "#!/bin/sh\nuntil [ -e /run/go-on ]; do sleep 0.1; done\necho 2\n" >/usr/bin/pelparam
    before=$(systemctl show -P MainPID vokserve.service)
    socket=$(stat -c %i /run/vokcontrol.sock)
    vokctl drives check >/tmp/before 2>&1 &
    timeout 30 sh -c "until pgrep -x pelparam >/dev/null; do sleep 0.1; done"
    dpkg -i '"$newer"' >/tmp/log 2>&1 &
    state=active
    for _ in $(seq 300); do
        [ "$state" = active ] || break
        state=$(systemctl is-active vokserve.service)
    done
    vokctl version >/tmp/meanwhile 2>&1 &
    sleep 1
    : >/run/go-on
    wait
    rm /run/go-on
    cp -p /tmp/pelparam /usr/bin/pelparam
    dpkg-query -W -f "\${db:Status-Abbrev} \${Package} \${Version}\n" vokcontrol
    echo "before: $(cat /tmp/before)"
    echo "meanwhile, while it is $state: $(cut -d " " -f 1-4 /tmp/meanwhile)"
    after=$(systemctl show -P MainPID vokserve.service)
    [ "$after" = 0 ] || [ "$after" = "$before" ] || echo "service: another process"
    [ "$(stat -c %i /run/vokcontrol.sock)" != "$socket" ] || echo "socket: the same"
')"

expect 'upgraded: what the administrator has disabled stays so, and nothing starts it' 'vokserve.socket disabled inactive
vokcontrol-collect.timer disabled inactive
vokcontrol-history.path disabled inactive
vokcontrol-notify.timer disabled inactive
vokcontrol-boot.service disabled inactive
vokserve.service static inactive' "$(inside '
    systemctl --quiet disable --now '"$units"' 2>/dev/null
    systemctl stop vokserve.service
    dpkg -i '"$newer"' >/tmp/log 2>&1 || cat /tmp/log
    for unit in '"$units"' vokserve.service; do
        echo "$unit $(systemctl is-enabled "$unit") $(systemctl is-active "$unit")"
    done
')"
expect 'the same after a package that has kept no notes of that' 'vokserve.socket disabled
vokcontrol-collect.timer enabled
vokcontrol-history.path enabled
vokcontrol-notify.timer enabled
vokcontrol-boot.service disabled' "$(inside '
    rm -r /var/lib/systemd/deb-systemd-helper-enabled
    systemctl --quiet enable vokcontrol-collect.timer 2>/dev/null
    dpkg -i '"$newer"' >/tmp/log 2>&1 || cat /tmp/log
    for unit in '"$units"'; do
        echo "$unit $(systemctl is-enabled "$unit")"
    done
')"

expect 'removed: no unit, no process, no program; what was stored stays' 'rc  vokcontrol 0.2.0
processes: 0
files: /etc/pelconfig/vokcontrol/vokcontrol-private.txt /etc/vokcontrol.conf /run/vokcontrol/tmp/dbg_vokcontrol.txt' "$(inside '
    systemctl start vokserve.socket
    vokctl version >/dev/null
    dpkg -r vokcontrol >/tmp/log 2>&1 || cat /tmp/log
    dpkg-query -W -f "\${db:Status-Abbrev} \${Package} \${Version}\n" vokcontrol
    echo "processes: $(pgrep -c vok)"
    echo files: $(find /etc /run /usr /var -name "*vokc*" -type f -not -path "/var/lib/*" \
        -not -name vokcontrol_cmd_used | sort)
')"
expect 'purged: the rest of what was ours is gone' 'no package
/etc/pelconfig/system_var
/etc/pelconfig/vokcontrol/vokcontrol-private.txt
run: ' "$(inside '
    mkdir -p /run/vokcontrol /var/lib/vokcontrol/sessions
    dpkg -P vokcontrol >/tmp/log 2>&1 || cat /tmp/log
    dpkg-query -W vokcontrol >/dev/null 2>&1 || echo "no package"
    find /etc/pelconfig /var/lib/vokcontrol -type f -not -path "*/__bksts/*" 2>/dev/null | sort
    echo "run: $(find /run /var/lib -name "*vok*" -not -path "/var/lib/dpkg/*" | sort)"
')"

finish
