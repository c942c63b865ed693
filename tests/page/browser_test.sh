#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: browser_test.sh BUILD
#
# The web pages of the sample appliance, as somebody with a browser sees them.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/../appliance/lib.sh" "$@"

node "$here/browser_test.mjs" "$build" || failures=1
node "$here/login_test.mjs" "$build" || failures=1
expect 'nothing is left behind' '' "$(ls "$roots")"

finish
