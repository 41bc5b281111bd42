#!/usr/bin/env python3
"""Whole programmes, written from the vocabulary alone:  programmes.py [--seed N] [--texts N] [--comparable]

What a word takes is read from the stack effects of the tables, so that a new word takes part as soon as it has a row. Most
words meet operands of the kinds that they ask for, the others too few or anything. A session is a list of texts, a text a
list of tokens, and both can be thinned out by who looks for the cause of a fault. A seed gives the same session always.

A comparable session shows the same with a pool and without: nothing in it is drawn, waits, or lets what the main thread
did ahead of a failing slice be seen later.
"""
import argparse
import importlib.util
import pathlib
import random
import re
import sys

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS.parent / "tools" / "reference"), str(TESTS / "pairs")]
import tables  # noqa: E402
from operands import OPERANDS  # noqa: E402


def load(name, path):
    """A module that shares its file's name with another one."""
    found = importlib.util.spec_from_file_location(name, path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


LITERALS = load("literals", TESTS / "pool" / "programmes.py").KINDS

# What takes the texts that follow for something else, waits or forks: how often it may stand beside the others.
RARE = {"ENDPROCESS": 0, "STEP": 0.03, "EDIT": 0.02, "SLEEP": 0.2, "INPUT": 0.2, "QUOTEDIN": 0.3, "TRACE": 0.2,
        "WIPE": 0.4, "CLEAR": 0.4, "LOAD": 0.3, "PARALLEL": 0.5, "SERIAL": 0.5}
RESERVED = 0.1  # a word that does nothing yet
ENDING, LAST = 3, 10  # how often what ends the process stands in a text, and in how many at the end of a session
MILESTONE = 50  # texts, after which their number is said
COMMON = {"EACH": 4, "MASK": 2, "LOOP": 4, "DIP": 3, "DEEP": 2, "EXECUTE": 4, "ASSEMBLE": 3, "RESULT": 2, "DO": 3, "GET": 2,
          "IF": 2, "CHECK": 2, "OPERATOR": 2, "COLLECT": 3, "CATENATE": 2, "RESHAPE": 2, "ENCLOSE": 2, "INTERVAL": 2}
# What shows when it ran, what was drawn, how many threads there are, or what the main thread did meanwhile.
INCOMPARABLE = {"TIME", "RANDOMISE", "RANDOM", "ROLL", "DEAL", "PROBABLY", "BOOLEAN", "SEED", "PARALLEL", "SERIAL", "TRACE",
                "STEP", "EDIT", "SLEEP", "INPUT", "QUOTEDIN", "ENDPROCESS", "SAVE", "LOAD", "WRITE", "APPEND", "TEXTWRITE",
                "TEXTAPPEND", "REMEMBER", "DUMPSTACK", "OPEN", "RUN"}
SCALAR_WORDS = [b"+", b"-", b"*", b"MIN", b"MAX", b"^", b"OR", b"=", b"/", b"|"]
MOST_TOKENS = 250  # of a text, which holds 1023 Points

NAMES = [b"a", b"b", b"c", b"fun", b"Long1234567890name", b"\xe4\xf6", b"x\xb0y", b"?z", b"END1"]
SIGILS = [b"", b"", b"", b"_", b"$", b"."]
FILES = [b"f1", b"f2", b"f3", b"d/f4", b"nosuch", b"", b".", b"..", b"d", b"./f1", b"d/../f2", b"../x", b"/x", b"a b",
         b"\xe4\x01;$(touch x)", b"n" * 300, b"d/" * 40 + b"f"]
OPENINGS = [(b":", 0), (b"NEADIC", 0), (b"NILADIC", 0), (b"MONADIC", 1), (b"MONADIC", 1), (b"DYADIC", 2), (b"TRIADIC", 3),
            (b"ARGS 4 FUNCTION", 4), (b"ARGS-1 FUNCTION", 1), (b"VARS %d NILADIC", 0), (b"VARS %d MONADIC", 1),
            (b"VARS %d DYADIC", 2), (b"VARS %d ARGS 3 FUNCTION", 3), (b"ARGS 1 VARS %d FUNCTION", 1)]
# What a text may hold that is none: brackets and marks alone, numbers in two minds, bytes of the private set.
ODDITIES = [b"::", b"//", b"/-/", b"?Y", b"?N", b"[", b"]", b")", b"%", b"&", b"&1", b"@&2", b"@", b"0#", b"`0#101`",
            b"0#" + b"01" * 40, b"1E400", b"-NaN", b"1i", b"2p", b"d1p90", b"r1p2q3", b"#r1i2", b"\xaf5", b"1.2.3", b"12abc",
            b"\"a comment\"", b"\xbcanother\xbc", b";", b"#NIL", b"()", b"''", b"(())", b"`( 1 2 )", b"(1 2)[]", b"(1 2)[0]",
            b"(1 2)[-1]", b"'ab'[3 3]", b"(1)[1E300]", b"1 VARS 1 NEADIC ;", b"WRAP 5", b"\x02a\x03", b"\xff", b"\xb0",
            b"$nosuch", b"_nosuch", b".nosuch", b"nosuch", b"%here"]
HUGE = [b"1000000000000000000", b"9223372036854775807", b"-9223372036854775807", b"4294967295", b"4294967296", b"2147483648",
        b"1E308", b"Inf", b"-Inf", b"NaN", b"100000", b"1000000"]


class Word:
    """A row of the vocabulary, as it may stand in a programme."""

    def __init__(self, row, instruction):
        effect = row.effect or instruction.effect
        self.name = row.instruction
        self.kind = row.kind
        self.spellings = row.spellings
        self.inout = row.mark == "INOUT"
        self.operands = [kind for kind in effect.split("--")[0].split() if kind != "..."] if "--" in effect else None
        if self.operands is None:
            self.operands = ["x"] * tables.operands()[instruction.group]
            self.weight = RESERVED
        else:
            self.weight = RARE.get(self.name, COMMON.get(self.name, 1))


def vocabulary():
    numbered = {row.name: row for row in tables.instructions()}
    return [Word(row, numbered[row.instruction]) for row in tables.keywords() if row.kind != "BREAK"]


WORDS = vocabulary()
CONSTANTS = [spelling for row in tables.constants() for spelling in row.spellings]


def quoted(text):
    return b"'" + text.replace(b"'", b"''") + b"'"


class Writer:
    """Writes texts. The names that were set go from text to text; the rest of what stands on the stack is left to chance."""

    def __init__(self, r, comparable=False):
        self.r = r
        self.comparable = comparable
        self.words = [word for word in WORDS if not comparable or word.name not in INCOMPARABLE]
        self.weights = [word.weight for word in self.words]
        self.known = []

    def mayend(self):
        """From here on texts may end the process."""
        self.weights = [ENDING if word.name == "ENDPROCESS" else word.weight for word in self.words]

    # Values. Each is a list of tokens that leaves one value.

    def count(self):
        r = self.r
        choice = r.random()
        if choice < 0.8 or self.comparable:
            return [b"%d" % r.choice([0, 1, 1, 2, 2, 3, 4, 5, 7, -1])]
        return [r.choice(HUGE)] if choice < 0.83 else [b"%d" % r.randint(8, 300)]

    def truth(self):
        return [self.r.choice([b"T", b"F", b"1", b"0", b"0.25", b"(1 0 1)", b"(T F T F T)", b"0.5i1"])]

    def number(self):
        kind = self.r.choice(["integer", "real", "complex", "polar", "quaternion", "octonion", "truth"])
        return [LITERALS[kind](self.r).encode()]

    def members(self, depth):
        r = self.r
        made = []
        for _ in range(r.choice([0, 1, 2, 3, 3, 4, 5, 9])):
            choice = r.random()
            if choice < 0.72 or depth == 0:
                made += self.number()
            elif choice < 0.8:
                made.append(self.characters())
            elif choice < 0.85:
                made.append(r.choice([b"#PI", b"T", b"F", b"#SIN", b"0#101010101", b"-#E"]))
            else:
                made.append(b"(" + b" ".join(self.members(depth - 1)) + b")" + self.bracket(0.1))
        return made

    def bracket(self, often):
        r = self.r
        if r.random() >= often:
            return b""
        return b"[" + b" ".join(b"%d" % r.choice([0, 1, 2, 2, 3, 3, 4]) for _ in range(r.randint(1, 4))) + b"]"

    def characters(self):
        r = self.r
        some = bytes(r.choice(b"abc xyz'09\"`#_$.\n\t") if r.random() < 0.9 else r.randint(1, 255) for _ in range(r.choice([0, 1, 2, 3, 6])))
        return quoted(some) + self.bracket(0.1)

    def vector(self):
        r = self.r
        choice = r.random()
        if choice < 0.6:
            return [b"(" + b" ".join(self.members(2)) + b")" + self.bracket(0.25)]
        if choice < 0.7:
            return [self.characters()]
        if choice < 0.85:
            return self.count() + [b".."]
        if choice < 0.95:
            return [b"(" + b" ".join(self.number()[0] for _ in range(6)) + b")[%s]" % r.choice([b"3 2", b"2 3", b"1 6", b"3 1 2"])]
        return [b"[.", *self.value(), *self.value(), *self.value(), b".]"]

    def value(self):
        r = self.r
        choice = r.random()
        if choice < 0.3:
            return self.number()
        if choice < 0.65:
            return self.vector()
        if choice < 0.75 and self.known:
            return [r.choice(self.known)]
        if choice < 0.8:
            return [r.choice(CONSTANTS)]
        if choice < 0.85:
            return self.truth()
        if choice < 0.97 or self.comparable:
            return [b"DUP"]
        return r.choice(OPERANDS).encode().split(b" ") if choice < 0.99 else [r.choice(HUGE)]

    def name(self):
        r = self.r
        if r.random() < 0.02:
            return r.choice(r.choice(WORDS).spellings)
        sigil, name = r.choice(SIGILS), r.choice(NAMES)
        # A point with no letter behind it ends a text: the rest of the line would see what was done ahead of a failure.
        return name if self.comparable and sigil == b"." and not name[:1].isalpha() else sigil + name

    def address(self):
        r = self.r
        choice = r.random()
        if choice < 0.8:
            return [b"@" + (r.choice(self.known) if self.known and r.random() < 0.7 else self.name())]
        return [quoted(self.name())] if choice < 0.95 else [r.choice([b"@#IO", b"@#CT", b"@&1", b"5", b"@"])]

    def handle(self):
        how = self.r.choice([[b"0"], [b"1"], [b"2"], [b"'r'"], [b"'w'"], [b"'a+'"], [b"#NIL"], self.value()])
        return [quoted(self.r.choice(FILES)), *how, b"OPEN"]

    # Texts and functions, which hold steps of their own.

    def text(self, word, depth):
        r = self.r
        if word.name in ("ASSEMBLE", "EXECUTE"):
            tokens = self.steps(r.randint(0, 4), depth + 1)
            end = r.choice([b"", b"", b" .", b" . 1 .", b" ;"]) if r.random() < 0.98 else r.choice([b" '", b" (1", b" \""])
            return [quoted(b" ".join(tokens) + end)]
        if word.name == "AT":
            return [quoted(self.name())]
        if word.inout:
            return [quoted(r.choice(FILES[:4] if r.random() < 0.7 else FILES))]
        return [self.characters()]

    def function(self, depth):
        r = self.r
        if depth > 3:
            return [b":", r.choice([b"1", b"DUP", b"+", b"NEGATIVE", b"DISCARD"]), b";"]
        opening, arguments = r.choice(OPENINGS)
        places = 0
        if b"%d" in opening:
            places = r.choice([0, 1, 2, 3])
            opening = opening % places
        body = self.steps(r.choice([0, 1, 1, 2, 2, 3, 5]), depth + 1)
        for _ in range(r.randint(0, places)):
            place = b"%d" % r.randint(1, places)
            body[r.randint(0, len(body)):0] = r.choice([[b"&" + place], [b"7", b"@&" + place, b"SET"], [b"@&" + place]])
        if r.random() < 0.15:
            self.jump(body)
        if arguments > 1 and r.random() < 0.3:
            body = [r.choice(SCALAR_WORDS)]
        return [opening, *body, r.choice([b";", b"FUNCTIONEND"])]

    def jump(self, body):
        """A jump, forwards but for a few, to a label of the body."""
        r = self.r
        places = sorted(r.randint(0, len(body)) for _ in range(2))
        jump, label = [b"@%here", b"JUMP"], [b"%here"]
        if r.random() < 0.05 and not self.comparable:
            jump, label = label, jump
        body[places[1]:places[1]] = label
        body[places[0]:places[0]] = r.choice([jump, jump, [b"0", b"JUMP"], [b"#NIL", b"JUMP"]])

    # Words over operands.

    def operand(self, kind, word, depth):
        r = self.r
        if kind in ("n", "m"):
            return [r.choice([b"0", b"500", b"-1"])] if word.name == "JUMP" and r.random() < 0.97 else self.count()
        if kind == "v":
            return self.vector()
        if kind == "t":
            return self.truth()
        if kind == "s" or (kind == "f" and word.name == "EXECUTE" and r.random() < 0.4):
            return self.text(word, depth)
        if kind == "f":
            return self.function(depth)
        if kind == "h":
            return self.handle()
        if kind == "@n":
            return self.address()
        if kind == "w":
            return [r.choice([b"(1 1 1)", b"(0 1)", b"(1 2 3 4 5 6 7 8 9)[3 3]", b"(1 0)[1 2]", b"2", b"'ab'", b"()"])]
        if kind == "mark":
            return [b"[."]
        return self.value()

    def word(self, depth):
        r = self.r
        word = r.choices(self.words, self.weights)[0]
        tokens = []
        if word.name == "SLEEP":
            tokens += [r.choice([b"0", b"0.001", b"-1", b"'a'"])]
        else:
            for kind in word.operands[r.randint(0, 1) if r.random() < 0.08 else 0:]:
                tokens += self.operand(kind, word, depth) if r.random() < 0.9 else self.value()
        if word.kind == "REWRITE":
            tokens.append(r.choice(SCALAR_WORDS))
        tokens.append(r.choice(word.spellings))
        if word.kind == "MASK_FORM":
            tokens.append(b"MASK")
        return tokens

    def assignment(self, depth):
        r = self.r
        name = self.name()
        value = self.function(depth) + ([b"OPERATOR"] if r.random() < 0.5 else []) if r.random() < 0.4 else self.value()
        self.known = (self.known + [name])[-12:]
        return [*value, b"@" + name, r.choice([b"SET", b"SET", b"ASSIGN"])]

    def nesting(self):
        """A value that is nested deep, or what happens to one."""
        r = self.r
        levels = b"%d" % (r.choice([5, 50, 300]) if self.comparable else r.choice([5, 50, 300, 3000, 20000]))
        return [b"7", levels, b":", *r.choice([[b"ENCLOSE"], [b"ATOM"], [b"(5", b"6)", b"ENCLOSE", b","], [b"ENCLOSE", b"1", b","]]),
                b";", b"REPEAT"]

    def step(self, depth):
        r = self.r
        choice = r.random()
        if choice < 0.60:
            return self.word(depth)
        if choice < 0.72:
            return self.value()
        if choice < 0.80:
            return self.assignment(depth)
        if choice < 0.86:
            return self.known and [r.choice(self.known)] or self.value()
        if choice < 0.90:
            return [*self.truth(), b"CHECK", r.choice(self.words[0].spellings), b"?Y", *self.function(depth + 1), b"?N"]
        if choice < 0.93:
            return [b"[.", *self.steps(r.randint(0, 3), depth + 1), r.choice([b"..]", b".]", b":]", b"CLEARTOMARK"])]
        if choice < 0.935:
            return self.nesting()
        if choice < 0.95 and not self.comparable:
            return [*self.count(), *self.function(depth), r.choice([b"REPEAT", b"LOOP"])]
        if choice < 0.98:
            return r.choice([[b"DUP"], [b"SWAP"], [b"DISCARD"], [b"RIGHT"], [b"COUNTSTACK"], [b"!"], [b"ENCLOSE"]])
        return [r.choice(ODDITIES)] if not self.comparable else [b"FIRST"]

    def steps(self, count, depth=0):
        tokens = []
        while count > 0 and len(tokens) < MOST_TOKENS:
            tokens += self.step(depth)
            count -= 1
        return tokens

    def line(self):
        """A text with its end."""
        count = self.r.choice([1, 1, 2, 3, 4, 6, 10, 15])
        if not self.comparable:
            return [*self.steps(count), b"."]
        self.known = []
        return [b"CLEAR", b"WIPE", b"1", b"@#IO", b"SET", b"0", b"@#CT", b"SET", b"7", b"SEED", *self.steps(count), b"''", b"DUMPSTACK",
                b"."]


def session(seed, texts, comparable=False):
    """So many texts, and what sets the pool to work on small spaces before them. Among them are some that say how many were
    run; only the last may end the process."""
    r = random.Random(seed)
    writer = Writer(r, comparable)
    lines = [[b"%d" % r.choice([1, 1, 4, 100]), b"SERIAL", b"."]]
    for number in range(1, texts + 1):
        if number == texts - LAST:
            writer.mayend()
        lines.append(writer.line())
        if number % MILESTONE == 0:
            lines.append([b"'~%d~'" % number, b"."])
    return lines


def reached(out):
    """How many texts were run, by what a session said: less rather than more."""
    return max((int(number) for number in re.findall(rb"~(\d+)~", out)), default=0)


def written(lines):
    """A session as the bytes that the binary reads."""
    return b"".join(b" ".join(tokens) + b"\n" for tokens in lines)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--texts", type=int, default=20)
    parser.add_argument("--comparable", action="store_true")
    options = parser.parse_args()
    sys.stdout.buffer.write(written(session(options.seed, options.texts, options.comparable)))


if __name__ == "__main__":
    main()
