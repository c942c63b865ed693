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

expect 'the seeded users are listed' 'anna
bob
Élise' "$(appliance vokctl users list)"

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

expect 'any request can be sent' \
    '00000000  03 00 00 ff                                      |....|
Read as status 0xFF000003: the command takes another number of parameters' \
    "$(appliance vokctl raw lstu --count 1)"

expect 'the status service is started through the service' 'Documents' "$(
    appliance sh -c 'vokctl service restart 2>/dev/null && vokctl status --wait 60' |
        sed -n 's/^\(Documents\) .*/\1/p'
)"

expect 'without its service the client says so' '3
vokctl: cannot reach the service at /run/vokcontrol.sock: Connection refused. Is vokserve running?' \
    "$(appliance sh -c 'killall -9 vokserve; sleep 0.2; vokctl users list 2>/tmp/why; echo $?; cat /tmp/why')"

expect 'each request is logged without its parameters' 'vokserve: ready
vokserve: 1 lstu count=0 answer=26 ms=N
vokserve: 2 gsp1 count=0 answer=4 ms=N' "$(
    appliance sh -c 'vokctl users list >/dev/null; vokctl raw gsp1 --line secret >/dev/null
                     cat /var/log/vokserve.log' | sed 's/ms=[0-9]*/ms=N/'
)"

finish
