#!/usr/bin/env python3
"""What the timing hook costs a Point: hook.py BUILDFOLDER.

Whole programmes with the hook and without (`-q -i` against `-q`), in turn, by user time; the number of Points is what the
run report counts. Fails where the hook takes more than is allowed.
"""
import os
import re
import resource
import subprocess
import sys

RUNS = 7
ALLOWED_NS = 60
PROGRAMMES = {
    "values and operators in turn": "0 400000 : 1 + 1 + 1 + 1 + 1 + 1 + ; REPEAT .",
    "operators only": "0 200000 : DUP DISCARD DUP DISCARD DUP DISCARD DUP DISCARD DUP DISCARD ; REPEAT .",
    "a call for every operator": "0 1000000 DYADIC + ; LOOP .",
    "a value, a name and a call": "MONADIC 1 + ; @inc SET 0 500000 DYADIC DISCARD inc ! ; LOOP .",
}


def run(binary, options, text):
    """User time, and standard output."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    done = subprocess.run([binary, *options], input=text, capture_output=True, text=True, check=True)
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before, done.stdout


def main():
    binary = os.path.join(sys.argv[1], "morvik")
    worst = 0
    for title, text in PROGRAMMES.items():
        points = int(re.search(r"Executed (\d+) operators", run(binary, ["-q", "-p"], text)[1]).group(1))
        off, on = [], []
        for _ in range(RUNS):
            off.append(run(binary, ["-q"], text)[0])
            on.append(run(binary, ["-q", "-i"], text)[0])
        cost = (min(on) - min(off)) / points * 1e9
        worst = max(worst, cost)
        print("%-30s %9d Points: %5.1f ns a Point without the hook, %5.1f more with it (%d allowed)" %
              (title, points, min(off) / points * 1e9, cost, ALLOWED_NS))
    return 1 if worst > ALLOWED_NS else 0


if __name__ == "__main__":
    sys.exit(main())
