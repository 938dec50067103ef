"""Finds the places of C++ sources where a small fault can be planted."""

import hashlib
import re
from dataclasses import dataclass

_LITERALS = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^()\s\\]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])*\''
    r'|^[ \t]*#(?:\\\n|[^\n])*',
    re.S | re.M)
_CHECKS = re.compile(r'\bstatic_assert\s*\(')


@dataclass(frozen=True)
class Fault:
    """One replacement in one file; positions count characters from the file's beginning."""

    path: str
    kind: str
    begin: int
    end: int
    text: str
    line: int
    name: str

    def plant(self, source: str) -> str:
        """The source with the fault; it keeps the number of lines."""
        dropped = source[self.begin:self.end].count('\n') - self.text.count('\n')
        return source[:self.begin] + self.text + '\n' * dropped + source[self.end:]


def _blank(match: re.Match) -> str:
    return re.sub(r'[^\n]', ' ', match.group())


def code_only(source: str) -> str:
    """The source with blanks in place of comments, literals of text, preprocessor lines and static_assert."""
    code = _LITERALS.sub(_blank, source)
    while match := _CHECKS.search(code):
        end = _behind_bracket(code, match.end() - 1)
        code = code[:match.start()] + re.sub(r'[^\n]', ' ', code[match.start():end]) + code[end:]
    return code


def _behind_bracket(code: str, place: int) -> int:
    depth = 0
    for i in range(place, len(code)):
        depth += {'(': 1, ')': -1}.get(code[i], 0)
        if depth == 0:
            return i + 1
    return len(code)


# What stands before the brace that opens the body of a function or of a statement in it.
_BODY = re.compile(r'(?:\)|\bconst|\bnoexcept|\boverride|\bfinal|\belse|\bdo|\btry)\s*$')
_RESULT = re.compile(r'\)\s*(?:const\s*)?(?:noexcept\s*)?->[^;{}()]*$')

def bodies(code: str) -> list[tuple[int, int]]:
    """Where the outermost bodies of functions begin and end."""
    found, stack, start = [], [], None
    for match in re.finditer(r'[{}]', code):
        place = match.start()
        if match.group() == '{':
            before = code[max(0, place - 200):place]
            inner = bool(_BODY.search(before) or _RESULT.search(before))
            inner = inner or (start is None and bool(re.search(r':\s*\w[^;]*\}\s*$', before)))
            if inner and start is None:
                start = (place + 1, len(stack))
            stack.append(place)
        elif stack:
            stack.pop()
            if start is not None and len(stack) == start[1]:
                found.append((start[0], place))
                start = None
    return found


_SWAPS = {
    'comparison': {' < ': ' <= ', ' <= ': ' < ', ' > ': ' >= ', ' >= ': ' > ', ' == ': ' != ', ' != ': ' == '},
    'logic': {' && ': ' || ', ' || ': ' && '},
    'arithmetic': {' + ': ' - ', ' - ': ' + ', ' << ': ' >> ', ' & ': ' | ', ' += ': ' -= ', ' -= ': ' += ', ' |= ': ' &= '},
    'step': {'++': '--', '--': '++'},
    'constant': {'true': 'false', 'false': 'true', 'S_OK': 'S_FALSE', 'S_FALSE': 'S_OK', 'E_FAIL': 'S_OK',
                 'E_POINTER': 'S_OK', 'E_INVALIDARG': 'S_OK'},
}
_NUMBER = re.compile(r'(?<![\w.\'])(?:0[xX][0-9A-Fa-f]+|[0-9]+)(?=[uUlL]*\b)(?![.\'\w]*\.)(?![eE])')
_CONDITION = re.compile(r'\bif \(')
_NOT = re.compile(r'(?<![\w)])!(?=[\w(])')
_LOCK = re.compile(r'^[ ]*(?:const )?(?:std::)?\w*(?:Locker|Lock|_lock|lock_guard)(?:<[^>;]*>)? \w+[({][^;]*;', re.M)
_STATEMENT = re.compile(r'(?<=[;{}:\n])\n[ ]+(?P<text>(?:\+\+|--|\*)?[A-Za-z_:][\w:.]*(?:->[\w.]+|\[[^\]\n]*\]|<[\w:, *]*>)*'
                        r'(?:\(|\s?(?:[+\-|&*/]|<<|>>)?=\s|\+\+;|--;)[^;{}]*;|break;|continue;)')
_RETURN = re.compile(r'\n[ ]+(?P<text>return\b[^;{}]*;)(?=\n[ ]+\})')


def _swaps(code: str):
    for kind, tokens in _SWAPS.items():
        for token, other in tokens.items():
            pattern = rf'\b{token}\b' if token[0].isalpha() else re.escape(token)
            for match in re.finditer(pattern, code):
                yield kind, match.start(), match.end(), other


def _numbers(code: str):
    for match in _NUMBER.finditer(code):
        value = int(match.group(), 0) if not re.fullmatch(r'0\d+', match.group()) else int(match.group(), 8)
        yield 'off by one', match.start(), match.end(), str(value + 1)
        if value > 0:
            yield 'off by one', match.start(), match.end(), str(value - 1)


def _conditions(code: str):
    for match in _CONDITION.finditer(code):
        end = _behind_bracket(code, match.end() - 1)
        if ';' not in code[match.end():end]:
            yield 'negated condition', match.end() - 1, end, ''
    for match in _NOT.finditer(code):
        yield 'dropped not', match.start(), match.end(), ''


def _drops(code: str):
    for match in _LOCK.finditer(code):
        yield 'dropped lock', match.start(), match.end(), ''
    for match in _STATEMENT.finditer(code):
        yield 'dropped statement', match.start('text'), match.end('text'), ';'
    for match in _RETURN.finditer(code):
        yield 'dropped return', match.start('text'), match.end('text'), ';'


def faults_of(path: str, source: str) -> list[Fault]:
    """All faults that can be planted in one file, in the order of their places."""
    code = code_only(source)
    spans = bodies(code)
    found = []
    for kind, begin, end, text in [*_swaps(code), *_numbers(code), *_conditions(code), *_drops(code)]:
        if not any(first <= begin and end <= last for first, last in spans):
            continue
        if kind == 'negated condition':
            text = f'(!{source[begin:end]})'  # with its texts
        line_begin = source.rfind('\n', 0, begin) + 1
        line_text = source[line_begin:source.find('\n', begin)]
        if re.match(r'\s*(?:static\s+)?constexpr\b', line_text):
            continue
        key = f'{path}\0{line_text}\0{begin - line_begin}\0{text}\0{source.count(line_text, 0, begin)}'
        name = hashlib.sha1(key.encode()).hexdigest()[:8]
        found.append(Fault(path, kind, begin, end, text, source.count('\n', 0, begin) + 1, name))
    return sorted(found, key=lambda fault: (fault.begin, fault.kind, fault.text))
