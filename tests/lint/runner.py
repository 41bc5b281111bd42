#!/usr/bin/env python3
"""The runner of transcripts itself: does it see each kind of difference, and does what it blesses pass?"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent / "transcripts"
sys.path.append(str(ROOT))
import expectation  # noqa: E402

CLOSING = "--- Spent: 00:00:00.000123 ---\\n\\n"
GOOD = "=== stdout\none\\ttwo\\x20\nthree\\\n"


class Runner(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.scratch.name)
        (self.folder / "t.morvik").write_bytes(b"text")

    def tearDown(self):
        self.scratch.cleanup()

    def run_against(self, script, expected=None, *arguments):
        """Runs the runner on one transcript with a shell script as the binary. Returns whether it passed."""
        binary = self.folder / "binary"
        binary.write_text("#!/bin/sh\n" + script)
        binary.chmod(0o755)
        if expected is not None:
            (self.folder / "t.expected").write_text(expected)
        run = subprocess.run([sys.executable, "-B", str(ROOT / "run.py"), *arguments, str(binary), str(self.folder)],
                             capture_output=True, text=True, check=False, env=dict(os.environ))
        self.assertIn("passed" if not arguments else "", run.stdout + run.stderr)
        return run.returncode == 0

    def test_agreement(self):
        self.assertTrue(self.run_against(r"printf 'one\ttwo \nthree'", GOOD))

    def test_each_difference_is_seen(self):
        for script in (r"printf 'one\ttwo\nthree'", r"printf 'one\ttwo \nthree\n'", r"printf 'one\ttwo \n'",
                       r"printf 'one\ttwo \nthree' >&2", r"printf 'one\ttwo \nthree'; exit 1",
                       r"printf 'one\ttwo \nthree'; echo x >&2", r"printf 'one\ttwo \nthree'; echo x >left"):
            self.assertFalse(self.run_against(script, GOOD), script)

    def test_status_errors_and_files(self):
        expected = "=== stderr\nbad\n=== file left\nx\n=== status 3\n"
        self.assertTrue(self.run_against("echo bad >&2; echo x >left; exit 3", expected))
        self.assertFalse(self.run_against("echo bad >&2; echo y >left; exit 3", expected))
        self.assertFalse(self.run_against("echo bad >&2; exit 3", expected))
        self.assertFalse(self.run_against("echo bad >&2; echo x >left", expected))

    def test_input_and_arguments(self):
        self.assertTrue(self.run_against('printf "%s " "$@"; cat', "=== stdout\n-q text\\\n"))
        (self.folder / "t.args").write_text("-a 'b c'\n")
        self.assertTrue(self.run_against('printf "%s|" "$@"', "=== stdout\n-a|b c|\\\n"))

    def test_placeholders(self):
        expected = "=== stdout\n<number> and <word>\n--- Spent: <time> ---\n\n"
        self.assertTrue(self.run_against("printf '%s and x.y\\n" + CLOSING + "' -1.5e-3", expected))
        self.assertFalse(self.run_against("printf '12a and x\\n" + CLOSING + "'", expected))
        self.assertFalse(self.run_against("printf '12 and x y\\n" + CLOSING + "'", expected))

    def test_figures(self):
        expected = "=== stdout\nADD<figure><figure><figure>\n"
        self.assertTrue(self.run_against(r"echo 'ADD  12.345   Mop/S   1:1.500 m:S,   100.000 %t'", expected))
        self.assertTrue(self.run_against(r"echo 'ADD inf Gop/S 0.000   nS,   7.500 %t'", expected))
        self.assertFalse(self.run_against(r"echo 'ADD  12.345   Mop/S  1.500 mS,'", expected))
        self.assertFalse(self.run_against(r"echo 'ADD  nan   Mop/S  1.500 mS,   1.000 %t'", expected))

    def test_what_is_blessed_passes(self):
        script = r"printf '<time> \\ \001\377\n=== x\n5 s \n" + CLOSING + r"end\\'; exit 2"
        self.assertTrue(self.run_against(script, None, "--bless"))
        text = (self.folder / "t.expected").read_text()
        self.assertEqual(text, "=== stdout\n\\x3Ctime> \\\\ \\x01\\xFF\n\\x3D== x\n5 s\\x20\n--- Spent: <time> ---\n\n"
                         "end\\\\\\\n=== status 2\n")
        self.assertTrue(self.run_against(script))

    def test_blessing_keeps_placeholders(self):
        self.assertTrue(self.run_against("printf 'a\\n7 s\\nb\\n'", "=== stdout\n<number> s\nold\n", "--bless"))
        self.assertEqual((self.folder / "t.expected").read_text(), "=== stdout\na\n<number> s\nb\n")

    def test_no_expectation(self):
        self.assertFalse(self.run_against("true"))

    def test_malformed(self):
        self.assertFalse(self.run_against("true", "text\n"))
        self.assertFalse(self.run_against("printf '\\\\q\\n'", "=== stdout\n\\q\n"))

    def test_what_checks_nothing(self):
        for text in ("=== stdout\n\n--- Spent: <time> ---\n\n", "=== stdout\n<any>\n", ""):
            self.assertFalse(expectation.checksanything(expectation.readexpectation(text)), text)
        for text in ("=== stdout\n 5\n", "=== status 1\n", "=== stderr\n<any> b\n"):
            self.assertTrue(expectation.checksanything(expectation.readexpectation(text)), text)


if __name__ == "__main__":
    unittest.main()
