#!/usr/bin/env python3
"""Hunts for faults with random programmes:  hunt.py [options] BINARY

Each session of texts is a process of its own (judge.py says what it must not do); what fails is thinned out and kept in
--keep. With --pool each session runs without the pool and with it, and must say the same. It ends after --seconds, or
after --sessions, or with the first --findings.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import sys
import threading
import time

import judge
import minimise
import programmes


class Hunt:
    def __init__(self, options):
        self.options = options
        self.binary = os.path.abspath(options.binary)
        self.pooling = ["-c" + slots for slots in options.pool.split(",")] if options.pool else []
        self.ends = time.monotonic() + options.seconds if options.seconds else float("inf")
        self.lock = threading.Lock()
        self.sessions = self.texts = self.interrupted = 0
        self.found = {}

    def faultof(self, text):
        """What is wrong with a session, or nothing, and the run that tells how far it came, or None."""
        if self.pooling:
            return judge.compared(self.binary, text, self.pooling)
        run = judge.perform(self.binary, text, self.options.option, self.options.patience, self.options.longest)
        return judge.fault(run), run

    def session(self, number):
        if time.monotonic() > self.ends or len(self.found) >= self.options.findings:
            return
        lines = programmes.session(self.options.seed * 1000000 + number, self.options.texts, bool(self.pooling))
        wrong, run = self.faultof(programmes.written(lines))
        with self.lock:
            self.sessions += 1
            if run:
                self.texts += programmes.reached(run.out)
                self.interrupted += run.interrupted
            if not wrong or alike(wrong) in self.found or len(self.found) >= self.options.findings:
                return
            self.found[alike(wrong)] = wrong
        self.keep(number, wrong, lines)

    def keep(self, number, wrong, lines):
        print("seed %d, session %d: %s" % (self.options.seed, number, wrong), flush=True)
        folder = pathlib.Path(self.options.keep)
        folder.mkdir(parents=True, exist_ok=True)
        name = "%d-%d" % (self.options.seed, number)
        (folder / (name + ".whole")).write_bytes(programmes.written(lines))
        text = minimise.minimise(lines, lambda text: alike(self.faultof(text)[0]) == alike(wrong),
                                 self.options.asked)
        (folder / (name + ".morvik")).write_bytes(text)
        print("    %s: %r" % (name, text[:600]), flush=True)


def alike(wrong):
    """What two reports of one fault have in common."""
    return re.sub(r"0x\w+|\d{3,}", "", wrong)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="number of the first session")
    parser.add_argument("--sessions", type=int, default=1 << 40)
    parser.add_argument("--texts", type=int, default=100, help="in a session")
    parser.add_argument("--seconds", type=float, default=0)
    parser.add_argument("--findings", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--longest", type=float, default=judge.LONGEST, help="seconds without an answer to interrupts")
    parser.add_argument("--patience", type=float, default=judge.PATIENCE, help="seconds without a word before an interrupt")
    parser.add_argument("--asked", type=int, default=600, help="how many runs may thin out a finding")
    parser.add_argument("--pool", default="", help="as 2,4: compare -c2 and -c4 with the serial run")
    parser.add_argument("--option", action="append", default=[], help="of the binary")
    parser.add_argument("--keep", default="findings")
    parser.add_argument("binary")
    options = parser.parse_args()
    hunt = Hunt(options)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        number, running = options.first, set()
        last = options.first + options.sessions
        while number < last and time.monotonic() < hunt.ends and len(hunt.found) < options.findings:
            running.add(pool.submit(hunt.session, number))
            number += 1
            if len(running) >= 2 * options.jobs:
                done, running = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
                for each in done:
                    each.result()
        for each in running:
            each.result()
    print("seed %d: %d sessions of %d texts, %d texts run, %d interrupts sent, %d findings" %
          (options.seed, hunt.sessions, options.texts, hunt.texts, hunt.interrupted, len(hunt.found)))
    return 1 if hunt.found or not hunt.sessions else 0


if __name__ == "__main__":
    sys.exit(main())
