#!/usr/bin/env python3
"""Sends signals at random points of mixed work:  signals.py [--signals N] [--seed N] [--seconds N] BINARY

After each the process must answer at once, and stack, names, functions and system variables must be as they were; at the end
it must end in order. A fault that is sent is endured twice in a process; what ends it by its nature does so.
"""
import argparse
import os
import pathlib
import random
import re
import select
import signal
import subprocess
import sys
import tempfile
import time

SETUP = (b"(1 2 (3 'x')) @a SET 'text' @b SET MONADIC 1 + ; @f SET 0 @n SET 1 SERIAL .\n")
PROBE = b"CLEAR a TELL b TELL 4 f ! TELL #IO TELL n n - TELL 5 COUNTSTACK TELL CLEAR '<%d>' TELL .\n"
STATE = rb"1 2 3x\s*text\s*5 #IO 0 1"
WORK = [
    b"2000 .. @w SET w w * w + SUM .", b"200000 .. 1l1 * EXPONENTIAL NATURALLOG SUM .", b"(3 4 5) 400 : w DISCARD 1 + ; REPEAT .",
    b"100000 : n 1 + @n SET ; REPEAT .", b"1000000000 : 1 DISCARD ; REPEAT .", b"3000 .. MONADIC DUP * ; EACH SUM .",
    b"(1 2 3 4 5 6 7 8 9)[3 3] (1 1 1) MONADIC 1 + ; MASK .", b"300 : '1 2 + DISCARD' ! ; REPEAT .",
    b"300 : ': 1 2 ;' ASSEMBLE ! DISCARD ; REPEAT .", b"(1 (2 3) 'ab') 'f1' WRITE 200 : 'f1' READ DISCARD ; REPEAT .",
    b"'f2' SAVE .", b"'f3' REMEMBER .", b"20000 .. 'f4' WRITE .", b"3000 .. PRINT .", b"500 : 100 .. TELL ; REPEAT .",
    b"7 20000 : ENCLOSE 1 , ; REPEAT DISCARD .", b"0.05 SLEEP .", b"0 MONADIC 1 + @&1 DISCARD ; RESULT .",
    b"200 : NEWCONTEXT 5 @.q SET ; REPEAT .", b": r 1 DISCARD r ; @r SET r .", b"500 .. 1l1 * 3 + @w SET w w + w * '' DUMPSTACK .",
    b"20000 .. ENLIST (100 200) RESHAPE TRANSPOSE SUM .", b"(1 2 3) 2000 : DUP , ; REPEAT .", b"60 @x SET 'x' AT 5 SWAP SET .",
    b"'nosuch' READ nosuch 1 ?Y 'a' 1 + .", b"[. 5000 : 7 ; REPEAT ..] SUM .", b"5000 FACTORIAL 3000 .. FACTORIAL BINOMIAL .",
    b"1 2 100000 : SWAP ; REPEAT .",
    b"MONADIC DUP 1 < CHECK RETURN ?Y 1 - r ! 1 + ; @r SET 300 : 1500 r ! DISCARD ; REPEAT .",
    b"MONADIC DUP 2 < CHECK RETURN ?Y DUP 1 - q ! SWAP 2 - q ! + ; @q SET 24 q ! .",
    b"0 1000000 DYADIC DISCARD f ! ; LOOP DISCARD .", b": : 1 DISCARD ; @g SET g ! ; @g SET 300000 : g ! ; REPEAT .",
]
ENDING = {signal.SIGTERM: -signal.SIGTERM}
ENDURED = 2  # faults in a process
FAULTY = (signal.SIGSEGV, signal.SIGBUS)
PROMPT = 3.0  # seconds for an answer; on a loaded machine it is the machine that takes them
GIVEN_UP = 60.0


class Lost(Exception):
    pass


class Session:
    """A process that is spoken to text by text."""

    def __init__(self, binary, options, scratch):
        self.process = subprocess.Popen([binary, "-q", *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, cwd=scratch, bufsize=0)
        self.heard = b""
        self.probes = 0

    def say(self, text):
        try:
            self.process.stdin.write(text)
        except BrokenPipeError as gone:
            raise Lost("gone") from gone

    def listen(self, seconds):
        """Hears what comes in so many seconds, and says whether the process still lives."""
        if select.select([self.process.stdout], [], [], seconds)[0]:
            more = self.process.stdout.read(1 << 16)
            self.heard += more
            return bool(more)
        return True

    def probe(self, interrupting):
        """The state, as the process tells it. Interrupts what does not end, and asks again, as the signal may have hit the
        question. Returns the seconds till the answer."""
        self.probes += 1
        self.heard = b""
        self.say(PROBE % self.probes)
        began = asked = time.monotonic()
        marker = b"<%d>" % self.probes
        while marker not in self.heard:
            if not self.listen(0.2):
                raise Lost("ended")
            now = time.monotonic()
            if now - began > GIVEN_UP:
                raise Lost("gives no answer")
            if interrupting and now - asked > 0.4 and marker not in self.heard:
                self.process.send_signal(signal.SIGINT)
                time.sleep(0.02)
                self.say(PROBE % self.probes)
                asked = now
        said = self.heard[:self.heard.index(marker)]
        if not re.search(STATE + rb"\s*$", said):
            raise Lost("state is not as it was: %r" % said[-200:])
        return time.monotonic() - began

    def close(self):
        self.process.stdin.close()
        while self.listen(GIVEN_UP) and self.process.poll() is None:
            pass
        return self.process.wait(GIVEN_UP)


def endsprocess(sent, faults):
    return sent in ENDING or faults > ENDURED


def session(r, binary, signals, counts, scratch):
    """Up to so many signals to one process. Returns what is wrong, or nothing, and how many were sent."""
    spoken = Session(binary, r.choice([(), (), ("-c2",), ("-c3", "-i")]), scratch)
    faults, done, work = 0, 0, b""
    try:
        spoken.say(SETUP)
        spoken.probe(False)
        while done < signals:
            work = r.choice(WORK)
            spoken.say(b"CLEAR " + work + b"\n")
            time.sleep(r.choice([0, r.uniform(0, 0.002), r.uniform(0, 0.03)]))
            sent = r.choices(list(counts), [6, 2, 0.3, 1, 0.3, 1, 0.1])[0]
            spoken.process.send_signal(sent)
            done += 1
            counts[sent] += 1
            faults += sent in FAULTY
            if sent == signal.SIGBUS or endsprocess(sent, faults):
                # While a text is read, this one has its default.
                try:
                    spoken.probe(True)
                except Lost:
                    spoken.process.wait(GIVEN_UP)
                    return "", done
                if endsprocess(sent, faults):
                    return "%s did not end the process" % sent.name, done
            else:
                counts.slowest = max(counts.slowest, spoken.probe(True))
        status = spoken.close()
        return ("status %d at the end" % status if status else ""), done
    except Lost as lost:
        return "%s, after %r, signal %d of the session, status %s" % (lost, work, done, spoken.process.poll()), done
    finally:
        spoken.process.kill()
        spoken.process.wait()
        spoken.process.stdout.close()


class Counts(dict):
    slowest = 0.0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--signals", type=int, default=200)
    parser.add_argument("--seconds", type=float, default=0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("binary")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    ours = b"__asan_" not in pathlib.Path(binary).read_bytes()  # a sanitizer takes faults itself
    names = ["SIGINT", "SIGQUIT", "SIGSEGV", "SIGFPE", "SIGBUS", "SIGPIPE", "SIGTERM"]
    counts = Counts.fromkeys((getattr(signal, name) for name in names), 0)
    r, sent, failed, number = random.Random(options.seed), 0, 0, 0
    if not ours:
        global ENDURED
        ENDURED = 0
    ends = time.monotonic() + (options.seconds or 1e9)
    while sent < options.signals and time.monotonic() < ends and failed < 5:
        number += 1
        with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
            wrong, done = session(r, binary, min(60, options.signals - sent), counts, scratch)
        sent += done
        if wrong:
            failed += 1
            print("seed %d, session %d: %s" % (options.seed, number, wrong), flush=True)
    print("%d signals in %d sessions (%s), slowest answer %.2f s, %d failed" %
          (sent, number, ", ".join("%s %d" % (each.name, count) for each, count in counts.items()), counts.slowest, failed))
    return 1 if failed or not sent else 0


if __name__ == "__main__":
    sys.exit(main())
