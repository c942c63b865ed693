#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: lines_test.sh BUILD [COUNT [SEED]]
#
# Runs random lines that the guard accepts in the shells that an appliance may have (lines.cpp). The figure
# in docs/security.md is from COUNT 200000.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
clone=${here%/tests/guard}
# shellcheck source=appliance/sandbox.sh
. "$clone/appliance/sandbox.sh"

build=$(cd -- "$1" && pwd)
root=$(sandbox_new_root "$clone")
trap 'rm -rf "$root"' EXIT
sandbox_lay_out "$root"
mkdir -p "$root/shells"
sandbox_run "$root" --ro-bind "$build" /build \
    --ro-bind "$(sandbox_find dash dash)" /shells/dash \
    --ro-bind "$(sandbox_find bash bash)" /shells/bash \
    -- /build/guard_lines "${2:-4000}" "${3:-1}" /shells/dash /usr/bin/busybox /shells/bash
