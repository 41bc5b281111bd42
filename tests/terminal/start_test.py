#!/usr/bin/env python3
"""What the start of the process asks of the system: limits raised, storage that is not there."""
import os
import resource
import subprocess
import sys
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


if __name__ == "__main__":
    unittest.main()
