# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# lib.sh: what tests of the sample appliance share. Source it with the build folder as argument.

build=$(cd -- "$1" && pwd)
clone=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
failures=0

# A folder for roots of this test's own, so that it sees what is left behind.
mkdir -p "$clone/build/roots"
roots=$(mktemp -d "$clone/build/roots/test.XXXXXX")
trap 'chmod -R u+rwX "$roots" && rm -rf "$roots"' EXIT
export VOKCONTROL_ROOTS=$roots

appliance() {
    local -a options=(--build "$build")
    "$clone/appliance/start" "${options[@]}" "$@"
}

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" = "$3" ]; then
        printf 'ok: %s\n' "$1"
    else
        printf 'FAILED: %s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

finish() {
    exit $((failures > 0))
}
