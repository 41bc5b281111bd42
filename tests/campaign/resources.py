#!/usr/bin/env python3
"""What asks for much, and then for ten times as much:  resources.py [--small] BINARY

Each work is done at one size and at ten times that size in a process of its own, and then twice more. Said must be what is
described, the prompt must answer, the time must grow in line with the size, and the storage of the process must not grow when
the same is done again: what was given back is usable again.
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
from typing import Callable, NamedTuple

STACK_BYTES = 256 << 20
DATA_BYTES = 2 << 30
ANSWER = 300.0
STEEPEST = 25.0  # times the time for ten times the size: square growth takes a hundred
SHORTEST = 0.1   # seconds under which a time says nothing
GROWTH = 1.02    # of storage, when the same is done again
NEVER_MIND = 1 << 20  # bytes


class Work(NamedTuple):
    name: str
    size: int
    text: Callable[[int], bytes]
    said: bytes = b""  # on one of the streams, a pattern
    rounds: int = 3    # how often it may be done: a third fault of the stack ends the process


def lines(count, line):
    return b"".join(line % number for number in range(count))


WORKS = [
    Work("texts", 20000, lambda n: b"1 2 + DISCARD .\n" * n),
    Work("texts that fail", 5000, lambda n: b"CLEAR 'a' 1 + .\n" * n, rb"17 - "),
    Work("names", 5000, lambda n: lines(n, b"7 @name%d SET .\n") + b"WIPE .\n"),
    Work("names of one function", 3000, lambda n: b"%d : 5 @.x SET .x DISCARD ; REPEAT .\n" % n),
    # A name is looked up along all of the chain, so that one within the other takes the square.
    Work("contexts", 1000, lambda n: b"%d : NEWCONTEXT 7 @.inner SET ; REPEAT .\n" % n),
    Work("calls", 10000, lambda n: b"MONADIC 1 - DUP CHECK : deep ! ; ?Y ; @deep SET %d deep ! DISCARD .\n" % n),
    Work("rounds", 200000, lambda n: b"%d : 1 DISCARD ; REPEAT .\n" % n),
    Work("elements", 200000, lambda n: b"%d .. DUP * SUM DISCARD .\n" % n),
    Work("elements of functions", 20000, lambda n: b"%d .. MONADIC 1 + ; EACH DISCARD .\n" % n),
    Work("levels of a value", 20000, lambda n: b"7 %d : ENCLOSE 1 , ; REPEAT DISCARD .\n" % n),
    Work("values on the stack", 1500, lambda n: b"%d : 7 ; REPEAT ..] DISCARD .\n" % n),
    Work("a string", 20000, lambda n: b"'" + b"x" * n + b"' DISCARD .\n"),
    Work("a literal", 20000, lambda n: b"(" + b"1 2.5 " * (n // 2) + b") DISCARD .\n"),
    Work("texts in a text", 2000, lambda n: b"%d : '1 2 + DISCARD' ! ; REPEAT .\n" % n),
    Work("one long text in a text", 2000, lambda n: b"'" + b"1 DISCARD . " * n + b"' ! .\n"),
    Work("files", 20, lambda n: b"%d : (1 2 3) 'f' WRITE 'f' READ DISCARD ; REPEAT .\n" % n),
    Work("results that are kept", 1000, lambda n: b"%d MONADIC MONADIC 2 * ; RESULT DISCARD ; LOOP .\nWIPE .\n" % n),
    Work("a value stack that is full", 16600, lambda n: b"%d : 7 ; REPEAT .\nCLEAR .\n" % n, rb"806 - "),
    Work("more elements than there is storage", 10 ** 9, lambda n: b"%d00 .. .\nCLEAR .\n" % n, rb"27 - |146 - "),
    Work("a shape past all storage", 10 ** 8, lambda n: b"(1 2) (%d %d) RESHAPE .\nCLEAR .\n" % (n, n), rb"27 - |1100 - "),
    Work("calls without end", 1, lambda n: b": f ! ; @f SET f ! .\nCLEAR .\n", rb"SEGMENTATION VIOLATION", 1),
]


class Session:
    def __init__(self, binary, scratch):
        def lower():
            resource.setrlimit(resource.RLIMIT_STACK, (STACK_BYTES, STACK_BYTES))
            resource.setrlimit(resource.RLIMIT_DATA, (DATA_BYTES, DATA_BYTES))

        self.out, self.errors = pathlib.Path(scratch, "out"), pathlib.Path(scratch, "errors")
        with open(self.out, "wb") as out, open(self.errors, "wb") as errors:
            self.process = subprocess.Popen([binary, "-q"], stdin=subprocess.PIPE, stdout=out, stderr=errors, cwd=scratch,
                                            preexec_fn=lower)
        self.asked = 0

    def take(self, text):
        """Gives it a text and waits till the prompt answers. Returns the seconds; none where there is no answer."""
        self.asked += 1
        marker = b"<%d>" % self.asked
        began = time.monotonic()
        self.process.stdin.write(text + b"CLEAR '" + marker + b"' TELL .\n")
        self.process.stdin.flush()
        while marker not in self.out.read_bytes()[-4096:]:
            if self.process.poll() is not None or time.monotonic() - began > ANSWER:
                return None
            time.sleep(0.002)
        return time.monotonic() - began

    def storage(self):
        status = pathlib.Path("/proc/%d/status" % self.process.pid).read_text()
        return int(re.search(r"VmData:\s+(\d+)", status).group(1)) << 10

    def end(self):
        self.process.stdin.close()
        return self.process.wait(ANSWER)


def perform(binary, work, size, rounds):
    """The seconds of the first round, and the storage after each. A fault is text."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        session = Session(binary, scratch)
        try:
            session.take(b"1 .\n")
            seconds, storage = [], []
            for _ in range(rounds):
                seconds.append(session.take(work.text(size)))
                if seconds[-1] is None:
                    return "no answer", 0, []
                storage.append(session.storage())
            status = session.end()
            if status:
                return "status %d" % status, 0, []
            said = session.out.read_bytes() + session.errors.read_bytes()
            if work.said and not re.search(work.said, said):
                return "did not say %s" % work.said.decode(), 0, []
            return "", min(seconds), storage
        finally:
            session.process.kill()
            session.process.wait()


def faultof(binary, work, size):
    """What is wrong, and the figures in words."""
    wrong, less, _ = perform(binary, work, size, 1)
    if wrong:
        return wrong, ""
    wrong, more, storage = perform(binary, work, 10 * size, work.rounds)
    if wrong:
        return wrong, ""
    told = "%.3f s, ten times as much %.3f s, storage %s MiB" % (
        less, more, " ".join("%.1f" % (each / (1 << 20)) for each in storage))
    if more > STEEPEST * max(less, SHORTEST):
        return "time does not grow in line", told
    if storage[-1] > max(storage[0] * GROWTH, storage[0] + NEVER_MIND):
        return "storage grows", told
    return "", told


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--small", action="store_true", help="a tenth of each size")
    parser.add_argument("binary")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    failed = 0
    for work in WORKS:
        wrong, told = faultof(binary, work, max(work.size // 10, 1) if options.small and not work.said else work.size)
        failed += bool(wrong)
        print("%s: %s%s" % (work.name, "FAILED, %s; " % wrong if wrong else "", told), flush=True)
    print("%d works, %d failed" % (len(WORKS), failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
