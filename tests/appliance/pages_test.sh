#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: pages_test.sh BUILD
#
# What administrators do on the pages, looked at with vokctl: a share and a user are created, and the setup
# creates its public share.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# A browser without a window, in which the administrator has logged in just now.
browser='
    token=0123456789abcdef0123456789abcdef
    now=$(cut -d. -f1 /proc/uptime)
    session=/run/vokpage/sessions/$(printf %s "$token" | sha256sum | cut -d" " -f1)
    (umask 077 && mkdir -p "${session%/*}" &&
        printf "%012d\n%012d\n%s\nanna\n" "$now" "$now" "$token" >"$session")

    # ask METHOD PAGE [FORM [COOKIE]]: asks for a page, and keeps it without the carriage returns.
    ask() {
        form="${3-}&token=$token"
        printf %s "$form" | env -i PATH=/usr/bin REQUEST_METHOD="$1" HTTP_HOST=127.0.0.1 PATH_INFO="$2" \
            CONTENT_TYPE=application/x-www-form-urlencoded CONTENT_LENGTH="${#form}" \
            HTTP_COOKIE="vokpage_session=$token; ${4-}" /www/cgi-bin/vokpage | tr -d "\r" >/tmp/page
        sed -n "s/^Status: //p; s/^Location: //p" /tmp/page
    }

    # say CLASS: prints the texts of the page that have this class.
    say() {
        sed -n "/class=\"$1\"/s/<[^>]*>//gp" /tmp/page
    }

    # send PAGE FORM: sends a form, and follows where it leads to.
    send() {
        ask POST "$1" "$2"
        cookie=$(sed -n "s/^Set-Cookie: \(vokpage_deed=[^;]*\).*/\1/p" /tmp/page)
        [ -z "$cookie" ] || ask GET "$1" "" "$cookie"
    }
'

expect 'administrators create shares and users on the pages, and vokctl sees them' 'a private share and a public one
303 See Other
/cgi-bin/vokpage/shares
200 OK
The share Tax 2026 was created. bob alone may read and write what is in it. The overview shows it after the next collection.
303 See Other
/cgi-bin/vokpage/shares
200 OK
The share Music was created. Everybody in the network may read and write what is in it. The overview shows it after the next collection.
Tax 2026 private
Music public
bob|Tax 2026|full
a user
303 See Other
/cgi-bin/vokpage/users
200 OK
The user Zoë B. was created.
Zoë B.
vokctl: the password is right
no password in logs
refusals
200 OK
✕ A share of this name exists already, or the name is reserved.
200 OK
✕ There is no user of this name, or it is reserved.
200 OK
✕ A user of this name exists already, or the name is reserved.
11 shares, 4 users
the public share of the setup, twice
200 OK
The setup is done.
The public share Our things was created.
Our things public
Our things
200 OK
The public share Our things exists already and stays as it is.
12 shares, 4 users' "$(appliance sh -c "$inside_helpers$browser"'
    complain() {
        send "$@"
        say complaint | sed "s/&#10005;/✕/"
    }
    count() {
        echo "$(sql "SELECT count(*) FROM share") shares, $(sql "SELECT count(*) FROM user") users"
    }

    echo a private share and a public one
    send /shares "name=Tax+2026&access=one&user=bob"
    say "notice good"
    send /shares "name=Music&access=everybody"
    say "notice good"
    vokctl shares list | tail -n 2 | tr -s " "
    sql "SELECT * FROM privilege"

    echo a user
    send /users "name=Zo%C3%AB+B.&password=pass+for+zoe&repeated=pass+for+zoe"
    say "notice good"
    vokctl users list | tail -n 1
    echo "pass for zoe" | vokctl users verify "Zoë B." 2>&1
    grep -rqs "pass.for.zoe" /var/log /run /tmp/page /etc || echo no password in logs

    echo refusals
    complain /shares "name=documents&access=everybody"
    complain /shares "name=Papers&access=one&user=nobody"
    complain /users "name=anna&password=pass+for+anna&repeated=pass+for+anna"
    count

    echo the public share of the setup, twice
    answers="language=english&host_name=box&next_page=3&share_name"
    ask POST /setup "$answers=Our+things"
    say "notice good"
    sed -n "s/<[^>]*>//g; /^The public share/p" /tmp/page
    vokctl shares list | tail -n 1 | tr -s " "
    vokctl shares public-name
    ask POST /setup "$answers=our+THINGS"
    sed -n "s/<[^>]*>//g; /^The public share/p" /tmp/page
    count')"

finish
