#!/usr/bin/env python3
"""Writes docs/words.md, python/morvik/vocabulary.py and editors/vscode/words.json: every word of the language, from the
tables that the scanner and the machine are made from, what each word was found to take (tests/words/taken.txt), and a
session for each (sessions.txt).

    words.py            writes them; what the sessions on the page show is kept, and tests/pages/run.py --update runs new ones
    words.py --check    says which of them are not what the tables make
"""
import json
import pathlib
import pprint
import re
import struct
import sys

import tables

sys.path.append(str(tables.ROOT / "tests" / "pages"))
import run as pages  # noqa: E402  pylint: disable=wrong-import-position

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
    ("Arrays", [(82, 101), (104, 111), (160, 176), (178, 215), (256, 257)], None),
    ("At the terminal", [(1, 3), (6, 6), (74, 75), (112, 113), (253, 254)], None),
    ("Files", [(76, 81), (149, 159)], None),
    ("The process", [(0, 0), (244, 246), (250, 252), (255, 255)], None),
]
# What a line of the page calls the kinds of values that it has all of.
NUMBERS = ["integer", "real", "complex", "quaternion", "octonion"]
KINDS = ["character", *NUMBERS, "FILE", "function", "address", "nested", "empty"]
PLURALS = {"character": "characters", "integer": "integers", "real": "reals", "complex": "complex numbers",
           "quaternion": "quaternions", "octonion": "octonions", "FILE": "FILEs", "function": "functions", "address": "addresses",
           "nested": "nested values", "empty": "empty values"}
# Where an operand is empty, the other is the result.
YIELDING = {"SCALAR_TWO", "EACH", "ROOT"}

OPENING = """# Words

Every word of the language: how it is spelled, what it takes and leaves, which messages it raises, and a session. Words on one
line are the same. A byte above 127 is written as `\\xB9`, by its value in base 16; source is bytes, and these are single ones.
The sign after it is how people see and type it: [the prompt](prompt.md) and `morvik-signs` turn the one into the other.

The line with `--` is the stack: what a word takes, and what it leaves, the top to the right. `x`, `y`, `z` are any values,
`n` and `m` counts, `v` a vector or array, `w` weights, `t` a truth, `s` a text, `f` a function, `h` a FILE, `@n` an address,
`...` any number of values.

*Takes* names the kinds of which a word takes some value without a message: characters, integers, reals, complex numbers,
quaternions, octonions, FILEs, functions, addresses, nested values (an array that holds arrays), and empty ones. *Numbers*
are the five kinds from integers to octonions, and *anything* is all eleven. What the members of a nested value are counts
for each of them. *Empty gives way*: where an operand is empty, the other one is the result
([a trap](traps-values.md#an-empty-value-gives-way)).

*Messages* are those that the word itself raises, [each with its cause and its cure](messages.md). Not listed are those that
many words share: [27](messages.md#27) where there is no storage, [806](messages.md#806) where the stack is full,
[200](messages.md#200) where a word on elements meets a mark, and what a function or text reports that a word runs.

This page is made by `tools/reference/words.py`; the kinds and messages are found by trying every word over operands of every
kind (`tests/words/run.py`). The other pages tell more: [the language](language.md), [numbers](numbers.md),
[arrays](arrays.md), [files](files.md), [measuring and stepping](measuring.md).
"""
RESERVED = """
## Reserved words

These are in the language without work of their own. Most report [993](messages.md#993) or [994](messages.md#994), which end
the text or the function; the others do nothing at all and keep their operands, so that a text goes on with what it did not
expect. Words with a colon are [the library's](library.md).

| Words | Signs | What happens | Write instead |
| --- | --- | --- | --- |
"""
CLOSING = """
## Words that build a text

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
    ((b"::",), "makes the next word the built-in one"),
    ((b".", b"END"), "end a text"),
    ((b'"', b"\xBC"), "begin and end a comment"),
    ((b"\xAF",), "the minus of a number"),
]
GLYPHS = {row.byte: row for row in tables.glyphs()}
FOUND = tables.ROOT / "tests" / "words" / "taken.txt"
SESSIONS = pathlib.Path(__file__).resolve().parent / "sessions.txt"


def shown(spelling):
    text = "".join(chr(byte) if byte < 128 else "\\x%02X" % byte for byte in spelling)
    return "`%s`" % text


def cell(text):
    return text.replace("|", "\\|")


def signed(spelling):
    """A spelling with signs in the place of private bytes."""
    return "".join(chr(byte) if byte < 128 else GLYPHS[byte].sign for byte in spelling)


def signs(spellings):
    return " ".join("`%s`" % signed(word) for word in spellings if max(word) > 127)


def listed(things):
    return " and ".join(filter(None, [", ".join(things[:-1]), things[-1]]))


def kinds(names):
    """A list of kinds in words."""
    if len(names) == len(KINDS):
        return "anything"
    if len(names) > len(KINDS) - 3:
        return "anything but " + listed([PLURALS[name] for name in KINDS if name not in names])
    if all(name in names for name in NUMBERS):
        names = [name for name in names if name not in NUMBERS[1:]]
        return listed([PLURALS[name] if name != "integer" else "numbers" for name in names])
    return listed([PLURALS[name] for name in names])


def link(number):
    return "[%d](messages.md#%d)" % (number, number)


class Word:
    """What the words on one line of the page have in common."""

    def __init__(self, instruction, keyword, needs):
        self.number, self.name = instruction.number, instruction.name
        self.needs = needs - (keyword.hidden != "NOTHING_HIDDEN") + (keyword.kind == "ROOT")
        self.effect = keyword.effect or instruction.effect
        self.happens = "" if keyword.effect else tables.RESERVED.get(instruction.handler, "")
        self.meaning = keyword.meaning or instruction.meaning
        self.rewrites = keyword.kind == "REWRITE"
        self.yields = keyword.hidden == "NOTHING_HIDDEN" and bool(
            {instruction.group, instruction.name, keyword.kind} & YIELDING)
        self.spellings = []

    @property
    def title(self):
        """The spelling that the word is known by: the instruction's name where that is one, else the first of letters."""
        plain = [word.decode() for word in self.spellings if word.isascii() and len(word) > 1 and word.replace(b"_", b"").isalnum()]
        if self.name in plain:
            return self.name
        return plain[0] if plain else self.spellings[-1].decode("latin-1")

    def written(self):
        """The word as it stands in a text."""
        return ("+ " if self.rewrites else "") + self.title

    def told(self):
        """What it does, in one line."""
        return "%s. Instead: %s" % (self.happens, self.meaning) if self.happens else self.meaning

    def operands(self):
        """How many values it takes from the stack; none where it takes any number of them."""
        taken = self.effect.split("--")[0].split()
        return 0 if "..." in taken or "mark" in taken else len(taken)

    def results(self):
        """How many values it leaves; nothing where that hangs on what it runs."""
        if re.search(r"\bf\b|@n --|\.\.\.", self.effect):
            return None
        return len(self.effect.split("--")[1].split())

    def faults(self):
        """Does the stack effect name as many operands as the machine asks for?"""
        taken = [name for name in self.effect.split("--")[0].split() if name != "..."]
        if self.needs and self.effect and len(taken) != self.needs:
            yield "%s: needs %d, takes %s" % (self.title, self.needs, taken)
        if self.happens and not self.meaning:
            yield "%s: nothing says what to write instead" % self.title

    def taken(self, groups):
        """What it takes, in words: groups of kinds for each operand."""
        if self.yields:
            groups = [[[name for name in names if name != "empty"] for names in group] for group in groups]
            groups = [group for group in groups if all(group)]
        letters = self.effect.split("--")[0].split()
        pairs = {pair for group in groups for pair in product(group)}
        if len(letters) == 1:
            told = kinds(groups[0][0])
        elif len(groups) == 1 and (len(letters) != 2 or groups[0][0] != groups[0][1] or len(groups[0][0]) == len(KINDS)):
            told = "; ".join("`%s`: %s" % (letter, kinds(names)) for letter, names in zip(letters, groups[0]))
        elif len(letters) == 2 and cliques(pairs):
            told = cliques(pairs)
        else:
            told = "; or ".join(", ".join("`%s`: %s" % (letter, kinds(names)) for letter, names in zip(letters, group))
                                for group in groups)
        return told + ("; empty gives way" if self.yields else "")

    def entry(self, found, session):
        groups, passed, messages = found
        parts = ["\n### %s\n" % self.title]
        spelled = " ".join(map(shown, self.spellings))
        parts.append("\n%s%s\n" % (spelled, " &nbsp; " + signs(self.spellings) if signs(self.spellings) else ""))
        parts.append("\n`%s` &nbsp; %s\n" % (self.effect, self.told()))
        notes = ["*Takes* %s." % self.taken(groups)] if groups else []
        notes += ["*Leaves as they are* %s." % kinds(passed)] if passed else []
        notes += ["*Messages* %s." % " ".join(map(link, messages))] if messages else []
        parts.append("\n%s\n" % " ".join(notes) if notes else "")
        return "".join(parts) + session


def product(group):
    return [(left, right) for left in group[0] for right in group[1]] if len(group) == 2 else []


def cliques(pairs):
    """Pairs of kinds as sets whose members all go with each other, in words; nothing where that does not say all."""
    sets = []
    for name in KINDS:
        if (name, name) not in pairs:
            continue
        home = next((s for s in sets if all((name, other) in pairs and (other, name) in pairs for other in s)), None)
        if home:
            home.append(name)
        else:
            sets.append([name])
    rest = pairs - {(a, b) for s in sets for a in s for b in s}
    mixed = sorted({tuple(sorted(pair, key=KINDS.index)) for pair in rest}, key=lambda pair: [KINDS.index(k) for k in pair])
    if not sets or any((b, a) not in rest for a, b in rest) or len(mixed) > 2:
        return ""
    told = ["%s with each other" % kinds(s) for s in sorted(sets, key=len, reverse=True)]
    return "; ".join(told + ["%s with %s" % (PLURALS[a], PLURALS[b]) for a, b in mixed])


def words():
    """A Word for each different thing that a word can be, in the order of the instructions."""
    instructions, needs, found = {row.name: row for row in tables.instructions()}, tables.operands(), {}
    for keyword in tables.keywords():
        instruction = instructions[keyword.instruction]
        thing = (instruction.number, keyword.kind == "ROOT", keyword.modifier, keyword.hidden, keyword.meaning)
        word = found.setdefault(thing, Word(instruction, keyword, needs.get(instruction.group, 0)))
        word.spellings += keyword.spellings
    return sorted(found.values(), key=lambda word: word.number)


def findings():
    """By title, the kinds that each word takes and the messages that it raises."""
    found, title = {}, ""
    for line in FOUND.read_text(encoding="utf-8").splitlines():
        if line.startswith("  : "):
            found[title][2].extend(map(int, line[4:].split()))
        elif line.startswith("  passed "):
            found[title][1].extend(line.split()[1:])
        elif line.startswith("  "):
            found[title][0].append([names.split() for names in line.split("|")])
        elif not line.startswith("#"):
            title = line
            found[title] = ([], [], [])
    return found


def sessions():
    """By title, the options of a session and the lines that it types."""
    found = {}
    for line in SESSIONS.read_text(encoding="utf-8").splitlines():
        if line.startswith("  "):
            found[title][1].append(line[2:])
        elif line and not line.startswith("# "):
            title, *options = line.split()
            found[title] = (options, [])
    return found


def joined(options, lines):
    """A session as one text; nothing where it needs options or an Inspect prompt."""
    return "" if options or any(line.startswith("Inspect:") for line in lines) else "".join(line + " . " for line in lines)[:-1]


def block(options, lines, present):
    """A session as the page has it; new ones show nothing yet."""
    typed = [re.sub("^Inspect: ?", "Inspect [0]: ", line) if line.startswith("Inspect:") else "Morvik [0]> %s ." % line
             for line in lines]
    key = tuple(options), tuple(map(tuple, pages.typed(typed)))
    return "\n```%s\n%s\n```\n" % (" ".join(["morvik", *options]), "\n".join(present.get(key, typed)))


def presentsessions(page):
    """The sessions that the page shows, by what is typed in them."""
    return {(tuple(options), tuple(map(tuple, pages.typed(lines)))): lines
            for options, blocks in pages.sessions(page) for _, lines in blocks} if page.exists() else {}


def index(all_words):
    """Every spelling, and where it is told of: symbols, signs, and letters."""
    groups = {}
    for word in all_words:
        place = "reserved-words" if word.happens else word.title.lower()
        for spelling in word.spellings:
            text = signed(spelling)
            letters = spelling.replace(b"_", b"").isalnum() and spelling.isascii()
            kind = text[0].upper() if letters and len(text) > 1 else " !" if spelling.isascii() else " \xB0"
            groups.setdefault(kind, []).append((text.upper(), "[%s](#%s)" % (text if kind.isalpha() else "`%s`" % text, place)))
    lines = [" ".join(link for _, link in sorted(links)) for _, links in sorted(groups.items())]
    return "\n## All of them\n\n" + "\n\n".join(lines) + "\n"


def page():
    found, texts, present = findings(), sessions(), presentsessions(tables.ROOT / "docs" / "words.md")
    every = words()
    left = [word for word in every if not word.happens]
    faults = [fault for word in every for fault in word.faults()]
    faults += ["%s: no session in sessions.txt" % word.title for word in left if word.title not in texts]
    faults += ["%s: not in taken.txt; run tests/words/run.py --update" % word.title for word in left if word.title not in found]
    faults += ["%s in sessions.txt is no word" % title for title in set(texts) - {word.title for word in left}]
    if faults:
        sys.exit("\n".join(faults))
    parts = [OPENING, index(every)]
    for title, ranges, needs in SECTIONS:
        here = [word for word in left if any(first <= word.number <= last for first, last in ranges)
                and needs in (None, word.needs)]
        left = [word for word in left if word not in here]
        parts.append("\n## %s\n" % title)
        parts += [word.entry(found[word.title], block(*texts[word.title], present)) for word in here]
    if left:
        sys.exit("in no section: %s" % [word.spellings for word in left])
    parts.append(RESERVED)
    parts += ["| %s | %s | %s | %s |\n" % (cell(" ".join(map(shown, word.spellings))), cell(signs(word.spellings)),
                                           word.happens.removeprefix("reserved: "), cell(word.meaning))
              for word in every if word.happens]
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
    texts = sessions()
    all_words = [([spelling.decode("latin-1") for spelling in word.spellings], word.needs, word.effect, word.told(),
                  joined(*texts.get(word.title, ((), ())))) for word in words()]
    structure = [([spelling.decode("latin-1") for spelling in spellings], meaning) for spellings, meaning in STRUCTURE]
    constants = [([spelling.decode("latin-1") for spelling in row.spellings], value(row)) for row in tables.constants()]
    glyphs = [(row.byte, row.sign, row.typed, row.twin.decode()) for row in tables.glyphs()]
    tops = [("GLYPHS", "byte, sign, how it is typed, twin in ASCII", glyphs),
            ("KEYWORDS", "spelling, must a boundary byte follow", keywords),
            ("WORDS", "spellings of one thing, operands, stack effect, meaning, a text that shows it", all_words),
            ("STRUCTURE", "spellings, meaning", structure),
            ("CONSTANTS", "spellings, value", constants),
            ("MESSAGES", "number, text, when it comes, what is left, what helps, a text that shows it",
             [(row.number, row.text, row.when, row.left, row.cure, row.session) for row in tables.messages()])]
    return ('"""The words of the language. Made by tools/reference/words.py; not to be edited."""\n'
            + "".join("\n# %s\n%s = %s\n" % (what, name, pprint.pformat(rows, width=120)) for name, what, rows in tops))


def meanings():
    """What an editor shows beside words: spellings with signs, effect and meaning."""
    rows = [(word.spellings, word.effect, word.told()) for word in words()]
    rows += [([spelling.split()[0] for spelling in spellings], "", meaning) for spellings, meaning in STRUCTURE]
    rows += [(row.spellings, "", value(row)) for row in tables.constants()]
    rows = [{"spellings": [signed(spelling) for spelling in spellings], "effect": effect, "meaning": meaning}
            for spellings, effect, meaning in rows]
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
