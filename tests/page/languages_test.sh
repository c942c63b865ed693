#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: languages_test.sh BUILD
#
# Whether each page speaks each language, and whether its words fit into a narrow window.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/../appliance/lib.sh" "$@"

node "$here/languages_test.mjs" "$build" || failures=1
expect 'nothing is left behind' '' "$(ls "$roots")"

finish
