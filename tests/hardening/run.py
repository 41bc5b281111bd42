#!/usr/bin/env python3
"""What a release build has against faults that nobody has found yet, as its file says:  run.py BINARY"""
import re
import subprocess
import sys
import unittest

BINARY = sys.argv.pop(1)


def readelf(*options):
    return subprocess.run(["readelf", "-W", *options, BINARY], capture_output=True, text=True, check=True).stdout


def imported():
    """The names that the binary takes from libraries, without their versions."""
    return set(re.findall(r" UND (\w+)", readelf("--dyn-syms")))


class Hardening(unittest.TestCase):
    def test_no_address_is_fixed(self):
        self.assertRegex(readelf("-h"), r"Type:\s+DYN")
        self.assertRegex(readelf("-d"), r"\(FLAGS_1\).*\bPIE\b")
        self.assertNotIn("TEXTREL", readelf("-d"))

    def test_nothing_can_be_written_and_run(self):
        segments = readelf("-l")
        flags = re.findall(r"^ +(\w+) +0x\w+ 0x\w+ 0x\w+ 0x\w+ 0x\w+ ([RWE ]{3}) ", segments, re.MULTILINE)
        self.assertIn(("GNU_STACK", "RW "), flags)
        self.assertFalse([name for name, flag in flags if "W" in flag and "E" in flag])

    def test_what_the_loader_writes_is_closed_at_the_start(self):
        self.assertIn("GNU_RELRO", readelf("-l"))
        self.assertRegex(readelf("-d"), r"\(FLAGS\).*\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b|\(BIND_NOW\)")

    def test_frames_with_arrays_are_guarded(self):
        self.assertIn("__stack_chk_fail", imported())

    def test_the_library_asks_for_bounds(self):
        # The compilers differ in the calls that they see through; both ask for the jump, and for copies or for formats.
        checked = {name for name in imported() if re.fullmatch(r"__\w+_chk", name)}
        self.assertIn("__longjmp_chk", checked)
        self.assertTrue(checked & {"__memcpy_chk", "__snprintf_chk"}, checked)


if __name__ == "__main__":
    unittest.main()
