#!/usr/bin/env python3
"""The planting of changes itself: does it find the places, does it tell a kill from what nobody can see, and does it go
on where it was stopped?"""
import io
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "mutation"))
import changes  # noqa: E402
import mutate  # noqa: E402
import schemata  # noqa: E402
from trial import BROKEN, KILLED, SURVIVED, TIMEOUT, Step, Workshop  # noqa: E402

TOY = """// Counts down and tells the larger of two.
int larger(int a, int b) {
  return a > b ? a : b;
}
int main() {
  int left = 3;
  while (left > 0) --left;
  return larger(1, 3) - larger(3, 2) + left;
}
"""
TOY_PATH = pathlib.Path("src/toy.cpp")
CERTAIN, UNSEEN = (">", "<="), (">", ">=")


def found(text):
    return {(change.kind, change.before, change.after) for some in changes.changesof(text)[1].values() for change in some}


def planted(place, before, after, kind="comparison"):
    """A change of the first such text behind a place."""
    start = TOY.index(before, TOY.index(place))
    return changes.Change(kind, TOY.count("\n", 0, start) + 1, start, before, after)


class Toy:
    """Builds the one source of a toy tree; its only test is to run it."""
    tried = 0

    def __init__(self, workshop, skip=()):
        self.workshop, self.skip = workshop, skip
        self.header, self.binary = workshop.folder / "planted.h", workshop.build / "toy"

    def support(self):
        return schemata.support(self.header)

    def build(self):
        sources = [self.workshop.tree / name for name in ("src/toy.cpp", "src/spaces/planted.cpp")]
        return Step("build", ("c++", "-w", "-include", self.header, "-o", self.binary, *sources), builds=True)

    def ready(self, planted, bring):
        return planted.settle(lambda: self.workshop.perform(self.build()), bring)

    def measure(self):
        return ""

    def binaries(self):
        return [self.binary]

    def chosensteps(self, path):
        return self.steps(path)

    def steps(self, path):
        Toy.tried += 1
        return [self.build(), Step("toy", (self.binary,), 1)]


class Changes(unittest.TestCase):
    def test_each_kind_is_found(self):
        for text, change in (
                ("x = a < b;", ("comparison", "<", "<=")), ("x = a == b;", ("comparison", "==", "!=")),
                ("x = a && b;", ("logic", "&&", "||")), ("x = !a;", ("negation", "!", "")),
                ("x = a + b;", ("sign", "+", "-")), ("++x;", ("sign", "++", "--")),
                ("x = 10;", ("constant", "10", "9")), ("x = 0x1F;", ("constant", "0x1F", "(0x1F + 1)")),
                ("x = true;", ("constant", "true", "false")), ("x = a[i];", ("index", "i", "i + 1")),
                ("x = a.b(1) - c[2];", ("operands", "a.b(1) - c[2]", "c[2] - a.b(1)")),
                ("x = f(a, g(b));", ("arguments", "a, g(b)", "g(b), a")), ("if (a) b();", ("condition", "(a)", "(!(a))")),
                ("f(a);\ng(b);", ("statement", "g(b)", "")), ("if (a) x->y = b;", ("statement", "x->y = b", "")),
                ("for (;;) {\n  break;\n  f();\n}", ("statement", "break", ""))):
            self.assertIn(change, found("{\n" + text + "\n}"), text)

    def test_what_is_no_place_is_left_alone(self):
        for text in ("template <typename T> struct S;", "const T &x = y;", "void f(A &&a, B *b);", "T t{};", "char a[64];",
                     "// a < b, 1", "/* a\n < 1 */", "#define A (b < 1) \\\n  + 1", 'f("a < 1");', "[[likely]] f;",
                     "static_assert(sizeof(A) == 40);", "bool operator<(A a);", "T f(A a, B b) {\n}",
                     "#ifdef MORVIK_CHECKING\nx = a < 1;\n#else\n#endif", "f(a, 'b');"):
            self.assertEqual(found(text), set(), text)

    def test_a_line_is_counted_from_one(self):
        self.assertEqual(set(changes.changesof("\n\nx = 1;\n")[1]), {3})

    def test_equivalents_go_by_source_line_and_change(self):
        rows = mutate.readequivalents("# remark\ntoy.cpp :: a > b :: > => >= :: the same value\n")
        self.assertTrue(mutate.isequivalent(rows, "toy.cpp", TOY, planted("a > b", *UNSEEN)))
        self.assertFalse(mutate.isequivalent(rows, "toy.cpp", TOY, planted("a > b", *CERTAIN)))
        self.assertFalse(mutate.isequivalent(rows, "toy.cpp", TOY, planted("left > 0", *UNSEEN)))
        self.assertFalse(mutate.isequivalent(rows, "other.cpp", TOY, planted("a > b", *UNSEEN)))
        for pattern, seen in (("int b\\) {\\n  return a", True), ("int larger", False)):
            rows = mutate.readequivalents("toy.cpp :: %s :: > => >= :: the same value" % pattern)
            self.assertEqual(mutate.isequivalent(rows, "toy.cpp", TOY, planted("a > b", *UNSEEN)), seen)
        with self.assertRaises(ValueError):
            mutate.readequivalents("toy.cpp :: a > b :: > => >=")


class Trials(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.scratch.name)
        for name, text in (("src/toy.cpp", TOY), (".gitignore", "build-mutate\n"), ("tests/mutation/equivalent.txt", "")):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text(text)
        subprocess.run(["git", "init", "-q", self.scratch.name], check=True)

    def tearDown(self):
        self.scratch.cleanup()

    def prepared(self, planted=None):
        """A workshop with the toy in it, and with a list of changes side by side."""
        toy = Toy(Workshop(self.root / "workshop"))
        side = schemata.Schemata({TOY_PATH: TOY}, [(TOY_PATH, change) for change in planted or []])
        names = mutate.trackednames(self.root)
        self.assertEqual(toy.ready(side, lambda: toy.workshop.bring(self.root, names, {**side.planted(), **toy.support()})), "")
        return toy, side

    def trial(self, change):
        toy, _ = self.prepared()
        result = toy.workshop.trial(TOY_PATH, change.apply(TOY), toy.steps(TOY_PATH))
        self.assertEqual((toy.workshop.tree / TOY_PATH).read_text(), TOY)
        return result["verdict"]

    def run_all(self, *arguments):
        """Returns what a run reports and how many changes it tried."""
        out, before = io.StringIO(), Toy.tried
        sys.stdout, kept = io.StringIO(), sys.stdout
        try:
            self.enough = mutate.run(self.root, ["--seed", "3", *arguments], Toy, out)
        finally:
            sys.stdout = kept
        return out.getvalue(), Toy.tried - before

    def test_verdicts(self):
        self.assertEqual(self.trial(planted("a > b", *CERTAIN)), KILLED)
        self.assertEqual(self.trial(planted("a > b", *UNSEEN)), SURVIVED)
        self.assertEqual(self.trial(planted("a > b", "b", "c")), BROKEN)
        self.assertEqual(self.trial(planted("while", "--left", "")), TIMEOUT)

    def test_side_by_side_they_do_what_they_do_alone(self):
        found = [change for some in changes.changesof(TOY)[1].values() for change in some]
        apart = [change for i, change in enumerate(found) if all(change.line != other.line for other in found[:i])]
        toy, side = self.prepared(apart)
        for change in apart:
            number = side.number(TOY_PATH, change)
            self.assertTrue(number, change)
            verdict = toy.workshop.chosen(number, toy.binaries(), toy.steps(TOY_PATH))["verdict"]
            alone = toy.workshop.trial(TOY_PATH, change.apply(TOY), toy.steps(TOY_PATH))["verdict"]
            self.assertEqual(verdict, alone, change)
            toy.workshop.perform(toy.build())
        self.assertEqual(toy.workshop.attempt([Step("toy", (toy.binary,), 1)])[0], SURVIVED, "none is chosen any more")

    def test_what_only_a_compiler_reads_stays_out(self):
        start, step = planted("int left", "3", "4", "constant"), planted("while", "--left", "", "statement")
        _, side = self.prepared([start, step])
        self.assertEqual([bool(side.number(TOY_PATH, change)) for change in (start, step)], [True, True])
        self.assertTrue(side.blame("/x/src/toy.cpp:6:7: error: no constant\n/x/src/toy.cpp:7:3: warning: odd\n"))
        self.assertEqual([bool(side.number(TOY_PATH, change)) for change in (start, step)], [False, True])
        self.assertFalse(side.blame("/x/src/other.cpp:6:7: error: no constant\n"))

    def test_a_run_is_reported_and_gone_on_with(self):
        first, tried = self.run_all("--sample", "2")
        self.assertGreaterEqual(tried, 2)
        whole, more = self.run_all("--sample", "100")
        self.assertGreater(more, 0)
        self.assertIn(" killed", first)
        self.assertFalse(self.enough)  # there are no hundred places
        again, none = self.run_all("--sample", "100")
        self.assertEqual((again, none), (whole, 0))
        self.assertEqual((self.root / "src" / "toy.cpp").read_text(), TOY)


class Equivalents(unittest.TestCase):
    def test_each_stands_for_a_line(self):
        root = pathlib.Path(__file__).resolve().parents[2]
        for row in (root / "tests" / "mutation" / "equivalent.txt").read_text().splitlines():
            if row.startswith("#") or not row.strip():
                continue
            path, pattern = row.split(" :: ")[:2]
            self.assertTrue(re.search(pattern, (root / path).read_text(), re.MULTILINE), row)


if __name__ == "__main__":
    unittest.main()
