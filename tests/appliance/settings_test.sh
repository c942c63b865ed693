#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: settings_test.sh BUILD
#
# End to end: the appliance's names and language, its build, the private file, the first setup and
# remote access, on the real scripts and programs; what they keep, and that the host stays as it is.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# What the appliance's shells below have in common.
helpers=$inside_helpers'
    settings() { sql "SELECT name, value FROM setting ORDER BY name"; }

    # set_variable NAME VALUE
    set_variable() {
        sed "s/^$1=.*/$1=$2/" /etc/pelconfig/system_var >/tmp/variables
        cat /tmp/variables >/etc/pelconfig/system_var
    }
'
inside() { appliance sh -c "exec 2>&1; $helpers $1"; }

host_name=$(uname -n)
clock_before=$(date +%s)

expect 'host settings are kept, and change nothing else' 'hostname|appliance
language|english
nmbdSysname|appliance
vokctl: the settings were applied = 0
date|02/03/2001
hostname|cellar
language|french
nmbdSysname|cellar
time|04:05:06
workgroup|HOME
language_current=fr
http_start_page=/real_index.asp
appliance
the clock goes on
vokctl: the settings were applied = 0
date|12/31/2030
hostname|cellar
language|traditional_chinese
nmbdSysname|cellar
time|23:59:58
workgroup|HOME' "$(inside '
    settings
    before=$(date +%s)
    try vokctl host set --language fr --name cellar --workgroup HOME --time 2001-02-03T04:05:06
    settings
    grep -E "^(language_current|http_start_page)=" /etc/pelconfig/system_var
    hostname
    [ $(($(date +%s) - before)) -lt 600 ] && [ "$(date +%s)" -ge "$before" ] && echo "the clock goes on"
    try vokctl host set --language tc --time 2030-12-31T23:59:58
    settings')"

expect 'host settings are refused, and nothing or not all is kept' \
    'vokctl: --name needs 2 to 32 bytes = 2
vokctl: --workgroup needs 2 to 32 bytes = 2
vokctl: The appliance does not know this language; vokctl host set --help lists the codes. (0x50000006) = 1
vokctl: A setting has a character that cannot be used, such as a quote. (0xFF000003) = 1
vokctl: --time needs the form 2026-11-21T18:30:00, in UTC = 2
hostname|appliance
language|english
nmbdSysname|appliance
vokctl: The date and the language were set, but the appliance did not take the host name or the work group; vokctl doctor may say why. (0x50000005)
vokctl: The appliance says: api_system.php: "cellar-" cannot be a host name = 1
date|01/02/2003
hostname|appliance
language|german
nmbdSysname|appliance
time|04:05:06
vokctl: The date and the language were set, but the appliance did not take the host name or the work group; vokctl doctor may say why. (0x50000005)
vokctl: The appliance says: api_system.php: "two words" cannot be a work group = 1
hostname|cellar
vokctl: The appliance did not set the date or the language; vokctl doctor may say why. (0xFF000004) = 1
vokctl: The appliance did not set the date or the language; vokctl doctor may say why. (0xFF000004)
vokctl: The appliance says: PHP Warning:  require(/etc/inc/settings.php): Failed to open stream: No such file or directory in /etc/inc/api_pel.php on line 8
vokctl: The appliance says: PHP Fatal error:  Uncaught Error: Failed opening required '\''/etc/inc/settings.php'\'' (include_path='\''.:/usr/share/php'\'') in /etc/inc/api_pel.php:8
vokctl: The appliance says: Stack trace:
vokctl: The appliance says: #0 {main}
vokctl: The appliance says:   thrown in /etc/inc/api_pel.php on line 8 = 1' "$(inside '
    long=$(printf %033d 0)
    try vokctl host set --language fr --name "$long"
    try vokctl host set --language fr --workgroup "$long"
    try vokctl host set --language xx
    try vokctl host set --language fr --name "a;reboot"
    try vokctl host set --language fr --time tomorrow
    settings
    try vokctl host set --language ge --name cellar- --time 2003-01-02T04:05:06
    settings
    try vokctl host set --language ge --name cellar --workgroup "two words"
    sql "SELECT name, value FROM setting WHERE name = '"'hostname'"'"
    mv /etc/pelconfig/system_var /tmp
    try vokctl host set --language ge
    mv /tmp/system_var /etc/pelconfig
    rm /etc/inc/settings.php
    try vokctl host set --language ge')"

expect 'the build, the first setup and the quick setup are told' \
    'vokcontrol sample appliance 1.0 - build 2026-11-21 -  = 0
 - 2.0 = 0
vokctl: The appliance'\''s build cannot be shown, because /etc/buildinfo.txt is empty or too long. (0x40000004) = 1
vokctl: The appliance'\''s build cannot be shown, because /etc/buildinfo.txt is empty or too long. (0x40000004) = 1
vokctl: The appliance'\''s build cannot be read; see whether /etc/buildinfo.txt is there. (0x40000001) = 1
vokctl: The appliance'\''s build is not known, because /etc/buildinfo.txt cannot be read. (0x40000003) = 1
vokctl: the appliance waits for its first setup = 0
vokctl: the first setup has been done = 1
vokctl: the appliance waits for its first setup = 0
Language:           en
Public share name:  Public = 0
Language:           ge
Public share name:  Öffentlich = 0
{
  "language": "sp",
  "public_share_name": "P\u00fablico"
} = 0
vokctl: There is no quick setup in the appliance'"'"'s language. (0xB0000002) = 1
vokctl: The appliance has no name for a public share in its language. (0xB0000003) = 1
vokctl: The appliance'\''s language cannot be read; vokctl doctor may say why. (0xB0000001) = 1' "$(inside '
    file=/etc/buildinfo.txt
    try vokctl version
    printf "\n2.0" >$file
    try vokctl version
    : >$file
    try vokctl version
    printf %04086d 0 >$file
    try vokctl version
    echo 1.0 >$file
    chmod 0 $file
    try vokctl version
    rm -f $file
    try vokctl version
    try vokctl setup pending
    set_variable firsttime 0
    try vokctl setup pending
    mv /etc/pelconfig/system_var /tmp
    try vokctl setup pending
    mv /tmp/system_var /etc/pelconfig
    speak() { vokctl host set --language "$1" 2>/dev/null; }
    try vokctl setup quick
    speak ge
    try vokctl setup quick
    speak sp
    try vokctl setup quick --json
    speak sc
    try vokctl setup quick
    speak it
    set_variable default_public_share_name_it ""
    try vokctl setup quick
    sql "DELETE FROM setting WHERE name = '"'language'"'"
    try vokctl setup quick')"

expect 'the private file comes back byte for byte, and stays where a new one is refused' \
    'vokctl: the private file was replaced = 0
same, 4070 bytes
vokctl: the private file was replaced = 0
hello
vokctl: the private file was replaced = 0
x = 0
vokcontrol-private.txt
no saved file
vokctl: There is no private file on the appliance. (0x70000001) = 1
vokctl: The private file on the appliance is empty. (0x70000002) = 1
vokctl: The private file on the appliance cannot be read. (0x70000003) = 1
vokctl: a private file has 1 to 4070 bytes; this one has 0 = 2
vokctl: a private file has 1 to 4070 bytes; this one has 4071 = 2
vokctl: a file of 10 bytes cannot be sent, because its size contains a newline byte. Make it longer or shorter. = 2
vokctl: A private file of this size or with this content cannot be kept. (0xFF000003) = 1
a refusal, 0x60000004: The file did not arrive whole; a file from before is unchanged. Send it again.
a refusal, 0x60000005: The file did not end where its size says; a file from before is unchanged. Send it again.
a refusal, 0x60000002: An empty file cannot be kept.
former = 0
vokctl: The new private file was kept, but the former one could not be removed. (0xFF000006) = 1
the new one
vokctl: The private file cannot be made; a file from before is unchanged. See whether the appliance'\''s disk is full. (0x60000001)
vokctl: The appliance says: mv: can'\''t rename '\''/tmp/vokcontrol.tmp'\'': No such file or directory = 1
no harm' "$(inside '
    php -r "for (\$i = 0; \$i < 4070; ++\$i) echo chr(\$i & 255);" >/tmp/bytes
    try vokctl private put /tmp/bytes
    vokctl private get /tmp/back
    cmp /tmp/bytes /tmp/back && echo "same, $(wc -c </tmp/back) bytes"
    echo hello >/tmp/hello
    try vokctl private put /tmp/hello
    vokctl private get -
    printf x >/tmp/x
    try vokctl private put - </tmp/x
    try vokctl private get -
    ls /etc/pelconfig/vokcontrol | grep private
    [ -e /run/vokcontrol/tmp/vokcontrol.tmp ] || echo "no saved file"
    file=/etc/pelconfig/vokcontrol/vokcontrol-private.txt
    rm $file /tmp/back
    try vokctl private get /tmp/back
    : >$file
    try vokctl private get /tmp/back
    echo former >$file
    chmod 0 $file
    try vokctl private get /tmp/back
    chmod 644 $file
    for size in 0 4071 10; do
        head -c $size /dev/zero >/tmp/bytes
        try vokctl private put /tmp/bytes
    done
    echo "\`touch /tmp/harm\`" >/tmp/bytes
    try vokctl private put /tmp/bytes
    # What vokctl itself never sends: a size beyond its bytes, no newline behind them, no bytes.
    vokctl raw spvt --count 2 --hex "f20f 0000 0a 41" | sed -n "s/^Read as //p"
    vokctl raw spvt --count 2 --hex "0100 0000 0a 41 42" | sed -n "s/^Read as //p"
    vokctl raw spvt --count 2 --hex "0000 0000 0a 0a" | sed -n "s/^Read as //p"
    try vokctl private get -
    rm $file
    mkdir -p $file/inside
    try vokctl private put /etc/buildinfo.txt
    cmp $file /etc/buildinfo.txt && echo "the new one"
    rm -r $file /run/vokcontrol/tmp/vokcontrol.tmp
    chmod 555 /etc/pelconfig/vokcontrol
    try vokctl private put /etc/buildinfo.txt
    chmod 755 /etc/pelconfig/vokcontrol
    [ -e /tmp/harm ] || [ -e /tmp/back ] || echo "no harm"')"

expect 'remote access is shown, switched and refused' 'Sign up:  https://remote.example/sign-up
Sign in:  https://remote.example/sign-in = 0
{
  "sign_up": "https://remote.example/sign-up",
  "sign_in": "https://remote.example/sign-in"
} = 0
on = 0
off = 0
off = 0
vokctl: the user'"'"'s remote access is on now = 0
vokctl: the user was registered = 0
on = 0
Élise
anna
vokctl: the user'"'"'s remote access is off now = 0
off = 0
Élise
vokctl: The appliance does not have this address. (0x00000001) = 1
vokctl: The appliance cannot tell whether this user'"'"'s remote access is on; see whether there is such a user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
vokctl: The remote-access service did not register this user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
Élise' "$(inside '
    try vokctl remote urls
    try vokctl remote urls --json
    try vokctl remote status
    set_variable raclient_raenabled 0
    try vokctl remote status
    try vokctl remote status anna
    try vokctl remote enable anna anna@example.org Anna
    try vokctl remote register Élise elise@example.org Élise
    try vokctl remote status anna
    sql "SELECT user FROM remote_access ORDER BY user DESC"
    try vokctl remote disable anna
    try vokctl remote status anna
    sql "SELECT user FROM remote_access"
    set_variable ra_signInUrl ""
    try vokctl remote urls
    try vokctl remote status nobody
    try vokctl remote enable nobody first second
    try vokctl remote register nobody first second
    try vokctl remote disable nobody
    sql "SELECT user FROM remote_access"')"

expect 'every exit status of the remote-access programs has its meaning' '0
on = 0
vokctl: the user was registered = 0
vokctl: the user'"'"'s remote access is on now = 0
vokctl: the user'"'"'s remote access is off now = 0
1
off = 0
vokctl: The remote-access service did not register this user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
vokctl: The appliance'"'"'s remote-access program has failed, or a value is missing. (0x00000003) = 1
2
vokctl: The appliance cannot tell whether this user'"'"'s remote access is on; see whether there is such a user. (0x00000001) = 1
vokctl: The remote-access service did not register this user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
3
vokctl: The appliance'"'"'s remote-access program has failed, or the request is malformed. (0x00000002) = 1
vokctl: The remote-access service did not register this user. (0x00000001) = 1
vokctl: The remote-access service did not do this for this user. (0x00000001) = 1
vokctl: The appliance'"'"'s remote-access program has failed, or a value is missing. (0x00000003) = 1' "$(inside '
    for status in 0 1 2 3; do
        echo $status | tee /etc/pelconfig/ra-exit
        try vokctl remote status anna
        try vokctl remote register anna first second
        try vokctl remote enable anna first second
        try vokctl remote disable anna
    done')"

clock_after=$(date +%s)
expect 'the host keeps its name' "$host_name" "$(uname -n)"
expect 'the host keeps its clock' yes "$(
    [ "$clock_after" -ge "$clock_before" ] && [ $((clock_after - clock_before)) -lt 3600 ] && echo yes
)"

finish
