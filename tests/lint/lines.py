#!/usr/bin/env python3
"""The runner of one-line tests itself: does it see a wrong answer, a missing one, and a process that ended badly?"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

RUNNER = pathlib.Path(__file__).resolve().parent.parent / "lines" / "run.py"
FRAME = "<<line %d>>\\n\\n\\n-%s"
END = "\\n--- Spent: 00:00:00.000001 ---\\n\\n"


class Lines(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.scratch.name)
        self.file = self.folder / "t.lines"

    def tearDown(self):
        self.scratch.cleanup()

    def passes(self, text, output, status=0, *arguments):
        """Runs the runner on a file with a shell script as the binary. Returns whether it passed."""
        binary = self.folder / "binary"
        binary.write_text("#!/bin/sh\ncat >/dev/null\nprintf '%s'\nexit %d\n" % (output, status))
        binary.chmod(0o755)
        self.file.write_text(text)
        run = subprocess.run([sys.executable, "-B", str(RUNNER), *arguments, str(binary), str(self.file)],
                             capture_output=True, text=True, check=False)
        self.assertNotIn("Traceback", run.stderr)
        return run.returncode == 0

    def test_answers(self):
        good = FRAME % (1, "\\n\\n 3") + FRAME % (2, "\\n\\n 1 2\\n 3 4\\n\\n") + END
        self.assertTrue(self.passes("1 2 + → 3\nm → 1 2\\n 3 4\n", good))
        self.assertFalse(self.passes("1 2 + → 4\nm → 1 2\\n 3 4\n", good))
        self.assertFalse(self.passes("1 2 + → 3\nm → 1 2 3 4\n", good))

    def test_messages(self):
        failed = "\\n17 - a text.\\n\\nInstruction:\\n . OPERATOR:\\t\\t+\\nException processing:...\\n-"
        self.assertTrue(self.passes("x → !17\n", FRAME % (1, failed) + END))
        self.assertFalse(self.passes("x → !18\n", FRAME % (1, failed) + END))
        self.assertTrue(self.passes("x → !17 5\n", FRAME % (1, "\\n17 - a text.\\n\\n\\n 5") + END))

    def test_a_missing_answer_and_a_bad_end(self):
        one = FRAME % (1, "\\n\\n 3")
        self.assertFalse(self.passes("a → 3\nb → 3\n", one + END))
        self.assertFalse(self.passes("a → 3\n", one))
        self.assertFalse(self.passes("a → 3\n", one + END, 1))

    def test_malformed(self):
        for text in ("", "# nothing\n", "1 2 +\n"):
            self.assertFalse(self.passes(text, END), text)

    def test_update(self):
        text = "# kept\n1 → 9\n2 → 2\n"
        output = FRAME % (2, "\\n\\n 1") + FRAME % (3, "\\n\\n 2") + END
        self.assertTrue(self.passes(text, output, 0, "--update"))
        self.assertEqual(self.file.read_text(), "# kept\n1 → 1\n2 → 2\n")
        self.assertTrue(self.passes(self.file.read_text(), output))


if __name__ == "__main__":
    unittest.main()
