#!/usr/bin/env python3
"""The runner of the sessions on pages: what it finds, types and compares."""
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent / "pages"
sys.path.insert(0, str(ROOT))
import run as pages  # noqa: E402


class Pages(unittest.TestCase):
    def test_sessions(self):
        text = "```morvik\na\n```\n```morvik more\nb\n```\n```sh\nc\n```\n```morvik -i -pp2400\nd\n```\n"
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "page.md"
            page.write_text(text)
            self.assertEqual(pages.sessions(page), [([], [(2, ["a"]), (5, ["b"])]), (["-i", "-pp2400"], [(11, ["d"])])])

    def test_what_is_typed(self):
        lines = ["Morvik [0]> 1", "2 .", " 3", "Morvik [1]> STEP 1 .", "Inspect [1]: 4 +", "Inspect [2]:", "Trace",
                 "Inspect [2]: "]
        self.assertEqual(pages.typed(lines), [["1", "2 ."], ["STEP 1 ."], ["4 +"], [""], [""]])

    def same(self, one, other, measured=True):
        return pages.compared(one, measured) == pages.compared(other, measured)

    def test_measured_figures_agree_with_any(self):
        row = "ADD \t\t 27.129  Mop/S   36.861   nS,   3.387 %t"
        self.assertTrue(self.same(row, "ADD \t\t    inf Gop/S  1:1.000 m:S,  100.000 %t"))
        self.assertFalse(self.same(row, "ADD \t\t 27.129  Mop/S   3.387 %t"))
        self.assertFalse(self.same(row, "AND \t\t 27.129  Mop/S   36.861   nS,   3.387 %t"))
        self.assertFalse(self.same(row, "ADD \t\t 28.129  Mop/S   36.861   nS,   3.387 %t", False))
        self.assertTrue(self.same("t = 00.00 000mS 006uS", "t = 00.01 200mS 001uS"))
        self.assertTrue(self.same("performance: 863.5 Morvik", "performance: 1e-06 Morvik"))

    def test_counts_do_not(self):
        for text in ("avg 1.000 nS, sdev 2.000 nS,   3.000    ops   2.000  flop/op", "n=5   3.000  flops",
                     "second: 4.100   Kv/S   3.000   Kverbs", "Executed 3 operators, 1 operations."):
            self.assertTrue(self.same(text, text))
            self.assertFalse(self.same(text, text.replace("3.000", "4.000").replace("3 op", "4 op")), text)

    def test_blanks_at_the_end_of_a_line(self):
        self.assertTrue(self.same("Inspect [1]: \na\n\n", "Inspect [1]:\na", False))
        self.assertFalse(self.same("a\n\nb", "a\nb", False))


if __name__ == "__main__":
    unittest.main()
