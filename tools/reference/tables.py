"""The tables of src/ as data: the one reader for the page of words, the lints and the generators of tests."""
import pathlib
import re
from typing import List, NamedTuple

ROOT = pathlib.Path(__file__).resolve().parents[2]
STRING = re.compile(r'"((?:[^"\\]|\\.)*)"')
COLUMN = re.compile(r'\s*((?:"(?:[^"\\]|\\.)*"\s*)+|[^",()]+(?:\([^()]*\))?)\s*(?:,|$)')
ESCAPE = re.compile(r"\\(?:x([0-9A-Fa-f]{2})|(.))")
# Handlers that stand for no work of their own.
RESERVED = {"NOTIMPLEMENTED": "reserved: message 993", "RESTRICTED": "reserved: message 994",
            "SPACE(group)": "reserved: message 994", "NOTHING": "reserved: does nothing, and keeps its operands"}


class Instruction(NamedTuple):
    number: int
    name: str
    group: str  # the argument class
    key: str
    handler: str  # MONADIC(f), HANDLER(f) ..., or one of RESERVED
    effect: str
    meaning: str  # of a reserved one: what to write instead

    def kind(self):
        return self.handler.split("(")[0]


class Keyword(NamedTuple):
    kind: str
    bounded: bool
    instruction: str
    modifier: str
    mark: str
    hidden: str
    effect: str  # empty: that of the instruction
    meaning: str
    spellings: List[bytes]


class Constant(NamedTuple):
    tag: str
    form: str
    bits: str
    sign: str
    spellings: List[bytes]


class Glyph(NamedTuple):
    byte: int
    sign: str
    typed: str
    twin: bytes  # empty: the byte means nothing alone


class Message(NamedTuple):
    number: int
    name: str
    text: str
    when: str  # it comes
    left: str  # on the stack
    cure: str
    session: str  # a text that shows it; empty where a session cannot


def unescaped(match):
    digits, letter = match.groups()
    return chr(int(digits, 16)) if digits else {"n": "\n", "t": "\t"}.get(letter, letter)


def text(column):
    """The bytes of a column of string literals."""
    return ESCAPE.sub(unescaped, "".join(STRING.findall(column))).encode("latin-1")


def rows(table, *macros):
    """(macro, columns) for each row of a table that one of these macros makes."""
    path, = ROOT.glob("src/*/" + table)
    found = re.findall(r"^(%s)\((.*?)\)$" % "|".join(macros), path.read_text(encoding="latin-1"), re.M | re.S)
    return [(macro, [column.strip() for column in COLUMN.findall(body)]) for macro, body in found]


def instructions():
    return [Instruction(int(number), name, group, text(key).decode(), handler, text(effect).decode(), text(meaning).decode())
            for _, (number, name, group, key, handler, effect, meaning) in rows("instructions.def", "INSTRUCTION")]


def keyword(macro, columns):
    """A row of keywords.def as its macro spells it out."""
    kind, modifier, mark, hidden, effect, meaning = "PLAIN", "NIHIL", "NONE", "NOTHING_HIDDEN", '""', '""'
    if macro == "MARKING":
        instruction, mark, *spellings = columns
    elif macro == "MODIFIED":
        instruction, modifier, mark, effect, meaning, *spellings = columns
    elif macro == "PRESET":
        instruction, hidden, effect, meaning, *spellings = columns
    elif macro == "SPECIAL":
        kind, instruction, effect, meaning, *spellings = columns
    else:
        instruction, *spellings = columns
    return Keyword(kind, macro != "SYMBOL", instruction, modifier, mark, hidden, text(effect).decode(),
                   text(meaning).decode(), [text(spelling) for spelling in spellings])


def keywords():
    return [keyword(*row) for row in rows("keywords.def", "WORD", "SYMBOL", "MARKING", "MODIFIED", "PRESET", "SPECIAL")]


def constants():
    return [Constant(*columns[:4], [text(spelling) for spelling in columns[4:]])
            for _, columns in rows("constants.def", "CONSTANT")]


def glyphs():
    """The signs of the private bytes, in the order of the bytes."""
    path, = ROOT.glob("src/*/glyphs.def")
    found = re.findall(r'^GLYPH\(0x(\w+), "(.)", ("[^"]*"), ("(?:[^"\\]|\\.)*")\)$', path.read_text(encoding="utf-8"), re.M)
    return [Glyph(int(byte, 16), sign, text(typed).decode(), text(twin)) for byte, sign, typed, twin in found]


def messages():
    """Each message that can be raised."""
    return [Message(int(number), name, *(text(column).decode("latin-1") for column in columns))
            for _, (number, name, *columns) in rows("messages.def", "MESSAGE")]


def keptmessages():
    """(number, text) for each row that nothing raises."""
    return [(int(number), text(said).decode("latin-1")) for _, (number, _, said) in rows("messages.def", "KEPT")]


def operands():
    """How many operands each argument class asks for."""
    return {columns[1]: int(columns[3]) for _, columns in rows("classes.def", "ARGUMENT_CLASS")}
