#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: package_test.sh BUILD
#
# The Debian package: it is made, the same each time, without a complaint of lintian's; it is installed in a
# fresh root, its service and its client work there, and it goes away again. dpkg itself runs in the root, so
# that its scripts do. tests/installation_test.sh does it all in a whole Debian.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the root's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/expect.sh
. "$here/support/expect.sh"
build=$(cd -- "$1" && pwd)
clone=${here%/*}
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"

root=$(sandbox_new_root "$clone")
trap 'rm -rf "$root"' EXIT
# make: the package's path, which is printed last.
make() {
    "$clone/scripts/package" --build "$build" | tail -n 1
}
made=$(make)
architecture=$(dpkg --print-architecture)
package=$root/vokcontrol.deb
cp "$made" "$package"

expect 'its path is printed last' "$clone/build/package/$architecture/vokcontrol_0.2.0_$architecture.deb" "$made"
expect 'made anew it has the same bytes' '' "$(cmp "$(make)" "$package" 2>&1)"
expect 'lintian has nothing to say' '' "$(lintian --fail-on none --allow-root "$package" 2>&1)"
expect 'it wants what the module calls' \
    'libc6, libgcc-s1, libinih1, libsqlite3-0, libssl3, libstdc++6, passwd, php-cli, sudo' \
    "$(dpkg-deb -f "$package" Depends | sed 's/ ([^)]*)//g')"

# A root with busybox, dpkg, and the few real tools that dpkg and the package's scripts insist on.
sandbox_lay_out "$root"
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/log" "$root/etc/init.d"
# The folders that are everybody's, so that they stay.
cat >"$root/var/lib/dpkg/status" <<TEXT
Package: base
Status: install ok installed
Architecture: all
Version: 1
Maintainer: nobody
Description: folders

TEXT
printf '%s\n' /. /bin /etc /lib /usr /usr/bin /usr/lib >"$root/var/lib/dpkg/info/base.list"
: >"$root/etc/ld.so.conf"
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
for tool in deb-systemd-helper deb-systemd-invoke; do
    printf '#!/bin/sh\necho "${0##*-} $*" >>/tmp/units\n' >"$root/usr/bin/$tool"
done
printf '#!/bin/sh\n' >"$root/usr/bin/systemctl"
chmod +x "$root/usr/bin/"{groupadd,systemctl,getent,ldconfig,deb-systemd-helper,deb-systemd-invoke,sudo,php}
# The package's files go into real folders; the host's libraries stay where they are.
in_root() {
    sandbox_run "$root" "${options[@]}" -- sh -c "$1" 2>&1
}

listing() {
    dpkg-deb -c "$package" | sed -n 's/.* \.\(\/[^ ]*[^/ ]\)\( ->.*\)\?$/\1/p' | LC_ALL=C sort
}

expect 'everything is in it, each in its place' '/etc/vokcontrol.conf
/lib/systemd/system/vokcontrol-boot.service
/lib/systemd/system/vokcontrol-collect.service
/lib/systemd/system/vokcontrol-collect.timer
/lib/systemd/system/vokcontrol-history.path
/lib/systemd/system/vokcontrol-history.service
/lib/systemd/system/vokcontrol-metrics.service
/lib/systemd/system/vokcontrol-metrics.timer
/lib/systemd/system/vokcontrol-notify.service
/lib/systemd/system/vokcontrol-notify.timer
/lib/systemd/system/vokserve.service
/lib/systemd/system/vokserve.socket
/usr/bin/pelstatus
/usr/bin/vokctl
/usr/include/vokcontrol.h
/usr/lib/MACHINE/pkgconfig/vokcontrol.pc
/usr/lib/libvokcontrol.so
/usr/lib/libvokcontrol.so.0
/usr/lib/vokcontrol/vokpage
/usr/sbin/vokcollect
/usr/sbin/vokcontrol
/usr/sbin/vokserve
/usr/share/bash-completion/completions/vokctl
/usr/share/doc/vokcontrol/README.md.gz
/usr/share/doc/vokcontrol/architecture.md.gz
/usr/share/doc/vokcontrol/changelog.Debian.gz
/usr/share/doc/vokcontrol/changelog.gz
/usr/share/doc/vokcontrol/copyright
/usr/share/doc/vokcontrol/examples/nightly
/usr/share/doc/vokcontrol/examples/vokcontrol.py
/usr/share/doc/vokcontrol/glossary.md.gz
/usr/share/doc/vokcontrol/install.md.gz
/usr/share/doc/vokcontrol/monitoring.md.gz
/usr/share/doc/vokcontrol/porting.md.gz
/usr/share/doc/vokcontrol/programs.md.gz
/usr/share/doc/vokcontrol/protocol.md.gz
/usr/share/doc/vokcontrol/security.md.gz
/usr/share/doc/vokcontrol/troubleshooting.md.gz
/usr/share/doc/vokcontrol/web-server.md
/usr/share/doc/vokcontrol/web-server/lighttpd.conf
/usr/share/doc/vokcontrol/web-server/nginx.conf
/usr/share/doc/vokcontrol/web-server/stunnel.conf
/usr/share/doc/vokcontrol/web-server/vokpage.service
/usr/share/doc/vokcontrol/web-server/vokpage.sh
/usr/share/doc/vokcontrol/web-server/vokpage.socket
/usr/share/fish/vendor_completions.d/vokctl.fish
/usr/share/lintian/overrides/vokcontrol
/usr/share/man/man1/pelstatus.1.gz
/usr/share/man/man1/vokctl.1.gz
/usr/share/man/man5/vokcontrol.conf.5.gz
/usr/share/man/man7/vokcontrol-protocol.7.gz
/usr/share/man/man8/vokcollect.8.gz
/usr/share/man/man8/vokcontrol.8.gz
/usr/share/man/man8/vokpage.8.gz
/usr/share/man/man8/vokserve.8.gz
/usr/share/zsh/vendor-completions/_vokctl' "$(listing | grep -vE '^/usr/share/(vokcontrol|locale)' |
    sed "s/$(dpkg-architecture -q DEB_HOST_MULTIARCH)/MACHINE/" | LC_ALL=C sort)"

expect 'each catalogue is in it' "$(for file in "$clone"/po/*.po; do
    echo "/usr/share/locale/$(basename "$file" .po)/LC_MESSAGES/vokcontrol.mo"
done)" "$(listing | grep '^/usr/share/locale/.*\.mo$')"

expect 'no file names the folder that it was built in' '' "$(
    mkdir "$root/unpacked"
    dpkg-deb -x "$package" "$root/unpacked"
    grep -rl -- "$build" "$root/unpacked" || true
)"
expect 'units and pkg-config name the places' '/usr/sbin/vokserve
/usr/sbin/vokcollect boot
/usr/sbin/vokcollect
prefix=/usr' "$(
    cd "$root/unpacked"
    sed -n 's/^ExecStart=//p' lib/systemd/system/{vokserve,vokcontrol-boot,vokcontrol-collect}.service
    sed -n '/^prefix/p' usr/lib/*/pkgconfig/vokcontrol.pc
)"
expect 'programs look for the library where the system does' '' "$(
    cd "$root/unpacked/usr"
    readelf -d bin/vokctl sbin/vok* lib/vokcontrol/vokpage lib/libvokcontrol.so.0 | grep -E 'RPATH|RUNPATH' || true
)"

# dpkg unpacks into /usr/lib, which is the host's in such a root: this one has a folder of its own there,
# with the libraries that its programs need.
options+=(--tmpfs /usr/lib)
libraries=$(dpkg-architecture -q DEB_HOST_MULTIARCH)
for library in $(ldd "$root"/unpacked/usr/*bin/vok* "$(command -v dpkg)" "$(command -v dpkg-deb)" \
    "$(command -v tar)" "$(command -v bash)" |
    grep -o '/[^ :]*\.so[^ ]*' | grep -v vokcontrol | sort -u); do
    options+=(--ro-bind "$(readlink -f "$library")" "/usr/lib/$libraries/${library##*/}")
done

# Lines of Debian's own for starting, enabling and stopping units, as they are called.
expect 'it is installed, serves, collects, is installed anew, and is removed and purged' \
    'installed: install ok installed
groups: vokcontrol:x:0: vokcontrol-view:x:0:
lock file: 600
users: anna
socket: srw-rw-rw- root 0
collected: There are no internal shares.
units: start vokcontrol-collect.timer vokcontrol-history.path vokcontrol-notify.timer vokserve.socket
lock file mended: 600 regular empty file
groups: vokcontrol:x:0: vokcontrol-view:x:0:
units: start vokcontrol-collect.timer vokcontrol-history.path vokcontrol-notify.timer vokserve.socket restart vokserve.service
removed: deinstall ok config-files
units: stop vokcontrol-collect.timer vokcontrol-history.path vokcontrol-notify.timer vokserve.socket stop vokserve.service
left: /etc/vokcontrol.conf /etc/vokcontrol
kept: __bksts __shrStatus __shrsem vokcontrol_cmd_used system_var system_var_lck
purged: 
left:
kept: report system_var' "$(in_root '
    install() {
        /usr/bin/dpkg --force-depends --force-not-root --force-bad-path "$@" >/tmp/log 2>&1 || cat /tmp/log
    }
    status() {
        sed -n "/^Package: vokcontrol/,/^$/s/^Status: //p" /var/lib/dpkg/status
    }
    # units: what was asked for since it was last looked.
    units() {
        echo $(sed -n "s/^invoke //p" /tmp/units)
        rm /tmp/units
    }
    mkdir -p /run/systemd/system
    install -i /vokcontrol.deb
    echo "installed: $(status)"
    echo groups: $(grep vokcontrol /etc/group)
    echo "lock file: $(stat -c %a /etc/pelconfig/system_var_lck)"
    LD_LIBRARY_PATH=/usr/lib vokserve --shared-tmp 2>/tmp/serve.log &
    service=$!
    for i in 1 2 3 4 5 6 7 8 9 10; do [ -S /run/vokcontrol.sock ] || usleep 100000; done
    echo "users: $(vokctl users list)"
    echo "socket: $(stat -c "%A %U %g" /run/vokcontrol.sock)"
    kill $service && wait $service
    pelstatus
    echo "collected: $(vokctl status --wait 20 | sed -n 3p)"
    echo "units: $(units)"
    chmod 666 /etc/pelconfig/system_var_lck
    install -i /vokcontrol.deb
    echo "lock file mended: $(stat -c "%a %F" /etc/pelconfig/system_var_lck)"
    echo groups: $(grep vokcontrol /etc/group)
    echo "units: $(units)"
    install -r vokcontrol
    echo "removed: $(status)"
    echo "units: $(units)"
    echo left: $(find /usr /etc -name "*vokc*" -not -path "/etc/pelconfig/*")
    echo kept: $(cd /etc/pelconfig && ls vokcontrol && ls -d system*)
    : >/etc/pelconfig/vokcontrol/__bksts/report
    install -P vokcontrol
    echo "purged: $(status)"
    echo left: $(find /usr /etc -name "*vokc*" -not -path "/etc/pelconfig/*")
    echo kept: $(find /etc/pelconfig -type f -exec basename {} \; | sort)
')"

finish
