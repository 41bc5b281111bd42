#!/usr/bin/env python3
"""Runs one-line tests: `1 2 + → 3`, `'a' 1 + → !17`. All lines of a file run in one process.

    run.py [--update] [--timeout SECONDS] BINARY FILE.lines...

tests/README.md describes the format. --update writes the answers found; read the difference before you keep it.
"""
import argparse
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "transcripts"))
import expectation  # noqa: E402
import run as transcripts  # noqa: E402

ARROW = " → ".encode()
ARGUMENTS = b"#!"
LIBRARY = "lib="
LIBRARIES = pathlib.Path(__file__).resolve().parents[2] / "lib"
MARK = "<<line %d>>"
# What separates two lines: the stack is emptied, and a mark is printed.
SEPARATOR = "\nCLEAR '" + MARK + "' PRINT .\n"
MARKED = MARK + "\n\n\n-"
# A report with the dump under it, and the frame of what follows.
MESSAGE = re.compile(r"\n(\d+) - [^\n]*\n(?:\nInstruction:\n[^\n]*)?(?:\n+ ?(?!\n*\d+ - ))?")
NOTICE = "\nException processing:..."


class Malformed(Exception):
    """A file that does not follow the format."""


class Case:
    """One line: a text without its end, and the answer that is expected."""

    def __init__(self, number, line):
        text, arrow, answer = line.rpartition(ARROW)
        if not arrow:
            raise Malformed("line %d has no arrow" % number)
        self.number, self.text, self.answer = number, text, answer.decode()

    def line(self):
        return self.text + ARROW + self.answer.encode()


def read(path):
    """The lines of a file, where a Case stands for each test, and the arguments of the run."""
    lines = path.read_bytes().splitlines()
    arguments = transcripts.DEFAULT_ARGUMENTS
    if lines and lines[0].startswith(ARGUMENTS):
        arguments = shlex.split(lines[0][len(ARGUMENTS) :].decode())
    parsed = [line if not line or line.startswith((b"# ", ARGUMENTS)) else Case(number, line)
              for number, line in enumerate(lines, 1)]
    if not any(isinstance(line, Case) for line in parsed):
        raise Malformed("no tests in it")
    return parsed, arguments


def answer(output):
    """What a text printed, as the answer behind the arrow: messages as !N, line feeds as \\n, no frame around it."""
    text = MESSAGE.sub("\0\\1 ", output.replace(NOTICE, "")).strip("\n").removeprefix(" ")
    text = re.sub(r"(\0\d+) -?\Z", r"\1", text)
    return "\\n".join(map(expectation.encodeline, text.split("\n"))).replace("\\0", "!")


def session(cases, arguments):
    """What one process reads for all cases, after the libraries that they need, and its arguments."""
    libraries = [word.removeprefix(LIBRARY) for word in arguments if word.startswith(LIBRARY)]
    source = b"".join((LIBRARIES / (name + ".morvik")).read_bytes() + b" .\n" for name in libraries)
    source += b"".join((SEPARATOR % case.number).encode() + case.text + b" ." for case in cases)
    return source, [word for word in arguments if not word.startswith(LIBRARY)]


def perform(binary, cases, arguments, timeout):
    """Runs all cases in one process. Returns the answer of each, None where there was none, and what is wrong beside."""
    marks = [MARKED % case.number for case in cases]
    source, arguments = session(cases, arguments)
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        environment = transcripts.environment(pathlib.Path(scratch) / "none", scratch)
        run = subprocess.run([binary, *arguments], input=source, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             cwd=scratch, env=environment, timeout=timeout, check=False)
    rest = run.stdout.decode("latin-1")
    rest, closing, _ = rest.rpartition("\n--- Spent: ")
    starts = [rest.find(mark) for mark in marks] + [len(rest)]
    answers = []
    for index, mark in enumerate(marks):
        begin, end = starts[index], next(start for start in starts[index + 1 :] if start >= 0)
        answers.append(answer(rest[begin + len(mark) : end]) if begin >= 0 else None)
    trouble = "" if run.returncode == 0 and closing else "status %d, ends with: %s" % (run.returncode, rest[-300:])
    return answers, trouble


def check(binary, path, update, timeout):
    """Runs a file. Returns whether it passed; with `update` it is rewritten instead."""
    lines, arguments = read(path)
    cases = [line for line in lines if isinstance(line, Case)]
    answers, trouble = perform(binary, cases, arguments, timeout)
    wrong = 0
    for case, found in zip(cases, answers):
        if found == case.answer:
            continue
        wrong += 1
        print("%s:%d: %s\n  expected: %s\n  found:    %s" % (path.name, case.number, case.text.decode("latin-1"),
                                                           case.answer, "no answer" if found is None else found))
        if update and found is not None:
            case.answer = found
    if update and wrong:
        path.write_bytes(b"".join((line.line() if isinstance(line, Case) else line) + b"\n" for line in lines))
    if trouble:
        print("%s: %s" % (path.name, trouble))
    print("%s: %d lines, %d wrong" % (path.name, len(cases), wrong))
    return (update or not wrong) and not trouble


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--timeout", type=float, default=300)
    parser.add_argument("binary")
    parser.add_argument("files", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    passed = True
    for path in options.files:
        try:
            passed &= check(os.path.abspath(options.binary), path, options.update, options.timeout)
        except (Malformed, subprocess.TimeoutExpired) as error:
            print("%s: %s" % (path, error))
            passed = False
    sys.exit(0 if passed else 1)


if __name__ == "__main__":
    main()
