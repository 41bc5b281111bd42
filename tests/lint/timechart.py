#!/usr/bin/env python3
"""The picture of an exit report: what it reads, in which order it draws, and what it refuses."""
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as tree

TOOL = pathlib.Path(__file__).resolve().parent.parent.parent / "tools" / "timechart"
REPORT = """

Morvik [1]>\x20

Execution timing
SLEEP \t\t  0.011    op/S                      1:30.000 m:S,  75.000 %t
\tavg       1:30.000 m:S, sdev   0.000   nS,   1.000    ops
ADD \t\t 29.691  Mop/S   29.691 Mflop/S  33.680   nS,   4.970 %t
\tavg  33.680   nS, sdev   8.714  uS,  505.180   Kops   1.000  flop/op
COMPRESSLASTAXIS \t    inf Gop/S                     0.000   nS,   0.000 %t
\tavg   0.000   nS, sdev   0.000   nS,   3.000    ops
SWAP \t\t 34.649  Mop/S                   28.861   nS,   0.030 %t
\tavg  28.861   nS, sdev 167.078   nS,   4.180   Kops
IF_YES \t\t 18.977  Mop/S                   52.697   nS,  20.000 %t
\t  2.29   Kcy/op  avg  52.697   nS, sdev 229.861   nS,   8.361  Mops

Summary:\tavg  43.115   nS, sdev  21.437  uS, n=1464718   1.422 Mflops
Raw timing:\tavg  31.049   nS,\t(proc time)
proc:\t  0.045 S (utime:   0.036 S, stime:   0.009 S)\treal:\t  0.093 S
\tMorvik verbs per second:    11.252  Mv/S 511.722   Kverbs
"""
SVG = "{http://www.w3.org/2000/svg}"


def run(report, *arguments):
    return subprocess.run([sys.executable, str(TOOL), *arguments], input=report.encode(), capture_output=True, check=False)


class Timechart(unittest.TestCase):
    def draw(self, report, *arguments):
        ended = run(report, *arguments)
        self.assertEqual((ended.returncode, ended.stderr), (0, b""))
        return tree.fromstring(ended.stdout)

    def refuse(self, report, *arguments):
        ended = run(report, *arguments)
        self.assertEqual((ended.returncode, ended.stdout), (1, b""))
        self.assertEqual(ended.stderr.count(b"\n"), 1, "one line, and no traceback")
        return ended.stderr.decode()

    def rows(self, picture):
        """Each row as its texts, and the width of its bar."""
        return [([found.text for found in group.iter(SVG + "text")], float(group.find(SVG + "rect").get("width")))
                for group in picture.iter(SVG + "g")]

    def test_the_largest_share_comes_first(self):
        rows = self.rows(self.draw(REPORT))
        self.assertEqual([row[0] for row in rows], [["SLEEP", "75.0 %", "1:30.000 m:S", "1"],
                                                    ["IF_YES", "20.0 %", "52.697 nS", "8.361 M"],
                                                    ["ADD", "5.0 %", "33.680 nS", "505.180 K"],
                                                    ["2 others", "< 0.1 %"]])

    def test_bars_are_as_long_as_their_shares(self):
        widths = [row[1] for row in self.rows(self.draw(REPORT))]
        self.assertAlmostEqual(widths[1] / widths[0], 20 / 75, places=3)
        self.assertAlmostEqual(widths[2] / widths[0], 4.97 / 75, places=3)
        self.assertEqual(widths[3], 1, "what took any time is seen")

    def test_what_took_no_time_has_no_bar(self):
        report = REPORT.replace("  0.030 %t", "  0.000 %t").replace(" 75.000 %t", "  0.000 %t")
        report = report.replace("  4.970 %t", "  0.000 %t").replace(" 20.000 %t", "  0.000 %t")
        for texts, width in self.rows(self.draw(report)):
            self.assertEqual((texts[1], width), ("0.0 %", 0))

    def test_everything_lies_inside(self):
        for report in (REPORT, REPORT.replace("SLEEP", "REDUCENWISELASTAXIS")):
            picture = self.draw(report)
            width, height = float(picture.get("width")), float(picture.get("height"))
            for shape in picture.iter(SVG + "rect"):
                self.assertLessEqual(float(shape.get("x", 0)) + float(shape.get("width")), width)
                self.assertLessEqual(float(shape.get("y", 0)) + float(shape.get("height")), height)
            for found in picture.iter(SVG + "text"):
                x, length = float(found.get("x")), 8.4 * len(found.text)
                isend = "end" in found.get("class", "").split()
                self.assertGreaterEqual(x - length if isend else x, 0, found.text)
                self.assertLessEqual(x if isend else x + length, width, found.text)
                self.assertLess(float(found.get("y")), height)

    def test_the_facts_of_the_summary(self):
        texts = [found.text for found in self.draw(REPORT).iter(SVG + "text")]
        self.assertIn("1464718 operations, 0.093 s from start to end", texts)

    def test_many_rows(self):
        letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJ"
        report = "Execution timing per operation:\n" + "".join(
            "%s%d \t\t  1.000    op/S   1.000 S,   %.3f %%t\n\tavg   1.000 S, sdev   0.000   nS,   2.000    ops\n" %
            (name, number, 100 / len(letters)) for number, name in enumerate(letters))
        rows = self.rows(self.draw(report))
        self.assertEqual(len(rows), 25)
        self.assertEqual(rows[-1][0], ["12 others", "33.3 %"])

    def test_the_last_report_counts(self):
        rows = self.rows(self.draw(REPORT + REPORT.replace("SLEEP", "EACH")))
        self.assertEqual(rows[0][0][0], "EACH")

    def test_a_profile_of_a_script(self):
        profile = ("noise\n\nProfile of s.morvik: 8.000 ms, of which 1.000 ms in no function\n\n"
                   "      own ms   share     total ms       calls  function\n"
                   "       5.000   62.5%        5.000        2000  inc (s.morvik:1)\n"
                   "       2.000   25.0%        7.000        1000  (no name) (s.morvik:4)\n\n"
                   "      own ms   share        runs  line\n       5.000   62.5%        2001  s.morvik:1\n")
        picture = self.draw(profile)
        texts = [found.text for found in picture.iter(SVG + "text")]
        for shown in ("inc", "(no name)", "(no function)", "62.5 %", "5.000 ms", "2000", "own time", "calls", "s.morvik: 8.000 ms"):
            self.assertIn(shown, texts)
        self.assertNotIn("s.morvik:1", texts)
        widths = [row[1] for row in self.rows(picture)]
        self.assertAlmostEqual(widths[0] / widths[1], 2.5, delta=0.01)

    def test_a_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "report"
            path.write_text(REPORT)
            self.assertEqual(len(self.rows(self.draw("", str(path)))), 4)
            self.assertIn("report", self.refuse("", str(path) + "s"))

    def test_both_lights(self):
        style = self.draw(REPORT).find(SVG + "style").text
        self.assertIn("@media (prefers-color-scheme: dark)", style)

    def test_what_cannot_be_drawn(self):
        self.assertIn("no table", self.refuse(""))
        self.assertIn("no table", self.refuse("Morvik [0]> \n\nSummary:\tavg   0.000   nS, sdev   0.000   nS, n=0\n"))
        self.assertIn("terse", self.refuse("Execution timing\n  9.984    op/S\t                100.157 mS,    88.895 %t\n"))
        self.assertIn("empty", self.refuse("Execution timing\n\xff\x00\n"))


if __name__ == "__main__":
    unittest.main()
