"""Questions to the interpreter between two texts: what is on the stack, and which names there are.

They are texts of their own that leave everything as it was: values are only duplicated, and words go by what they were
born as. The interpreter prints the top of the stack after them, as after any text, so nothing is asked while that is large.
"""
import re
import secrets
from typing import NamedTuple

from . import engine
from .scanner import Scan

SHOWN = 3  # values from the top
DEEPEST = 16000  # near the end of the stack nothing is pushed
FEW = 16  # elements of a value that is looked at
LARGE_ECHO = 1 << 16
# What DEPTH says: of simple values, of functions and addresses, of a mark.
FLAT, SYMBOLIC, MARK = ("0", "1"), "-1", "225"
KINDS = [("octonion", re.compile(r"[m-o]|[t-v]")), ("quaternion", re.compile(r"[jkl]|[qrs]")),
         ("complex", re.compile(r"[ip]")), ("real", re.compile(r"[.eIN]")), ("integer", re.compile(r"\d"))]


class Value(NamedTuple):
    shape: tuple  # empty: a scalar, or what has no elements
    kind: str
    text: str

    def summary(self, width=24):
        shape = "×".join(map(str, self.shape)) if self.shape != (0,) else ""
        text = self.text if len(self.text) <= width else self.text[:width - 1] + "…"
        return " ".join(part for part in (shape, self.kind, text) if part)


def kind(text):
    """The kind of a value by its source text."""
    text = text.strip()
    if text.startswith("'"):
        return "characters" if len(text) != 3 else "character"
    if text.endswith((" FUNCTION", ";")) or text.startswith(":"):
        return "function"
    if text.startswith(("@", "&")):
        return "address"
    if text in ("T", "F"):
        return "truth"
    if text == "#NIL":
        return "empty"
    kinds = set()
    for token in Scan(text).tokens:
        part = text[token.start:token.end]
        if token.kind == "vector" and part == "(" and token.start > 1:
            return "nested"
        if token.kind == "string":
            kinds.add("character")
        elif token.kind in ("number", "constant"):
            kinds.add(next((name for name, rule in KINDS if rule.search(part.lstrip("-"))), "integer"))
    return kinds.pop() if len(kinds) == 1 else "mixed" if kinds else ""


class Peeker:
    def __init__(self, process):
        self.process = process
        self.usable = True
        self.stepping = False

    def ask(self, text):
        """What a text prints, up to the last mark in it."""
        mark = secrets.token_hex(8)
        depth, said = self.process.depth, []
        asked = text.replace("MARK", " '%s' ::PRINT " % mark) + " .\n"
        wanted = self.process.converse(asked.encode("latin-1"), said.append)
        self.stepping = wanted.state != engine.AT_PROMPT
        while wanted.state == engine.ASKS_TEXT:  # every text is stepped through
            wanted = self.process.converse(b"\n", said.append)
        if wanted.state != engine.AT_PROMPT or wanted.depth != depth:
            self.usable = False
            return []
        parts = b"".join(said).decode("utf-8", "replace").split(mark)
        return [part.strip("\n") for part in parts[:-1]]

    def deep(self, words):
        """A text that runs words of ours on each of the values on top, the topmost first."""
        text = ""
        for word in reversed(words):
            text = "%s : %s ; ::DIP" % (word, text) if text else word
        return text

    def stack(self, echo):
        """The Values on top, the topmost first; None where nobody knows. `echo` is how much the last text printed."""
        depth = self.process.depth
        if not self.usable or depth > DEEPEST or echo > LARGE_ECHO:
            return None
        count = min(depth, SHOWN)
        if count == 0:
            return []
        shapes = self.ask("MARK" + self.deep(["::DUP ::SHAPE ::PRINT MARK ::DUP ::DEPTH ::PRINT MARK"] * count))
        if self.stepping or len(shapes) != 2 * count + 1:
            return None
        shapes = [(self.shape(shape), level.strip()) for shape, level in zip(shapes[1::2], shapes[2::2])]
        looks = [self.look(shape, level) for shape, level in shapes]
        texts = self.ask("MARK" + self.deep([look + " MARK" for look in looks]))
        if self.stepping or len(texts) != count + 1:
            return None
        return [self.value(shape, level, text) for (shape, level), text in zip(shapes, texts[1:])]

    @staticmethod
    def shape(text):
        return tuple(map(int, text.split())) if re.fullmatch(r"[\d\s]+", text) else ()

    @staticmethod
    def look(shape, level):
        """The words that print a value, or the beginning of a large one; nothing for what may be large inside."""
        count = 1
        for extent in shape:
            count *= extent
        if level == SYMBOLIC:
            return "::DUP ::DISASSEMBLE ::PRINT"
        if level not in FLAT:
            return ""
        if count <= FEW:
            return "::DUP ::DISASSEMBLE ::PRINT"
        return "::DUP (%d) ::RESHAPE ::DISASSEMBLE ::PRINT" % FEW

    @staticmethod
    def value(shape, level, text):
        if level == MARK:
            return Value((), "mark", "")
        if level not in FLAT + (SYMBOLIC,):
            return Value(shape, "nested", "")
        return Value(shape, kind(text), " ".join(text.split()))

    def names(self):
        """The names that the interpreter lists."""
        if not self.usable:
            return []
        said = self.ask("MARK ::VARIABLES ::PRINT ::FUNCTIONS ::PRINT MARK")
        return said[1].split() if len(said) == 2 and not self.stepping else []
