#!/usr/bin/env python3
"""What the start of the process asks of the system: limits raised, storage that is not there."""
import os
import resource
import subprocess
import sys
import tempfile
import unittest

from terminal import Terminal

BINARY = sys.argv.pop(1)
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
MEBIBYTE = 1 << 20


def limited(*limits):
    """Lowers limits in the child: triples of resource, soft and hard value."""

    def lower():
        for kind, soft, hard in limits:
            resource.setrlimit(kind, (soft, hard))

    return lower


class Start(unittest.TestCase):
    def run_limited(self, limits, text):
        return subprocess.run([BINARY, "-q"], input=text, capture_output=True, preexec_fn=limited(*limits), timeout=60,
                              check=False)

    def test_soft_limits_are_raised_to_the_hard_ones(self):
        lowered = limited((resource.RLIMIT_STACK, 4 * MEBIBYTE, 64 * MEBIBYTE),
                          (resource.RLIMIT_DATA, 512 * MEBIBYTE, 1024 * MEBIBYTE))
        if SANITIZED:
            lowered = limited((resource.RLIMIT_STACK, 4 * MEBIBYTE, 64 * MEBIBYTE))
        with Terminal(BINARY, preparation=lowered) as terminal:
            terminal.untilprompt()
            with open("/proc/%d/limits" % terminal.process.pid, encoding="ascii") as lines:
                limits = {line[:26].strip(): line[26:].split()[:2] for line in lines}
            self.assertEqual(limits["Max stack size"], [str(64 * MEBIBYTE)] * 2)
            if not SANITIZED:
                self.assertEqual(limits["Max data size"], [str(1024 * MEBIBYTE)] * 2)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more data than the limit leaves")
    def test_no_storage_at_start(self):
        run = self.run_limited([(resource.RLIMIT_DATA, 4 * MEBIBYTE, 4 * MEBIBYTE)], b"1 2 + .\n")
        # The heap says so first.
        self.assertEqual((run.returncode, run.stdout, run.stderr),
                         (1, b"", b"No more active memory available\n\n27 - out of main storage.\n"))

    def test_a_stream_that_is_closed_lends_its_number_to_no_file(self):
        text = b"'kept' 1 OPEN 'printed' PRINT nosuch .\n5 'written' WRITE CLOSE .\n"
        for closed in (1, 2):
            with self.subTest(closed=closed), tempfile.TemporaryDirectory() as folder:
                kept = os.path.join(folder, "kept")
                with open(kept, "wb") as stream:
                    stream.write(b"what is in the file")
                run = subprocess.run([os.path.abspath(BINARY), "-q"], input=text, cwd=folder, timeout=60, check=False,
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                     preexec_fn=lambda number=closed: os.close(number))
                self.assertEqual(run.returncode, 0)
                with open(kept, "rb") as stream:
                    self.assertEqual(stream.read(), b"what is in the file")
                with open(os.path.join(folder, "written"), "rb") as stream:
                    self.assertEqual(stream.read(), b" 5\n")


if __name__ == "__main__":
    unittest.main()
