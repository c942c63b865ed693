#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# What the systemd units permit: each has an exposure of 4 or less, and names every setting that stays open,
# as there is a reason beside it.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/expect.sh
. "$here/support/expect.sh"
units=${here%/*}/packaging/systemd
# The marks in what systemd-analyze prints are no letters.
export LC_ALL=C.UTF-8
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# judge UNIT: what systemd-analyze says of it, with its complaints. The program need not be installed.
judge() {
    sed 's,^ExecStart=[^ ]*,ExecStart=/bin/true,' "$units/$1.in" >"$folder/$1"
    systemd-analyze security --offline=true --no-pager "$folder/$1" 2>&1
}

# open_settings: the names of the settings that a judgement marks.
open_settings() {
    sed -n 's/^✗ \([A-Za-z]*\)=.*/\1/p' "$folder/judgement" | sort -u
}

for unit in vokserve.service vokcontrol-boot.service vokcontrol-collect.service vokcontrol-history.service \
    vokcontrol-metrics.service; do
    judge "$unit" >"$folder/judgement"
    exposure=$(sed -n 's/.*Overall exposure level for .*: \([0-9.]*\) .*/\1/p' "$folder/judgement")
    expect "$unit: exposure $exposure is 4 or less" yes \
        "$(awk -v "exposure=$exposure" 'BEGIN { print (exposure != "" && exposure <= 4) ? "yes" : "no" }')"
    expect "$unit: every setting is known" '' "$(grep -vE '^( |✓|✗|→|$)' "$folder/judgement" || true)"
    # What nothing is known to be open of has not been read.
    expect "$unit: something stays open" User "$(open_settings | grep -x User)"
    expect "$unit: what stays open is named" '' "$(for setting in $(open_settings); do
        grep -q "\<$setting=" "$folder/$unit" || echo "$setting"
    done)"
done

finish
