#!/usr/bin/env python3
"""The script that fuzzes: does it clean up behind harnesses that end in whatever way?"""
import os
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCE = (ROOT / "tests" / "fuzz" / "harmless.cpp").read_text()
# Leaves a folder as the harness does, and then finds the bug, or ends in peace.
PLANTED = """#!/bin/sh
mkdir "$TMPDIR/morvik-fuzz-1" && touch "$TMPDIR/morvik-fuzz-1/file"
for argument; do case $argument in -artifact_prefix=*) echo bug >"${argument#*=}crash-1" ;; esac; done
echo '    #1 in (anonymous namespace)::look(Point const&)'
exit 77
"""
PIPELINE = """#!/bin/sh
mkdir "$TMPDIR/morvik-fuzz-2"
echo Done
exit %d
"""


class Fuzzing(unittest.TestCase):
    def test_nothing_is_left(self):
        for status in (0, 1):
            with tempfile.TemporaryDirectory() as scratch:
                folder = pathlib.Path(scratch)
                temporary, built = folder / "temporary", folder / "built"
                temporary.mkdir()
                (built / "tests" / "fuzz").mkdir(parents=True)
                for name, text in (("fuzz_planted", PLANTED), ("fuzz_pipeline", PIPELINE % status)):
                    harness = built / "tests" / "fuzz" / name
                    harness.write_text(text)
                    harness.chmod(0o755)
                run = subprocess.run([ROOT / "tests" / "fuzz" / "run", "1", built], capture_output=True, text=True,
                                     env=dict(os.environ, TMPDIR=str(temporary)), check=False)
                self.assertEqual(run.returncode, status, run.stdout + run.stderr)
                self.assertEqual(list(temporary.iterdir()), [])

    def test_the_harness_works_where_the_script_says(self):
        self.assertIn('getenv("TMPDIR")', SOURCE)


if __name__ == "__main__":
    unittest.main()
