#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: demo_test.sh
#
# What a newcomer sees of scripts/demo and scripts/setup, with stubs for all that they start.
#
# shellcheck disable=SC2016  # what stands in single quotes is for the stubs to expand
set -euo pipefail
clone=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tests/support/expect.sh
. "$clone/tests/support/expect.sh"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/scripts" "$folder/appliance" "$folder/build" "$folder/bin"
cp "$clone/scripts/demo" "$clone/scripts/build" "$clone/scripts/setup" "$folder/scripts/"
# stub PATH TEXT: a script that does this.
stub() { printf '#!/bin/sh\n%s\n' "$2" >"$folder/$1" && chmod +x "$folder/$1"; }
PATH=$folder/bin:$PATH
stub appliance/start 'echo "appliance/start: $1 $2"'
stub bin/nproc 'echo 4'
stub bin/id 'echo 0'
stub bin/apt-get 'echo "apt-get $1" >>"$0.log"; [ "$1" != update ]'
stub bin/dpkg-query 'echo installed'
stub bin/cmake 'case $1 in
    --build) [ "$*" = "--build --preset release --parallel 4 --target appliance_programs" ] || exit 1
        for percent in "  1" "  9" " 10" " 11" " 38" "100" "100"; do echo "[$percent%] Building something"; done
        echo "no progress" ;;
esac'

demo() { (cd / && "$folder/scripts/demo" 2>&1) || echo "= $?"; }
expect 'the first build says how long it takes and how far it is' \
    'Building for the first time; on this machine about 2 minutes ...
1 %
10 %
38 %
100 %
Starting the sample appliance; its collector measures the shares ...

appliance/start: sh -c

Look around in it yourself: appliance/start
See it in a browser: scripts/demo --page' "$(demo)"
expect 'nothing is asked of apt if every package is installed' no "$([ -e "$folder/bin/apt-get.log" ] && echo yes || echo no)"

mkdir -p "$folder/build/release"
touch "$folder/build/release/vokpage"
expect 'a later build is short' \
    'Building what has changed; a minute or two at most, and some seconds if nothing has ...' "$(demo | head -n 1)"

stub bin/dpkg-query '[ "$4" != cmake ] && echo installed'
expect 'a list of packages that cannot be fetched does not end it' 'setup: installing cmake
setup: continuing with the lists that were fetched' "$(demo | head -n 2)"
expect 'the package is installed all the same' 'apt-get update
apt-get install' "$(cat "$folder/bin/apt-get.log")"

stub bin/cmake '[ "$1" != --build ] || { echo "[  1%] Building"; echo "an error" >&2; exit 2; }'
stub bin/dpkg-query 'echo installed'
expect 'a build that fails ends it' 'Building what has changed; a minute or two at most, and some seconds if nothing has ...
1 %
= 2' "$("$folder/scripts/demo" 2>"$folder/errors" || echo "= $?")"
expect 'and the error is shown' 'an error' "$(cat "$folder/errors")"

# On a terminal the percentage stays in its line.
stub bin/cmake '[ "$1" != --build ] || printf "[ 10%%] Building\n[ 20%%] Building\n"'
expect 'on a terminal it is one line' $'\r 10 %\r 20 %\r' \
    "$(script -qec "$folder/scripts/build --progress release appliance_programs" /dev/null </dev/null)"

finish
