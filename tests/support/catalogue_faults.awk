# SPDX-License-Identifier: MIT
#
# Prints what is wrong with the sentences of a catalogue of translations, a line each. Its input comes from
# "msgcat --no-wrap"; entries that begin with "#~" are not used by any program.

# Its places in a fixed order: "{1}{2}".
function places(sentence,    found, number) {
    found = ""
    for (number = 0; number <= 9; ++number) {
        rest = sentence
        place = number == 0 ? "{}" : "{" number "}"
        while ((at = index(rest, place)) > 0) {
            found = found place
            rest = substr(rest, at + length(place))
        }
    }
    return found
}

function start(sentence) {
    match(sentence, /^( |\\n|\\t)*/)
    return substr(sentence, 1, RLENGTH)
}

function end(sentence) {
    return match(sentence, /( |\\n|\\t)+$/) ? substr(sentence, RSTART) : ""
}

function endsWith(sentence, mark) {
    return length(sentence) >= length(mark) && substr(sentence, length(sentence) - length(mark) + 1) == mark
}

# The last sign of a sentence, as English writes it.
function punctuation(sentence,    i, count, pair, pairs) {
    sentence = substr(sentence, 1, length(sentence) - length(end(sentence)))
    count = split(". . . 。 : : : ： ? ? ? ？ ! ! ! ！ , , , ，", pairs, " ")
    for (i = 2; i <= count; i += 2) {
        if (endsWith(sentence, pairs[i])) {
            return pairs[i - 1]
        }
    }
    return ""
}

function complain(fault, sentence) {
    print fault ": " sentence
}

function checkTranslation(original, translation) {
    if (translation == "") {
        complain("not translated", original)
        return
    }
    # Dates, signs and separators have a context, and are as the language has them.
    if ("msgctxt" in field) {
        return
    }
    if (places(translation) != places(original)) {
        complain("other places", translation)
    }
    # After a colon of full width there is no blank.
    if (start(translation) != start(original) ||
        end(translation) != end(original) && !endsWith(translation, "：")) {
        complain("other blanks at an end", translation)
    }
    if (punctuation(translation) != punctuation(original)) {
        complain("other punctuation at the end", translation)
    }
}

# Markup of pages. Elements of what the appliance's scripts answer are quoted as they are.
function hasMarkup(sentence) {
    return sentence ~ /<\/?(a|b|i|p|br|em|li|ul|div|bdi|code|span|strong)[ >]|&[a-z#0-9]+;/
}

function checkEntry(    name) {
    if (field["msgid"] != "") {
        for (name in field) {
            if (name != "msgctxt" && hasMarkup(field[name])) {
                complain("markup", field[name])
            }
            if (name ~ /^msgstr/) {
                checkTranslation("msgid_plural" in field ? field["msgid_plural"] : field["msgid"], field[name])
            }
        }
    }
    for (name in field) {
        delete field[name]
    }
    current = ""
}

/^#, .*fuzzy/ { complain("fuzzy", "line " NR) }
/^#/ { next }
/^$/ { checkEntry() }
/^msg/ {
    current = $1
    field[current] = ""
    sub(/^[^ ]+ /, "")
}
/^"/ { field[current] = field[current] substr($0, 2, length($0) - 2) }
END { checkEntry() }
