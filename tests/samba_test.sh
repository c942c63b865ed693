#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: samba_test.sh BUILD
#
# Tests passwords that a file server's own tool stores: Samba's smbpasswd makes each account's line in a
# throwaway root without other users, and the service there checks the password. It needs no privileges:
# inside, every user is root.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/appliance/lib.sh" "$@"
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"

smbpasswd=$(sandbox_find smbpasswd samba-common-bin)
root=$(sandbox_new_root "$clone")
sandbox_lay_out "$root"

# ---- The passwords ------------------------------------------------------------------------------

# characters FROM TO: every character from one code to the other, both decimal.
characters() {
    local code hex
    for ((code = $1; code <= $2; code++)); do
        printf -v hex %04x "$code"
        printf '%b' "\\u$hex"
    done
}

# repeat COUNT TEXT
repeat() {
    local text
    printf -v text "%$1s" ''
    printf '%s' "${text// /$2}"
}

export LC_ALL=C.UTF-8
passwords=(
    ''
    'a'
    'A'
    ' '
    '   '
    ' blanks at both ends '
    "$(printf 'a\ttab')"
    'password'
    'Password'
    'secret12345678'          # 14 characters
    'secret123456789'         # 15 characters
    "$(repeat 27 'x')"        # the longest password in one block of the hash,
    "$(repeat 28 'x')"        # and the first that needs two blocks
    "$(repeat 50 'Ab')"
    "$(repeat 100 'ü')"
    "$(repeat 254 'p')"       # a whole line of a request
    "$(characters 32 126)"    # every printable ASCII character
    "\$HOME \`id\` \$(id) 'quoted' \"twice\" \\\\n %s%n"
    '#:name:500:LCT-0:'
    '31D6CFE0D16AE931B73C59D7E0C089C0'
    'é'
    'É'
    'café'
    'Grüße aus Köln'
    '±§µ¶ ¼½¾ ×÷'
    "$(characters 128 159)"   # controls, too
    "$(characters 160 255)"
    'ÿ'
)
count=${#passwords[@]}

# frame FILE NAME PASSWORD: a request. The password is sent in ISO-8859-1.
frame() {
    {
        printf 'wall \002\000\000\000\n%s\n' "$2"
        printf '%s\n' "$3" | iconv -f UTF-8 -t ISO-8859-1
    } >"$root/work/$1"
}

mkdir "$root/work" "$root/etc/samba"
for ((i = 0; i < count; i++)); do
    password=${passwords[i]}
    next=${passwords[(i + 1) % count]}
    printf 'user%d:x:%d:100::/:/bin/sh\n' "$i" "$((1000 + i))" >>"$root/etc/passwd"
    printf '%s\n%s\n' "$password" "$password" >"$root/work/$i.twice"
    frame "$i.right" "user$i" "$password"
    frame "$i.longer" "user$i" "${password}x"
    frame "$i.next" "user$i" "$next"
    # The same bytes that the tool got; above 0x7F they are other characters here.
    printf 'wall \002\000\000\000\nuser%d\n%s\n' "$i" "$password" >"$root/work/$i.bytes"
done
for name in disabled none; do
    printf '%s:x:%d:100::/:/bin/sh\n' "$name" $((1000 + i++)) >>"$root/etc/passwd"
    frame "$name.empty" "$name" ''
    frame "$name.secret" "$name" 'secret'
done
printf 'secret\nsecret\n' >"$root/work/secret.twice"

# ---- In the root --------------------------------------------------------------------------------

cat >"$root/etc/samba/smb.conf" <<'TEXT'
[global]
    passdb backend = smbpasswd:/usr/private/smbpasswd
    unix charset = UTF-8
    private dir = /var/samba
    state directory = /var/samba
    cache directory = /var/samba
    lock directory = /var/samba
    pid directory = /var/samba
    log file = /var/samba/log
TEXT
mkdir "$root/var/samba"
: >"$root/usr/private/smbpasswd"

cat >"$root/work/ask" <<'TEXT'
set -eu
cd /work
# samba [OPTION...] NAME: -L allows it to change the entries of other users.
samba() {
    smbpasswd -L -c /etc/samba/smb.conf "$@" >said 2>&1 || {
        cat said >&2
        exit 1
    }
}

i=0
while [ -e "$i.twice" ]; do
    samba -s -a "user$i" <"$i.twice"
    i=$((i + 1))
done
samba -s -a disabled <secret.twice
samba -d disabled
samba -n -a none

vokserve --shared-tmp --password-pause 0 2>log </dev/null >&2 &
tries=0
until [ -S /run/vokcontrol.sock ] || [ "$tries" -ge 300 ]; do
    tries=$((tries + 1))
    usleep 10000
done
for frame in "$@"; do
    vokctl raw --frame "$frame" | sed -n "s/^00000000  \([0-9a-f ]*[0-9a-f]\) *|.*/$frame: \1/p"
done
TEXT

# ask FRAME...: makes the accounts, and prints each request's answer.
ask() {
    sandbox_run "$root" --ro-bind "$smbpasswd" /usr/bin/smbpasswd --ro-bind "$build" /build \
        --setenv PATH /usr/bin:/build --tmpfs /tmp --tmpfs /run -- sh /work/ask "$@"
}

right='77 61 6c 6c 20 0a'
wrong='65 72 72 6f 20 01 00 00 00'
frames=()
answers=

# will ANSWER FRAME: adds a request and its expected answer.
will() {
    frames+=("$2")
    answers+="$2: $1"$'\n'
}

for ((i = 0; i < count; i++)); do
    will "$right" "$i.right"
    will "$wrong" "$i.longer"
    will "$wrong" "$i.next"
    case ${passwords[i]} in *[!$'\001'-$'\177']*) will "$wrong" "$i.bytes" ;; esac
done
# A disabled account keeps its password; an account without a password has a hash that no password matches.
will "$right" disabled.secret
will "$wrong" disabled.empty
will "$wrong" none.empty
will "$wrong" none.secret

expect 'passwords that Samba stored are right, and others wrong' "${answers%$'\n'}" \
    "$(ask "${frames[@]}")"
expect 'each account is a line of its own' "$((count + 2))" \
    "$(grep -cE '^[a-z0-9]+:[0-9]+:[^:]{32}:[^:]{32}:\[[ A-Z]{11}\]:LCT-[0-9A-F]{8}:$' \
        "$root/usr/private/smbpasswd")"
expect 'a hash that needs no Samba to be known is among them' \
    '8846F7EAEE8FB117AD06BDD830B7586C' "$(awk -F: '$1 == "user7" { print $4 }' \
        "$root/usr/private/smbpasswd")"

finish
