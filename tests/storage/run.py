#!/usr/bin/env python3
"""Lets each allocation of a programme fail in turn, in the checking build:  run.py BINARY PROGRAMME...

Whatever the failure hits, the process ends in order: with status 0 and its closing line, or with status 1 and message 27
where it hits the start. A block that is left over (status 99), a fault or an abort is an error. The walk ends where the
programme has no allocation left to fail, so that it runs as it does undisturbed.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

MESSAGE = b"27 - out of main storage."
CLOSING = re.compile(rb"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$")
MOST = 20000
CALM = 5  # undisturbed runs in a row that end a walk: one failure may go unnoticed
SPOKEN = 10


def perform(binary, text, failing):
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        variables = {"PATH": os.environ["PATH"], "HOME": scratch}
        if failing is not None:
            variables["MORVIK_FAIL_ALLOCATION"] = str(failing)
        run = subprocess.run([binary, "-q"], input=text, capture_output=True, cwd=scratch, env=variables, timeout=60,
                             check=False)
    return run.returncode, CLOSING.sub(b"", run.stdout), bool(CLOSING.search(run.stdout)), run.stderr


def faultof(status, closed, errors):
    if status == 0 and closed:
        return ""
    if status == 1 and MESSAGE in errors and not closed:
        return ""
    return "status %d%s: %s" % (status, "" if closed else ", no closing line", errors[-300:].decode("latin-1"))


def walk(binary, programme):
    """Returns the faults met, and how many allocations failed."""
    text = programme.read_bytes()
    undisturbed = perform(binary, text, None)
    if undisturbed[0] != 0 or not undisturbed[2]:
        return ["undisturbed: " + faultof(undisturbed[0], undisturbed[2], undisturbed[3])], 0
    faults, reported, calm = [], 0, 0
    for failing in range(MOST):
        result = perform(binary, text, failing)
        calm = calm + 1 if result == undisturbed else 0
        if calm == CALM:
            return (faults or (["no failure was ever reported"] if reported == 0 else [])), failing + 1 - CALM
        reported += MESSAGE in result[3]
        fault = faultof(result[0], result[2], result[3])
        if fault:
            faults.append("allocation %d: %s" % (failing, fault))
    return faults + ["never ran undisturbed"], MOST


def main():
    binary = os.path.abspath(sys.argv[1])
    failed = 0
    for programme in map(pathlib.Path, sys.argv[2:]):
        faults, count = walk(binary, programme)
        failed += bool(faults)
        print("%s: %d allocations failed in turn, %d faults" % (programme.name, count, len(faults)))
        for fault in faults[:SPOKEN]:
            print("    " + " ".join(fault.split()))
    return 1 if failed or len(sys.argv) < 3 else 0


if __name__ == "__main__":
    sys.exit(main())
