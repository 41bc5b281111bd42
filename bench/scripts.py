#!/usr/bin/env python3
"""What the runner of scripts takes:  scripts.py FOLDER

A script beside the same text piped to the prompt; the check of many names and the profile of many functions beside those of
a sixteenth of them, which should take sixteen times as long at most. User time, medians of runs in turns.
"""
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile

RUNS = 5
FEW, MANY = 1000, 16000


def usertime(command, text):
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "s.morvik"
        path.write_text(text, encoding="ascii")
        with open(path, "rb") as piped:
            subprocess.run([*command, *([] if command[0].endswith("/morvik") else [str(path)])], stdin=piped, check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def beside(title, one, other):
    times = [(usertime(*one), usertime(*other)) for _ in range(RUNS)]
    first, second = (statistics.median(column) for column in zip(*times))
    print("%-44s %7.1f ms, %6.2f of %.1f ms" % (title, first * 1000, first / max(second, 1e-3), second * 1000))


def names(count):
    return "".join("%d @n%d SET n%d POP .\n" % (i, i, i) for i in range(count))


def functions(count):
    calls = "".join("f%d !\n" % i for i in range(count))
    return "".join(": %d + ; @f%d SET .\n" % (i, i) for i in range(count)) + ": %s; @all SET . 0 all ! POP ." % calls


def main():
    run, prompt = os.path.join(sys.argv[1], "morvik-run"), [os.path.join(sys.argv[1], "morvik"), "-q"]
    for title, text in (("30000 short texts, beside the prompt", "1 2 + POP .\n" * 30000),
                        ("a long body, beside the prompt", ": 0 %s ; @f SET . 500 : f ! POP ; REPEAT ." % ("1 +\n" * 15000))):
        beside(title, ([run], text), (prompt, text))
    beside("the check of %d names, of %d" % (MANY, FEW), ([run, "--check"], names(MANY)), ([run, "--check"], names(FEW)))
    beside("the profile of %d functions, of %d" % (MANY, FEW), ([run, "--profile"], functions(MANY)),
           ([run, "--profile"], functions(FEW)))


if __name__ == "__main__":
    main()
