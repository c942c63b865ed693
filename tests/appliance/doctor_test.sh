#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: doctor_test.sh BUILD
#
# vokctl doctor on the sample appliance: all is well; then each check finds the one thing that is broken
# for it. The appliance is started once.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

inside=$inside_helpers$(
    cat <<'INSIDE'

# What the package makes. How full the disk of this machine is does not matter.
printf '[thresholds]\nfull-warning = 100\nfull-critical = 100\n' >/etc/vokcontrol.conf
vokctl collect --wait 300 2>/dev/null
# It ends after it has published.
vokctl status --wait 300 >/dev/null

# What these change comes back when the case is over.
keep() { mkdir -p "/keep${1%/*}" && cp -a "$1" "/keep$1"; }
become() { keep "$1" && rm "$1" && printf '#!/bin/sh\n%s\n' "$2" >"$1" && chmod 755 "$1"; }
edit() { keep "$1" && sed -i "$2" "$1"; }
remove() { keep "$1" && rm "$1"; }
mode() { keep "$2" && chmod "$1" "$2"; }
append() { keep "$1" && echo "$2" >>"$1"; }
small() { mount -t tmpfs -o size="$1",mode=755 none "$2"; }

# broken CHECK COMMAND [UNDO]: breaks something, and prints what the check says.
broken() {
    eval "$2" || echo "cannot break $1"
    vokctl doctor --timeout 60 "$1" 2>&1 | sed 's/  */ /g; 2,$d'
    eval "${3:-:}"
    # Any tool can be among what was broken.
    [ ! -d /keep ] || { busybox tar -C /keep -cf - . | busybox tar -C / -xf - && busybox rm -rf /keep; }
}

echo @well
# This find compares whole seconds.
find /etc /run /share /tmp /usr/private /var -xdev -type f -exec touch -d "@$(($(date +%s) - 9))" {} + 2>/dev/null
touch -d "@$(($(date +%s) - 5))" /mark
# What differs from day to day and from machine to machine is cut.
try vokctl doctor --timeout 60 | sed -E 's/^(ok +(clock|php|publication|share-space|settings-space|work-space) ).*/\1/'
echo @changes
find /etc /run /share /tmp /usr/private /var -newer /mark -type f | sort
find /tmp -name 'vokctl*'

echo @scripts
broken settings 'append /etc/vokcontrol.conf nonsense'
broken sudo 'become /usr/bin/sudo "echo not today >&2; exit 1"'
broken php 'become /usr/bin/sudo "[ \$1 != /usr/bin/php ] || exec echo hello; exec \"\$@\""'
broken api_share.php 'append /etc/inc/api_share.php "}"'
broken api_user.php 'edit /etc/inc/api_user.php s/tovAddUser/tovNewUser/g'
broken api_system.php 'edit /etc/inc/api_system.php s/tovSetWorkgroup/tovSetGroup/g'
broken api_pel.php 'remove /etc/inc/api_pel.php'
broken tovGetShareList 'edit /etc/inc/api_share.php s,/sharename,/name,'
broken tovGetShareList 'edit /etc/inc/api_share.php "s,writeFile(.path.*,return;,"'
broken tovGetShareList 'edit /etc/inc/api_share.php "s,writeFile(.path.*,exit(3);,"'
broken tovGetUsers 'edit /etc/inc/api_user.php "s,<username>,<username ,"'
broken tovGetSystemStatus 'edit /etc/inc/api_system.php s/hddIndex/index/'
broken tovGetLanguage 'keep /usr/private/appliance.db; sql "UPDATE setting SET value = \"klingon\""'
broken tovGetNmbdSysname 'keep /usr/private/appliance.db; sql "DELETE FROM setting"'
broken accounts 'edit /usr/private/smbpasswd "/^bob:/s/:X*:[^:]*/:X:XXXX/"'
broken accounts 'edit /usr/private/smbpasswd "1s/.*/nonsense/"'
broken accounts 'remove /usr/private/smbpasswd'

echo @programs
broken runwebhooks 'become /usr/bin/runwebhooks cat'
broken startapp 'remove /usr/bin/startapp'
broken pelstatus 'remove /usr/bin/pelstatus'
broken pelparam 'become /usr/bin/pelparam "echo none"'
broken /usr/bin/ra-enabled 'become /usr/bin/ra-enabled "exit 0"'
broken /usr/bin/ractl 'mode 644 /usr/bin/ractl'
broken /usr/sbin/tidewaved 'remove /usr/bin/tidewaved'
broken du 'become /usr/bin/du "echo none"'
broken fdisk 'become /usr/bin/fdisk "echo Disk /dev/sda: 465.76 GiB, 500107862016 bytes"'
broken mdadm 'become /usr/bin/mdadm "echo Array Size : 488386583"'
broken mdadm 'become /usr/bin/pelparam "echo 1"'
broken ps 'become /usr/bin/ps "echo 4711 sh"'
broken ifconfig 'become /usr/bin/ifconfig "echo inet 127.0.0.1 netmask 255.0.0.0"'
broken route 'become /usr/bin/route true'
broken date 'become /usr/bin/date "echo 2026-11-22"'
broken tools 'remove /usr/bin/killall'

echo @service
broken group 'edit /etc/group /vokcontrol-view/d'
broken socket 'mv /run/vokcontrol.sock /run/elsewhere' 'mv /run/elsewhere /run/vokcontrol.sock'
broken vokserve 'mv /run/vokcontrol.sock /run/elsewhere
    php -r "stream_socket_server(\"unix:///run/vokcontrol.sock\");"' 'mv /run/elsewhere /run/vokcontrol.sock'
broken units 'mode 644 /etc/init.d/vokcontrol'
broken timer 'append /etc/default/vokcontrol interval=3600'
broken publication 'remove /etc/pelconfig/vokcontrol/__shrStatus'
broken publication 'keep /etc/pelconfig/vokcontrol/__shrStatus; printf none >/etc/pelconfig/vokcontrol/__shrStatus'
broken collection 'keep /etc/pelconfig/vokcontrol/__shrsem
    printf "\1\0\0\0\0\0" >/etc/pelconfig/vokcontrol/__shrsem' | sed 's/[0-9]* days/N days/'
broken share-names 'mkdir "/share/a\$b"' 'rmdir "/share/a\$b"'

echo @systemd
mkdir -p /run/systemd/system
printf '#!/bin/sh\n[ $1 != is-failed ]\n' >/usr/bin/systemctl
chmod 755 /usr/bin/systemctl
broken units true
broken timer true
broken units 'become /usr/bin/systemctl "[ \$1 = is-enabled ] && [ \$3 != vokcontrol-boot.service ]"'
broken units 'become /usr/bin/systemctl "[ \$1 = is-enabled ] && [ \$3 != vokcontrol-notify.timer ]"'
broken units 'become /usr/bin/systemctl "[ \$1 != is-failed ] || [ \$3 = vokserve.socket ]"'
broken timer 'become /usr/bin/systemctl "[ \$1 = is-enabled ]"'
rm -r /usr/bin/systemctl /run/systemd/system

echo @files
folder=/etc/pelconfig
broken folders 'chmod 777 $folder/vokcontrol' 'chmod 755 $folder/vokcontrol'
broken folders 'mv $folder/vokcontrol/__bksts /keep' 'mv /keep $folder/vokcontrol/__bksts'
broken variables 'remove $folder/system_var'
broken lock 'mode 644 $folder/system_var_lck'
broken private-file 'touch $folder/vokcontrol/vokcontrol-private.txt' 'rm $folder/vokcontrol/vokcontrol-private.txt'
broken work-folder 'chmod 755 /run/vokcontrol' 'chmod 700 /run/vokcontrol'
broken tmp 'chmod 777 /tmp' 'chmod 755 /tmp'
broken settings-space 'small 100k $folder/vokcontrol && mkdir $folder/vokcontrol/__bksts' 'umount $folder/vokcontrol'
broken share-space 'small 64k /share; cat /dev/zero >/share/full 2>/dev/null || true' 'umount /share'
broken work-space 'small 500k /tmp' 'umount /tmp'
broken clock 'keep /etc/buildinfo.txt; touch -d "2037-01-01 12:00" /etc/buildinfo.txt' | sed 's/The clock says .* UTC, /The clock says NOW, /'

echo @hangs
become /usr/bin/date 'sleep 1000'
try vokctl doctor --timeout 1 date
until ! ps | grep -q '[s]leep 1000'; do sleep 0.1; done
echo ended
echo @usage
try vokctl doctor --list | head -n 3
try vokctl doctor no-such-check
INSIDE
)
output=$(appliance sh -c "$inside")

# What was printed after "@NAME".
part() { awk -v name="@$1" '/^@/ { inside = $0 == name; next } inside' <<<"$output"; }

expect 'all is well in a new appliance' "$(
    cat <<'TEXT'
ok  settings             They can be read.
ok  sudo                 It runs programs.
ok  php 
ok  api_share.php        PHP can read it.
ok  api_user.php         PHP can read it.
ok  api_system.php       PHP can read it.
ok  api_pel.php          PHP can read it.
ok  tovGetShareList      It lists 9 shares, 8 of them internal.
ok  tovGetUsers          It lists 3 users.
ok  tovGetSystemStatus   It names 2 internal disks.
ok  tovGetLanguage       The language is english.
ok  tovGetNmbdSysname    The name is appliance.
ok  runwebhooks          It answers share_info.
ok  startapp             Its path is /usr/sbin/startapp.
ok  pelstatus            Its path is /usr/sbin/pelstatus.
ok  pelparam             It counts 2 internal drives.
ok  /usr/bin/ra-enabled  It answers.
ok  /usr/bin/ractl       Its path is /usr/bin/ractl.
ok  /usr/sbin/tidewaved  Its path is /usr/sbin/tidewaved.
ok  du                   It measures a folder.
ok  fdisk                The first disk has 500 GB.
ok  mdadm                The mirror has 500.11 GB.
ok  ps                   It lists every process.
ok  ifconfig             It has addresses, but there is no network card.
ok  route                No gateway is set.
ok  date                 It prints the date.
ok  tools                There are cat, grep, killall, mv and rm.
ok  group                There are vokcontrol and vokcontrol-view.
ok  socket               Its path is /run/vokcontrol.sock.
ok  vokserve             It answers.
ok  units                There is no systemd, but /etc/init.d/vokcontrol.
-   timer                No regular collections, as /etc/default/vokcontrol says.
ok  publication 
ok  collection           None is running, and none was interrupted.
ok  folders              They are there, and only root may change them.
ok  variables            It is there, and only root may change it.
ok  lock                 Only root may lock the variables.
-   private-file         No client has stored one.
ok  work-folder          Only root may open it.
ok  tmp                  Only root may write to it.
ok  settings-space 
ok  share-space 
ok  work-space 
ok  clock 
ok  share-names          Every share is measured.
ok  accounts             Each user has an entry that a password can match.

Wrong: 0, not checked: 0, checks in all: 46. = 0
TEXT
)" "$(part well)"

expect 'only the service writes: its traces, its log and the times of requests' "$(
    cat <<'TEXT'
/run/vokcontrol/requests
/run/vokcontrol/tmp/dbg_vokcontrol.txt
/var/log/vokserve.log
TEXT
)" "$(part changes)"

expect 'each check of a script finds what is wrong with it' "$(
    cat <<'TEXT'
WRONG settings /etc/vokcontrol.conf:4: this is neither "key = value" nor a [section]. What to do: correct it; vokcontrol.conf(5) says what it may contain.
WRONG sudo sudo true ended with 1 and said: not today. What to do: run it by hand and correct it; porting.md says what it has to answer.
WRONG php /usr/bin/php is not PHP. What to do: install the package php-cli, or link its program to /usr/bin/php.
WRONG api_share.php PHP cannot read /etc/inc/api_share.php. What to do: see what is wrong: php -l /etc/inc/api_share.php.
WRONG api_user.php Nothing in /etc/inc names its function tovAddUser. What to do: add the function; porting.md says what it does.
WRONG api_system.php Nothing in /etc/inc names its function tovSetWorkgroup. What to do: add the function; porting.md says what it does.
WRONG api_pel.php There is no /etc/inc/api_pel.php. What to do: install the appliance's administration scripts.
WRONG tovGetShareList Line 3 has no </sharename>. What to do: have it print a line each for <sharename>, <shareproperty>, <sharelocation> and </shareinfo>, in this order; porting.md has an example.
WRONG tovGetShareList tovGetShareList ended with 0, but wrote no file. What to do: have it write its answer into the file that is its argument.
WRONG tovGetShareList sudo /usr/bin/php /etc/inc/api_share.php tovGetShareList FILE ended with 3. What to do: run it by hand and correct it; porting.md says what it has to answer.
WRONG tovGetUsers Line 2 has no name between "name>" and "</". What to do: have it print a line <username>NAME</username> for each user; porting.md has an example.
WRONG tovGetSystemStatus Line 9 ends a disk without index or name. What to do: have it print <HDDInfo>, <hddIndex>, <modelDevName> and </HDDInfo> on lines of their own for each internal disk; porting.md has an example.
WRONG tovGetLanguage The value after <languag> is "klingon", which is not a language that the module knows. What to do: have it print <languag>NAME</languag> and <language>NAME</language>, a line each, with a name such as english; porting.md has an example.
WRONG tovGetNmbdSysname It has no name after <nmbdSysname>. What to do: have it print <nmbdSysname>NAME</nmbdSysname>; porting.md has an example.
WRONG accounts No password can match these users' entries in /usr/private/smbpasswd: bob. What to do: set these users' passwords anew.
WRONG accounts No password can match these users' entries in /usr/private/smbpasswd: anna, bob, Élise. The file has a line that is not an entry, and nothing after it is read. What to do: correct or remove that line.
WRONG accounts No password can be checked: /usr/private/smbpasswd: No such file or directory. What to do: see that the file server keeps its passwords there.
TEXT
)" "$(part scripts)"

expect 'so does each check of a program' "$(
    cat <<'TEXT'
WRONG runwebhooks Its answer to share_info has no line with "return". What to do: have it print a line such as return ["NAME","NAME"]; porting.md has an example.
WRONG startapp There is no program startapp in /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin. What to do: install it, or set path in /etc/vokcontrol.conf.
WRONG pelstatus There is no program pelstatus in /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin. What to do: install it, or set path in /etc/vokcontrol.conf.
WRONG pelparam It printed "none" instead of the number of internal drives. What to do: have it print that number in its first line; porting.md has an example.
WRONG /usr/bin/ra-enabled For a user that does not exist it ended with 0. What to do: have it end with 0 for on, 1 for off, 2 for an unknown user.
WRONG /usr/bin/ractl There is no such program. What to do: install it there.
WRONG /usr/sbin/tidewaved There is no such program. What to do: install it there.
WRONG du Its first line has no number in front: "none". What to do: have it print the KiB first; porting.md has an example.
WRONG fdisk The size is "465.76 GiB", but it is read as GB. What to do: have it print a line such as "Disk /dev/sda: 500 GB"; porting.md has an example.
WRONG mdadm No line has a size in GB after one in GiB. What to do: have it print a line such as "Array Size : 488386583 (465.76 GiB 500.11 GB)"; porting.md has an example.
- mdadm Not needed: the appliance does not have two internal drives.
WRONG ps It does not list process 1, so it leaves out others, too. What to do: have it print every process without any options, as busybox's ps does; porting.md has an example.
WRONG ifconfig No line has an address after "inet addr:". What to do: have it print "addr:", "Mask:" and "HWaddr" as busybox's ifconfig does; porting.md has an example.
WRONG route It does not print a table of routes. What to do: have it print "0.0.0.0", the gateway and its flags "UG" in one line; porting.md has an example.
WRONG date It printed "2026-11-22" for +%m%d%Y. What to do: have it print the eight digits MMDDYYYY; porting.md has an example.
WRONG tools These are missing in /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin: killall. What to do: install them, or set path in /etc/vokcontrol.conf.
TEXT
)" "$(part programs)"

expect 'so do those of the service' "$(
    cat <<'TEXT'
WRONG group There is no group vokcontrol-view, whose members may ask the service. What to do: groupadd --system vokcontrol-view, then start the service anew.
WRONG socket There is no /run/vokcontrol.sock. What to do: systemctl start vokserve.socket, or /etc/init.d/vokcontrol start.
WRONG vokserve It cannot be asked: cannot reach the service at /run/vokcontrol.sock: Connection refused. Is vokserve running? What to do: see its log: journalctl -u vokserve, or /var/log/vokserve.log.
WRONG units There is neither systemd nor a program /etc/init.d/vokcontrol. What to do: copy the init script there; install.md says how.
WRONG timer Nothing starts collections. What to do: /etc/init.d/vokcontrol restart, and see its log.
WRONG publication No share has been measured yet: start a collection. What to do: vokctl collect --wait 600.
WRONG publication The share status is damaged: start a collection, which replaces it. What to do: vokctl collect --wait 600.
WRONG collection The collection that began N days ago was interrupted: start another one. What to do: vokctl collect --wait 600.
WRONG share-names a$b is not measured: its name could run a command in a shell. Rename it, without any of " $ `, a backslash or a newline. What to do: correct that, then vokctl collect --wait 600.
TEXT
)" "$(part service)"

expect 'so do those of systemd' "$(
    cat <<'TEXT'
ok units They are enabled, and none has failed.
ok timer vokcontrol-collect.timer is active.
WRONG units vokcontrol-boot.service is not enabled. What to do: systemctl enable --now vokcontrol-boot.service.
WRONG units vokcontrol-notify.timer is not enabled. What to do: systemctl enable --now vokcontrol-notify.timer.
WRONG units vokserve.socket has failed. What to do: systemctl status vokserve.socket, then systemctl restart vokserve.socket.
WRONG timer vokcontrol-collect.timer is not active, so that no collection starts. What to do: systemctl start vokcontrol-collect.timer.
TEXT
)" "$(part systemd)"

expect 'so do those of files' "$(
    cat <<'TEXT'
WRONG folders /etc/pelconfig/vokcontrol has mode 777, so that others may write to it. What to do: chmod go-w /etc/pelconfig/vokcontrol.
WRONG folders There is no /etc/pelconfig/vokcontrol/__bksts. What to do: mkdir -p /etc/pelconfig/vokcontrol/__bksts.
WRONG variables There is no /etc/pelconfig/system_var. What to do: touch /etc/pelconfig/system_var.
WRONG lock /etc/pelconfig/system_var_lck has mode 644, so that others may open it. What to do: chmod go= /etc/pelconfig/system_var_lck.
WRONG private-file /etc/pelconfig/vokcontrol/vokcontrol-private.txt has mode 644, so that others may open it. What to do: chmod go= /etc/pelconfig/vokcontrol/vokcontrol-private.txt.
WRONG work-folder /run/vokcontrol has mode 755, so that others may open it. What to do: chmod go= /run/vokcontrol.
WRONG tmp /tmp has mode 777, so that everybody may remove the files of others. What to do: chmod 1777 /tmp.
WRONG settings-space Only 100 KB are free in /etc/pelconfig/vokcontrol, too little for the status and the variables. What to do: remove what is not needed there.
WRONG share-space /share is 100 % full. What to do: delete what is not needed, or move it elsewhere.
WRONG work-space Only 500 KB are free in /tmp, too little for work files. What to do: remove what is not needed there.
WRONG clock The clock says NOW, but /etc/buildinfo.txt was written 1 January 2037, 12:00 UTC. What to do: set the clock; if it is right, touch /etc/buildinfo.txt.
TEXT
)" "$(part files)"

expect 'a program that hangs is ended' "$(
    cat <<'TEXT'
WRONG  date  It did not answer within 1 second. What to do: see what it waits for, or allow more with --timeout.

Wrong: 1, not checked: 0, checks in all: 1. = 1
ended
TEXT
)" "$(part hangs)"

expect 'checks have names' "$(
    cat <<'TEXT'
settings
sudo
php
vokctl: there is no check no-such-check; vokctl doctor --list names all = 2
TEXT
)" "$(part usage)"

finish
