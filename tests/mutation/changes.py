"""Small changes to a source, each of which should make a test fail.

A tokenizer and the habits of clang-format are enough to find the places: a binary operator has a blank on both sides, a
bracket of a template, a reference and a pointer have not.
"""
import dataclasses
import re

TOKEN = re.compile(r"""
    (?P<blank> \s+ | //[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n\\]|\\.|\\\n)* )
  | (?P<string> (?:u8|[uUL])?"(?:[^"\\\n]|\\.)*" | (?:u8|[uUL])?'(?:[^'\\\n]|\\.)+' )
  | (?P<number> \.?\d(?:[eEpP][+-]|'?[\w.])* )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<sign> <=> | <<= | >>= | \.\.\. | -> | :: | \+\+ | -- | && | \|\| | [-+*/%&|^<>=!]= | << | >> | . )
""", re.VERBOSE | re.MULTILINE | re.DOTALL)

# What only builds for tests compile.
LEFT_OUT = re.compile(r"^#ifdef MORVIK_\w+\n.*?^#(?:else|endif)", re.MULTILINE | re.DOTALL)
# What takes the place of a binary operator.
OPERATORS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "&": ("|",), "|": ("&",),
    "+=": ("-=",), "-=": ("+=",), "|=": ("&=",), "&=": ("|=",),
}
KINDS = {"<": "comparison", ">": "comparison", "=": "comparison", "!": "comparison", "&": "logic", "|": "logic",
         "+": "sign", "-": "sign"}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
SWAPPED = {"-", "/", "%", "<<", ">>"}  # operators whose operands are not to be exchanged
OPENING, CLOSING = {"(": ")", "[": "]", "{": "}"}, {")": "(", "]": "[", "}": "{"}
BEFORE_STATEMENT = {";", "{", "}", "else", "do", ":"}
NO_CALL = {"if", "while", "for", "switch", "return", "sizeof", "alignof", "decltype", "catch", "constexpr", "requires",
           "noexcept", "static_assert", "alignas", "operator", "defined"}
BEFORE_CALL = {"return", "else", "do", "case", "co_return"}
NO_STATEMENT = NO_CALL | {"using", "static", "const", "struct", "class", "enum", "union", "template", "typedef",
                          "namespace", "extern", "inline", "friend", "public", "private", "auto", "case", "default"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclasses.dataclass(frozen=True)
class Change:
    """Puts `after` where `before` is, from `start` on, in the line of that number."""
    kind: str
    line: int
    start: int
    before: str
    after: str

    def apply(self, text):
        end = self.start + len(self.before)
        assert text[self.start:end] == self.before
        return text[:self.start] + self.after + text[end:]


class Source:
    """The tokens of a text, with the bracket that belongs to each bracket, and the one that each token is in."""

    def __init__(self, text):
        self.text = text
        left = [found.span() for found in LEFT_OUT.finditer(text)]
        self.tokens = [Token(found.lastgroup, found.group(), found.start(), found.end())
                       for found in TOKEN.finditer(text) if found.lastgroup != "blank" and
                       not any(first <= found.start() < end for first, end in left)]
        self.partner, self.inside = {}, []
        opened = []
        for i, token in enumerate(self.tokens):
            self.inside.append(self.at(opened[-1]) if opened else "")
            if token.text in OPENING and token.kind == "sign":
                opened.append(i)
            elif token.text in CLOSING and token.kind == "sign" and opened:
                self.partner[opened[-1]], self.partner[i] = i, opened[-1]
                opened.pop()
        self.fixed = self.findfixed()

    def at(self, i):
        """The text of a token; nothing beyond either end."""
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def kind(self, i):
        return self.tokens[i].kind if 0 <= i < len(self.tokens) else ""

    def line(self, i):
        return self.text.count("\n", 0, self.tokens[i].start) + 1

    def lines(self):
        """The numbers of the lines that hold code."""
        return {self.line(i) for i in range(len(self.tokens))}

    def findfixed(self):
        """The tokens that only a compiler reads: attributes and static assertions."""
        fixed = set()
        for i, token in enumerate(self.tokens):
            if (token.text == "[" and self.at(i + 1) == "[") or token.text == "static_assert":
                fixed.update(range(i, self.partner.get(i if token.text == "[" else i + 1, i) + 1))
        return fixed

    def spaced(self, i):
        """Is there a blank or the end of a line on both sides?"""
        token = self.tokens[i]
        return self.text[token.start - 1].isspace() and self.text[token.end:token.end + 1].isspace()

    def isvalue(self, i):
        """Can an expression end here?"""
        return self.kind(i) in ("name", "number", "string") and self.at(i) not in NO_STATEMENT or self.at(i) in (")", "]")

    def isbinary(self, i):
        return self.spaced(i) and self.isvalue(i - 1) and self.at(i - 1) != "operator"

    def pastpostfix(self, i):
        """The token behind a name with its members, calls and indices; i itself where there is none."""
        if self.kind(i) not in ("name", "number") or self.at(i) in NO_STATEMENT:
            return i
        i += 1
        while True:
            if self.at(i) in ("::", ".", "->") and self.kind(i + 1) == "name":
                i += 2
            elif self.at(i) in ("(", "[") and i in self.partner:
                i = self.partner[i] + 1
            else:
                return i

    def postfixstart(self, i):
        """The first token of a name with its members, calls and indices that ends at i."""
        while True:
            if self.at(i) in (")", "]") and i in self.partner and self.isvalue(self.partner[i] - 1):
                i = self.partner[i] - 1
            elif self.kind(i) in ("name", "number") and self.at(i - 1) in ("::", ".", "->"):
                i -= 2
            else:
                return i

    def isextent(self, i):
        """Is this [ that of an array being declared?"""
        before = self.at(i - 2)
        return self.kind(i - 1) == "name" and (
            self.kind(i - 2) == "name" and before not in BEFORE_CALL or before in (">", "*", "&"))

    def part(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def change(self, kind, first, last, after):
        return Change(kind, self.line(first), self.tokens[first].start, self.part(first, last), after)


def operators(source, i):
    token = source.tokens[i]
    if token.text in OPERATORS and token.kind == "sign" and source.isbinary(i):
        for after in OPERATORS[token.text]:
            yield source.change(KINDS[token.text[0]], i, i, after)
    if token.text in ("++", "--"):
        yield source.change("sign", i, i, "--" if token.text == "++" else "++")
    if token.text == "!":
        yield source.change("negation", i, i, "")


def operands(source, i):
    if source.at(i) not in SWAPPED or not source.isbinary(i):
        return
    first, past = source.postfixstart(i - 1), source.pastpostfix(i + 1)
    if past == i + 1 or source.kind(first) not in ("name", "number"):
        return
    left, right = source.part(first, i - 1), source.part(i + 1, past - 1)
    if left != right:
        yield source.change("operands", first, past - 1, "%s %s %s" % (right, source.at(i), left))


def constants(source, i):
    token = source.tokens[i]
    if token.text in ("true", "false"):
        yield source.change("constant", i, i, "false" if token.text == "true" else "true")
    if token.kind != "number" or (source.at(i - 1) == "[" and source.isextent(i - 1)):
        return
    if re.fullmatch(r"0|[1-9]\d*", token.text):
        yield source.change("constant", i, i, str(int(token.text) + 1))
        if token.text != "0":
            yield source.change("constant", i, i, str(int(token.text) - 1))
    else:
        yield source.change("constant", i, i, "(%s + 1)" % token.text)


def indices(source, i):
    if source.at(i) != "[" or not source.isvalue(i - 1) or source.isextent(i) or i not in source.partner:
        return
    last = source.partner[i] - 1
    if last > i and not (last == i + 1 and source.kind(last) == "number"):
        inside = source.part(i + 1, last)
        yield source.change("index", i + 1, last, "%s + 1" % inside)
        yield source.change("index", i + 1, last, "%s - 1" % inside)


def conditions(source, i):
    if source.at(i) not in ("if", "while"):
        return
    opening = i + 2 if source.at(i + 1) == "constexpr" else i + 1
    closing = source.partner.get(opening)
    if closing is None or any(source.at(k) in (";", "=") for k in range(opening, closing)):
        return
    yield source.change("condition", opening, closing, "(!%s)" % source.part(opening, closing))


def separatearguments(source, opening):
    """The arguments between brackets, each as its first and last token."""
    arguments, first, k = [], opening + 1, opening + 1
    closing = source.partner[opening]
    while k <= closing:
        if source.at(k) == "," or k == closing:
            arguments.append((first, k - 1))
            first = k + 1
        k = source.partner[k] + 1 if source.at(k) in OPENING else k + 1
    return arguments


def iswhole(text):
    """Is no template's bracket cut at its comma?"""
    text = text.replace("->", "")
    return text.count("<") == text.count(">") or " < " in text or " > " in text


def sort(text):
    """What an argument is by its looks: only those of one sort have a chance to compile in each other's place."""
    if re.fullmatch(r"nullptr|[A-Z]\w*[a-z]\w*", text):
        return text
    return text[0] if text[0] in "\"'&*[{!" else "1" if text[0].isdigit() else "x"


def arguments(source, i):
    if source.at(i) != "(" or i not in source.partner or source.kind(i - 1) != "name" or source.at(i - 1) in NO_CALL:
        return
    before = source.postfixstart(i - 1) - 1
    if source.at(before) in ("*", "&", ">") and not source.isbinary(before):
        return
    if source.kind(before) == "name" and source.at(before) not in BEFORE_CALL:
        return
    found = separatearguments(source, i)
    for (first, last), (nextfirst, nextlast) in zip(found, found[1:]):
        if last < first or nextlast < nextfirst:
            continue
        one, other = source.part(first, last), source.part(nextfirst, nextlast)
        if one != other and "{" not in one + other and sort(one) == sort(other) and iswhole(one) and iswhole(other):
            yield source.change("arguments", first, nextlast, "%s, %s" % (other, one))


def statements(source, i):
    if source.inside[i] != "{":
        return
    before = source.at(i - 1)
    if before == ")":
        opening = source.partner.get(i - 1, 0)
        if source.at(opening - 1) not in ("if", "while", "for", "constexpr"):
            return
    elif before not in BEFORE_STATEMENT or i == 0:
        return
    if source.at(i) in ("break", "continue", "return") and source.at(i + 1) == ";":
        if source.at(i + 2) != "}":
            yield source.change("statement", i, i, "")
        return
    last = i
    while source.at(last) not in (";", "}", ""):
        last = source.partner.get(last, last) + 1 if source.at(last) in OPENING else last + 1
    if source.at(last) == ";" and isaction(source, i, last):
        yield source.change("statement", i, last - 1, "")


def isaction(source, first, end):
    """Is this a call, an assignment or a step, and no declaration?"""
    if source.at(first) in ("++", "--"):
        return True
    start = first + 1 if source.at(first) == "*" else first
    past = source.pastpostfix(start)
    if past == start:
        return False
    if past == end:
        return source.at(end - 1) == ")"
    return source.at(past) in ASSIGNMENTS or source.at(past) in ("++", "--")


RULES = (operators, operands, constants, indices, conditions, arguments, statements)


def changesof(text):
    """Every change to a text, by the number of its line."""
    source, found = Source(text), {}
    for i in range(len(source.tokens)):
        if i in source.fixed:
            continue
        for rule in RULES:
            for change in rule(source, i):
                found.setdefault(change.line, []).append(change)
    return source.lines(), found


def tablechangesof(text):
    """The changes to a table's rows: a number by one, or a text by a letter."""
    source, found = Source(text), {}
    for i, token in enumerate(source.tokens):
        changes = list(constants(source, i))
        if token.kind == "string" and token.text.startswith('"'):
            changes = [source.change("text", i, i, token.text[:-1] + '~"')]
        for change in changes:
            found.setdefault(change.line, []).append(change)
    return found
