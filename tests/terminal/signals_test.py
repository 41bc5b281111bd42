#!/usr/bin/env python3
"""Signals from outside, at any time: a fault that is sent is taken where an interrupt is, and none waits long."""
import os
import random
import select
import signal
import time
import unittest

from folder import BINARY, Folder, asleep
from terminal import Terminal

SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
FPE = "\nFloating point exception.\n"
PATIENCE = 30
VIOLATION = "\nSEGMENTATION VIOLATION\n"
# A sanitizer keeps the handlers of memory faults for itself.
FAULTS = {signal.SIGFPE: FPE} if SANITIZED else {signal.SIGFPE: FPE, signal.SIGSEGV: VIOLATION}
BUSY = 2 if not SANITIZED else 5  # seconds that a loaded machine may take more
LANDED = "\nException processing:..."


class Session(Folder):
    def until(self, process, last):
        """Reads what is printed up to the last of it."""
        seen = b""
        while not seen.endswith(last.encode("latin-1")):
            ready = select.select([process.stdout], [], [], PATIENCE)[0]
            byte = os.read(process.stdout.fileno(), 1) if ready else b""
            self.assertTrue(byte, seen)
            seen += byte
        return seen.decode("latin-1")

    def finish(self, process, text):
        out, err = process.communicate(text.encode("latin-1"), timeout=60)
        return out.decode("latin-1").rpartition("\n--- Spent")[0], err.decode("latin-1"), process.returncode


class Idle(Session):
    """At the prompt nothing of a text was read: the next one runs."""

    def start_idle(self, text="1 .\n"):
        process = self.start(text)
        self.until(process, " 1")
        self.wait_until(lambda: asleep(process))
        return process

    def test_the_next_text_runs(self):
        for number, said in FAULTS.items():
            for rest in ("\n", "   \n\n \t "):
                process = self.start_idle("1 ." + rest)
                time.sleep(0.05)
                process.send_signal(number)
                self.until(process, "\n\n 1")  # the echo of an empty text
                self.assertEqual(self.finish(process, "5 PRINT .\n7 ."), (" 5\n\n\n 1\n\n 7", said, 0))

    def test_what_was_begun_is_dropped(self):
        for number, said in FAULTS.items():
            for begun, rest in (("2 ", "3 .\n"), ("2", "3 .\n"), ("(2 3", " 4) .\n"), ("'a", "b' .\n"), ("na", "me .\n"),
                                (": 2 ", "3 ; .\n"), ('"a', ' b" 6 .\n')):
                process = self.start_idle("1 .\n" + begun)
                time.sleep(0.05)
                process.send_signal(number)
                time.sleep(0.05)
                self.assertEqual(self.finish(process, rest + "5 PRINT ."), ("\n\n 1 5\n\n\n 1", said, 0), begun)

    def test_at_a_terminal(self):
        for number, said in FAULTS.items():
            with Terminal(BINARY) as terminal:
                terminal.untilprompt()
                terminal.say("1 .")
                terminal.process.send_signal(number)
                text = terminal.untilprompt()
                self.assertIn(said, text)
                self.assertEqual(terminal.say("5 ."), "5 .\n\n\n 5\n\nMorvik [2]> ")
                self.assertEqual(terminal.say(""), "\n\n\nMorvik [2]> ")

    @unittest.skipIf(SANITIZED, "memory faults are the sanitizer's")
    def test_the_third_ends_the_process(self):
        process = self.start_idle()
        for _ in range(3):
            process.send_signal(signal.SIGSEGV)
            time.sleep(0.1)
        out, err = process.communicate(timeout=60)
        self.assertEqual(err.decode(), 3 * VIOLATION + "\n--- SERIOUS INTERNAL ERROR ---\n--- PROCESSING STOPPED --- \n")
        self.assertEqual((out, process.returncode), (b"\n\n 1" * 2, 13))


# What works in the heap, in the counts, in the tables and in the printer.
WORK = {
    "heap": "0 9 DYADIC 'abc' (1 2 3) DISCARD DISCARD DISCARD DISCARD ; DISCARD DISCARD DISCARD",
    "structures": "MARK 50 : (1 (2 'x') 3) ; REPEAT COLLECT DUPLICATE ENCLOSE DISCARD DISCARD",
    "names": "(1 2) @other ASSIGN 'other' AT ASSIGN DISCARD @other FORGET",
    "texts": "'(1 2) ''abc'' . DISCARD DISCARD' ! DISCARD",
    "elements": "(1 2 3)[1000] 1 + DISCARD",
    "growing": "20 : 30000 .. ; REPEAT CLEAR",
}


class Running(Session):
    """A fault that is sent never lands in the middle of the heap: what comes after it works as before."""

    def test_storms(self):
        chance = random.Random(8)
        for title, body in WORK.items():
            for number, said in FAULTS.items():
                for _ in range(2 if SANITIZED else 6):
                    process = self.start("7 @kept SET .\n")
                    self.until(process, "\n-")
                    for _ in range(2):
                        process.stdin.write(b"'on' '' WRITE DISCARD 1000000000 : %s ; REPEAT .\n" % body.encode())
                        process.stdin.flush()
                        self.until(process, " 'on'\n")
                        time.sleep(0.005 + chance.random() / 50)
                        process.send_signal(number)
                        self.until(process, LANDED)
                    out, err, status = self.finish(process, "CLEAR 300 : 'text' (1 2 (3 4)) : 5 ; ; REPEAT CLEAR kept .\n")
                    self.assertEqual((out, err, status), ("\n\n 7", 2 * said, 0), title)


class Waiting(Session):
    """However a programme waits, a signal is taken at once; and so it is where it comes right before the wait."""

    def check(self, text, number=signal.SIGINT):
        for delay in (0, 0.001, 0.3):
            process = self.start("'on' '' WRITE DISCARD %s" % text)
            self.until(process, " 'on'\n")
            time.sleep(delay)
            before = time.monotonic()
            process.send_signal(number)
            self.until(process, LANDED)
            self.assertLess(time.monotonic() - before, 0.2 + BUSY, text)
            out, _, status = self.finish(process, "CLEAR 77 .\n")
            self.assertTrue(out.endswith("\n\n 77"), (text, out))
            self.assertEqual(status, 0)

    def test_interrupts(self):
        os.mkfifo(self.folder / "pipe")
        for text in ("1000 SLEEP .\n", "1E9 SLEEP .\n", "1 0.001 SLEEP 1000 SLEEP .\n", "QUOTEDIN .\n",
                     "'pipe' READ .\n", "'pipe' TEXTREAD .\n", "'pipe' LOAD .\n", "5 'pipe' WRITE .\n",
                     "5 'pipe' APPEND .\n", "'pipe' SAVE .\n", "100000000000 : 1 DISCARD ; REPEAT .\n",
                     "(1 2 3)[300000] @v SET 10000000 : v SIN DISCARD ; REPEAT .\n"):
            with self.subTest(text):
                self.check(text)

    def test_long_files(self):
        numbers = "1 2.5 'text' (1 2 3) DISCARD DISCARD DISCARD DISCARD .\n"
        for name, contents in (("short texts", numbers * 200000), ("one literal", "(" + "1.5 " * 500000 + ") .\n")):
            for word in ("READ", "LOAD"):
                with self.subTest(name + " " + word):
                    self.give("long", contents)
                    process = self.start("'on' '' WRITE DISCARD 100 : 'long' %s CLEAR ; REPEAT .\n" % word)
                    self.until(process, " 'on'\n")
                    time.sleep(0.1)
                    before = time.monotonic()
                    process.send_signal(signal.SIGINT)
                    self.until(process, "\n** User interrupt. **\n")
                    # A text that is being compiled is compiled to its end first.
                    limit = 0.2 if name == "short texts" else 5
                    self.assertLess(time.monotonic() - before, limit + BUSY)
                    out, _, _ = self.finish(process, "CLEAR 77 .\n")
                    self.assertTrue(out.endswith("\n\n 77"), out)

    def test_faults(self):
        os.mkfifo(self.folder / "pipe")
        for number in FAULTS:
            for text in ("1000 SLEEP .\n", "QUOTEDIN .\n", "'pipe' READ .\n", "5 'pipe' WRITE .\n",
                         "100000000000 : 1 DISCARD ; REPEAT .\n"):
                with self.subTest((number, text)):
                    self.check(text, number=number)

    def test_a_fault_while_a_value_is_typed(self):
        """The text of INPUT is empty then, and the programme goes on."""
        for number, said in FAULTS.items():
            process = self.start("'on' '' WRITE DISCARD INPUT 7 .\n")
            self.until(process, " 'on'\n")
            time.sleep(0.2)
            process.send_signal(number)
            self.until(process, "\n\n 7")
            self.assertEqual(self.finish(process, "5 ."), ("\n\n 5", said, 0))


if __name__ == "__main__":
    unittest.main()
