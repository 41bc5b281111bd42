#!/usr/bin/env python3
"""Compares the libraries in lib/ with Python, over random values with a fixed seed.

    random_test.py BINARY

Each case is a text of the language and what it must leave, as numbers or as a text. All cases run in one process. What a sort takes
of many numbers is held against what it takes of a few.
"""
import csv
import datetime
import decimal
import fractions
import io
import math
import pathlib
import random
import re
import subprocess
import sys
import tempfile

LIBRARIES = pathlib.Path(__file__).resolve().parents[2] / "lib"
NAMES = ("arrays", "text", "csv", "dates", "matrix", "quaternion")
SEED = 20261122
ALPHABET = "ab ,x\"'1-\n"
FEW, MANY = 3000, 30000
# What is computed in another order than Python's.
INEXACT = re.compile("arrays:round|matrix:|quaternion:")
# Ten times as many numbers take some thirteen times as much work; a quadratic way would take a hundred times as much.
GROWTH = 20
# What goes once through a text takes ten times as much.
CUT_GROWTH = 10.5


def vector(values):
    return "(" + " ".join(repr(value) for value in values) + ")" if values else "#NIL"


def matrix(rows):
    return "(%s)[%d %d]" % (" ".join(str(value) for row in rows for value in row), len(rows[0]), len(rows))


def text(characters):
    """A text in source form, each character by its bits."""
    return "'" + "".join("`0#%s`" % format(ord(c), "08b") for c in characters) + "' RAVEL" if characters else "''"


def codes(characters):
    return [float(ord(c)) for c in characters]


def flat(source):
    """The numbers of a value in source form, however it nests."""
    words = source.replace("(", " ").replace(")", " ").split()
    truths = {"T": 1.0, "F": 0.0, "#NIL": None}
    values = [truths[word] if word in truths else float(word) for word in words]
    return [value for value in values if value is not None]


def arrays(draw):
    size = draw.choice((0, 1, 2, 3, 5, 8, 30, 200))
    kind = draw.choice((lambda: draw.randint(-5, 5), lambda: draw.uniform(-1, 1), lambda: draw.randint(-10**15, 10**15),
                        lambda: draw.choice((1e-300, -1e-300, 1e300, 0, 1e-17, 2e-17, float("inf"), float("-inf")))))
    values = [kind() for _ in range(size)]
    positions = list(range(1, size + 1))
    source, shift = vector(values), draw.randint(-4, 9)
    yield source + " arrays:sort", sorted(values)
    yield source + " arrays:sortdown", sorted(values, reverse=True)
    yield source + " arrays:grade", sorted(positions, key=lambda i: values[i - 1])
    yield source + " arrays:gradedown", sorted(positions, key=lambda i: -values[i - 1])
    yield source + " arrays:unique", list(dict.fromkeys(values))
    yield source + " DUP arrays:grade arrays:at", sorted(values)
    yield "%s %d arrays:take" % (source, shift), values[:shift] if shift >= 0 else values[shift:]
    yield "%s %d arrays:drop" % (source, shift), values[shift:] if shift >= 0 else values[:shift]
    turn = shift % size if size else 0
    yield "%s %d arrays:rotate" % (source, shift), values[turn:] + values[:turn]
    wanted = [draw.choice(values) if values and draw.random() < 0.7 else 77 for _ in range(draw.randint(0, 9))]
    yield "%s %s arrays:indexof" % (source, vector(wanted)), [values.index(w) + 1 if w in values else 0 for w in wanted]
    mask = [draw.randint(0, 1) for _ in range(size)]
    yield vector(mask) + " arrays:where", [i for i in positions if mask[i - 1]]
    whole = [draw.randint(-9, 9) for _ in range(size)]
    yield vector(whole) + " : + ; arrays:scan", [sum(whole[:i]) for i in positions]
    lists = [[draw.randint(0, 2) for _ in range(draw.randint(1, 5))] for _ in range(draw.randint(1, 12))]
    order = sorted(range(1, len(lists) + 1), key=lambda i: lists[i - 1])
    yield "(%s) arrays:graderows" % " ".join(map(vector, lists)), order
    rows = [(row * 5)[:3] for row in lists]
    yield matrix(rows) + " arrays:graderows", sorted(range(1, len(rows) + 1), key=lambda i: rows[i - 1])
    yield matrix(rows) + " arrays:sortrows", sum(sorted(rows), [])
    decimals = [draw.randint(-10**6, 10**6) / 10 ** draw.randint(0, 5) for _ in range(size)]
    rounded = [float(decimal.Decimal(repr(x)).quantize(decimal.Decimal("0.01"), decimal.ROUND_HALF_UP)) for x in decimals]
    yield vector(decimals) + " 2 arrays:round", rounded


def texts(draw):
    characters = "".join(draw.choice(ALPHABET) for _ in range(draw.choice((0, 1, 2, 7, 40))))
    separator = draw.choice((",", "a", "ab", "aa", ", ", "\n"))
    source = text(characters)
    yield "%s %s text:split %s text:join DEASCII" % (source, text(separator), text("||")), codes(
        "||".join(characters.split(separator)))
    yield "%s %s text:split arrays:count" % (source, text(separator)), [len(characters.split(separator))]
    yield "%s %s text:contains" % (source, text(separator)), [separator in characters]
    yield "%s %s %s text:replace DEASCII" % (source, text(separator), text("zz")), codes(characters.replace(separator, "zz"))
    yield source + " text:words arrays:count", [len(characters.split())]
    yield source + " text:words '|' text:join DEASCII", codes("|".join(characters.split()))
    yield source + " text:trim DEASCII", codes(characters.strip())
    yield source + " text:lines '|' text:join DEASCII", codes("|".join(characters.splitlines()))
    words = ["".join(draw.choice("ab\xff\x01") for _ in range(draw.choice((1, 2, 6, 7, 13)))) for _ in range(draw.randint(2, 9))]
    words += draw.choices(words, k=2) + [words[0] + "\x01", words[1] + "a" * 12]
    yield "[. %s .] text:grade" % " ".join(map(text, words)), sorted(range(1, len(words) + 1), key=lambda i: words[i - 1])
    yield source + " text:upper DEASCII", codes(characters.upper())
    number = draw.choice((draw.uniform(-1e6, 1e6), draw.random() * 10.0 ** draw.randint(-300, 300), float(draw.randint(-9, 9))))
    yield "'%r' text:number" % number, [number]
    yield "%r text:of text:number" % number, [number]
    short = draw.randint(-10**7, 10**7) / 10**4
    places = draw.randint(0, 3)
    expected = decimal.Decimal(repr(short)).quantize(decimal.Decimal(1).scaleb(-places), decimal.ROUND_HALF_UP)
    yield "%r %d text:fixed DEASCII" % (short, places), codes(str(expected + 0 if expected else abs(expected)))


def tables(draw):
    rows = [["".join(draw.choice(ALPHABET) for _ in range(draw.randint(0, 5))) for _ in range(draw.randint(2, 4))]
            for _ in range(draw.randint(1, 4))]
    written = io.StringIO()
    csv.writer(written, lineterminator=draw.choice(("\n", "\r\n"))).writerows(rows)
    read = text(written.getvalue()) + " csv:parse"
    yield read + " MONADIC '|' text:join ; EACH '&' text:join DEASCII", codes("&".join("|".join(row) for row in rows))
    written = io.StringIO()
    csv.writer(written, lineterminator="\n").writerows(rows)
    quoted = list(csv.reader(io.StringIO(written.getvalue())))
    yield read + " csv:format csv:parse MONADIC '|' text:join ; EACH '&' text:join DEASCII", codes(
        "&".join("|".join(row) for row in quoted))


def dates(draw):
    first, second = (datetime.date.fromordinal(draw.randint(1, 3000000)) for _ in range(2))
    day = lambda date: "(%d %d %d)" % (date.year, date.month, date.day)
    yield "%s %s dates:between" % (day(first), day(second)), [(second - first).days]
    yield day(first) + " dates:weekday", [first.isoweekday()]
    yield day(first) + " dates:iso DEASCII", codes(first.isoformat())
    yield "'%s' dates:parse" % first.isoformat(), [first.year, first.month, first.day]
    yield "%s %d dates:add" % (day(first), (second - first).days), [second.year, second.month, second.day]


def determinant(rows):
    if not rows:
        return 1
    return sum((-1) ** j * row[0] * determinant([r[1:] for i, r in enumerate(rows) if i != j]) for j, row in enumerate(rows))


def matrices(draw):
    n, k, m = (draw.randint(1, 4) for _ in range(3))
    a = [[draw.randint(-5, 5) for _ in range(k)] for _ in range(n)]
    b = [[draw.randint(-5, 5) for _ in range(m)] for _ in range(k)]
    yield "%s %s matrix:product" % (matrix(a), matrix(b)), [
        sum(row[t] * b[t][j] for t in range(k)) for row in a for j in range(m)]
    square = [[draw.randint(-5, 5) for _ in range(n)] for _ in range(n)]
    value = determinant(square)
    yield matrix(square) + " matrix:determinant", [value]
    if value:
        right = [draw.randint(-5, 5) for _ in range(n)]
        solution = [fractions.Fraction(determinant([[right[i] if c == j else x for c, x in enumerate(row)]
                                                    for i, row in enumerate(square)]), value) for j in range(n)]
        yield "%s %s matrix:solve" % (matrix(square), vector(right)), [float(x) for x in solution]
        yield "%s DUP matrix:inverse matrix:product" % matrix(square), [float(i == j) for i in range(n) for j in range(n)]


def rotations(draw):
    axis = [draw.uniform(-1, 1) for _ in range(3)]
    point = [draw.uniform(-1, 1) for _ in range(3)]
    angle = draw.uniform(-3, 3)
    length = sum(x * x for x in axis) ** 0.5
    u = [x / length for x in axis]
    # The formula of Rodrigues, which knows of no quaternions.
    c, s = math.cos(angle), math.sin(angle)
    cross = [u[1] * point[2] - u[2] * point[1], u[2] * point[0] - u[0] * point[2], u[0] * point[1] - u[1] * point[0]]
    dot = sum(x * y for x, y in zip(u, point))
    turned = [point[i] * c + cross[i] * s + u[i] * dot * (1 - c) for i in range(3)]
    yield "%s %s %r quaternion:rotation quaternion:rotate" % (vector(point), vector(axis), angle), turned


def same(found, expected, exact):
    return len(found) == len(expected) and all(
        x == y or not exact and abs(x - y) <= 1e-9 * max(1.0, abs(y)) for x, y in zip(found, expected))


def run(binary, source, *options):
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        loaded = b"".join((LIBRARIES / (name + ".morvik")).read_bytes() + b" .\n" for name in NAMES)
        done = subprocess.run([str(pathlib.Path(binary).resolve()), "-q", *options], input=loaded + source.encode("latin-1"), cwd=scratch,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, check=False)
    return done.stdout.decode("latin-1")


def workof(binary, source):
    """How many words a text runs, and on how many elements."""
    words, elements = re.findall(r"Executed (\d+) operators, (\d+) operations", run(binary, source, "-p"))[-1]
    return int(words) + int(elements)


def sortwork(binary, count):
    """What a sort and a grade of so many numbers take."""
    return workof(binary, "7 SEED %d .. 0 * 1.5 + RANDOM @x SET x arrays:sort x arrays:grade DISCARD DISCARD .\n" % count)


def cutwork(binary, count):
    """What it takes to cut a text of so many characters into words, and into pieces."""
    return workof(binary, "'word, ' %d RESHAPE @t SET t text:words t ', ' text:split DISCARD DISCARD .\n" % count)


def main():
    draw = random.Random(SEED)
    makers = (arrays, texts, tables, dates, matrices, rotations)
    cases = [case for _ in range(25) for maker in makers for case in maker(draw)]
    source = "".join("CLEAR %s RAVEL ENLIST DISASSEMBLE '=' SWAP , '%d:' SWAP , PRINT .\n" % (case, number)
                     for number, (case, _) in enumerate(cases))
    output = run(sys.argv[1], source)
    answers = dict(re.findall("([0-9]+):=(.*)", output))
    failed = 0
    for number, (case, expected) in enumerate(cases):
        answer = answers.get(str(number))
        if answer is None or not same(flat(answer), [float(x) for x in expected], not INEXACT.search(case)):
            failed += 1
            print("%s\n  expected: %s\n  found:    %s" % (case[:600], expected, answer))
    for work, growth in ((sortwork, GROWTH), (cutwork, CUT_GROWTH)):
        few, many = (work(sys.argv[1], count) for count in (FEW, MANY))
        if many > growth * few:
            print("%s %d take %d steps, %d take %d" % (work.__doc__, FEW, few, MANY, many))
            failed += 1
    print("%d cases, %d wrong" % (len(cases), failed))
    return 1 if failed or len(cases) < 300 else 0


if __name__ == "__main__":
    sys.exit(main())
