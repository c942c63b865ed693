#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# The programs that vokctl notify can be told to run: what they hand to sendmail and to curl.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the stubs to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/expect.sh
. "$here/support/expect.sh"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# stub NAME SCRIPT
stub() {
    printf '#!/bin/sh\n%s\n' "$2" >"$folder/$1"
    chmod +x "$folder/$1"
}
stub uname 'echo attic'
stub vokctl '[ "$1" = status ] && echo "what needs attention"; exit 6'
stub sendmail 'echo "sendmail $*"; cat'
stub curl 'echo "curl $*"; cat'

# run NAME [SETTING...]: one of the programs, told that something is critical. Its settings are the test's.
run() {
    local program=$folder/program name=$1
    shift
    printf '%s\n' "$@" >"$folder/settings"
    sed "s,/etc/default/vokcontrol-notify,$folder/settings,g" "${here%/*}/packaging/notify/$name" >"$program"
    echo '{"findings": []}' | env -i "PATH=$folder:/usr/bin:/bin" VOKCONTROL_OLD_LEVEL=fine \
        VOKCONTROL_NEW_LEVEL=critical ${test:+VOKCONTROL_TEST=yes} sh "$program" 2>&1 || echo "ended with $?"
}

mail='MIME-Version: 1.0
Content-Type: text/plain; charset=UTF-8
Content-Transfer-Encoding: 8bit

what needs attention'
expect 'mail goes to root' "sendmail -oi -t
To: root
Subject: attic: critical (was fine)
Auto-Submitted: auto-generated
$mail" "$(run mail)"
expect 'or to whom the settings say; a test says so' "sendmail -oi -t
To: anna@example.org
Subject: attic: critical (was fine), a test
Auto-Submitted: auto-generated
$mail" "$(test=yes run mail mail_to=anna@example.org)"
expect 'a web hook gets the findings' "curl --silent --show-error --fail --max-time 20 --output /dev/null \
--header Content-Type: application/json --data-binary @- -- https://chat.example.org/hook
{\"findings\": []}" "$(run web-hook web_hook=https://chat.example.org/hook)"
expect 'without an address it fails, and says why' \
    "web-hook: $folder/settings has no web_hook=
ended with 1" "$(run web-hook)"

finish
