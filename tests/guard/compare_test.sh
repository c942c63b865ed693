#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: compare_test.sh BUILD [COUNT [SEED]]
#
# Sends random requests through the module with the guard and without: answers, files and traces must be the
# same (compare.cpp). Each has a root of its own, and both run at once.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
clone=${here%/tests/guard}
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"

build=$(cd -- "$1" && pwd)
work=$(sandbox_new_root "$clone")
trap 'rm -rf "$work"' EXIT

# run MODE: leaves the digests in $work/MODE.digests.
run() {
    mkdir "$work/$1"
    sandbox_lay_out "$work/$1"
    mkdir "$work/$1/shells"
    printf '#!/bin/sh\nexit 1\n' >"$work/$1/usr/bin/ra-enabled"
    chmod +x "$work/$1/usr/bin/ra-enabled"
    sandbox_run "$work/$1" --tmpfs /tmp --ro-bind "$build" /build \
        --ro-bind "$(sandbox_find dash dash)" /shells/dash \
        -- /build/guard_compare "$1" "${2:-3000}" "${3:-1}" /shells/dash >"$work/$1.digests" 2>"$work/$1.log"
}

run bare "${@:2}" &
bare=$!
run guarded "${@:2}"
wait "$bare"

if ! cmp "$work/bare.digests" "$work/guarded.digests"; then
    echo "the requests before these numbers ended differently:"
    diff "$work/bare.digests" "$work/guarded.digests" | head -n 4
    exit 1
fi
echo "$(tail -n 1 "$work/guarded.digests" | cut -d ' ' -f 1) requests ended the same," \
    "$(grep -c 'was refused' "$work/guarded.log" || true) lines were refused"
