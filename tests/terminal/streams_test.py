#!/usr/bin/env python3
"""Standard streams that fail: output that nobody takes, or slowly, and a terminal that goes away. The process goes on
with its texts, ends with its input, and with status 0."""
import os
import signal
import subprocess
import time
import unittest

from folder import BINARY, Folder
from terminal import Terminal

TEXTS = b"1 2 + . 'abc' PRINT .\nCLEAR 1 + .\n" + b"5000 .. .\n" * 20 + b"CLEAR 'kept' 'notes' TEXTWRITE .\n"
FEW = b"\n800 - not enough arguments"


def ignorehangup():
    signal.signal(signal.SIGHUP, signal.SIG_IGN)


class Streams(Folder):
    def run_on(self, *arguments, text=TEXTS, **streams):
        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        return subprocess.run([BINARY, *arguments], input=text, cwd=self.folder, timeout=60, check=False, **streams)

    def check(self, ended):
        """The texts ran to the last."""
        self.assertEqual(ended.returncode, 0)
        self.assertEqual(self.contents("notes"), "kept\n")
        os.remove(self.folder / "notes")

    def test_no_output(self):
        with open("/dev/full", "wb") as full:
            for arguments in (("-q",), (), ("-i",), ("-t", "-p", "-q")):
                ended = self.run_on(*arguments, stdout=full)
                self.check(ended)
                self.assertIn(FEW, ended.stderr)
                self.check(self.run_on(*arguments, stdout=full, stderr=full))
                self.check(self.run_on(*arguments, preexec_fn=lambda: os.close(1), stdout=None))
                self.check(self.run_on(*arguments, preexec_fn=lambda: os.closerange(1, 3), stdout=None, stderr=None))

    def test_a_descriptor_that_cannot_be_written(self):
        with open("/dev/null", "rb") as reading:
            self.check(self.run_on("-q", stdout=reading, stderr=reading))

    def test_broken_pipes(self):
        for streams in (("stdout",), ("stderr",), ("stdout", "stderr")):
            read, write = os.pipe()
            os.close(read)
            self.check(self.run_on("-q", **{name: write for name in streams}))
            os.close(write)

    def test_an_interrupt_ends_what_prints_to_nobody(self):
        read, write = os.pipe()
        os.close(read)
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=write, stderr=write, cwd=self.folder)
        os.close(write)
        process.stdin.write(b"100000000000 : 5000 .. PRINT ; REPEAT .\n")
        process.stdin.flush()
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        process.communicate(TEXTS, timeout=20)
        self.check(process)

    def test_a_slow_reader_gets_all(self):
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        process.stdin.write(b"5000 .. .\n" * 20)
        process.stdin.close()
        out = b""
        while chunk := os.read(process.stdout.fileno(), 16384):
            out += chunk
            time.sleep(0.01)
        process.stdout.close()
        self.assertEqual(process.wait(60), 0)
        shown = b"\n\n" + b"".join(b" %d" % n for n in range(1, 5001)) + b"\n"
        self.assertEqual(out[: out.index(b"\n--- Spent")], shown * 20)

    def test_a_slow_reader_and_an_interrupt(self):
        """The process that waits for its reader takes the interrupt as soon as somebody reads again."""
        process = subprocess.Popen([BINARY, "-q"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, cwd=self.folder)
        process.stdin.write(b"100000000000 : 5000 .. PRINT ; REPEAT .\n")
        process.stdin.flush()
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        time.sleep(0.2)
        out, _ = process.communicate(TEXTS, timeout=20)
        self.assertIn(b"\n** User interrupt. **\n", out)
        self.check(process)

    def leave(self, text, preparation):
        """Starts a text at a terminal, takes the terminal away, and returns the status."""
        with Terminal(BINARY, preparation=preparation) as terminal:
            terminal.untilprompt()
            if text:
                terminal.type(text)
                terminal.quiet(0.3)
            master = terminal.master
            terminal.master = os.open("/dev/null", os.O_RDONLY)  # something to close in the end
            os.close(master)
            try:
                return terminal.process.wait(20)
            except subprocess.TimeoutExpired:
                return None

    def test_a_terminal_that_goes_away(self):
        """The hang-up ends the process; one that is told to ignore it meets the end of its input."""
        for text in ("", "(1 2 'abc", "QUOTEDIN .\n", "INPUT .\n", "1 STEP 2 3 .\n", "200 : 5000 .. PRINT ; REPEAT .\n"):
            with self.subTest(text):
                self.assertEqual(self.leave(text, None), -signal.SIGHUP)
                self.assertEqual(self.leave(text, ignorehangup), 0)


if __name__ == "__main__":
    unittest.main()
