#!/usr/bin/env python3
"""Whole programmes beside the same in CPython and, where it is installed, Lua: programmes.py FOLDER.

Each is run in turn with the others, several times; the ratio of the medians of user time is printed, as it is and without
what the language takes to start and to end. Every run checks its answer.
"""
import resource
import shutil
import statistics
import subprocess
import sys

RUNS = 7
NOTHING = ("1", "1 .", "print(1)", "print(1)")
PROGRAMMES = {
    "a million sums of two names into a third": (
        "7",
        "3 @a SET 4 @b SET 0 @c SET 1000000 : a b + @c SET ; REPEAT c .",
        "def f():\n  a, b = 3, 4\n  for i in range(1000000): c = a + b\n  return c\nprint(f())",
        "local a, b, c = 3, 4, 0 for i = 1, 1000000 do c = a + b end print(c)",
    ),
    "a million additions in a loop": (
        "500000500000",
        "0 1000000 DYADIC + ; LOOP .",
        "def f():\n  s = 0\n  for i in range(1, 1000001): s = s + i\n  return s\nprint(f())",
        "local s = 0 for i = 1, 1000000 do s = s + i end print(s)",
    ),
    "naive Fibonacci of 24": (
        "46368",
        "MONADIC DUP 2 < CHECK RETURN ?Y DUP 1 - f ! SWAP 2 - f ! + ; @f SET 24 f ! .",
        "def f(n): return n if n < 2 else f(n - 1) + f(n - 2)\nprint(f(24))",
        "local function f(n) if n < 2 then return n end return f(n - 1) + f(n - 2) end print(f(24))",
    ),
    "a million calls of one argument": (
        "1000000",
        "MONADIC 1 + ; @inc SET 0 1000000 DYADIC DISCARD inc ! ; LOOP .",
        "def inc(x): return x + 1\ndef f():\n  s = 0\n  for i in range(1000000): s = inc(s)\n  return s\nprint(f())",
        "local function inc(x) return x + 1 end local s = 0 for i = 1, 1000000 do s = inc(s) end print(s)",
    ),
    "a function over 100000 elements, 100 times": (
        "100000",
        "(0)[100000] @v SET MONADIC 1 + ; @inc SET 1 100 DYADIC DISCARD v @inc GET EACH DISCARD ; LOOP v @inc GET EACH SUM .",
        "x = [0] * 100000\ninc = lambda x: x + 1\nfor i in range(100): y = list(map(inc, x))\nprint(sum(map(inc, x)))",
        "local x, y = {}, {} for i = 1, 100000 do x[i] = 0 end local function inc(x) return x + 1 end "
        "for n = 1, 100 do y = {} for i = 1, 100000 do y[i] = inc(x[i]) end end "
        "local s = 0 for i = 1, 100000 do s = s + y[i] end print(s)",
    ),
    "a million numbers appended to a name": (
        "1000000",
        "#NIL @a SET 1000000 NILADIC a 1 , @a SET ; LOOP a SHAPE .",
        "def f():\n  a = []\n  for i in range(1000000): a.append(1)\n  return a\nprint(len(f()))",
        "local a = {} for i = 1, 1000000 do a[#a + 1] = 1 end print(#a)",
    ),
    "a million numbers summed from the front, one taken after the other": (
        "500000500000",
        "1000001 INTERVAL @a SET 0 @s SET 1000000 NILADIC a FIRST s + @s SET a REST @a SET ; LOOP s .",
        "from collections import deque\ndef f():\n  a, s = deque(range(1, 1000002)), 0\n"
        "  for i in range(1000000): s += a.popleft()\n  return s\nprint(f())",
        "local a, s, first = {}, 0, 1 for i = 1, 1000001 do a[i] = i end "
        "for i = 1, 1000000 do s = s + a[first] a[first] = nil first = first + 1 end print(s)",
    ),
}


def usertime(command, text, answer):
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    run = subprocess.run(command, input=text, capture_output=True, text=True, check=True)
    if answer not in run.stdout.split():
        raise SystemExit("%s answered %r" % (command[0], run.stdout))
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def medians(languages, programme):
    times = {name: [] for name, _, _ in languages}
    for _ in range(RUNS):
        for name, command, index in languages:
            times[name].append(usertime(command, programme[index], programme[0]))
    return {name: statistics.median(found) for name, found in times.items()}


def ratio(ours, theirs):
    return max(ours, 1e-4) / max(theirs, 1e-4)


def main():
    languages = [("morvik", [sys.argv[1] + "/morvik", "-q"], 1), ("python3", [sys.executable, "-"], 2)]
    if shutil.which("lua5.4"):
        languages.append(("lua5.4", ["lua5.4", "-"], 3))
    start = medians(languages, NOTHING)
    for title, programme in PROGRAMMES.items():
        found = medians(languages, programme)
        net = {name: found[name] - start[name] for name in found}
        ratios = ", ".join("%.2f of %s (%.2f without the start)" % (ratio(found["morvik"], found[name]), name,
                                                                   ratio(net["morvik"], net[name]))
                           for name, _, _ in languages[1:])
        print("%-42s %6.0f ms: %s" % (title, found["morvik"] * 1000, ratios))


if __name__ == "__main__":
    main()
