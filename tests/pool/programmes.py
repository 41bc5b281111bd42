"""Programmes for the pool: what the scalar instructions are called, values of every kind and shape, and random chains.

Everything is drawn from a generator with a seed, so that a programme is the same in every run."""
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "reference"))
import tables  # noqa: E402


def words(kind):
    """A word for each instruction of this kind of handler, with nothing hidden in it."""
    spelled = {}
    for row in tables.keywords():
        if row.kind == "PLAIN" and row.modifier == "NIHIL" and row.hidden == "NOTHING_HIDDEN":
            spelled.setdefault(row.instruction, []).extend(re.findall(r"\b[A-Z][A-Za-z0-9]+\b", b" ".join(row.spellings).decode("latin-1")))
    return [spelled[row.name][-1] for row in tables.instructions() if row.kind() == kind and spelled.get(row.name)]


MONADIC = words("MONADIC")
DYADIC = words("DYADIC")

PARTS = ["", "i", "jk", "lmno"]


def real(r):
    return r.choice(["%.3f" % r.uniform(-9, 9), "0.5", "-0.25", "1E-3", "%.17g" % r.uniform(-1e9, 1e9)])


def hyper(r, letters):
    return str(r.randint(-9, 9)) + "".join(c + str(r.randint(-9, 9)) for c in letters)


KINDS = {
    "integer": lambda r: str(r.choice([r.randint(-9, 9), r.randint(-9, 9), r.randint(-2**62, 2**62), 0, 1])),
    "real": real,
    "complex": lambda r: hyper(r, "i"),
    "polar": lambda r: "%dp%.2f" % (r.randint(0, 9), r.uniform(-3, 3)),
    "quaternion": lambda r: hyper(r, "ijk"),
    "octonion": lambda r: hyper(r, "ijklmno"),
    "truth": lambda r: r.choice("TF"),
    "character": lambda r: "'%s'" % r.choice("abcXYZ 019"),
    "number": lambda r: KINDS[r.choice(["integer", "real", "complex", "quaternion", "octonion"])](r),
    "mixed": lambda r: KINDS[r.choice(["integer", "real", "complex", "octonion", "character"])](r),
}


def nested(r, depth=2):
    return "(" + " ".join(nested(r, depth - 1) if depth and r.random() < 0.4 else KINDS["number"](r)
                          for _ in range(r.randint(2, 4))) + ")"


KINDS["nested"] = lambda r: nested(r) if r.random() < 0.5 else KINDS["number"](r)
NUMBERS = ["integer", "real", "complex", "polar", "quaternion", "octonion", "number", "truth"]


def vector(r, kind, count):
    if kind == "character":
        return "'%s'" % "".join(r.choice("abcXYZ 019") for _ in range(count))
    return "(" + " ".join(KINDS[kind](r) for _ in range(count)) + ")"


def shapes(r, count):
    """Pairs of shapes that may meet: literal makers of a kind."""
    array = lambda kind: vector(r, kind, count)
    scalar = lambda kind: KINDS[kind](r)
    one = lambda kind: "(%s)" % KINDS[kind](r)
    square = lambda kind: vector(r, kind, 4 * count) + "[%d 4]" % count
    other = lambda kind: vector(r, kind, count + 1)
    return [(array, array), (array, scalar), (scalar, array), (array, one), (one, array), (square, square),
            (square, scalar), (array, other), (array, square)]


SHOW = " . '' DUMPSTACK .\n"


def dyads(r, words, turn=None):
    """Every word over every pair of kinds: in every shape pattern, or in a pattern of each sort in turn."""
    for word in words:
        for left in KINDS:
            for right in KINDS:
                patterns = shapes(r, r.randint(3, 40))
                if turn is not None:
                    turn += 1
                    patterns = [patterns[turn % len(patterns)]]
                for first, second in patterns:
                    shared = " DUP" if r.random() < 0.2 and first == second else " " + second(right)
                    held = r.choice(["", " @x ASSIGN"])
                    yield "CLEAR " + first(left) + held + shared + " " + word + SHOW


def monads(r, words):
    for word in words:
        for kind in KINDS:
            for held in ["", " DUP", " @x ASSIGN"]:
                yield "CLEAR " + vector(r, kind, r.randint(3, 40)) + held + " " + word + SHOW
            yield "CLEAR " + vector(r, kind, 24) + "[2 3 4] " + word + SHOW


SAFE_DYADS = ["ADD", "SUBTRACT", "MULTIPLY", "DIVIDE", "IDENTICAL", "NOTIDENTICAL"]
SAFE_MONADS = ["CONJUGATE", "NEGATIVE", "MAGNITUDE", "SIGNUM"]
NAMES = ["a", "b", "c"]


def conformable(r, count):
    """A nested vector of a shape that all of its kind have."""
    number = KINDS["number"]
    return "(" + " ".join("(%s (%s %s) %s)" % (number(r), number(r), number(r), number(r)) if i % 3 == 1 else number(r)
                          for i in range(count)) + ")"


def step(r, value, depth):
    """The next words of a chain over a stack of so many values, and how many more there are then."""
    choice = r.random()
    if depth < 2 or (depth < 8 and choice < 0.15):
        return r.choice([value(), r.choice(NAMES), r.choice(NAMES), KINDS["number"](r)]), 1
    if choice < 0.45:
        return r.choice(SAFE_DYADS), -1
    if choice < 0.60:
        return r.choice(SAFE_MONADS), 0
    if choice < 0.66:
        return "DUP", 1
    if choice < 0.70:
        return "SWAP", 0
    if choice < 0.74:
        return "DISCARD", -1
    if choice < 0.78:
        word = "@%s %s" % (r.choice(NAMES), r.choice(["ASSIGN", "SET"]))
        return word, -word.endswith("SET")
    if choice < 0.82:
        return "RIGHT", -1
    if choice < 0.86:
        return ": %s ; !" % r.choice(SAFE_MONADS + ["1 +", "DUP *", "2 3 + *"]), 0
    if choice < 0.90:
        return r.choice(["MONADIC @.t SET .t %s .t RIGHT FUNCTIONEND !", "VARS 2 MONADIC %s FUNCTIONEND !",
                         "VARS 1 DYADIC %s FUNCTIONEND !"]) % r.choice(["NEGATIVE", "3 4 + +"]), 0
    if choice < 0.93:
        return "1 2 + 3 * DISCARD", 0
    if choice < 0.95:
        return ": 1 + ; DIP", 0
    if choice < 0.97:
        return "DYADIC + 2 * FUNCTIONEND !", -1
    return r.choice(["SHAPE DISCARD", "FIRST DISCARD", "DEPTH DISCARD", "ENLIST DISCARD", "PRINT"]), -1


def chain(r, steps, count):
    """Instructions one after the other over spaces of one length, which are reused, aliased and dropped at once, between
    functions, locals, names and small work that runs ahead. Nothing in it fails."""
    value = lambda: conformable(r, count) if r.random() < 0.15 else vector(r, r.choice(NUMBERS), count)
    words, depth = [], 0
    for name in NAMES:
        words.append(value() + " @%s SET" % name)
    for _ in range(steps):
        word, more = step(r, value, depth)
        words.append(word)
        depth += more
    # A text is limited in length: the chain goes on in the next.
    text = ""
    for i, word in enumerate(words):
        text += word + (" .\n" if i % 60 == 59 else " ")
    return text + SHOW


def failingwork(r, count):
    """Work on a space of this length that fails at one place or at two, wherever that is."""
    def spoilt(sound, bad):
        members = [sound() for _ in range(count)]
        for _ in range(r.choice([1, 1, 2])):
            members[r.randrange(count)] = bad
        return "(" + " ".join(members) + ")"
    whole = lambda: str(r.randint(1, 9))
    return r.choice([
        spoilt(whole, "-1") + " FACTORIAL",
        spoilt(whole, "'a'") + " " + r.choice(["NEGATIVE", "NOT", "MAGNITUDE", "1 +", "2 SWAP *"]),
        spoilt(whole, "(1 2 3)") + " " + spoilt(whole, "(1 2)") + " " + r.choice(["+", "AND", "MINIMUM"]),
        "7 SEED " + spoilt(whole, "0") + " ROLL",
        spoilt(whole, "(2 (3 -1))") + " @x ASSIGN FACTORIAL"])


# What ends a text, or a function alone, by a message of its own.
MESSAGES = ["nosuch", "'a' 1 +", "(1 2) (1 2 3) *", "1 ?Y", "-1 SLEEP", "'none' READ", "5 DO", "5 RESULT"]
# What such a thing may be in, with the stack left as it was where only the function ends.
CALLS = ["%s", "%s", ": %s ; !", "'%s' !", "7 : %s ; DIP DISCARD", "1 : %s ; REPEAT", "(5 6) MONADIC %s ; EACH DISCARD",
         "MONADIC @.t SET .t %s FUNCTIONEND !", "VARS 2 MONADIC %s FUNCTIONEND !", "5 MONADIC %s FUNCTIONEND RESULT DISCARD"]


def called(r, words):
    call = r.choice(CALLS)
    return call % (words.replace("'", "''") if "'%s'" in call else words)


def failures(r, texts, count):
    """A session of texts, of which many fail, by what the pool works at or by what the main thread does meanwhile, and
    the others show that nothing is left of that."""
    value = lambda: conformable(r, count) if r.random() < 0.15 else vector(r, r.choice(NUMBERS), count)
    session = ""
    for _ in range(texts):
        words, depth = ["%s @%s SET" % (value(), name) for name in NAMES], 0
        for _ in range(r.randint(3, 30)):
            choice = r.random()
            if choice < 0.05:
                words.append(called(r, failingwork(r, count)))
                if r.random() < 0.7:
                    words.append(called(r, r.choice(MESSAGES)))
                depth += 1
            elif choice < 0.10:
                words.append(called(r, r.choice(MESSAGES)))
            else:
                word, more = step(r, value, depth)
                words.append(word)
                depth += more
        session += "CLEAR " + " ".join(words) + " '' DUMPSTACK .\n"
    return session
