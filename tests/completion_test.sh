#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: completion_test.sh BUILD
#
# Tests the words that bash offers after the words of a vokctl line.
set -eu
PATH=$(cd "$1" && pwd):$PATH
# shellcheck source=packaging/vokctl.bash-completion
. "$(dirname "$0")/../packaging/vokctl.bash-completion"
failures=0

# compopt works only while bash completes; here it records that bash completes file names.
# shellcheck disable=SC2317  # the completion calls it
compopt() { COMPREPLY=(files); }

# expect OFFERED WORD...: compares the words offered for the last of the words.
expect() {
    local offered=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _vokctl
    if [ "${COMPREPLY[*]}" != "$offered" ]; then
        printf 'FAILED: %s\n--- expected\n%s\n--- found\n%s\n' "$*" "$offered" "${COMPREPLY[*]}"
        failures=$((failures + 1))
    fi
}

expect '--help --version' vokctl -
expect 'shares' vokctl sh
expect '--help list show public-name create' vokctl shares ''
expect '--help --json --socket --timeout --config --any-server' vokctl shares list ''
expect '--help --socket --timeout --config --any-server --public --for' vokctl shares create Music --public ''
expect '--help --time --name --workgroup --language --socket --timeout --config --any-server' vokctl host set ''
expect 'en fr ge sp it sc tc' vokctl host set --language ''
expect '--json' vokctl status --wait 5 --j
expect '--help --count --line --hex --frame --socket --timeout --config --any-server' vokctl raw lstu --
expect 'files' vokctl raw --frame ''
expect 'files' vokctl private get ''

exit $((failures > 0))
