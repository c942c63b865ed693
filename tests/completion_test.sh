#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: completion_test.sh BUILD
#
# The words that bash, zsh and fish offer after the words of a vokctl line.
#
# shellcheck disable=SC2016  # what stands in single quotes is for another shell to expand, or for none
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/appliance/lib.sh
. "$here/appliance/lib.sh" "$1"
completion=$clone/packaging/completion

# A vokctl that has its lists from the sample appliance, and everything else from the program itself.
folder=$roots/bin
mkdir -p "$folder"
appliance sh -c 'for name in "a  b" "it is; \$x" "back\\slash"; do
        php -r "(new PDO(\"sqlite:/usr/private/appliance.db\"))
            ->prepare(\"INSERT INTO share VALUES (?, ?, ?)\")->execute([\$argv[1], \"public\", \"internal\"]);" "$name"
    done
    vokctl shares list; echo @; vokctl users list' >"$folder/lists"
cat >"$folder/vokctl" <<TEXT
#!/bin/sh
case \$* in
    "shares list --timeout 2") exec sed '/^@/,\$d' "$folder/lists" ;;
    "users list --timeout 2") exec sed '1,/^@/d' "$folder/lists" ;;
    "users list --timeout 2 --socket /run/other") echo other ;;
    *) exec "$build/vokctl" "\$@" ;;
esac
TEXT
chmod +x "$folder/vokctl"
PATH=$folder:$PATH

# ---- bash ----

# shellcheck source=packaging/completion/bash-completion/completions/vokctl
. "$completion/bash-completion/completions/vokctl"
# compopt works only while bash completes; here it records what bash is told.
# shellcheck disable=SC2317  # the completion calls it
compopt() { told=$2; }

# offers OFFERED WORD...: compares the words that bash is offered for the last of the words.
offers() {
    local offered=$1
    shift
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=() told=
    _vokctl
    [ "$told" != default ] || COMPREPLY=("files")
    expect "bash: $*" "$offered" "$(IFS='|' && echo "${COMPREPLY[*]}")"
}

offers '--help|--version' vokctl -
offers 'shares' vokctl sh
offers 'list|show|public-name|create' vokctl shares ''
offers '--help' vokctl shares -
offers '--help|--json|--socket|--timeout|--config|--any-server' vokctl shares list ''
offers '--help|--socket|--timeout|--config|--any-server|--public|--for' vokctl shares create Music --public ''
offers '--help|--time|--name|--workgroup|--language|--socket|--timeout|--config|--any-server' vokctl host set ''
offers 'en|fr|ge|sp|it|sc|tc' vokctl host set --language ''
offers '' vokctl host set --time ''
offers '--json' vokctl status --wait 5 --j
offers '--help|--count|--line|--hex|--frame|--socket|--timeout|--config|--any-server' vokctl raw lstu --
offers 'files' vokctl raw --frame ''
offers 'files' vokctl private get ''
offers 'files' vokctl --socket ''
offers 'list|create|verify' vokctl --socket /run/other users ''
offers "$("$build/vokctl" doctor --list | grep '^p' | paste -sd '|')" vokctl doctor php p

offers 'Documents|Photos|Projects|Media|Empty|Family Videos|Économies|Accounts|USB Stick|a  b|it is; $x' \
    vokctl shares show ''
offers 'Family Videos' vokctl shares show 'Family\ V'
offers '--help|--socket|--timeout|--config|--any-server|--public|--for' vokctl shares create ''
offers '' vokctl shares create M
offers 'anna|bob|Élise' vokctl users verify ''
offers 'anna' vokctl users verify a
offers '' vokctl users create a
offers 'anna|bob|Élise' vokctl shares create Music --for ''
offers 'anna|bob|Élise' vokctl backup report ''
offers 'anna|bob|Élise' vokctl remote status ''
offers 'other' vokctl --socket /run/other users verify ''
offers 'other' vokctl users verify --socket=/run/other ''
offers '--help|--json|--socket|--timeout|--config|--any-server' vokctl shares show Media ''

# ---- zsh ----

# What _describe and _files would offer, after the words of a line.
in_zsh() {
    zsh -f -c '
        fpath=("$1" $fpath)
        autoload -Uz _vokctl
        _describe() { print -rl -- "${(@P)2}" }
        _files() { print files }
        shift
        words=("$@") CURRENT=$#
        _vokctl' zsh "$completion/zsh/site-functions" "$@"
}
expect 'zsh: commands with what they do' 'list:List all shares and whether they are public
show:Show whether a share is public or private
public-name:Show the name of the public share
create:Create a share for everybody or for a user' "$(in_zsh vokctl shares '')"
expect 'zsh: options' '--help:Print this help message and exit
--time:The time in UTC, 2026-11-21T18\:30\:00 (default\: now)' "$(in_zsh vokctl host set - | head -n 2)"
expect 'zsh: names' 'anna:user
bob:user
Élise:user' "$(in_zsh vokctl users verify '')"
expect 'zsh: names with blanks' 'Family Videos:share' "$(in_zsh vokctl shares show '' | grep Family)"
expect 'zsh: files' files "$(in_zsh vokctl private get '')"

# ---- fish ----

in_fish() {
    fish --no-config -c "source $completion/fish/vendor_completions.d/vokctl.fish; complete -C '$1'"
}
tab=$'\t'
expect 'fish: commands with what they do' "create${tab}Create a share for everybody or for a user
list${tab}List all shares and whether they are public
public-name${tab}Show the name of the public share
show${tab}Show whether a share is public or private" "$(in_fish 'vokctl shares ' | LC_ALL=C sort)"
expect 'fish: options' "--json${tab}Print JSON for programs" "$(in_fish 'vokctl status --j')"
expect 'fish: names' "anna${tab}user" "$(in_fish 'vokctl users verify a')"
expect 'fish: names with blanks' "Family Videos${tab}share" "$(in_fish 'vokctl shares show Fam' | sed 's/\\//g')"
expect 'fish: files' "$folder/lists" "$(in_fish "vokctl private get $folder/li")"

finish
