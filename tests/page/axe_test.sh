#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: axe_test.sh BUILD
#
# Whether everybody can use the web pages, whatever they see or hear, in wide and narrow windows.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/../appliance/lib.sh" "$@"

node "$here/axe_test.mjs" "$build" || failures=1
expect 'nothing is left behind' '' "$(ls "$roots")"

finish
