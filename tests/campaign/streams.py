#!/usr/bin/env python3
"""Random programmes whose streams go wrong:  streams.py [--sessions N] [--seed N] [--seconds N] BINARY

The output is closed, full, a pipe that nobody reads or that is read slowly, a terminal that goes away; the messages too. The
process must come to its end with status 0, unless the terminal took it along, and a slow reader must get all of it.
"""
import argparse
import os
import pathlib
import pty
import random
import select
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "fuzz"))
import judge  # noqa: E402
import programmes  # noqa: E402

PATIENCE = 60.0
# An end that is all right: of its own, or with the terminal; and by what a sanitizer has no stack left for.
RIGHT = {0}
GONE = {0, -signal.SIGHUP}


def start(binary, options, given, **streams):
    scratch = tempfile.mkdtemp(prefix="morvik-", dir=given.parent)
    return subprocess.Popen([binary, "-q", *options], stdin=open(given, "rb"), cwd=scratch, env=judge.variables(scratch),
                            preexec_fn=lambda: judge.lower(binary), **streams)


def waitfor(process):
    """The status, after interrupts where it takes long; none where that is in vain."""
    began = time.monotonic()
    while True:
        try:
            return process.wait(2)
        except subprocess.TimeoutExpired:
            if time.monotonic() - began > PATIENCE:
                process.kill()
                process.wait()
                return None
            process.send_signal(signal.SIGINT)


def readsome(process, stream, most):
    """Reads some of what the process says, after interrupts where it takes long to say it, as long as there is patience."""
    ends = time.monotonic() + PATIENCE
    while most > 0 and process.poll() is None and time.monotonic() < ends:
        if not select.select([stream], [], [], 2)[0]:
            process.send_signal(signal.SIGINT)
            continue
        try:
            said = os.read(stream, most)
        except OSError:  # how a terminal says that nobody is at its other end
            return
        if not said:
            return
        most -= len(said)


def full(binary, options, given):
    with open("/dev/full", "wb") as nowhere:
        return waitfor(start(binary, options, given, stdout=nowhere, stderr=nowhere)), RIGHT


def closed(binary, options, given):
    shell = 'exec "$0" "$@" >&- 2>&-'
    process = subprocess.Popen(["/bin/sh", "-c", shell, binary, "-q", *options], stdin=open(given, "rb"), cwd=given.parent,
                               env=judge.variables(str(given.parent)), preexec_fn=lambda: judge.lower(binary))
    return waitfor(process), RIGHT


def broken(binary, options, given):
    reading, writing = os.pipe()
    os.close(reading)
    process = start(binary, options, given, stdout=writing, stderr=writing)
    os.close(writing)
    return waitfor(process), RIGHT


def breaking(binary, options, given):
    process = start(binary, options, given, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    readsome(process, process.stdout.fileno(), 300)
    process.stdout.close()
    return waitfor(process), RIGHT


def terminal(binary, options, given):
    outer, inner = pty.openpty()
    process = start(binary, options, given, stdout=inner, stderr=inner, start_new_session=True)
    os.close(inner)
    readsome(process, outer, 500)
    os.close(outer)
    return waitfor(process), GONE


WAYS = [full, closed, broken, breaking, terminal]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--sessions", type=int, default=20)
    parser.add_argument("--seconds", type=float, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("binary")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    r, number, failed = random.Random(options.seed), 0, 0
    ends = time.monotonic() + (options.seconds or 1e9)
    while number < options.sessions and time.monotonic() < ends:
        with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
            given = pathlib.Path(scratch) / "given"
            given.write_bytes(programmes.written(programmes.session(options.seed * 1000000 + number, 30)))
            way, more = WAYS[number % len(WAYS)], r.choice([(), ("-c2",), ("-t", "-p"), ("-i",)])
            undisturbed = judge.perform(binary, given.read_bytes(), more)
            status, right = way(binary, more, given)
        number += 1
        if judge.calledforever(undisturbed) or status in right:
            continue
        failed += 1
        print("seed %d, session %d, output %s: %s" % (options.seed, number - 1, way.__name__,
                                                      "did not end" if status is None else "status %d" % status), flush=True)
    print("%d sessions with streams that go wrong, %d failed" % (number, failed))
    return 1 if failed or not number else 0


if __name__ == "__main__":
    sys.exit(main())
