#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Every script passes shellcheck.
set -eu
cd "$(dirname "$0")/.."

# Scripts are the files that begin with "#!/" and a shell, and the files that they source.
scripts=$(find . \( -path ./build -o -path ./.git \) -prune -o -type f -print)
checked=0
for file in $scripts; do
    case $(head -n 1 "$file" | tr -d '\0') in
        '#!/bin/sh' | '#!/usr/bin/env bash') ;;
        *) case $file in *.sh) ;; *) continue ;; esac ;;
    esac
    shellcheck --external-sources "$file"
    checked=$((checked + 1))
done
echo "$checked scripts"
[ "$checked" -gt 0 ]
