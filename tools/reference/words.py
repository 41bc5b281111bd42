#!/usr/bin/env python3
"""Writes docs/words.md, python/morvik/vocabulary.py and editors/vscode/words.json: every word of the language, from the
tables that the scanner and the machine are made from."""
import json
import pprint
import struct
import sys

import tables

# A title, the numbers of the instructions under it, and how many operands their words need; None: any.
SECTIONS = [
    ("The stack", [(221, 234), (239, 239)], None),
    ("Names", [(4, 5), (119, 120), (216, 219), (238, 238)], None),
    ("Functions, texts and control",
     [(102, 103), (114, 118), (121, 121), (220, 220), (235, 237), (240, 243), (247, 249), (259, 260)], None),
    ("Numbers, two operands", [(11, 11), (122, 132)], 2),
    ("Numbers, one operand", [(7, 25), (41, 73), (122, 132)], 1),
    ("Truth and comparison", [(26, 36), (133, 148)], None),
    ("Chance", [(37, 40), (177, 177)], None),
    ("Arrays", [(82, 101), (104, 111), (160, 176), (178, 215)], None),
    ("At the terminal", [(1, 3), (6, 6), (74, 75), (112, 113), (253, 254)], None),
    ("Files", [(76, 81), (149, 159)], None),
    ("The process", [(0, 0), (244, 246), (250, 252), (255, 258)], None),
]

OPENING = """# Words

Every word of the language. Words on one line are the same. A byte above 127 is written as `\\xB9`, by its value in base 16;
source is bytes, and these are single ones. *Signs* is how people see and type such words: [the prompt](prompt.md) and
`morvik-signs` turn the one into the other.

*Needs* is how many operands a word asks for: with fewer there is message 800. *Stack* is what it takes and what it leaves,
the top to the right: `x`, `y`, `z` are any values, `n` and `m` counts, `v` a vector or array, `t` a truth, `s` a text, `f` a
function, `h` a FILE, `@n` an address, `...` any number of values.

This page is made by `tools/reference/words.py`. The other pages tell more: [the language](language.md),
[numbers](numbers.md), [arrays](arrays.md), [files](files.md), [measuring and stepping](measuring.md).
"""
CLOSING = """
## What else is spelled one way

| Words | Signs | |
| --- | --- | --- |
"""
# What the scanner itself takes for more than an instruction.
STRUCTURE = [
    ((b":", b"NEADIC", b"FUNCTION"), "begin a function that sees all of the stack"),
    ((b"NILADIC", b"MONADIC", b"DYADIC", b"TRIADIC"), "begin a function of none to three arguments"),
    ((b"ARGS n FUNCTION",), "begins a function of n arguments"),
    ((b"VARS m",), "before one of these four, or beside `ARGS n`: gives it m locals, `&1` to `&m`"),
    ((b";", b"FUNCTIONEND"), "end a function"),
    ((b"::",), "makes the next word what it was born as"),
    ((b".", b"END"), "end a text"),
    ((b'"', b"\xBC"), "begin and end a comment"),
    ((b"\xAF",), "the minus of a number"),
]
GLYPHS = {row.byte: row for row in tables.glyphs()}


def shown(spelling):
    text = "".join(chr(byte) if byte < 128 else "\\x%02X" % byte for byte in spelling)
    return "`%s`" % text.replace("|", "\\|")


def signed(spelling):
    """A spelling with signs in the place of private bytes."""
    return "".join(chr(byte) if byte < 128 else GLYPHS[byte].sign for byte in spelling)


def signs(spellings):
    return " ".join("`%s`" % signed(word).replace("|", "\\|") for word in spellings if max(word) > 127)


class Word:
    """What the words on one line of the page have in common."""

    def __init__(self, instruction, keyword, needs):
        self.number = instruction.number
        self.needs = needs - (keyword.hidden != "NOTHING_HIDDEN") + (keyword.kind == "ROOT")
        self.effect = keyword.effect or instruction.effect
        self.meaning = keyword.meaning or instruction.meaning or tables.RESERVED[instruction.handler]
        self.spellings = []

    def row(self):
        effect = "`%s`" % self.effect if self.effect else ""
        return "| %s | %s | %s | %s | %s |\n" % (" ".join(map(shown, self.spellings)), signs(self.spellings),
                                                self.needs or "", effect, self.meaning)

    def faults(self):
        """Does the stack effect name as many operands as the machine asks for?"""
        taken = [name for name in self.effect.split("--")[0].split() if name != "..."]
        if self.needs and self.effect and len(taken) != self.needs:
            yield "%s: needs %d, takes %s" % (self.spellings[-1].decode("latin-1"), self.needs, taken)


def words():
    """A Word for each different thing that a word can be, in the order of the instructions."""
    instructions, needs, found = {row.name: row for row in tables.instructions()}, tables.operands(), {}
    for keyword in tables.keywords():
        instruction = instructions[keyword.instruction]
        thing = (instruction.number, keyword.kind == "ROOT", keyword.modifier, keyword.hidden, keyword.meaning)
        word = found.setdefault(thing, Word(instruction, keyword, needs.get(instruction.group, 0)))
        word.spellings += keyword.spellings
    return sorted(found.values(), key=lambda word: word.number)


def page():
    parts, left = [OPENING], words()
    for fault in (fault for word in left for fault in word.faults()):
        sys.exit(fault)
    for title, ranges, needs in SECTIONS:
        here = [word for word in left if any(first <= word.number <= last for first, last in ranges)
                and needs in (None, word.needs)]
        left = [word for word in left if word not in here]
        parts.append("\n## %s\n\n| Words | Signs | Needs | Stack | What it does |\n| --- | --- | --- | --- | --- |\n" % title)
        parts += [word.row() for word in here]
    if left:
        sys.exit("in no section: %s" % [word.spellings for word in left])
    constants = "".join("| %s | %s |\n" % (" ".join(map(shown, row.spellings)), value(row)) for row in tables.constants())
    structure = "".join("| %s | %s | %s |\n" % (" ".join(map(shown, spellings)), signs(spellings), meaning)
                        for spellings, meaning in STRUCTURE)
    return "".join(parts) + CLOSING + structure + "\n## Constants\n\n| Words | Value |\n| --- | --- |\n" + constants


def value(row):
    if row.tag == "0":
        return "the empty vector"
    if row.tag == "tags::REAL":
        number = struct.unpack("d", struct.pack("Q", int(row.bits, 16)))[0]
        return "%.17g%s" % (number, ", also after a `-`" if row.sign == "SIGNED" else "")
    return row.bits + (", a function of `CIRCULAR`" if row.form == "forms::NAMED" else ", a truth")


def vocabulary():
    """The same as data for the prompt, which finds it where no tables are."""
    keywords = [(spelling.decode("latin-1"), row.bounded) for row in tables.keywords() for spelling in row.spellings]
    listed = [([spelling.decode("latin-1") for spelling in word.spellings], word.needs, word.effect, word.meaning)
              for word in words()]
    structure = [([spelling.decode("latin-1") for spelling in spellings], meaning) for spellings, meaning in STRUCTURE]
    constants = [([spelling.decode("latin-1") for spelling in row.spellings], value(row)) for row in tables.constants()]
    glyphs = [(row.byte, row.sign, row.typed, row.twin.decode()) for row in tables.glyphs()]
    tops = [("GLYPHS", "byte, sign, how it is typed, twin in ASCII", glyphs),
            ("KEYWORDS", "spelling, must a boundary byte follow", keywords),
            ("WORDS", "spellings of one thing, operands, stack effect, meaning", listed),
            ("STRUCTURE", "spellings, meaning", structure),
            ("CONSTANTS", "spellings, value", constants),
            ("MESSAGES", "number, text, when it comes, what is left, what helps, a text that shows it",
             [(row.number, row.text, row.when, row.left, row.cure, row.session) for row in tables.messages()])]
    return ('"""The words of the language. Made by tools/reference/words.py; not to be edited."""\n'
            + "".join("\n# %s\n%s = %s\n" % (what, name, pprint.pformat(rows, width=120)) for name, what, rows in tops))


def meanings():
    """What an editor shows beside words: spellings with signs, effect and meaning."""
    listed = [(word.spellings, word.effect, word.meaning) for word in words()]
    listed += [([spelling.split()[0] for spelling in spellings], "", meaning) for spellings, meaning in STRUCTURE]
    listed += [(row.spellings, "", value(row)) for row in tables.constants()]
    rows = [{"spellings": [signed(spelling) for spelling in spellings], "effect": effect, "meaning": meaning}
            for spellings, effect, meaning in listed]
    return '{"signs": %s,\n"words": [\n%s\n]}\n' % (
        json.dumps({chr(byte): row.sign for byte, row in GLYPHS.items()}, ensure_ascii=False),
        ",\n".join(json.dumps(row, ensure_ascii=False) for row in rows))


TARGETS = {"docs/words.md": page, "python/morvik/vocabulary.py": vocabulary, "editors/vscode/words.json": meanings}


if __name__ == "__main__":
    if sys.argv[1:] == ["--check"]:
        outdated = [name for name, make in TARGETS.items()
                    if (tables.ROOT / name).read_text(encoding="utf-8") != make()]
        for name in TARGETS:
            print("%s is %s" % (name, "not up to date: run tools/reference/words.py" if name in outdated else "up to date"))
        sys.exit(bool(outdated))
    for name, make in TARGETS.items():
        (tables.ROOT / name).write_text(make(), encoding="utf-8")
