#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: translations_test.sh BUILD
#
# Each sentence is translated into each language, with the same places, blanks and punctuation, and without
# markup.
set -euo pipefail
clone=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tests/support/expect.sh
. "$clone/tests/support/expect.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

faults_in() {
    msgcat --no-wrap --no-location "$1" | awk -f "$clone/tests/support/catalogue_faults.awk"
}

# A catalogue with one sentence.
catalogue() {
    printf 'msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n\n%s\n' "$1" >"$work/one.po"
    faults_in "$work/one.po" | LC_ALL=C sort
}

# ---- What is wrong is found ----------------------------------------------------------------------

expect 'a good sentence' '' "$(catalogue $'msgid "{1} of {2}."\nmsgstr "{2}中的{1}。"')"
expect 'no translation' 'not translated: Yes.' "$(catalogue $'msgid "Yes."\nmsgstr ""')"
expect 'a guess' "fuzzy: line 4" "$(catalogue $'#, fuzzy\nmsgid "Yes."\nmsgstr "Ja."')"
expect 'a place too few' 'other places: Von {1}.' "$(catalogue $'msgid "{1} of {2}."\nmsgstr "Von {1}."')"
expect 'a plural form without its place' 'other places: keine' \
    "$(catalogue $'msgid "{} share"\nmsgid_plural "{} shares"\nmsgstr[0] "{} Freigabe"\nmsgstr[1] "keine"')"
expect 'a blank too many' 'other blanks at an end: Ja ' "$(catalogue $'msgid "Yes"\nmsgstr "Ja "')"
expect 'no full stop' 'other punctuation at the end: Ja' "$(catalogue $'msgid "Yes."\nmsgstr "Ja"')"
expect 'markup' 'markup: <b>Ja</b>.' "$(catalogue $'msgid "Yes."\nmsgstr "<b>Ja</b>."')"

expect 'an element of an answer' '' "$(catalogue $'msgid "No <sharename>."\nmsgstr "Kein <sharename>."')"
expect 'signs that languages have' '' "$(catalogue $'msgctxt "decimal sign"\nmsgid "."\nmsgstr ","')"
expect 'a colon of full width' '' "$(catalogue $'msgid "Name: "\nmsgstr "名称："')"

# ---- Nothing is wrong ----------------------------------------------------------------------------

expect 'all sentences are collected' '' "$("$clone/scripts/translations" --check 2>&1)"
for locale in de es fr it zh_CN zh_TW; do
    file=$clone/po/$locale.po
    expect "$locale can be compiled" '' "$(msgfmt --check -o "$work/$locale.mo" "$file" 2>&1)"
    expect "$locale has each sentence" '' "$(msgcmp "$file" "$clone/po/vokcontrol.pot" 2>&1)"
    expect "$locale has no fault" '' "$(faults_in "$file")"
done

finish
