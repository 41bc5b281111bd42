"""One build that holds many changes: each stands beside what it replaces, and a number in the binary chooses one of them.

A change that does not compile so (a constant of a table, an extent, what is worked out while compiling) stays out of that
build, and gets one of its own.
"""
import pathlib
import re
import shutil

from changes import CLOSING, OPENING, Source, TOKEN

MARK = b"morvik is changed by number:"
HEADER = """#pragma once
extern struct PlantedChange { char mark[%d]; volatile unsigned number; } plantedchange;
inline bool isplanted(unsigned number) { return plantedchange.number == number; }
""" % len(MARK)
DEFINITION = '#include "%%s"\nPlantedChange plantedchange = {{%s}, 0};\n' % ", ".join(map(str, MARK))
PLACE = re.compile(r"^(?:In file included from |\s+from )?\S*?/(src/\S+?):(\d+)[:,](.*)")

BEFORE_EXPRESSION = {",", ";", "?", ":", "return", "else", "do", "case", "="}
BEHIND_EXPRESSION = {",", ";", "?", ":"}
ASSIGNING = {"+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
SIGNS = {"!", "*", "-", "~", "&"}
CONTROL = {"if", "while", "for", "switch", "constexpr"}


def widened(source, first, last, assigns):
    """The whole expression around some tokens, as its first and last token."""
    stops = set() if assigns else ASSIGNING
    while first > 0:
        before = source.at(first - 1)
        if before in CLOSING and source.kind(first - 1) == "sign":
            opening = source.partner.get(first - 1)
            if before == "}" or opening is None or source.at(opening - 1) in CONTROL:
                break
            first = opening
        elif before in OPENING or before in BEFORE_EXPRESSION | stops:
            break
        else:
            first -= 1
    while last + 1 < len(source.tokens):
        behind = source.at(last + 1)
        if behind in OPENING and last + 1 in source.partner:
            last = source.partner[last + 1]
        elif behind in CLOSING or behind in BEHIND_EXPRESSION | stops:
            break
        else:
            last += 1
    return first, last


def pastoperand(source, i):
    """The token behind what a sign before it works on."""
    while source.at(i) in SIGNS:
        i += 1
    return source.partner[i] + 1 if source.at(i) == "(" and i in source.partner else source.pastpostfix(i)


def guarded(source, change, number):
    """Where a change and what it replaces stand side by side: from, to, and the text."""
    starts = {token.start: i for i, token in enumerate(source.tokens)}
    first = last = starts[change.start]
    while source.tokens[last].end < change.start + len(change.before):
        last += 1
    planted = "isplanted(%d)" % number
    if change.kind == "statement":
        return change.start, change.start + len(change.before), "if (%s) ; else %s" % (planted, change.before)
    if change.kind == "condition":
        return change.start, source.tokens[last].end, "(%s != static_cast<bool>%s)" % (planted, change.before)
    if change.kind == "arguments":
        while source.at(first - 1) != "(":
            first = source.partner.get(first - 1, first - 1) if source.at(first - 1) in CLOSING else first - 1
        first, last = first - 2, source.partner[first - 1]
    if change.kind == "negation":
        last = pastoperand(source, first + 1) - 1
    elif change.kind not in ("constant", "index"):
        first, last = widened(source, first, last, change.before in ASSIGNING)
    start, end = source.tokens[first].start, source.tokens[last].end
    before = source.text[start:end]
    at = change.start - start
    after = before[:at] + change.after + before[at + len(change.before):]
    if change.kind == "negation":
        after, before = "static_cast<bool>(%s)" % after, "static_cast<bool>(%s)" % before
    return start, end, "(%s ? (%s) : (%s))" % (planted, inoneline(after), before)


def inoneline(text):
    """The same tokens without a line's end, so that the lines behind it keep their numbers."""
    return " ".join(found.group() for found in TOKEN.finditer(text) if found.lastgroup != "blank") if "\n" in text else text


def support(header):
    """Writes the header that such a build includes first. Returns the source that it needs besides."""
    header.write_text(HEADER)
    return {"src/spaces/planted.cpp": DEFINITION % header}


class Schemata:
    """The changes of a list, by number from 1 on; `alone` are the numbers of those that need a build of their own."""

    def __init__(self, texts, drawn, alone=()):
        self.texts, self.alone = texts, set(alone)
        self.places, self.numbers = {}, {}  # number: path, from, to, text
        taken, sources = {}, {}
        for number, (path, change) in enumerate(drawn, 1):
            self.numbers[path, change] = number
            if path.suffix == ".def":
                self.alone.add(number)
                continue
            if path not in sources:
                sources[path] = Source(texts[path])
            start, end, text = guarded(sources[path], change, number)
            if "\n#" in texts[path][start:end] or any(start < other[1] and other[0] < end for other in taken.get(path, ())):
                self.alone.add(number)
                continue
            taken.setdefault(path, []).append((start, end))
            self.places[number] = (path, start, end, text)

    def number(self, path, change):
        """The number that chooses a change; 0 where it needs a build of its own."""
        number = self.numbers.get((path, change), 0)
        return 0 if number in self.alone else number

    def isbroken(self, path, change):
        """Does a change compile neither beside others nor by itself? So it is with what was exchanged and has no fitting
        type."""
        number = self.numbers.get((path, change), 0)
        return change.kind == "arguments" and number in self.alone and number in self.places

    def planted(self):
        """The text of each source, with all the changes in it that can stand side by side."""
        texts = dict(self.texts)
        for number, (path, start, end, text) in sorted(self.places.items(), key=lambda place: -place[1][1]):
            if number not in self.alone:
                texts[path] = texts[path][:start] + text + texts[path][end:]
        return texts

    def settle(self, build, bring):
        """Brings the sources and builds, and takes out what does not compile, until all of it does. Returns what the
        compiler says where the fault is elsewhere."""
        while True:
            bring()
            outcome = build()
            if outcome.passed:
                return ""
            if not self.blame(outcome.output):
                return outcome.output[-3000:]

    def blame(self, output):
        """Takes those out that a compiler complains of, or else all of a source that it complains of. Returns whether
        there are any."""
        lines, wholes, failing = set(), set(), False
        for found in map(PLACE.match, output.splitlines()):
            if not found:
                continue
            failing = "error:" in found.group(3) or failing and "warning:" not in found.group(3)
            path = pathlib.Path(found.group(1))
            if failing:
                lines.add((path, int(found.group(2))))
            if "error:" in found.group(3):
                wholes.add(path)
        placed = {number: place for number, place in self.places.items() if number not in self.alone}
        blamed = {number for number, (path, start, end, _) in placed.items()
                  if any((path, line) in lines for line in range(self.texts[path].count("\n", 0, start) + 1,
                                                                 self.texts[path].count("\n", 0, end) + 2))}
        blamed = blamed or {number for number, place in placed.items() if place[0] in wholes}
        self.alone |= blamed
        return bool(blamed)


def choose(binary, number):
    """Writes into a binary which change it is to do; 0 for none. What still runs keeps the old one."""
    copy = binary.with_name(binary.name + ".new")
    shutil.copy(binary, copy)
    copy.replace(binary)
    with open(binary, "r+b") as file:
        file.seek(marks.get(binary, 0))
        if file.read(len(MARK)) != MARK:
            file.seek(0)
            data = file.read()
            marks[binary] = data.find(MARK)
            assert marks[binary] >= 0 and data.find(MARK, marks[binary] + 1) < 0, binary
        file.seek(marks[binary] + -(-len(MARK) // 4) * 4)
        file.write(number.to_bytes(4, "little"))


marks = {}  # where in a binary the mark is
