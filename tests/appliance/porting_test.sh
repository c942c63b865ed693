#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: porting_test.sh BUILD
#
# docs/porting.md is true and complete: its examples print on the sample appliance what the page says, it has
# every shell line and every file of the module, and scripts/porting-check finds what differs from it.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"
page=$clone/docs/porting.md

# ---- Examples ----

# Blocks of "console" have commands after "$ ", each with what it prints.
examples() { awk '/^```/ { inside = $0 == "```console"; next } inside' "$page"; }
commands=$(examples | sed -n "s/'/'\\\\''/g; s/^\\$ \\(.*\\)/echo '$ \\1'; sh -c '\\1'/p")
expect 'the examples are what the sample appliance prints' "$(examples)" "$(appliance sh -c "$commands" 2>&1)"

# ---- Lines and files ----

# The guard's table has all lines, with places such as {"share}. The page has these in capitals, and in a table
# its bars are escaped.
lines() { sed -n 's/^ *{"[^"]*", *R"(\(.*\))"},$/\1/p' "$clone/guard/shapes.cpp" | sed 's/{.\([a-z]*\)}/\U\1/g'; }
text=$(sed 's/\\|/|/g' "$page")
# missing: prints which of the lines on standard input the page does not have.
missing() {
    local line
    while IFS= read -r line; do
        grep -qF -- "$line" <<<"$text" || echo "$line"
    done
}
expect 'the table of lines is read' yes "$([ "$(lines | wc -l)" -gt 35 ] && echo yes)"
expect 'a line that is missing is found' 'no such line' "$(echo 'no such line' | missing)"
expect 'the page has every shell line' '' "$(lines | missing)"
files() {
    (cd "$clone" && grep -rhoE '"/(etc|usr|dev|tmp)/[^"%]+"' core sharestatus cmdsvc handlers pagehelpers include) |
        tr -d '"' | grep -v lsts_data_file1 | sort -u
}
expect 'the files are read' yes "$([ "$(files | wc -l)" -gt 15 ] && echo yes)"
expect 'the page has every file' '' "$(files | missing)"

# ---- The check ----

check() { "$clone/scripts/porting-check" --build "$build" --prepare 'php /etc/inc/seed.php' "$@" 2>&1 || echo "= $?"; }
# Without the large files, which take their time.
cp -R "$clone/appliance/root" "$roots/maker"
# shellcheck disable=SC2016  # PHP expands that
sed -i 's/allocate("$f[^)]*)/null/; s/writeLargeFile(\.\.\.)/writeText(...)/' "$roots/maker/etc/inc/seed.php"
expect 'nothing is wrong with the sample appliance' "$(
    cat <<'TEXT'
ok     php                        PHP VERSION answers.
ok     api_share.php              PHP can read it.
ok     api_user.php               PHP can read it.
ok     api_system.php             PHP can read it.
ok     api_pel.php                PHP can read it.
ok     tovGetShareList            It lists 9 shares, 8 of them internal.
ok     tovGetUsers                It lists 3 users.
ok     tovGetSystemStatus         It names 2 internal disks.
ok     tovGetLanguage             The language is english.
ok     tovGetNmbdSysname          The name is appliance.
ok     runwebhooks                It answers share_info.
ok     startapp                   Its path is /usr/sbin/startapp.
ok     pelparam                   It counts 2 internal drives.
ok     /usr/bin/ra-enabled        It answers.
ok     /usr/bin/ractl             Its path is /usr/bin/ractl.
ok     /usr/sbin/tidewaved        Its path is /usr/sbin/tidewaved.
ok     mdadm                      The mirror has 500.11 GB.
ok     tovAddShare                It does what it should.
ok     tovAddShare-folder         It does what it should.
ok     tovAddShare-again          It does what it should.
ok     tovAddUser                 It does what it should.
ok     tovAddUser-again           It does what it should.
ok     tovSetUserSharePrivileges  It does what it should.
ok     tovSetLanguage             It does what it should.
ok     tovSetNmbdSysname          It does what it should.
ok     tovSetHostname             It does what it should.
ok     tovSetWorkgroup            It does what it should.
ok     tovSetSysDate              It does what it should.
ok     tovSetUtcSysTime           It does what it should.
ok     password-file              It does what it should.
ok     collection                 It does what it should.
TEXT
)" "$(check "$roots/maker" | sed 's/PHP [^ ]* answers/PHP VERSION answers/')"

inc=$roots/maker/etc/inc
sed -i 's,  <shareproperty>,<shareproperty>,; s/if (!@mkdir.*/if (false) {/' "$inc/api_share.php"
sed -i 's/if (isKnown(.*/if (false) {/; s/INSERT INTO user/INSERT OR IGNORE INTO user/' "$inc/accounts.php"
sed -i "s/keepSetting('language'.*/fwrite(STDERR, 'not that one');/; s/tovSetSysDate/tovSetDay/g" "$inc/api_system.php"
printf '#!/bin/sh\necho "not now" >&2\nexit 1\n' >"$roots/maker/usr/bin/startapp"
printf '#!/bin/sh\nexit 1\n' >"$roots/maker/usr/bin/pelparam"
expect 'what differs from the page is found, with what to do' "$(
    cat <<'TEXT'
WRONG  api_system.php             Nothing in /etc/inc names its function tovSetSysDate. What to do: add the function; porting.md says what it does.
WRONG  tovGetShareList            Line 4 does not begin with two blanks. What to do: have it print a line each for <sharename>, <shareproperty>, <sharelocation> and </shareinfo>, in this order; porting.md has an example.
?      tovGetSystemStatus         Not checked: it depends on api_system.php.
?      tovGetLanguage             Not checked: it depends on api_system.php.
?      tovGetNmbdSysname          Not checked: it depends on api_system.php.
WRONG  pelparam                   sudo pelparam -d ended with 1. What to do: run it by hand and correct it; porting.md says what it has to answer.
?      mdadm                      Not checked: it depends on pelparam.
WRONG  tovAddShare-folder         It does not do what it should, and says: There is no /share/PortingCheck. What to do: make the folder of the share.
WRONG  tovAddUser-again           It does not do what it should, and says: It ended with 0. What to do: end with another code than 0 if there is such a user.
WRONG  tovSetLanguage             It does not do what it should, and says: not that one. What to do: keep the language, and answer it in tovGetLanguage.
WRONG  tovSetSysDate              It does not do what it should, and says: api_system.php: no such function: "tovSetSysDate". What to do: end with 0 for MM/DD/YYYY.
WRONG  collection                 It does not do what it should, and says: not now. What to do: have startapp start the program pelstatus in the background.
= 1
TEXT
)" "$(check "$roots/maker" | grep -v '^ok')"

expect 'it explains itself' 'usage: scripts/porting-check [--build DIR] [--prepare COMMAND] ROOT' \
    "$(help=$("$clone/scripts/porting-check" --help) && sed -n 1p <<<"$help")"
expect 'a folder without scripts is wrong usage' \
    "porting-check: there is no folder $roots/etc/inc with the administration scripts
= 2" "$(check "$roots")"

finish
