# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# expect.sh: comparisons that scripts make. Source it; end with finish.

failures=0

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
