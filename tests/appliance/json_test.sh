#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: json_test.sh BUILD
#
# What vokctl prints for programs has the form that docs/json promises, in every state that changes it.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the appliance's shell to expand
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/lib.sh" "$@"

# Every subcommand that has --json, with a hyphen between its words.
with_json() {
    local command action
    subcommands() { awk '/^$/ { inside = 0 } inside { print $1 } /^Subcommands:/ { inside = 1 }'; }
    for command in $("$build/vokctl" --help | subcommands); do
        for action in '' $("$build/vokctl" "$command" --help | subcommands); do
            # shellcheck disable=SC2086  # there may be no action
            "$build/vokctl" "$command" $action --help | grep -q -e '^ *--json' && echo "$command${action:+-$action}"
        done
    done
    true
}

output=$(appliance sh -c '
    # say NAME COMMAND...: its JSON after a line with the name of the schema.
    say() { echo "@$1"; shift; vokctl "$@" --json 2>/dev/null || true; }

    say doctor doctor
    say backup-list backup list
    vokctl collect --wait 300 2>/dev/null
    say status status
    vokctl history --remember
    say history history
    say history history Media
    say shares-list shares list
    say shares-show shares show Media
    say users-list users list
    say backup-list backup list
    say setup-quick setup quick
    say remote-urls remote urls

    # A collection that runs, names of all kinds, reports of all kinds.
    mkdir "/share/\$(x)" "/share/a,b" "/share/$(printf "\377")"
    for name in "\$(x)" "$(printf "\377")"; do
        php -r "(new PDO(\"sqlite:/usr/private/appliance.db\"))
            ->prepare(\"INSERT INTO share VALUES (?, ?, ?)\")->execute([\$argv[1], \"public\", \"internal\"]);" "$name"
    done
    vokctl collect --wait 300 2>/dev/null
    say status status
    say backup-list backup list
    say shares-list shares list
    printf "\1\0\0\0\0\0" >/etc/pelconfig/vokcontrol/__shrsem
    say status status

    # A collection without a list.
    rm /etc/inc/api_share.php /etc/pelconfig/vokcontrol/__shrsem
    vokctl collect --wait 300 2>/dev/null
    say status status
    say doctor doctor fdisk api_share.php
')

expect 'each subcommand with --json has a schema' "$(with_json | sort)" \
    "$(cd "$clone/docs/json" && printf '%s\n' *.schema.json | sed 's/.schema.json//; /^share-status$/d' | sort)"
expect 'what is printed is as the schemas say' 'doctor: good
backup-list: good
status: good
history: good
history: good
shares-list: good
shares-show: good
users-list: good
backup-list: good
setup-quick: good
remote-urls: good
status: good
backup-list: good
shares-list: good
status: good
status: good
doctor: good' "$("$here/json_check.py" "$clone/docs/json" <<<"$output")"

# A check that finds nothing would pass, too.
expect 'an error is found' 'users-list: $.users: 1 is not of type '"'array'"'
users-list: $: '"'users'"' is a required property
users-list: $: Additional properties are not allowed ('"'more'"' was unexpected)
status: no JSON: Expecting value: line 1 column 1 (char 0)
none: there is no schema' "$("$here/json_check.py" "$clone/docs/json" <<'TEXT'
@users-list
{"users": 1}
@users-list
{}
@users-list
{"users": [], "more": 1}
@status
@none
{}
TEXT
)"

finish
