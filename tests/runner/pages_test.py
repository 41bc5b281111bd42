#!/usr/bin/env python3
"""The scripts and the commands that docs/scripts.md shows, run as they stand there:  pages_test.py BINARY"""
import os
import pathlib
import re
import subprocess
import unittest

from scripts import BINARY, LIMIT, Scripts

PAGE = pathlib.Path(__file__).resolve().parent.parent.parent / "docs" / "scripts.md"
BLOCK = re.compile(r"^```(script \S+|shell)\n(.*?)^```$", re.M | re.S)


def comparable(text):
    """Measured figures, and the order of lines that follows from them, count for nothing."""
    if "Profile of" not in text:
        return text.rstrip().split("\n")
    return sorted(re.sub(r" +", " ", re.sub(r"\d+\.\d+", "N", line)).strip() for line in text.rstrip().split("\n"))


class Pages(Scripts):
    def test_the_page(self):
        blocks = BLOCK.findall(PAGE.read_text())
        self.assertGreater(len(blocks), 6)
        paths = os.path.dirname(BINARY) + os.pathsep + os.environ["PATH"]
        for kind, text in blocks:
            if kind != "shell":
                self.write(kind.split()[1], text)
                continue
            command, shown = text.split("\n", 1)
            done = subprocess.run(command.removeprefix("$ "), shell=True, cwd=self.folder, timeout=LIMIT, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=dict(os.environ, PATH=paths))
            self.assertEqual(comparable(done.stdout), comparable(shown), command)

    def test_nobody_needs_to_know_of_pipes(self):
        self.assertNotRegex(PAGE.read_text().lower(), r"\bpipe")


if __name__ == "__main__":
    unittest.main()
