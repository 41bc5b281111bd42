#!/usr/bin/env python3
"""Recursion to the end of the process stack, and texts too long for one Programme: in a process of limited stack."""
import os
import resource
import subprocess
import sys
import unittest

BINARY = sys.argv.pop(1)
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
STACK = 64 << 20
ENDLESS = ": f ! ; @f SET\n"
FAULT = "\nSEGMENTATION VIOLATION\n"


def run(text):
    def limit():
        resource.setrlimit(resource.RLIMIT_STACK, (STACK, STACK))

    ended = subprocess.run([BINARY, "-q"], input=text, capture_output=True, text=True, timeout=120, preexec_fn=limit,
                           check=False)
    return ended.returncode, ended.stdout, ended.stderr


@unittest.skipIf(SANITIZED, "faults are the sanitizer's")
class Recursion(unittest.TestCase):
    def test_the_prompt_returns_twice(self):
        status, out, err = run(ENDLESS + "5 f ! .\n1 + .\nf ! .\n7 .\n")
        self.assertEqual(err, FAULT * 2)
        self.assertRegex(out, r"^\nException processing:\.\.\.\n\n 6\nException processing:\.\.\.\n\n 7\n--- Spent")
        self.assertEqual(status, 0)

    def test_the_third_fault_ends_the_process(self):
        status, _, err = run(ENDLESS + "f ! .\n" * 3 + "7 .\n")
        self.assertEqual(err, FAULT * 3 + "\n--- SERIOUS INTERNAL ERROR ---\n--- PROCESSING STOPPED --- \n")
        self.assertEqual(status, 13)

    def test_ten_thousand_calls_deep(self):
        status, out, err = run("MONADIC 1 - DUP CHECK : deep ! ; ?Y ; @deep SET 10000 deep ! .\n")
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(out.startswith("\n\n 0\n"), out)


class LongTexts(unittest.TestCase):
    def test_a_megabyte_to_execute(self):
        _, out, err = run("'%s' ! .\n5 .\n" % ("1 DISCARD " * 100000))
        self.assertEqual(err, "\n807 - programme storage full.\n")
        self.assertTrue(out.startswith("\n-\n\n 5\n"), out)

    def test_a_megabyte_of_texts_to_execute(self):
        _, out, err = run("0 '%s' ! .\n" % ("1 + .\n" * 150000))
        self.assertEqual(err, "")
        self.assertTrue(out.startswith("\n\n 150000\n"), out)


if __name__ == "__main__":
    unittest.main()
