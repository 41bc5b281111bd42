#!/usr/bin/env python3
"""The scripts and the commands that pages show, run as they stand there:  pages_test.py BINARY"""
import os
import pathlib
import re
import subprocess
import unittest

from scripts import BINARY, LIMIT, Scripts

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = ROOT / "docs" / "scripts.md"
BLOCK = re.compile(r"^```(script \S+|shell)\n(.*?)^```$", re.M | re.S)


def comparable(text):
    """Measured figures, and the order of lines that follows from them, count for nothing."""
    text = re.sub(r"\d\d:\d\d:\d\d\.\d+", "T", text)
    if "Profile of" not in text:
        return text.rstrip().split("\n")
    return sorted(re.sub(r" +", " ", re.sub(r"\d+\.\d+", "N", line)).strip() for line in text.rstrip().split("\n"))


class Pages(Scripts):
    def check(self, page, least):
        blocks = BLOCK.findall(page.read_text())
        self.assertGreaterEqual(len(blocks), least)
        paths = os.path.dirname(BINARY) + os.pathsep + os.environ["PATH"]
        for kind, text in blocks:
            if kind != "shell":
                self.write(kind.split()[1], text)
                continue
            command, shown = text.split("\n", 1)
            done = subprocess.run(command.removeprefix("$ "), shell=True, cwd=self.folder, timeout=LIMIT, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=dict(os.environ, PATH=paths))
            self.assertEqual(comparable(done.stdout), comparable(shown), command)

    def test_the_page_of_scripts(self):
        self.check(PAGE, 7)

    def test_the_page_of_texts_and_pipes(self):
        self.check(ROOT / "docs" / "traps-texts.md", 2)

    def test_the_first_page(self):
        self.check(ROOT / "README.md", 2)

    def test_nobody_needs_to_know_of_pipes(self):
        self.assertNotRegex(PAGE.read_text().lower(), r"\bpipe")


if __name__ == "__main__":
    unittest.main()
