#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: package_test.sh BUILD
#
# The Debian package: it is made, installed in a fresh root, its service and its client work there, and
# it goes away again. dpkg itself runs in the root, so that its scripts do.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the root's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
build=$(cd -- "$1" && pwd)
clone=${here%/*}
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" = "$3" ]; then
        printf 'ok: %s\n' "$1"
    else
        printf 'FAILED: %s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

root=$(sandbox_new_root "$clone")
trap 'rm -rf "$root"' EXIT
(cd "$build" && cpack -G DEB -B "$root/package" >"$root/cpack.log") || {
    cat "$root/cpack.log"
    exit 1
}
package=$(echo "$root"/package/*.deb)

# A root with busybox, dpkg, and the few real tools that dpkg and the package's scripts insist on.
sandbox_lay_out "$root"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/log" "$root/etc/init.d"
: >"$root/var/lib/dpkg/status"
: >"$root/etc/ld.so.conf"
cp "$package" "$root/vokcontrol.deb"
options=(--tmpfs /run --tmpfs /tmp)
for tool in dpkg dpkg-deb dpkg-split tar bash; do
    rm -f "$root/usr/bin/$tool"
    options+=(--ro-bind "$(readlink -f "$(command -v "$tool")")" "/usr/bin/$tool")
done
# Groups are made the short way, with the one number that the sandbox can give files to. The linker's
# cache is the host's business.
printf '#!/bin/sh\necho "$2:x:0:" >>/etc/group\n' >"$root/usr/bin/groupadd"
printf '#!/bin/sh\ngrep "^$2:" /etc/group\n' >"$root/usr/bin/getent"
printf '#!/bin/sh\n' >"$root/usr/bin/ldconfig"
printf '#!/bin/sh\nexec "$@"\n' >"$root/usr/bin/sudo"
printf '#!/bin/sh\nprintf "  <username>anna</username>\\n" >"$3"\n' >"$root/usr/bin/php"
printf '#!/bin/sh\necho "$*" >>/tmp/systemctl\n' >"$root/usr/bin/systemctl"
chmod +x "$root/usr/bin/"{groupadd,getent,ldconfig,systemctl,sudo,php}
# The package's files go into real folders; the host's libraries stay where they are.
in_root() {
    sandbox_run "$root" "${options[@]}" -- sh -c "$1" 2>&1
}

listing() {
    dpkg-deb -c "$package" | sed -n 's/.* \.\(\/[^ ]*[^/ ]\)\( ->.*\)\?$/\1/p' | LC_ALL=C sort
}

expect 'everything is in it, each in its place' '/etc/vokcontrol.conf
/usr/bin/pelstatus
/usr/bin/vokctl
/usr/include/vokcontrol.h
/usr/lib/libvokcontrol.so
/usr/lib/pkgconfig/vokcontrol.pc
/usr/lib/systemd/system/vokcontrol-boot.service
/usr/lib/systemd/system/vokcontrol-collect.service
/usr/lib/systemd/system/vokcontrol-collect.timer
/usr/lib/systemd/system/vokserve.service
/usr/lib/systemd/system/vokserve.socket
/usr/lib/vokcontrol/vokpage
/usr/sbin/vokcollect
/usr/sbin/vokcontrol
/usr/sbin/vokserve
/usr/share/bash-completion/completions/vokctl
/usr/share/doc/vokcontrol/CHANGELOG.md
/usr/share/doc/vokcontrol/LICENSE
/usr/share/doc/vokcontrol/README.md
/usr/share/doc/vokcontrol/architecture.md
/usr/share/doc/vokcontrol/protocol.md
/usr/share/doc/vokcontrol/security.md
/usr/share/doc/vokcontrol/web-server.md
/usr/share/doc/vokcontrol/web-server/lighttpd.conf
/usr/share/doc/vokcontrol/web-server/nginx.conf
/usr/share/doc/vokcontrol/web-server/stunnel.conf
/usr/share/doc/vokcontrol/web-server/vokpage.service
/usr/share/doc/vokcontrol/web-server/vokpage.sh
/usr/share/doc/vokcontrol/web-server/vokpage.socket
/usr/share/man/man1/vokctl.1
/usr/share/man/man5/vokcontrol.conf.5
/usr/share/man/man7/vokcontrol-protocol.7
/usr/share/man/man8/vokcontrol.8
/usr/share/man/man8/vokpage.8
/usr/share/man/man8/vokserve.8' "$(listing | grep -vE '^/usr/share/vokcontrol')"

expect 'no file names the folder that it was built in' '' "$(
    mkdir "$root/unpacked"
    dpkg-deb -x "$package" "$root/unpacked"
    grep -rl -- "$build" "$root/unpacked" || true
)"
expect 'units and pkg-config name the places' '/usr/sbin/vokserve
/usr/sbin/vokcollect boot
/usr/sbin/vokcollect
prefix=/usr' "$(
    cd "$root/unpacked/usr/lib"
    sed -n 's/^ExecStart=//p' systemd/system/{vokserve,vokcontrol-boot,vokcontrol-collect}.service
    sed -n '/^prefix/p' pkgconfig/vokcontrol.pc
)"

# dpkg unpacks into /usr/lib, which is the host's in such a root: this one has a folder of its own there,
# with the host's libraries in it.
options+=(--tmpfs /usr/lib)
for entry in /usr/lib/*-linux-*; do
    options+=(--ro-bind "$entry" "$entry")
done

expect 'it is installed, serves, collects, and is removed again' 'installed: install ok installed
group: vokcontrol:x:0: vokcontrol-view:x:0:
users: anna
socket: srw-rw-rw- root 0
collected: There are no internal shares.
removed: deinstall ok config-files
left: /etc/vokcontrol.conf
kept: yes
units: enable vokserve.socket vokcontrol-collect.timer vokcontrol-boot.service
disable vokserve.socket vokcontrol-collect.timer vokcontrol-boot.service' "$(in_root '
    /usr/bin/dpkg --force-depends --force-not-root --force-bad-path -i /vokcontrol.deb >/tmp/log 2>&1 || cat /tmp/log
    echo "installed: $(sed -n "/^Package: vokcontrol/,/^$/s/^Status: //p" /var/lib/dpkg/status)"
    echo group: $(grep vokcontrol /etc/group)
    LD_LIBRARY_PATH=/usr/lib vokserve 2>/tmp/serve.log &
    service=$!
    for i in 1 2 3 4 5 6 7 8 9 10; do [ -S /run/vokcontrol.sock ] || usleep 100000; done
    echo "users: $(vokctl users list)"
    echo "socket: $(stat -c "%A %U %g" /run/vokcontrol.sock)"
    kill $service && wait $service
    pelstatus
    echo "collected: $(vokctl status --wait 20 | head -1)"
    /usr/bin/dpkg --force-depends --force-not-root --force-bad-path -r vokcontrol >/tmp/log 2>&1 || cat /tmp/log
    echo "removed: $(sed -n "/^Package: vokcontrol/,/^$/s/^Status: //p" /var/lib/dpkg/status)"
    echo "left: $(find /usr /etc -name "*vokc*" -not -path "/etc/pelconfig/*")"
    [ -d /etc/pelconfig/vokcontrol ] && echo "kept: yes"
    echo "units: $(cat /tmp/systemctl)"
')"

exit $((failures > 0))
