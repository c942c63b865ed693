#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: shares_test.sh BUILD
#
# End to end: shares that people create, the real share script and its database, and who finds them
# afterwards.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# What the appliance's shells below have in common.
helpers=$inside_helpers'
    # All that the scripts keep.
    everything() {
        sql "SELECT * FROM share ORDER BY rowid"
        sql "SELECT * FROM privilege"
        sql "SELECT * FROM user"
        cat /usr/private/smbpasswd
        ls /share
    }
'
inside() { appliance sh -c "exec 2>&1; $helpers $1"; }

# "gspc" has its name behind a byte of length, so that only a frame of one's own can ask it. A share
# that is there is refused: its property has never been found out.
expect 'the seeded shares are listed, shown and named by the web hook' 'SHARE          PROPERTY
Documents      public
Photos         public
Projects       private
Media          public
Empty          private
Family Videos  private
Économies      private
Accounts       private
USB Stick      public
private = 0
public = 0
vokctl: there is no share Family; "vokctl shares list" shows all shares = 1
return ["Documents","Photos","Projects","Media","Empty","Family Videos","Économies","Accounts","USB Stick"];
return ["Documents","Photos","Projects","Media","Empty","Family Videos","Économies","Accounts","USB Stick"];
00000000  67 73 70 63 20 01 00 00 f0 00                    |gspc .....|
Read as a refusal, 0xF0000001: The appliance cannot tell whether the share is public or private.
00000000  67 73 70 63 20 03 0a 00 00 00                    |gspc .....|
Documents = 0
vokctl: the appliance has no name for its public share = 6' "$(inside '
    vokctl shares list
    try vokctl shares show Économies
    try vokctl shares show "USB Stick"
    try vokctl shares show Family
    echo share_info | runwebhooks
    printf "nothing\nshare_info\n" | runwebhooks
    printf "gspc \011Documents\n" >/tmp/frame
    vokctl raw --frame /tmp/frame
    printf "gspc \004None\n" >/tmp/frame
    vokctl raw --frame /tmp/frame | head -n 1
    try vokctl shares public-name
    rm /etc/pelconfig/system_var
    try vokctl shares public-name')"

expect 'shares are created, listed, let their user in, and have their status collected' \
    'vokctl: the user carla was created = 0
vokctl: the share Tax papers was created = 0
vokctl: the share Music was created = 0
Tax papers     private
Music          public
private = 0
public = 0
carla|Tax papers|full
Tax papers|private|internal
Music|public|internal
755 755
vokctl: a collection was started, unless one was running already = 0
Tax papers N K  -                   -
Music N K  -                   -' "$(inside '
    echo secret >/tmp/password
    try vokctl users create carla </tmp/password
    try vokctl shares create "Tax papers" --for carla
    try vokctl shares create Music --public
    vokctl shares list | tail -n 2
    try vokctl shares show "Tax papers"
    try vokctl shares show Music
    sql "SELECT * FROM privilege"
    sql "SELECT * FROM share ORDER BY rowid LIMIT 9, 9"
    echo $(stat -c %a "/share/Tax papers" /share/Music)
    try vokctl service restart
    vokctl status --wait 60 | grep -E "^(Tax|Music)" | sed -E "s/ +[0-9]+ K  / N K  /"')"

taken='vokctl: A share of this name exists already, or the name is reserved. (0x20000001) = 1'
tooLong="vokctl: The share's name is longer than 64 bytes. (0x20000003) = 1"
refused="vokctl: The share's name has a character that cannot be used, such as a quote or a slash, one of : , = %, a blank at an end, or - @ + . at its start. (0xFF000003) = 1"
refusedFor="vokctl: A name has a character that cannot be used, such as a quote or a slash. A share's cannot have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003) = 1"
noPublic="vokctl: The appliance's share script did not create this share; vokctl doctor may say why. (0xFF000004) = 1"
noFolder='vokctl: The appliance says: api_share.php: cannot make the folder "/share/Left behind" = 1'
noPrivate="vokctl: The appliance's share script did not create this share, or did not give it to this user; vokctl doctor may say why. (0xFF000004) = 1"
expect 'what cannot be done is refused in words, and nothing is changed' "$taken
$taken
$taken
$taken
$taken
$tooLong
$tooLong
vokctl: There is no user of this name, or it is reserved. (0x20000006) = 1
$refused
$refusedFor
${noPublic% = 1}
$noFolder
${noPrivate% = 1}
$noFolder
$refused
$refused
vokctl: The share's name does not have 1 to 64 bytes, or has a character that cannot be used. (0xC1000003) = 1
unchanged
vokctl: A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004) = 1
vokctl: A script or a tool of the appliance has failed; vokctl doctor may say why. (0xFF000004) = 1
$noPublic
$noPrivate" "$(inside '
    mkdir "/share/Left behind"
    everything >/tmp/before
    long=$(printf "%065d" 0)
    try vokctl shares create Documents --public
    try vokctl shares create "family videos" --for anna
    try vokctl shares create CONFIG --public
    try vokctl shares create lost+found --for anna
    try vokctl shares create Printers --public
    try vokctl shares create "$long" --public
    try vokctl shares create "$long" --for anna
    try vokctl shares create New --for nobody
    try vokctl shares create "a:b" --public
    try vokctl shares create "a:b" --for anna
    try vokctl shares create "Left behind" --public
    try vokctl shares create "Left behind" --for anna
    try vokctl shares create "a/b" --public
    try vokctl shares create "\$(touch /share/mark)" --public
    try vokctl shares show "$long"
    everything >/tmp/after
    cmp /tmp/before /tmp/after && echo unchanged

    rm /etc/inc/api_share.php
    try vokctl shares list
    try vokctl shares show Documents
    try vokctl shares create New --public
    try vokctl shares create New --for anna')"

expect 'the share script refuses what it must, with a reason, and nothing is changed' \
    'api_share.php: there is a share "Documents" already = 1
api_share.php: there is a share "dOCUMENTS" already = 1
api_share.php: "" cannot be the name of a share = 1
api_share.php: "." cannot be the name of a share = 1
api_share.php: ".." cannot be the name of a share = 1
api_share.php: "a/b" cannot be the name of a share = 1
api_share.php: "a<b" cannot be the name of a share = 1
api_share.php: "a"b" cannot be the name of a share = 1
api_share.php: "a
b" cannot be the name of a share = 1
api_share.php: "ab
" cannot be the name of a share = 1
api_share.php: cannot make the folder "/share/Left behind" = 1
api_share.php: SQLSTATE... = 1
api_share.php: Too few arguments... = 1
api_share.php: there is no user "nobody" = 1
api_share.php: there is no share "New" = 1
api_share.php: SQLSTATE... = 1
api_share.php: no such function: "tovAddUser" = 1
api_share.php: no such function: "" = 1
unchanged' "$(inside '
    mkdir "/share/Left behind"
    everything >/tmp/before
    # What the database and PHP itself say is for them to word.
    api_share() {
        try sudo /usr/bin/php /etc/inc/api_share.php "$@" |
            sed -E "s/(SQLSTATE|Too few arguments).* =/\1... =/"
    }
    api_share tovAddShare Documents public
    api_share tovAddShare dOCUMENTS private
    api_share tovAddShare "" public
    api_share tovAddShare . public
    api_share tovAddShare .. public
    api_share tovAddShare a/b public
    api_share tovAddShare "a<b" public
    api_share tovAddShare "a\"b" public
    api_share tovAddShare "a
b" public
    api_share tovAddShare "ab
" public
    api_share tovAddShare "Left behind" public
    api_share tovAddShare New everybody
    api_share tovAddShare New
    api_share tovSetUserSharePrivileges nobody Documents full
    api_share tovSetUserSharePrivileges anna New full
    api_share tovSetUserSharePrivileges anna Documents most
    api_share tovAddUser carla secret
    api_share
    everything >/tmp/after
    cmp /tmp/before /tmp/after && echo unchanged')"

finish
