#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: users_test.sh BUILD
#
# End to end: the client, the service, the dispatcher, the real user script and its database.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

expect 'requests are answered, and logged without their parameters' 'anna
bob
Élise
00000000  03 00 00 ff                                      |....|
Read as a refusal, 0xFF000003: The command takes another number of parameters.
vokserve: ready
vokserve: uid=0 pid=N: 1 lstu count=0 answer=26 ms=N
vokserve: uid=0 pid=N: 2 lstu count=1 answer=4 ms=N
vokserve: uid=0 pid=N: 3 gsp1 count=0 answer=4 ms=N' "$(appliance sh -c '
    vokctl users list
    vokctl raw lstu --count 1
    vokctl raw gsp1 --line secret >/dev/null
    sed "s/\(ms\|pid\)=[0-9]*/\1=N/g" /var/log/vokserve.log')"

expect 'no user, one user, two hundred users' '0
only
200
user1 user200' "$(appliance sh -c '
    sql() { php -r "(new PDO(\"sqlite:/usr/private/appliance.db\"))->exec(\$argv[1]);" "$1"; }
    sql "DELETE FROM user"
    vokctl users list | wc -l
    sql "INSERT INTO user VALUES ('"'only'"')"
    vokctl users list
    sql "DELETE FROM user;
         WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200)
         INSERT INTO user SELECT '"'user'"' || i FROM n"
    vokctl users list | wc -l
    echo $(vokctl users list | sed -n "1p;\$p")')"

# The hashes of "password" and of nothing are known everywhere. The third password is one letter, two
# bytes long, each of which counts as a character.
expect 'accounts are created, and the password file has a line for each' \
    'vokctl: the user carla was created = 0
vokctl: the user Zoë B. was created = 0
vokctl: the user dora was created = 0
anna
bob
Élise
carla
Zoë B.
dora
carla:1004:XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX:8846F7EAEE8FB117AD06BDD830B7586C:[U          ]:LCT-WHEN:
Zoë B.:1005:XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX:31D6CFE0D16AE931B73C59D7E0C089C0:[U          ]:LCT-WHEN:
dora:1006:XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX:08EB94A3771213775172FC988504A4C1:[U          ]:LCT-WHEN:
600
just now
no password in the log' "$(appliance sh -c '
    create() {
        code=0
        said=$(printf "$2" | vokctl users create "$1" --empty-password 2>&1) || code=$?
        echo "$said = $code"
    }
    create carla "password\n"
    create "Zoë B." "\n"
    create dora "é"
    vokctl users list
    tail -n 3 /usr/private/smbpasswd | sed -E "s/LCT-[0-9A-F]{8}:$/LCT-WHEN:/"
    stat -c %a /usr/private/smbpasswd
    changed=$(sed -n "s/^dora:.*:LCT-\(.*\):/\1/p" /usr/private/smbpasswd)
    [ $(($(date +%s) - 0x$changed)) -le 60 ] && echo just now
    grep -q password /var/log/vokserve.log || echo no password in the log')"

character='vokctl: The name or the password has a character that cannot be used, such as a quote. A name cannot have : , = %, a blank at an end, or - @ + . at its start. (0xFF000003) = 1'
taken='vokctl: A user of this name exists already, or the name is reserved. (0x10000001) = 1'
expect 'accounts that cannot be created are refused in words, and nothing is changed' "$taken
$taken
$taken
$taken
$taken
vokctl: The user's name is longer than 32 bytes. (0x10000002) = 1
vokctl: The password is longer than 32 bytes. (0x10000003) = 1
$character
vokctl: The appliance's user script did not create this user; vokctl doctor may say why. (0x10000005)
vokctl: The appliance says: api_user.php: \"\" cannot be the name of a user = 1
$character
$character
vokctl: there is no password on standard input = 2
api_user.php: there is a user \"anna\" already = 1
api_user.php: there is a user \"ANNA\" already = 1
api_user.php: \"guest\" cannot be the name of a user = 1
api_user.php: \"\" cannot be the name of a user = 1
api_user.php: \"#b\" cannot be the name of a user = 1
api_user.php: \"a:b\" cannot be the name of a user = 1
api_user.php: \"a&b\" cannot be the name of a user = 1
api_user.php: \"a
b\" cannot be the name of a user = 1
api_user.php: \"ab
\" cannot be the name of a user = 1
api_user.php: no such function: \"tovAddShare\" = 1
unchanged
api_user.php: cannot write \"/usr/private/smbpasswd\" = 1
anna bob Élise" "$(appliance sh -c '
    everything() { vokctl users list; cat /usr/private/smbpasswd; }
    try() {
        code=0
        said=$("$@" 2>&1) || code=$?
        echo "$said = $code"
    }
    create() { printf "$2" >/tmp/password; try vokctl users create "$1" --empty-password </tmp/password; }
    api_user() { try sudo /usr/bin/php /etc/inc/api_user.php "$@"; }
    everything >/tmp/before
    long=$(printf "%033d" 0)
    create anna "secret\n"
    create guest "secret\n"
    create Config "secret\n"
    create root "secret\n"
    create homes "secret\n"
    create "$long" "secret\n"
    create New "$long\n"
    create a:b "secret\n"
    create "" "secret\n"
    create "a/b" "secret\n"
    create New "\"\n"
    create New ""
    api_user tovAddUser anna secret
    api_user tovAddUser ANNA secret
    api_user tovAddUser guest secret
    api_user tovAddUser "" secret
    api_user tovAddUser "#b" secret
    api_user tovAddUser a:b secret
    api_user tovAddUser "a&b" secret
    api_user tovAddUser "a
b" secret
    api_user tovAddUser "ab
" secret
    api_user tovAddShare Music public
    everything >/tmp/after
    cmp /tmp/before /tmp/after && echo unchanged

    rm /usr/private/smbpasswd
    mkdir /usr/private/smbpasswd
    api_user tovAddUser New secret
    echo $(vokctl users list)')"

expect 'without its service the client says so' '3
vokctl: cannot reach the service at /run/vokcontrol.sock: Connection refused. Is vokserve running?' \
    "$(appliance sh -c 'killall -9 vokserve; sleep 0.2; vokctl users list 2>/tmp/why; echo $?; cat /tmp/why')"

finish
