#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: troubleshooting_test.sh BUILD
#
# The messages in docs/troubleshooting.md and on the pages' /help are the programs' own.
set -euo pipefail
build=$(cd -- "$1" && pwd)
clone=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tests/support/expect.sh
. "$clone/tests/support/expect.sh"

# The messages, a line each: what stands in backticks at the start of a row of the tables below the first.
messages() {
    # shellcheck disable=SC2016  # the backticks are the page's
    sed -n '/^## vokctl cannot/,/^## Limits/s/^| `\([^`]*\)`.*/\1/p' "$clone/docs/troubleshooting.md"
}

# The parts of messages that the programs hold as they stand. A program puts a message together from its
# parts, which end where a value, a sentence or a quoted word begins.
parts() {
    messages | sed 's/…/\n/g; s/\. /.\n/g; s/: /:\n/g' | sed 's/^[ .:]*//; s/[ .:]*$//' | awk 'length > 8' | sort -u
}

texts=$(cat "$build/vokctl" "$build/vokserve" "$build/vokpage" | strings -n 4)
unknown() {
    local part
    while IFS= read -r part; do
        grep -qF -- "$part" <<<"$texts" || echo "$part"
    done < <(parts | grep -v -e '^No such file or directory$' -e '^Connection refused$' -e '^Permission denied$')
}

# The messages on /help, which begin its rows.
help_messages() {
    tr '\n' ' ' <"$clone/page/help.cpp" | sed 's/" *"//g' | grep -o '{mark("[^"]*")' | sed 's/{mark("//; s/")$//'
}

# Those of them that no other source has.
unknown_help() {
    msgcat --no-wrap "$clone/po/vokcontrol.pot" |
        awk '/^#: / { places = $0 } /^msgid / && places == "#: page/help.cpp" { print substr($0, 8, length($0) - 8) }' |
        grep -xF -f <(help_messages) || true
}

expect 'there are messages' yes "$([ "$(parts | wc -l)" -gt 40 ] && echo yes)"
expect 'no message is another than the programs print' '' "$(unknown)"
expect 'there are messages on /help' 10 "$(help_messages | wc -l)"
expect 'no message on /help is another than the pages show' '' "$(unknown_help)"

finish
