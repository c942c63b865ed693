#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: web_server_test.sh BUILD
#
# The configurations of packaging/web-server, each with its real web server on the sample appliance: over
# TLS, with the places and ports of the sample appliance. A server that is not installed is left out, and
# said to be.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/appliance/lib.sh" "$@"

state=$roots/state
mkdir -p "$state/usr/bin" "$state/etc/ssl/vokcontrol" "$state/etc/nginx" "$state/etc/web-server"

# bring PROGRAM...: puts programs of this machine into the appliance; its libraries are there.
bring() {
    local program path
    for program in "$@"; do
        path=$(PATH=$PATH:/usr/sbin:/sbin command -v "$program") || return 1
        cp -L "$path" "$state/usr/bin/"
    done
}
bring curl openssl || {
    echo "web_server_test.sh: curl and openssl are missing; run scripts/setup" >&2
    exit 1
}
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=appliance \
    -keyout "$state/etc/ssl/vokcontrol/key.pem" -out "$state/etc/ssl/vokcontrol/certificate.pem" 2>/dev/null

# The appliance's own places. Its root may use ports below 1024 only where it is this machine's root.
for file in "$clone"/packaging/web-server/*; do
    sed -e 's,/usr/lib/vokcontrol/vokpage,/usr/local/lib/vokcontrol/vokpage,' \
        -e 's,/usr/share/vokcontrol/www,/www,' -e 's,^server\.\(user\|group\)name,#&,' \
        -e 's,HTTP_HOST \$host,&:8443,' -e 's,\([ :]\)443\b,\18443,' -e 's,\(port =\|listen\) 80\b,\1 8081,' \
        "$file" >"$state/etc/web-server/${file##*/}"
done
chmod +x "$state/etc/web-server/vokpage.sh"
cat >"$state/etc/nginx/nginx.conf" <<'END'
# One process, as no other account is there to run it.
daemon off;
master_process off;
user root root;
pid /tmp/nginx.pid;
error_log stderr;
events {}
http {
    access_log off;
    types { text/css css; text/javascript js; image/svg+xml svg; }
    client_body_temp_path /tmp/n1;
    fastcgi_temp_path /tmp/n2;
    proxy_temp_path /tmp/n3;
    scgi_temp_path /tmp/n4;
    uwsgi_temp_path /tmp/n5;
    include /etc/web-server/nginx.conf;
}
END

start='
    fcgi() {
        fcgiwrap -c 8 -f -p /usr/local/lib/vokcontrol/vokpage -s unix:/run/vokpage.socket 2>>/tmp/log &
    }
    start_nginx() { fcgi; nginx -c /etc/nginx/nginx.conf 2>>/tmp/log & }
    start_lighttpd() { fcgi; lighttpd -D -f /etc/web-server/lighttpd.conf >>/tmp/log 2>&1 & }
    start_stunnel() {
        cp /etc/web-server/vokpage.sh /www/cgi-bin/vokpage
        httpd -f -p 127.0.0.1:8090 -h /www -c /etc/httpd.conf 2>>/tmp/log &
        { echo "foreground = yes"; echo "pid ="; cat /etc/web-server/stunnel.conf; } >/tmp/stunnel.conf
        sed -i "s/127.0.0.1:8080/127.0.0.1:8090/" /tmp/stunnel.conf
        stunnel4 /tmp/stunnel.conf >>/tmp/log 2>&1 &
    }
'
ask='
    at=https://127.0.0.1:8443
    # ask PLACE [OPTION...]: the status, where it leads, and what the cookie of the session is for.
    ask() {
        place=$1
        shift
        curl -sk -m 20 -D /tmp/head -o /tmp/page -b /tmp/jar -c /tmp/jar "$@" "$at$place" || echo "curl ends with $?"
        {
            sed -n "s/\r$//; s/^HTTP[^ ]* \([0-9]*\).*/\1/p; s/^[Ll]ocation: //p" /tmp/head
            sed -n "s/\r$//; s/^[Ss]et-[Cc]ookie: vokpage_session=[0-9a-f]\{32\}; /session: /p" /tmp/head
            sed -n "/See Other/d; s,.*<h1>\(.*\)</h1>.*,\1,p" /tmp/page
        } | tr "\n" " " | sed "s/ $//"
        echo
    }
    token() { sed -n "s/.*name=\"token\" value=\"\([0-9a-f]*\)\".*/\1/p" /tmp/page | tail -n 1; }
    tries=0
    until curl -sk -o /dev/null "$at/style.css" || [ "$tries" -ge 100 ]; do
        tries=$((tries + 1))
        usleep 100000
    done
    ask /
    ask /cgi-bin/vokpage
    ask /cgi-bin/vokpage -H "Remote-User: anna" -H "REMOTE_USER: anna"
    ask /cgi-bin/vokpage/login
    ask /cgi-bin/vokpage/login -H "Origin: $at" -d "name=anna&password=appliance&token=$(token)"
    ask /cgi-bin/vokpage/sync
    ask /cgi-bin/vokpage/sync -H "Origin: http://127.0.0.1:8443" -d "switch=off&token=$(token)"
    ask /cgi-bin/vokpage/sync
    ask /cgi-bin/vokpage/sync -H "Origin: $at" -d "switch=off&token=$(token)"
    ask /cgi-bin/vokpage/none
    vokctl collect --wait 60 2>/dev/null
    ask "/cgi-bin/vokpage?sort=name"
    grep -o "aria-sort=\"[a-z]*\"" /tmp/page
    curl -sk -o /dev/null -w "%{http_code} %{content_type}\n" "$at/style.css"
    grep -c "\"anna\" sends a form to \"/sync\"" /tmp/log
'
expected='303 /cgi-bin/vokpage
303 /cgi-bin/vokpage/login
303 /cgi-bin/vokpage/login
200 Log in
303 /cgi-bin/vokpage session: Path=/; HttpOnly; SameSite=Strict; Secure
200 Sync
403 That did not work
200 Sync
200 Sync
404 That did not work
200 Overview
aria-sort="ascending"
200 text/css
1'

# busybox httpd has no redirection: it runs the pages for its first page.
expected_of_stunnel=${expected/303 \/cgi-bin\/vokpage/303 \/cgi-bin\/vokpage\/login}

# try_server NAME EXPECTED PROGRAM...
try_server() {
    local name=$1 expected=$2
    shift 2
    if ! bring "$@"; then
        printf 'SKIPPED: %s: not all of these are installed: %s; run scripts/setup\n' "$name" "$*"
        return
    fi
    expect "the pages work behind $name" "$expected" "$(
        "$clone/appliance/start" --build "$build" --state "$state" sh -c "$start start_$name; $ask cat /tmp/log >&2" \
            2>"$roots/log.$name" | sed 's,https://127.0.0.1:8443,,'
    )"
}
try_server nginx "$expected" nginx fcgiwrap
try_server lighttpd "$expected" lighttpd fcgiwrap
try_server stunnel "$expected_of_stunnel" stunnel4
[ "$failures" -eq 0 ] || tail -n 20 "$roots"/log.* >&2

finish
