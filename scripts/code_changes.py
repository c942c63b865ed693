# SPDX-License-Identifier: MIT
"""The changes that scripts/mutants makes: a source's tokens, and the changes of each token.

A simple tokenizer is enough because clang-format formats all code: comparisons have spaces around them,
templates and references do not.
"""
import dataclasses
import re

TOKEN = re.compile(r'''
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<attribute>\[\[.*?\]\])
  | (?P<string>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<character>'(?:\\.[^']*|[^'\\\n])')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?P<suffix>[uUlLzZ]*)(?![.\w]))
  | (?P<word>[A-Za-z_]\w*)
  | (?P<space>\s+)
  | (?P<comparison>(?<=\s)(?:==|!=|<=|>=|<|>|&&|\|\|)(?=\s))
  | (?P<operator><=>|<<=|>>=|\.\.\.|->|::|\+\+|--|&&|\|\||[-+*/%&|^]=|<<|.)
''', re.VERBOSE | re.DOTALL | re.MULTILINE)

KINDS = ('string', 'character', 'number', 'comparison', 'statement')
COMPARISONS = {'<': '<=', '<=': '<', '>': '>=', '>=': '>', '==': '!=', '!=': '==',
               '&&': '||', '||': '&&'}
JUMPS = {'break', 'continue', 'return'}
NO_STATEMENT = {'if', 'for', 'while', 'switch', 'case', 'default', 'else', 'do', 'using', 'namespace',
                'static_assert', 'struct', 'class', 'enum', 'template', 'operator', 'const', 'static',
                'constexpr', 'auto', 'extern', 'sizeof', 'static_cast'}
PREFIXES = {'++', '--', '*', '::', '('}
# What follows the name at the start of a call or an assignment, but not of a declaration.
FOLLOW_NAME = {'(', '[', '=', '+=', '-=', '*=', '/=', '%=', '&=', '|=', '^=', '<<=', '>>=', '++', '--'}
OPENERS = {'(': ')', '[': ']', '{': '}'}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    start: int
    end: int
    text: str
    kind: str
    what: str

    def __str__(self):
        return f'{self.file}:{self.line}: {self.what}'


def tokens_of(source):
    """The tokens of code, without static assertions."""
    tokens = [Token(match.lastgroup if match.lastgroup != 'suffix' else 'number', match[0], match.start())
              for match in TOKEN.finditer(source)]
    tokens = [token for token in tokens
              if token.kind not in ('comment', 'directive', 'attribute', 'space')]
    kept = []
    position = 0
    while position < len(tokens):
        if tokens[position].text == 'static_assert':
            position = end_of_statement(tokens, position) + 1
            continue
        kept.append(tokens[position])
        position += 1
    return kept


def end_of_statement(tokens, first):
    """The position of the semicolon that ends a statement, or None if there is no statement."""
    depth = 0
    for position in range(first, len(tokens)):
        text = tokens[position].text
        if text == '{' and depth == 0 and tokens[position - 1].text != '=':
            return None
        if text in OPENERS:
            depth += 1
        elif text in OPENERS.values():
            depth -= 1
        if depth < 0:
            return None
        if text == ';' and depth == 0:
            return position
    return None


def string_changes(token):
    """A text without its last character; a word or format also without its first; an empty text with one."""
    prefix, body = re.fullmatch(r'(\w*)"(.*)"', token.text, re.DOTALL).groups()
    units = re.findall(r'\\x[0-9a-fA-F]+|\\[0-7]{1,3}|\\.|[^\\]', body, re.DOTALL)
    if not units:
        return [prefix + '"~"']
    changes = [units[:-1]]
    if len(units) > 1 and ' ' not in units:
        changes.append(units[1:])
    return [f'{prefix}"{"".join(change)}"' for change in changes]


def character_changes(token):
    return ["'~'" if token.text != "'~'" else "'!'"]


def number_changes(token):
    suffix = re.search(r'[uUlLzZ]*$', token.text)[0]
    digits = token.text[:len(token.text) - len(suffix)].replace("'", '')
    value = int(digits, 0) if digits.startswith(('0x', '0X')) else int(digits.lstrip('0') or '0',
                                                                      8 if digits.startswith('0') else 10)
    show = hex if digits.startswith(('0x', '0X')) else str
    changes = [value + 1] + ([value - 1] if value > 1 else [])
    return [show(change) + suffix for change in changes]


def changes_of(token):
    if token.kind == 'string':
        return string_changes(token)
    if token.kind == 'character':
        return character_changes(token)
    if token.kind == 'number':
        return number_changes(token)
    return [COMPARISONS[token.text]] if token.kind == 'comparison' else []


def is_deletable(tokens, first, last):
    """Whether a statement is a jump without a value, a call, or an assignment, but not a declaration."""
    words = [token.text for token in tokens[first:last]]
    if not words or words[0] in NO_STATEMENT:
        return False
    if words[0] in JUMPS:
        return len(words) == 1
    words.append(';')
    position = 0
    while words[position] in PREFIXES:
        position += 1
    while words[position + 1] in ('::', '.', '->'):
        position += 2
    what_follows = words[position + 1]
    return (tokens[first + position].kind == 'word'
            and (what_follows in FOLLOW_NAME or (what_follows == ';' and words[0] in PREFIXES)))


def statements_of(tokens):
    """The first and the last token of each statement that can be deleted."""
    for position in range(1, len(tokens)):
        if tokens[position - 1].text not in (';', '{', '}', ':', ')'):
            continue
        last = end_of_statement(tokens, position)
        if last is not None and is_deletable(tokens, position, last):
            yield tokens[position], tokens[last]


def shorten(text):
    text = ' '.join(text.split())
    return text if len(text) <= 90 else text[:87] + '...'


def mutants_of(file, source):
    tokens = tokens_of(source)

    def mutant(start, end, text, kind, what):
        return Mutant(file, source.count('\n', 0, start) + 1, start, end, text, kind, what)

    found = [mutant(token.start, token.end, text, token.kind, f'{shorten(token.text)} -> {shorten(text)}')
             for token in tokens for text in changes_of(token)]
    for first, last in statements_of(tokens):
        statement = source[first.start:last.end]
        found.append(mutant(first.start, last.end, ';' + '\n' * statement.count('\n'), 'statement',
                            f'deleted: {shorten(statement)}'))
    return sorted(found, key=lambda one: (one.start, one.end, one.text))
