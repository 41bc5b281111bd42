#!/usr/bin/env python3
"""The programmes that are measured beside peers answer what they should, with little work:  answers_test.py MORVIK

Morvik's and CPython's are always run, those of the other peers where they are installed. No clock decides anything here.
"""
import dataclasses
import os
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "bench"))
import programmes  # noqa: E402
from peers.rows import ROWS, living  # noqa: E402

COMMANDS = programmes.peers(sys.argv.pop(1) if len(sys.argv) > 1 else "morvik")


def row(title, **changes):
    return dataclasses.replace(next(row for row in ROWS if title in row.title), **changes)


class Answers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        programmes.prepare()

    def test_every_programme(self):
        for found in ROWS:
            for peer in found.programmes:
                if peer in COMMANDS:
                    for n in (1, 3):
                        with self.subTest(found.title, peer=peer, n=n):
                            programmes.Work(found, peer, COMMANDS[peer], found.tiny).run(n)

    def test_a_wrong_answer_is_told(self):
        wrong = row("LOOP", answer=lambda n, size: "5")
        for peer in wrong.programmes:
            if peer in COMMANDS:
                with self.assertRaisesRegex(programmes.Wrong, "%s, status 0, answered '6' in place of '5'" % peer):
                    programmes.Work(wrong, peer, COMMANDS[peer], 1).run(3)

    def test_a_status_is_told(self):
        failing = row("LOOP", programmes={"CPython": "print(6); raise SystemExit(3)"})
        with self.assertRaisesRegex(programmes.Wrong, "CPython, status 3"):
            programmes.Work(failing, "CPython", COMMANDS["CPython"], 1).run(3)

    def test_life_is_that_of_the_rules(self):
        size = row("Life").tiny
        cells = {(i % size, i // size) for i in range(size * size) if (i + 1) * (i + 1) % 65521 % 5 < 2}
        for rounds in range(4):
            self.assertEqual(living(rounds, size), len(cells))
            self.assertGreater(len(cells), size)
            around = {(x, y): sum((x + a, y + b) in cells for a in (-1, 0, 1) for b in (-1, 0, 1))
                      for x in range(size) for y in range(size)}
            cells = {cell for cell, count in around.items() if count == 3 or count == 4 and cell in cells}


class Tables(unittest.TestCase):
    def test_every_row_can_be_told_from_the_others(self):
        self.assertEqual(len({row.title for row in ROWS}), len(ROWS))

    def test_a_goal_is_a_figure_a_peer_of_the_row_or_constant(self):
        for found in ROWS:
            for goal in (found.goal, found.then):
                self.assertTrue(goal in (None, "constant", *found.programmes) or isinstance(goal, (int, float)), found.title)

    def test_what_misses_its_goal_is_bold(self):
        for ours, goal, shown in ((30, 18, "**30**"), (18, 18, "18"), (5, "Lua", "5"), (7, "Lua", "**7**"), (7, "gforth", "7"),
                                  (7, "constant", "7"), (7, None, "7")):
            self.assertEqual(programmes.cells("", "", {"Morvik": ours, "Lua": 6.25}, goal, None),
                             ["", "", shown, "", "", "", "6.2", "", "" if goal is None else str(goal), ""])

    def test_figures_have_two_or_three_digits(self):
        self.assertEqual([programmes.digits(figure) for figure in (0, 0.0123, 4.56, 9.96, 45.67, 99.6, 1234.5)],
                         ["0", "0.012", "4.6", "10", "45.7", "100", "1234"])


if __name__ == "__main__":
    unittest.main()
