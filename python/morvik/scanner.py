"""Where the tokens of a text end, as the interpreter's own scanner sees it.

A text is a str whose characters below 256 are bytes. What people typed goes through `signs.onecharacter` first, which
keeps places: a sign becomes the character of its byte, and any other character above 127 one that no rule knows.
"""
import re
from typing import List, NamedTuple

from . import vocabulary

BOUNDARY = r"(?![0-9A-Za-z_])"
SPACE = " \t\r\n"
MINUS = "[-\xaf]"
DIGITS = "[0-9]+"
PART = (r"(?:%s?(?:%s(?:\.%s)?|\.%s)(?:[Ee][-+\xaf]?%s)?|%s?(?:Infinity|Inf|inf)|NaN|nan)"
        % (MINUS, DIGITS, DIGITS, DIGITS, DIGITS, MINUS))
NUMBER = (r"`?0#[01|]+`?|(?:#r?|d?r?|r)?%s(?:[i-o]%s)+|(?:#r?|d?r?|r)?%s(?:[p-v]%s)+|%s"
          % (PART, PART, PART, PART, PART))
AT = "@[%s]*" % SPACE  # blanks behind it are passed over
COUNT = MINUS + "?" + DIGITS


def alternatives(spellings):
    return "(?:%s)" % "|".join(re.escape(word) for word in sorted(spellings, key=len, reverse=True))


# Kind, rule, and whether a boundary byte must follow, in the order of the scanner's rules. Of the longest matches, the
# boundary counting, the first one is taken.
OPENERS = ("FUNCTION", "NEADIC", "NILADIC", "MONADIC", "DYADIC", "TRIADIC")
CONSTANTS = [word for spellings, _ in vocabulary.CONSTANTS for word in spellings]
RULES = [(kind, re.compile(rule + (BOUNDARY if bounded else "")), bounded) for kind, rule, bounded in [
    ("open", ":", False),
    ("open", r"(?:(?:ARGS|VARS)\s*%s\s*){0,2}%s" % (COUNT, alternatives(OPENERS)), True),
    ("builtin", "::", False),
    ("word", alternatives(word for word, bounded in vocabulary.KEYWORDS if not bounded), False),
    ("word", alternatives(word for word, bounded in vocabulary.KEYWORDS if bounded), True),
    ("end", r"\.", False),
    ("end", "END", True),
    ("close", ";", False),
    ("close", "FUNCTIONEND", True),
    ("comment", '["\xbc]', False),
    ("constant", MINUS + "?" + alternatives(CONSTANTS), True),
    ("number", NUMBER, False),
    ("string", "'", False),
    ("vector", r"`?\(", False),
    ("bracket", "(?:@[%s]*)?[_$.]?\x02" % SPACE, False),
    ("address", AT + r"(?:[_$.%][A-Za-z_][0-9A-Za-z_]*|&" + COUNT + ")", False),
    ("address", AT + r"(?![_$.]?\x02|[_$.%][A-Za-z_]|&" + COUNT + r")[^ \t\r\n][^ \t\r\n.;]*|" + AT, False),
    ("name", r"[_$.%][A-Za-z_][0-9A-Za-z_]*|&" + COUNT, False),
    ("space", "[%s]+" % SPACE, False),
]]
# The bytes that a rule may begin with go through the rules; all others begin a plain name.
NAME = re.compile(r"[^ \t\r\n][^ \t\r\n!.;]*")
VECTORMEMBER = re.compile(r"[%s]+|%s|%s|." % (SPACE, alternatives(CONSTANTS) + BOUNDARY, NUMBER), re.S)
# Numbers in a row, as one token: a literal may hold a million.
PLAINRUN = re.compile(r"(?:[-\xaf]?[0-9]+(?:\.[0-9]+)?[%s]+)+" % SPACE)
STRING = re.compile(r"(?:[^']|'')*")


CLOSERS = {"string": "'", "comment": '"', "vector": ")", "shape": "]", "function": ";", "name": "\x03"}


class Token(NamedTuple):
    kind: str
    start: int
    end: int


class Opened(NamedTuple):
    """What a text leaves open: string, comment, vector, shape, name or function, and where it began."""
    what: str
    start: int


def longest(text, place):
    """The kind and the end of the token that begins here, in the condition in which texts begin."""
    kind, end, best = "name", None, 0
    for candidate, rule, bounded in RULES:
        match = rule.match(text, place)
        if match and match.end() - place + bounded > best:
            kind, end, best = candidate, match.end(), match.end() - place + bounded
    return kind, NAME.match(text, place).end() if end is None else end


class Scan:
    """All tokens of a text, what it leaves open, and where its whole texts end."""

    def __init__(self, text):
        self.text = text
        self.tokens: List[Token] = []
        self.opened: List[Opened] = []
        self.ends: List[int] = []  # behind the end of each whole text
        place = 0
        while place < len(text):
            place = self.step(place)

    def add(self, kind, start, end):
        self.tokens.append(Token(kind, start, end))
        return end

    def step(self, place):
        kind, end = longest(self.text, place)
        if kind == "comment":
            return self.enclosed("comment", place, re.compile('["\xbc]'), end)
        if kind == "string":
            return self.string(place)
        if kind == "vector":
            return self.vector(place, end)
        if kind == "bracket":
            return self.enclosed("name", place, re.compile("\x03"), end)
        if kind == "open":
            self.opened.append(Opened("function", place))
        elif kind == "close" and self.opened:
            self.opened.pop()
        elif kind == "end":
            self.opened.clear()
            self.ends.append(end)
        return self.add(kind, place, end)

    def enclosed(self, kind, start, closing, place):
        match = closing.search(self.text, place)
        if not match:
            self.opened.append(Opened(kind, start))
        return self.add(kind, start, match.end() if match else len(self.text))

    def string(self, start):
        """A string, and the shape behind it."""
        end = STRING.match(self.text, start + 1).end()
        if end == len(self.text):
            self.opened.append(Opened("string", start))
            return self.add("string", start, end)
        return self.shape(self.add("string", start, end + 1))

    def shape(self, place):
        if self.text[place:place + 1] != "[":
            return place
        return self.enclosed("shape", place, re.compile("]"), place)

    def vector(self, place, end):
        depth = []
        while True:
            if self.text[place:end].endswith("("):
                depth.append(Opened("vector", place))
                self.add("vector", place, end)
            elif self.text[place:end] == ")":
                depth.pop()
                end += self.text[end:end + 1] == "`"
                end = self.shape(self.add("vector", place, end))
                if not depth:
                    return end
            place = end
            if place >= len(self.text):
                break
            if self.text[place] == "'":
                end = self.string(place)
                if end >= len(self.text):
                    break
                continue
            run = PLAINRUN.match(self.text, place)
            if run:
                end = self.add("number", place, run.end())
                continue
            match = VECTORMEMBER.match(self.text, place)
            end = match.end()
            part = match.group()
            if part[0] in SPACE:
                self.add("space", place, end)
            elif part not in "()":
                known = part[0] in "0123456789-\xaf.#FTINind`r" and (len(part) > 1 or part in "0123456789FT")
                self.add("number" if known else "stray", place, end)
        at = next((i for i, opened in enumerate(self.opened) if depth and opened.start > depth[0].start), len(self.opened))
        self.opened[at:at] = depth
        return len(self.text)

    def rest(self):
        """The tokens behind the last whole text, but for blanks and comments."""
        end = self.ends[-1] if self.ends else 0
        return [token for token in self.tokens if token.start >= end and token.kind not in ("space", "comment")]

    def iswhole(self):
        """Does nothing but blanks and comments follow the last end of a text?"""
        return bool(self.ends) and not self.opened and not self.rest()

    def closing(self):
        """What ends everything that is open."""
        return "".join(CLOSERS[part.what] for part in reversed(self.opened))

    def texts(self):
        """Each text by itself, (from, to); the last one with what follows it, if that is no text."""
        if not self.ends:
            return [(0, len(self.text))]
        starts = [0, *self.ends]
        ends = [*self.ends[:-1], len(self.text)] if self.iswhole() else [*self.ends, len(self.text)]
        return list(zip(starts, ends))


class Context:
    """Is the next byte of a text inside a string, a comment or a bracketed name? Told byte by byte."""

    PLAIN, STRING, COMMENT, BRACKET, VECTOR, SHAPE = "plain", "string", "comment", "bracket", "vector", "shape"

    def __init__(self):
        self.mode = self.PLAIN
        self.word = ""  # since the last blank
        self.depth = 0
        self.closed = ""  # the byte before, where a literal ended with it

    def outside(self):
        return self.mode in (self.PLAIN, self.VECTOR, self.SHAPE)

    def feed(self, byte):
        closed, self.closed = self.closed, ""
        if closed and byte == "[":
            self.mode = self.SHAPE
        elif closed == ")" and byte == "`":
            pass
        else:
            getattr(self, self.mode)(byte)

    def leave(self):
        self.mode = self.VECTOR if self.depth else self.PLAIN
        self.word = ""

    def plain(self, byte):
        if byte in SPACE:
            self.word = "@" if self.word[-1:] == "@" and not self.inname(byte, "@") else ""
        elif byte in "'\"\xbc(\x02" and not self.inname(byte):
            self.mode = {"'": self.STRING, "(": self.VECTOR, "\x02": self.BRACKET}.get(byte, self.COMMENT)
            self.depth = int(byte == "(")
        else:
            self.word += byte

    def inname(self, byte, but=""):
        """Is this byte a part of the name, or of the word, that stands before it, and not of the token `but`?"""
        place, text, kind, start = 0, self.word + byte, "", 0
        while place < len(self.word):
            start = place
            kind, place = longest(text, place)
        return place >= len(self.word) + (not but) and kind != "bracket" and self.word[start:] != (but or None)

    def string(self, byte):
        if byte == "'":
            self.leave()
            self.closed = byte

    def comment(self, byte):
        if byte in '"\xbc':
            self.leave()

    def bracket(self, byte):
        if byte == "\x03":
            self.leave()

    def vector(self, byte):
        if byte == "'":
            self.mode = self.STRING
        elif byte == "(":
            self.depth += 1
        elif byte == ")":
            self.depth -= 1
            self.closed = byte
            self.leave()

    def shape(self, byte):
        if byte == "]":
            self.leave()
