"""Finds the mutants of a C++ source: small changes of its text. Uses regular expressions instead of a parser.

The search relies on the layout that clang-format produces: a binary operator has a space before it and a space or a
line break after it, the angle brackets of a template have no spaces, and every body is in braces. A change that does
not compile is replaced by another change. So a regular expression that matches the wrong text only costs time.
"""

import hashlib
import re
from collections import Counter
from dataclasses import dataclass

# Binary operators, which have white space on both sides, and the operators that a typical mistake would use instead.
_BINARY = {
    "comparison": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "arithmetic": {"+": "-", "-": "+", "*": "+", "/": "*", "%": "/", "+=": "-=", "-=": "+="},
    "logic": {"&&": "||", "||": "&&", "&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<", "|=": "&=", "&=": "|=",
              "<<=": ">>=", ">>=": "<<="},
}
_KIND_OF = {old: kind for kind, pairs in _BINARY.items() for old in pairs}
_BINARY_OPERATOR = re.compile(
    r"(?<= )(" + "|".join(re.escape(old) for old in sorted(_KIND_OF, key=len, reverse=True)) + r")(?=[ \n])")
_STEP = re.compile(r"\+\+|--(?!>)")
_NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9A-Fa-f']+|\d[\d']*)([uUlL]*)(?![\w.'])")
_TRUTH = re.compile(r"\b(true|false)\b")
_CONDITION = re.compile(r"\b(?:if|while) \(")
_DECLARES = re.compile(r"[\w>*&] \*?&?\w+ = |;")
_RETURN = re.compile(r"\breturn ([^;{]+);")

# A statement that can be deleted: a call, an assignment, an increment, a jump without a result, a throw, or a guard
# that holds or releases a lock.
_STATEMENT = re.compile(
    r"(?:\(void\))?(?:\+\+|--|\*)*[A-Za-z_][\w:]*(?:<[\w:, ]*>)?(?:(?:->|\.)\w+|\[[^\[\]]*\])*"
    r"(?:\(|\+\+|--| (?:[-+*/|&^]|<<|>>)?= ).*"
    r"|(?:throw\b|const (?:Guard|UnGuard|Bookkeeping)\b).*|break|continue|return", re.DOTALL)
_NO_STATEMENT = re.compile(r"(?:return|using|case)\b.+|.* = (?:default|delete)", re.DOTALL)

_NOT_CODE = re.compile(
    r"""
      //[^\n]*
    | /\*.*?\*/
    | ^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*          # directives with their continuation lines
    | (?:L|u8?|U)?"(?:[^"\\\n]|\\.)*"
    | (?<![\w'])(?:L|u8?|U)?'(?:[^'\\\n]|\\.)+'
    | \[\[[^\]]*\]\]
    | \btemplate\s*<[^\n]*>\s*$
    | \boperator\s*[^\s\w(]+
    """, re.VERBOSE | re.DOTALL | re.MULTILINE)
_STATIC_ASSERT = re.compile(r"\bstatic_assert\b[^;]*;")


@dataclass(frozen=True)
class Change:
    """One change of one file: `old` at `offset` becomes `new`."""

    path: str  # relative to the project's root
    offset: int
    old: str
    new: str
    kind: str
    line: int
    before: str  # the affected lines, joined into one line without indentation
    after: str
    # A hash in hexadecimal, by which the changes of one kind are sorted. It depends on the seed, the path, the affected
    # lines and the number of earlier changes with the same lines.
    rank: str

    def applied(self, text):
        assert text.startswith(self.old, self.offset)
        return text[:self.offset] + self.new + text[self.offset + len(self.old):]

    @property
    def key(self):
        return self.path, self.before, self.after

    def __str__(self):
        return f"{self.path}:{self.line}: {self.kind}\n    - {self.before}\n    + {self.after}"


def _blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def _code(text):
    """`text` with spaces instead of everything that is never changed: comments, string and character literals,
    directives, attributes, template headers, operator names and static assertions. Line feeds are kept, so the offsets
    and the lines of the remaining code stay the same."""
    return _STATIC_ASSERT.sub(_blank, _NOT_CODE.sub(_blank, text))


def _closing(code, opening):
    """The offset of the parenthesis that closes the parenthesis at `opening`."""
    depth = 0
    for offset in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[offset], 0)
        if depth == 0:
            return offset
    raise ValueError("missing closing parenthesis")


def _other_number(match):
    digits, suffix = match.group(1).replace("'", ""), match.group(2)
    if digits[:2].lower() == "0x":
        return f"0x{int(digits, 16) ^ 1:X}{suffix}"
    return str({0: 1, 1: 0}.get(int(digits), int(digits) + 1)) + suffix


def _operators(code):
    for match in _BINARY_OPERATOR.finditer(code):
        old = match.group()
        yield match.start(), old, _BINARY[_KIND_OF[old]][old], _KIND_OF[old]
    for match in _STEP.finditer(code):
        yield match.start(), match.group(), {"++": "--", "--": "++"}[match.group()], "arithmetic"


def _constants(code):
    for match in _NUMBER.finditer(code):
        yield match.start(), match.group(), _other_number(match), "constant"
    for match in _TRUTH.finditer(code):
        yield match.start(), match.group(), {"true": "false", "false": "true"}[match.group()], "constant"


def _conditions(code, text):
    for match in _CONDITION.finditer(code):
        opening = match.end() - 1
        closing = _closing(code, opening)
        if not _DECLARES.search(code, opening, closing):
            yield opening, text[opening:closing + 1], f"(!{text[opening:closing + 1]})", "condition"


def _returns(code, text):
    for match in _RETURN.finditer(code):
        value = text[match.start(1):match.end(1)]
        if value not in ("true", "false"):
            yield match.start(1), value, "{}", "result"


def _statements(code, text):
    start, depth = 0, 0
    for offset, unit in enumerate(code):
        depth += {"(": 1, ")": -1}.get(unit, 0)
        if unit in "{}" and depth == 0:
            start = offset + 1
        elif unit == ";" and depth == 0:
            begin = start + len(code[start:offset]) - len(code[start:offset].lstrip())
            statement = code[begin:offset]
            if _STATEMENT.fullmatch(statement) and not _NO_STATEMENT.fullmatch(statement):
                yield begin, text[begin:offset], "", "deletion"
            start = offset + 1


def _one_line(text):
    return " ".join(text.split())


def changes_of(path, text, seed):
    """All changes of `text`, the contents of the file `path`, in the order in which a sample takes them."""
    code = _code(text)
    found, seen = [], {}
    for offset, old, new, kind in (*_operators(code), *_constants(code), *_conditions(code, text),
                                   *_returns(code, text), *_statements(code, text)):
        first = text.rfind("\n", 0, offset) + 1
        last = text.find("\n", offset + len(old))
        before = _one_line(text[first:last])
        after = _one_line(text[first:offset] + new + text[offset + len(old):last])
        seen[before, after] = count = seen.get((before, after), 0) + 1
        rank = hashlib.sha256(f"{seed}\n{path}\n{before}\n{after}\n{count}".encode()).hexdigest()
        found.append(Change(path, offset, old, new, kind, text.count("\n", 0, offset) + 1, before, after, rank))
    found.sort(key=lambda change: change.rank)
    of_kind = Counter()
    turns = {}
    for change in found:
        turns[change] = of_kind[change.kind]
        of_kind[change.kind] += 1
    return sorted(found, key=lambda change: (turns[change], change.rank))  # every kind in turn
