#!/usr/bin/env python3
"""The runner of pairs itself: does it see each kind of fault, and does it find the text that is to blame?"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = pathlib.Path(__file__).resolve().parent.parent / "pairs/run.py"
CLOSING = r"printf ' 2\n--- Spent: 00:00:00.000123 ---\n\n'"
GUILTY = "grep -q 'NaN.* ADD' && "


class Pairs(unittest.TestCase):
    def run_against(self, script):
        """Puts two words over all pairs, with a shell script as the binary. Returns what was said, nothing for a pass."""
        with tempfile.TemporaryDirectory() as scratch:
            binary = pathlib.Path(scratch) / "binary"
            binary.write_text("#!/bin/sh\n" + script)
            binary.chmod(0o755)
            run = subprocess.run([sys.executable, "-B", str(RUNNER), "--whole", str(binary), "ADD", "SUBTRACT"],
                                 capture_output=True, text=True, check=False)
        self.assertEqual(run.stderr, "")
        self.assertIn("2 words, ", run.stdout)
        self.assertEqual(run.returncode != 0, "FAILED" in run.stdout or "no operand" in run.stdout)
        return run.stdout if run.returncode else ""

    def test_peace(self):
        self.assertEqual(self.run_against("cat >/dev/null; " + CLOSING), "")

    def test_each_fault_is_seen(self):
        for script in (GUILTY + "exit 99; " + CLOSING, GUILTY + "exit 0; " + CLOSING,
                       GUILTY + "echo SEGMENTATION VIOLATION; " + CLOSING, GUILTY + "echo '991 - x' >&2; " + CLOSING,
                       GUILTY + "kill -6 $$; " + CLOSING):
            said = self.run_against(script)
            self.assertIn("FAILED ADD", said, script)
            self.assertNotIn("SUBTRACT", said, script)
            self.assertIn("1 words failed", said, script)
            self.assertRegex(said, r"FAILED ADD: b['\"]CLEAR [^.]*NaN[^.]* ADD \.\\n['\"]\n")

    def test_an_operand_that_is_none(self):
        self.assertIn("MARK is no operand", self.run_against("grep -q 'CLEAR 5 MARK C' && echo 5 7; " + CLOSING))


if __name__ == "__main__":
    unittest.main()
