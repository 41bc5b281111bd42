#!/usr/bin/env python3
"""Reports of real runs: shares, interrupts, pipes that are closed, a full disk."""
import os
import re
import subprocess
import sys
import unittest

from terminal import Terminal

BINARY = sys.argv.pop(1)
TIMECHART = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "timechart")
ROW = re.compile(r"^(\w+) \t+(?P<rate>[ .\dinf]+ [GMK]?op/S) .* (?P<share>\d+\.\d{3}) %t$", re.M)
WORK = "0 20000 DYADIC + ; LOOP (1.5 2.5)[100000] 2 * SHAPE : 1 2 / ; ! 'abc' RANK 0.02 SLEEP .\n"


def run(*options, text=WORK):
    ended = subprocess.run([BINARY, *options], input=text, capture_output=True, text=True, timeout=120, check=True)
    return ended.stdout


def shares(text):
    return {row.group(1): float(row.group("share")) for row in ROW.finditer(text)}


class Exit(unittest.TestCase):
    def test_the_shares_are_all_of_it(self):
        for options in (["-i"], ["-if"], ["-if", "-pp2400"]):
            found = shares(run(*options))
            self.assertEqual(set(found), {"SLEEP", "RANK", "SHAPE", "LOOP", "EXECUTE", "ADD", "MULTIPLY", "DIVIDE"})
            self.assertAlmostEqual(sum(found.values()), 100, delta=0.0005 * len(found) + 1e-9)
            self.assertGreater(found["SLEEP"], found["DIVIDE"])

    def test_nothing_is_charged_twice(self):
        # Three levels of calls around one sleep: the calls themselves take next to nothing.
        text = run("-i", text=": 0.3 SLEEP ; @a SET : a ! ; @b SET : b ! ; @c SET c ! .\n")
        self.assertGreater(shares(text)["SLEEP"], 90)
        self.assertLess(shares(text)["EXECUTE"], 10)
        real = float(re.search(r"real:\t *([\d.]+) S$", text, re.M).group(1))
        self.assertTrue(0.3 <= real < 3, real)

    def test_processor_time(self):
        text = run("-is")
        figures = re.search(r"^proc:\t +([\d.]+) S \(utime: +([\d.]+) S, stime: +([\d.]+) S\)", text, re.M).groups()
        process, user, system = map(float, figures)
        self.assertAlmostEqual(process, user + system, delta=0.0021)

    def test_lines_fit_a_terminal(self):
        for options in (["-i"], ["-if"], ["-it"], ["-is"], ["-if", "-pp2400"]):
            text = run(*options)
            for line in text[text.rindex("Morvik [") :].split("\n"):
                self.assertLessEqual(len(line.expandtabs()), 80, line)

    def test_the_picture_of_a_report(self):
        for options in (["-i"], ["-if"], ["-if", "-pp2400"]):
            text = run(*options)
            picture = subprocess.run([sys.executable, "-B", TIMECHART], input=text, capture_output=True, text=True,
                                     check=True).stdout
            largest = max(shares(text).items(), key=lambda row: row[1])
            drawn = re.findall(r"<text[^>]*>([^<]*)</text>", picture)
            self.assertEqual(drawn[4], largest[0])
            self.assertEqual(drawn[5], "%.1f %%" % largest[1])

    def test_the_processors_of_a_pool(self):
        text = run("-if", "-c2", "-th2", text="(1.5)[1000000] 2.5 * 3.5 + DISCARD .\n")
        rates = re.findall(r"^Processor (\d):\t *([\d.]+) ([GMK]?)flop/S$", text, re.M)
        self.assertEqual([number for number, _, _ in rates], ["0", "1", "2", "3", "4"])
        done = [float(rate) * {"": 1, "K": 1e3, "M": 1e6, "G": 1e9}[unit] for _, rate, unit in rates]
        # The main thread takes a small head, the others share the rest evenly.
        self.assertLess(done[0], done[1] / 10)
        for rate in done[2:]:
            self.assertAlmostEqual(rate / done[1], 1, delta=0.01)
        self.assertRegex(text, r"\nSummary:\t.* n=2000001   2\.000 Mflops\n")

    def test_after_an_interrupt(self):
        with Terminal(BINARY, "-i") as terminal:
            terminal.untilprompt()
            terminal.type("1 2 + 60 SLEEP 3 + .\n")
            terminal.quiet(0.3)
            terminal.type("\x03")
            terminal.untilprompt()
            terminal.type("OFF .\n")
            text, status = terminal.ending()
        self.assertEqual(set(shares(text)), {"ADD"})
        self.assertRegex(text, r"\nSummary:\t.* n=1 ")
        self.assertEqual(status, 0)

    def test_a_run_that_is_interrupted_has_no_report(self):
        with Terminal(BINARY, "-t", "-p") as terminal:
            terminal.untilprompt()
            terminal.type("1 60 SLEEP .\n")
            terminal.quiet(0.3)
            terminal.type("\x03")
            text = terminal.untilprompt()
            self.assertIn("User interrupt", text)
            self.assertNotIn("-->", text)
            self.assertIn("-->\tExecuted 3 operators, 1 operations.\n", terminal.say("1 2 + ."))


class Broken(unittest.TestCase):
    def check(self, process):
        process.stdin.write(WORK.encode())
        process.stdin.close()
        self.assertEqual(process.wait(120), 0)

    def test_a_closed_pipe(self):
        for options in (["-if"], ["-q", "-t", "-p", "-pp2400"]):
            reader, writer = os.pipe()
            os.close(reader)
            process = subprocess.Popen([BINARY, *options], stdin=subprocess.PIPE, stdout=writer,
                                       stderr=subprocess.DEVNULL)
            os.close(writer)
            self.check(process)

    def test_a_pipe_that_closes_before_the_report(self):
        process = subprocess.Popen([BINARY, "-if"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL)
        process.stdout.read(40)
        process.stdout.close()
        self.check(process)

    @unittest.skipUnless(os.path.exists("/dev/full"), "no /dev/full")
    def test_a_full_disk(self):
        with open("/dev/full", "wb") as full:
            process = subprocess.Popen([BINARY, "-if"], stdin=subprocess.PIPE, stdout=full, stderr=subprocess.DEVNULL)
            self.check(process)


if __name__ == "__main__":
    unittest.main()
