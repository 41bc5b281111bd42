#!/usr/bin/env python3
"""Lets each allocation of a programme fail in turn, in the checking build:
     run.py [--random N] [--every N] BINARY PROGRAMME...

Whatever the failure hits, the process ends in order: with status 0 and its closing line, or with status 1 and message 27
where it hits the start. A block that is left over (status 99), a fault or an abort is an error. The walk ends where the
programme has no allocation left to fail, so that it runs as it does undisturbed. A file of one-line tests is a programme too.
With --every only each Nth allocation fails, as a sample of what would take days.

With --random so many programmes are written anew, of words of every kind, for a run with the pool and one without. Of these
the first allocations alone fail in turn. What does not run alike twice, or not to its end, is passed over.
"""
import argparse
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "fuzz"))
import programmes  # noqa: E402

LINES = programmes.load("lines", pathlib.Path(__file__).resolve().parents[1] / "lines" / "run.py")
MESSAGE = b"27 - out of main storage."
FAULT = re.compile(rb"^(?:SEGMENTATION VIOLATION|Bus error|Floating point exception)", re.M)
CLOSING = re.compile(rb"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$")
MOST = 1000000
MOST_RANDOM = 250
PASSED_OVER = 1  # seconds that a random programme may take at most
CALM = 5  # undisturbed runs in a row, after which a walk looks ahead for its end: failures may go unnoticed
SPOKEN = 10


def variables(scratch, failing):
    own = {} if failing is None else {"MORVIK_FAIL_ALLOCATION": str(failing)}
    return {"PATH": os.environ["PATH"], "HOME": scratch, "$EDITOR": "true", **own}


def perform(binary, text, failing, options=(), patience=60):
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        run = subprocess.run([binary, "-q", *options], input=text, capture_output=True, cwd=scratch,
                             env=variables(scratch, failing), timeout=patience, check=False)
    return run.returncode, CLOSING.sub(b"", run.stdout), bool(CLOSING.search(run.stdout)), run.stderr


def faultof(status, closed, errors):
    if FAULT.search(errors):  # which the prompt outlives
        return "a fault: " + errors[-300:].decode("latin-1")
    if status == 0 and closed:
        return ""
    if status == 1 and MESSAGE in errors and not closed:
        return ""
    return "status %d%s: %s" % (status, "" if closed else ", no closing line", errors[-300:].decode("latin-1"))


def peak(binary, text, failing, options, stack):
    """The most memory in kB that a run has with a process stack of so many bytes."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch, tempfile.TemporaryFile() as typed:
        typed.write(text)
        typed.seek(0)
        process = subprocess.Popen([binary, "-q", *options], stdin=typed, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   cwd=scratch, env=variables(scratch, failing),
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_STACK, (stack, stack)))
        _, process.returncode, used = os.wait4(process.pid, 0)
    return used.ru_maxrss


def callsforever(binary, text, failing, options):
    """Does a call without end use up the process stack, as it may where a name did not get its value? With a larger one it takes
    more memory then, before it ends alike."""
    return peak(binary, text, failing, options, 64 << 20) - peak(binary, text, failing, options, 16 << 20) > 24 << 10


def isover(attempt, failing, most):
    """Does no failure disturb the run from this one on? Looks at some of them, ever further apart."""
    ahead = 1
    while failing + ahead < most:
        if attempt(failing + ahead) is not None:
            return False
        ahead += max(1, ahead // 2)
    return True


def walk(binary, text, most=MOST, options=(), every=1):
    """Returns the faults met, and how many allocations failed."""
    undisturbed = perform(binary, text, None, options)
    if undisturbed[0] != 0 or not undisturbed[2]:
        return ["undisturbed: " + faultof(undisturbed[0], undisturbed[2], undisturbed[3])], 0

    def attempt(failing):
        """The run in which an allocation fails: its result, or nothing where it is the undisturbed one."""
        try:
            result = perform(binary, text, failing, options)
        except subprocess.TimeoutExpired:
            return ()
        return None if result == undisturbed else result

    faults, reported, calm = [], 0, 0
    for failing in range(0, most, every):
        result = attempt(failing)
        calm = calm + 1 if result is None else 0
        if calm and calm % CALM == 0 and isover(attempt, failing, most):
            return (faults or (["no failure was ever reported"] if reported == 0 else [])), failing // every + 1 - calm
        if result is None:
            continue
        if not result:
            faults.append("allocation %d: did not end" % failing)
            continue
        reported += MESSAGE in result[3]
        fault = faultof(result[0], result[2], result[3])
        if fault and not (FAULT.search(result[3]) and callsforever(binary, text, failing, options)):
            faults.append("allocation %d: %s" % (failing, fault))
    return faults + (["never ran undisturbed"] if most == MOST else []), most // every


def randomtexts(binary, seed):
    """Texts that run alike twice, with the number of the session, without end."""
    number = seed * 1000000
    while True:
        number += 1
        text = programmes.written(programmes.session(number, 4))
        try:
            runs = [perform(binary, text, None, patience=PASSED_OVER) for _ in range(2)]
        except subprocess.TimeoutExpired:
            continue
        if runs[0] == runs[1] and runs[0][2] and MESSAGE not in runs[0][3]:
            yield number, text


def programmeof(path):
    """What a file has the binary read, and the options for that."""
    if path.suffix != ".lines":
        return path.read_bytes(), ()
    parsed, arguments = LINES.read(path)
    return LINES.session([line for line in parsed if isinstance(line, LINES.Case)], arguments)


def show(name, faults, count):
    print("%s: %d allocations failed in turn, %d faults" % (name, count, len(faults)), flush=True)
    for fault in faults[:SPOKEN]:
        print("    " + " ".join(fault.split()))
    return bool(faults)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--random", type=int, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--seconds", type=float, default=0, help="for the random ones")
    parser.add_argument("binary")
    parser.add_argument("programmes", nargs="*", type=pathlib.Path)
    given = parser.parse_args()
    binary = os.path.abspath(given.binary)
    failed = walks = 0
    for path in given.programmes:
        text, options = programmeof(path)
        failed += show(path.name, *walk(binary, text, options=options, every=given.every))
    ends = time.monotonic() + (given.seconds or 1e9)
    for _, (number, text) in zip(range(given.random), randomtexts(binary, given.seed)):
        if time.monotonic() > ends:
            break
        failed += show("session %d" % number, *walk(binary, text, MOST_RANDOM))
        walks += 1
        failed += show("session %d, -c2" % number, *walk(binary, text, MOST_RANDOM, ("-c2",)))
    if given.random:
        print("%d random programmes with the pool and without, %d failed" % (walks, failed))
    return 1 if failed or not (given.programmes or given.random) else 0


if __name__ == "__main__":
    sys.exit(main())
