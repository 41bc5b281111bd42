#!/usr/bin/env python3
"""The quick loop does what the loop of the machine does: random programmes with it and without it, whose output, messages
and counts of Points and operations must be the same to the byte.

By hand, for as long as one likes: MORVIK_PROGRAMMES=1000000 MORVIK_SEED=7 differential_test.py BINARY
"""
import difflib
import os
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

BINARY = os.path.abspath(sys.argv.pop(1))
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
PROGRAMMES = int(os.environ.get("MORVIK_PROGRAMMES", 600 if SANITIZED else 10000))
SEED = int(os.environ.get("MORVIK_SEED", 1))
IN_A_SESSION = 40  # programmes that one process runs one after the other
WITH_POOL = TIMED = 8  # one session of so many has coprocessors, and another one times each instruction
STACK_POINTS = 16584
CPU_SECONDS = 20 if SANITIZED else 5  # a session that takes more, as a jump leads back now and then, tells nothing

NAMES = ["a", "b", "c", "$d", "_e"]
FUNCTIONS = ["f", "g", "h"]  # each calls those that stand behind it
LITERALS = ["0", "1", "2", "-3", "7", "0.5", "2.5", "-0.25", "1E300", "9223372036854775807", "4611686018427387904", "T",
            "F", "'x'", "'text'", "(1 2 3)", "(1.5 2 -7)", "(4 5.5)", "2i3", "1i2j3k4", "#NIL", "(1 (2 3))", "0#101",
            "3p0", "#PI", "(7)", "Inf", "1l2", "(0)[3 2]", "(1 2.5 'x')", "((1 2) (3) (4 (5)))", "9 INTERVAL", "1i2j3k4l5m6n7o8"]
NUMBERS = ["0", "1", "2", "3", "-1", "5", "10", "1.5", "0.25", "-2.5", "T", "F", "100000000000"]
# Where a sum, a difference or a product of integers is worked in another way, or is no integer any more.
BOUNDS = ["2147483647", "2147483648", "-2147483649", "3037000500", "94906266", "4503599627370495", "4503599627370496",
          "-4503599627370496", "-4503599627370497", "9007199254740993", "Inf", "-Inf", "1E-300", "-0.0"]
TOLERANCES = ["0", "1E-12", "0.5", "1", "3", "-1", "2i1", "'x'", "(1 2)"]
DYADIC = ["+", "-", "*", "/", "<", "<=", "=", ">=", ">", "MIN", "MAX", "RESIDUE", "AND", "OR", "NAND", "IDENTICAL", "**",
          "BINOMIAL", "LOGARITHM", "STRONGAND", "NOTEQUIVALENT"]
MONADIC = ["NEGATIVE", "MAGNITUDE", "SIGNUM", "FLOOR", "CEILING", "NOT", "RECIPROCAL", "BOOLEAN", "ISBOOLEAN", "BINARY",
           "POLAR", "FACTORIAL", "PITIMES", "CONJUGATE", "EXPONENTIAL", "TRUNCATE", "NUMBER", "DEG"]
STACK = ["DUP", "DUP", "DUP", "DISCARD", "SWAP", "SWAP", "RIGHT", "COUNTSTACK", "MARK", "COLLECT", "CLEAR", "COUNTTOMARK",
         "CLEARTOMARK"]
SPACES = ["SHAPE", "RANK", "RAVEL", ",", "FIRST", "REST", "REVERSE", "ENCLOSE", "DISCLOSE", "DEPTH", "MATCH", "+ //",
          "INTERVAL"]


class Writer:
    """One programme. `points` counts what a body holds at most, so that jumps go forward."""

    def __init__(self, r):
        self.r = r

    def number(self):
        return self.r.choice(NUMBERS)

    def condition(self):
        r = self.r
        return r.choice(["%s %s CHECK" % (self.number(), r.choice(["<", ">", "="])), "CHECK", "DUP CHECK",
                         "DUP %s < CHECK" % self.number(), "T CHECK", "F CHECK"])

    def decided(self, depth, functions):
        r = self.r
        then = r.choice(["?Y", "?N"])
        return r.choice([
            "RETURN " + then, "DISCARD " + then, "DUP " + then, self.number() + " " + then, "a " + then,
            "0 JUMP " + then if r.random() < 0.3 else "SWAP " + then, "+ " + then,
            "%s %s" % (self.function(depth, functions), then) if depth > 0 else "NEGATIVE " + then,
            "PRINT " + then,
        ])

    def function(self, depth, functions, kinds=(":", "NILADIC", "MONADIC", "DYADIC", "VARS 1 MONADIC")):
        return "%s %s ;" % (self.r.choice(kinds), self.body(depth - 1, functions))

    def recursion(self):
        """Functions that call themselves and each other as often as `k` says, and lose or change their meaning meanwhile.
        What runs before `k` falls does not jump over it."""
        r = self.r

        def some(most):
            return " ".join(self.step(1, FUNCTIONS, 1000, 1)[0] for _ in range(r.randrange(most + 1)))

        def change():
            return r.choice(["", "", "", "", ": 5 ; @r SET", "MONADIC 1 + ; @s SET", "s @r SET", "@r FORGET", "2 @s SET",
                             "1 @.p SET .p DISCARD", "NEWCONTEXT", "PREVIOUS CONTEXT", "r DISCARD", "r OPERATOR DISCARD"])

        def call():
            return r.choice(["r !", "r !", "r !", "s !", "s !", "r RESULT", "T CHECK : r ! ; ?Y", "r DIP", "2 : r ! ; REPEAT",
                             "(1 2) @r GET EACH DISCARD", "'r !' !", "3 2 MONADIC + r ! ; LOOP", "r ! s !"])

        def body():
            return "%s %s k 1 - @k SET k 1 < CHECK RETURN ?Y %s %s %s %s" % (
                r.choice(["NEADIC", "NILADIC", "MONADIC", "MONADIC", "DYADIC", "VARS 1 MONADIC"]).replace("NEADIC", ":"),
                some(1), some(3), change(), call(), some(3))

        deep = 1500 if r.random() < 0.03 else r.choice([3, 5, 9, 17])
        return "%s ; @r SET %s ; @s SET %d @k SET 7 9 %s %d @k SET %d : r ! ; REPEAT" % (
            body(), body(), deep, r.choice(["r !", "s !", "r ! s !"]), deep, r.choice([2, 3, 40]))

    def growth(self, rounds=1):
        """The value of a name that becomes another one: what is appended, what is taken, and who else holds it. What
        doubles a value is not for many rounds."""
        r = self.r
        name, other = r.choice(NAMES), r.choice(NAMES)
        what = ["1", "2.5", "'x'", "'text'", "(1 2) ENCLOSE", "(1 (2 3))", "(((1) 2) 3) ENCLOSE", "1i2j3k4l5m6n7o8",
                "(1 2i3)", "#NIL", "f", "(0)[3 2]", "T", "3 INTERVAL", "1 2 +", "7 0 /", "(1 2 3 4)[2 2]", "x",
                name + " FIRST", "@" + other]
        forms = ["{n} {w} , @{n} SET"] * 6 + ["{n} REST @{n} SET"] * 4 + [
            "{n} {w} , @{n} SET {n} {w} , @{n} SET", "{n} RREST @{n} SET", "{n} FIRST {n} REST @{n} SET",
            "{n} {w} , @{o} SET", "{n} @{o} SET {n} {w} , @{n} SET", "{n} @{o} SET {n} REST @{n} SET",
            "{n} {n} {w} , @{n} SET", "{n} {n} REST @{n} SET", "{w} {n} SWAP , @{n} SET", "{w} {n} , @{n} SET",
            "{n} ENCLOSE {n} {w} , @{n} SET", "{n} RAVEL {w} , @{n} SET", "{n} COLLECT {n} {w} , @{n} SET",
            "{n} 2 (1) RESHAPE REST @{n} SET", "{n} {w} , @{n} ASSIGN", "{n} {w} , RAVEL @{n} SET",
            "{n} {w} , @{n} SET {n} DEPTH", "{n} REST @{n} SET {n} SHAPE", "{n} {w} @{n} FORGET , @{n} SET",
            "{n} 3 RESHAPE @{n} SET", "{n} + // @{n} SET", "{n} REVERSE @{n} SET", "@{n} GET REST @{n} SET {n} SHAPE"]
        if rounds <= 3:
            what += [other, name, other + " ENCLOSE", "DUP"]
            forms += ["{n} {n} , @{n} SET", "{n} MONADIC {n} SWAP , @{n} SET 1 ; EACH",
                      "{n} MONADIC DISCARD {n} REST @{n} SET 1 ; EACH"]
        return r.choice(forms).format(n=name, o=other, w=r.choice(what))

    def loop(self, depth, functions):
        r = self.r
        count = r.choice([0, 1, 2, 3, 5, 17])
        if r.random() < 0.25:
            rounds = r.choice([3, 5, 17, 40])
            text = " ".join(self.growth(rounds) for _ in range(r.choice([1, 1, 2, 3])))
            kind = r.choice(["%d NILADIC %s ; LOOP", "%d : %s ; REPEAT", "(1 2 3)[%d] MONADIC %s ; EACH"])
            return kind % (rounds, text)
        kind = r.randrange(6)
        if kind == 0:
            return "%d %s REPEAT" % (count, self.function(depth, functions, (":",)))
        if kind == 1:
            return "%s %d DYADIC %s ; LOOP" % (self.number(), count, self.r.choice(["+", "*", "DISCARD 1 +", "- a +",
                                                                                    self.body(depth - 1, functions)]))
        if kind == 2:
            return "%d MONADIC %s ; LOOP" % (count, r.choice(["@a SET", "a + @a SET", "DISCARD", "@b ASSIGN DISCARD",
                                                              self.body(depth - 1, functions)]))
        if kind == 3:
            return "%d NILADIC %s ; LOOP" % (count, r.choice(["a b + @c SET", "a 1 + @a SET", self.body(depth - 1, functions)]))
        if kind == 4:
            return "%d DYADIC %s ; LOOP" % (count, self.body(depth - 1, functions))
        return "%s %s EACH" % (r.choice(["(1 2 3 4)", "(1.5 2 3)", "a", "5 INTERVAL", "'abc'", "(1 (2 3) 4)", "(1 2i3 4)", "7"]),
                               self.function(depth, functions, ("MONADIC", "MONADIC", "VARS 1 MONADIC")))

    def step(self, depth, functions, place, height):
        """Some Points, how many there are at most in the body itself, and how much higher the stack is then, about. What
        would fail for want of operands is rare, so that a programme gets far."""
        r = self.r
        x = r.random()
        name = r.choice(NAMES)
        need = 2 if 0.44 <= x < 0.62 else 1 if 0.34 <= x < 0.44 or 0.62 <= x < 0.86 else 0
        if height < need and r.random() < 0.97:
            x = r.random() * 0.34
        if x < 0.22:
            return (self.number() if r.random() < 0.82 else r.choice(BOUNDS if r.random() < 0.2 else LITERALS)), 1, 1
        if x < 0.34:
            return name, 1, 1
        if x < 0.44:
            word = r.choice(["SET", "SET", "SET", "SET", "ASSIGN", "GET", "FORGET" if r.random() < 0.1 else "SET"])
            return "@%s %s" % (name, word), 2, {"SET": -1, "GET": 1}.get(word, 0)
        if x < 0.62:
            return r.choice(DYADIC), 1, -1
        if x < 0.68:
            return r.choice(MONADIC), 1, 0
        if x < 0.77:
            word = r.choice(STACK)
            return word, 1, {"DUP": 1, "DISCARD": -1, "RIGHT": -1, "SWAP": 0, "CLEAR": -height, "COLLECT": 1 - height}.get(word, 1)
        if x < 0.78:
            return r.choice(SPACES), 3, 0
        if x < 0.79:
            return self.growth(40), 9, 1
        if x < 0.86:
            return self.condition() + " " + self.decided(depth, functions), 7, -1
        if x < 0.88:
            return "%d JUMP" % r.choice([0, place + r.randint(3, 6)]), 2, 0
        if x < 0.93 and depth > 0:
            return self.loop(depth, functions), 5, 0
        if x < 0.96 and functions:
            return r.choice(functions) + r.choice([" !", " !", " !", " DIP", " RESULT", "", " ! a +"]), 4, 0
        if x < 0.98 and depth > 0:
            return self.function(depth, functions) + r.choice([" !", " !", "", " DIP"]), 2, 0
        return r.choice(["'1 a +' !", "PRINT", "'b' GET", "SMALL CONTEXT", "PREVIOUS CONTEXT", "1 2 IF",
                         "WIPE" if r.random() < 0.1 else "NOOP", "OPERATOR", "0.5 CHECK 1 ?Y", "TIME DISCARD",
                         "1 'x' +", "NIHIL", "%s @#CT SET" % r.choice(TOLERANCES) if r.random() < 0.2 else "NOOP"]), 5, 0

    def body(self, depth, functions, height=1, place=0):
        text = []
        for _ in range(self.r.choice([1, 2, 3, 4, 6, 9, 14])):
            some, points, higher = self.step(depth, functions, place, height)
            text.append(some)
            place += points
            height = max(height + higher, 0)
        return " ".join(text)

    def programme(self):
        r = self.r
        text = []
        for i, name in enumerate(FUNCTIONS):
            if r.random() < 0.5:
                text.append("%s @%s SET" % (self.function(2, FUNCTIONS[i + 1:]), name))
        for name in NAMES[:3]:
            if r.random() < 0.4:
                text.append("%s @%s SET" % (r.choice(LITERALS + NUMBERS * 3), name))
        if r.random() < 0.2:
            text.append(self.recursion())
        text.append(self.body(3, FUNCTIONS, place=1000))  # jumps there end the text
        text.append(self.loop(3, FUNCTIONS))
        return " ".join(text) + " .\n"

    def lists(self):
        """Nested and mixed values that grow and shrink in the same rounds, and how deep they are in each."""
        r = self.r
        values = ["(1 (2 3) 4)", "((1 2) (3) (4 (5 6)))", "(1 2.5 'x')", "('ab' 1 ((((2)))))", "9 INTERVAL", "#NIL",
                  "(1 2i3 1i2j3k4l5m6n7o8 4)", "(1 (2 3) 4) 2 RESHAPE", "(1 ((((2)))) (3) 4 (5))",
                  "(1 2 2.5 3 'x' 4)", "(1 2 3 'x') 3 RESHAPE", "((1 2) (3 4) (5 6)) + //", "MARK 1 (1 (2 3)) 'x' COLLECT", "'some text'"]
        text = ["%s @%s SET" % (r.choice(values), name) for name in NAMES[:3]]
        steps = " ".join(r.choice([self.growth(40), self.growth(40), "%s DEPTH" % r.choice(NAMES[:3]),
                                   "%s (1 2 3 4 5 6 7) COMPRESS" % r.choice(NAMES[:3]),
                                   "%s %s MATCH" % (r.choice(NAMES[:3]), r.choice(values[:-1]))])
                         for _ in range(r.choice([2, 3, 5, 8])))
        return "%s %d NILADIC %s ; LOOP a DEPTH b DEPTH c DEPTH .\n" % (" ".join(text), r.choice([2, 4, 9, 30]), steps)


    def texts(self):
        """Short vectors that are made longer and shorter, joined and taken apart, in rounds and by EACH."""
        r = self.r
        values = ["'some text'", "'x'", "''", "('ab' 'cde' 'f')", "(1 'ab' 2.5)", "(1 2 3)", "(1.5 2 3)", "('ab' (1 2) 3)",
                  "'a' 300 RESHAPE", "(1 2i3)", "(1 (2 (3 4)))", "9 INTERVAL", "('ab' 'cd' 'ef')", "(2.0 3.0)", "7", "2.0",
                  "(0)[3 2]", "1i2j3k4l5m6n7o8", "(3 4)[2 2]", "0.5", "f", "'x' FIRST", "(1)", "#NIL", "300 INTERVAL"]
        numbers = ["0", "1", "2", "3", "5", "9", "-1", "2.0", "2.5", "256", "257", "300", "(2 2)", "(3)", "T"]

        def word():
            return r.choice(["%s RESHAPE" % r.choice(numbers)] * 3 + ["%s ," % r.choice(values), "%s SWAP ," % r.choice(values),
                             "FIRST", "FIRST", "REST", "REVERSE", "DUP ,", "ENCLOSE", "DISCARD 'abc'", "SHAPE", "RAVEL",
                             "%s SWAP RESHAPE" % r.choice(values), "%s ," % r.choice(NAMES[:3]), "FIRSTELEMENT", "DUP @a SET",
                             "%s SWAP RESHAPE" % r.choice(NAMES[:3]), "DISCARD", "2.5 *", "1 +", "PRINT", "DISCARD f",
                             "FORMTEXT", "DUP DISCARD", "@b SET", "MARK", "DISCARD 1 'x' +", "EXECUTE", "2 *", "DISCLOSE"])

        def some(most):
            return " ".join(word() for _ in range(r.randrange(most + 1)))

        def rounds():
            return r.choice([
                "%s MONADIC %s ; EACH @%s SET" % (r.choice(values + NAMES[:3] * 4), some(4), r.choice(NAMES[:3])),
                "%d MONADIC %s %s @%s SET ; LOOP" % (r.choice([2, 3, 9]), r.choice(values), some(3), r.choice(NAMES[:3])),
                "%d : %s %s @%s SET ; REPEAT" % (r.choice([2, 3, 9]), r.choice(NAMES[:3]), some(3), r.choice(NAMES[:3])),
                "%d : %s REST @%s SET %s SHAPE ; REPEAT" % (r.choice([2, 3, 9]), *[r.choice(NAMES[:2]) for _ in range(3)])])

        text = ["%s @%s SET" % (r.choice(values), name) for name in NAMES[:3]]
        return " ".join(text + [rounds() for _ in range(r.choice([1, 2, 3]))]) + " .\n"


def session(seed):
    r = random.Random(seed)
    lines = ["1 SEED : 0 ; DUP @f SET DUP @g SET DUP @h SET DUP @r SET @s SET 0 @k SET 1 @a SET 2 @b SET 3 @c SET 4 @$d SET 5 @_e SET .\n"]
    for _ in range(IN_A_SESSION):
        writer = Writer(r)
        lines.append(r.choice([writer.programme] * 5 + [writer.lists] * 2 + [writer.texts] * 2)())
        # Depth of the stack, all values, and what the names hold.
        lines.append("1E-13 @#CT SET COUNTSTACK . DISCARD . " + r.choice(["", "", "CLEAR . "]) + "a . CLEAR b . CLEAR c . CLEAR .\n")
    return "".join(lines)


VARYING = re.compile(rb"--- Spent: [0-9:.]+ ---|-->\tPerformance:[^\n]*\n[^\n]*|0x[0-9a-f]{6,}")


def limitprocessor():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS))


def run(text, quick, options=()):
    environment = dict(os.environ)
    environment.pop("MORVIK_QUICK", None)
    if not quick:
        environment["MORVIK_QUICK"] = "off"
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([BINARY, "-q", "-p", *options], input=text.encode("latin-1"), capture_output=True, timeout=300,
                              check=False, cwd=folder, env=environment, preexec_fn=limitprocessor)
    return done.returncode, VARYING.sub(b"", done.stdout), VARYING.sub(b"", done.stderr)


ENDLESS = (-signal.SIGXCPU, -signal.SIGKILL)


class Differential(unittest.TestCase):
    maxDiff = None

    def agree(self, text, seed, options=()):
        """What both of them give; None where one ran too long."""
        without = run(text, False, options)
        withit = run(text, True, options) if without[0] not in ENDLESS else without
        if without[0] in ENDLESS or withit[0] in ENDLESS:
            return None
        if without == withit:
            return without
        for one, other in zip(without, withit):
            if one == other:
                continue
            if isinstance(one, int):
                self.fail("seed %s: status %d and %d" % (seed, one, other))
            lines = [part.decode("latin-1").splitlines() for part in (one, other)]
            self.fail("seed %s, without and with the quick loop:\n" % seed +
                      "\n".join(list(difflib.unified_diff(*lines, lineterm="", n=6))[:60]))

    def test_random_programmes(self):
        sessions, endless = max(PROGRAMMES // IN_A_SESSION, 1), 0
        for i in range(sessions):
            seed = SEED * 1000003 + i
            with self.subTest(seed=seed):
                options = ("-c2",) if i % WITH_POOL == 0 else ("-i",) if i % TIMED == 1 else ()
                endless += self.agree(session(seed), seed, options) is None
        self.assertLessEqual(endless, 1 + sessions // 20)

    def test_a_full_stack(self):
        """Each Point that finds no room says so, also where one operation does the work of several."""
        for body in ("a REST @a SET", "a 1 , @a SET", "b 1 + @b SET", "b b + @b SET", "b b < CHECK 1 ?Y", "b 2 < CHECK 1 ?Y",
                     "b DUP SWAP RIGHT", "f !", "2 f ! @b SET", "a REST @b SET", "a FIRST", "a 2 RESHAPE", "a a ,", "1 b ,"):
            text = ["(1 2 3 4 5 6 7) @a SET 7 @b SET : 5 ; @f SET f ! f ! .\n"]
            for height in range(STACK_POINTS - 9, STACK_POINTS + 1):
                text.append("CLEAR 7 %d : DUP ; REPEAT 2 : 8 8 %s ; REPEAT COUNTSTACK CLEAR a b .\n" % (height, body))
            self.agree("".join(text), body)

    def test_masks(self):
        """MASK with bodies that are known, that nearly are, and that fail, over numbers of each kind."""
        r = random.Random(SEED)
        bodies = ["RAVEL SUM", "RAVEL SUM", "RAVEL + //", "SUM", "RAVEL SUM 3 =", "RAVEL MAX //", "RAVEL SUMROWS", "ENLIST SUM",
                  "RAVEL SUM RETURN", "RAVEL SUM @a SET a", "RAVEL SUM 'x' +", "SUM RAVEL", "VARS 1 MONADIC RAVEL SUM", ""]
        kinds = [["0", "1", "2", "-1", "5", "T"], ["0.5", "-0.25", "2.5", "1E-300", "-0.0"], ["1", "0.5", "3"],
                 ["1", "4611686018427387904"], ["0", "2i3"], ["1", "'x'"], ["1.5", "Inf"]]
        lines = []
        for _ in range(max(PROGRAMMES // 10, 60)):
            wide, high = r.choice([1, 2, 3, 9, 20]), r.choice([1, 1, 2, 5])
            columns, rows = r.choice([1, 3, 3, 5]), r.choice([1, 3, 3])

            def numbers(count, kind):
                return "(%s)" % " ".join(r.choice(kind) for _ in range(count))

            if high == 1:
                rows = 1
            one, other = (("(%d)" if high == 1 else "(%d %d)") % shape[:1 if high == 1 else 2] for shape in ((wide, high), (columns, rows)))
            weights = numbers(columns * rows, r.choice([kinds[0], kinds[0], *kinds]))
            lines.append("%s %s RESHAPE @a SET a %s %s RESHAPE %s ; MASK @b SET b .\nCLEAR b 1.5 = .\nCLEAR .\n" % (
                numbers(wide * high, r.choice(kinds[:3] + kinds)), one, weights, other,
                ("MONADIC " + r.choice(bodies)).replace("MONADIC VARS", "VARS")))
        status, out, _ = self.agree("".join(lines), "of masks") or (None, b"", b"")
        self.assertEqual(status, 0)
        self.assertGreater(out.count(b"Executed"), 2 * len(lines))

    def test_the_test_sees_a_difference(self):
        """The counts of -p are in what is compared."""
        status, out, _ = self.agree("0 10 DYADIC + ; LOOP .\n", "none")
        self.assertEqual(status, 0)
        self.assertIn(b"Executed 24 operators, 10 operations.", out)


if __name__ == "__main__":
    unittest.main()
