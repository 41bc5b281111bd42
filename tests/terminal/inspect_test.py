#!/usr/bin/env python3
"""The Inspect prompt at a terminal: keys that send signals, the end of input, interrupts of what is stepped."""
import re
import sys
import unittest

from terminal import Terminal

BINARY = sys.argv.pop(1)
INTERRUPT, QUIT, ENDOFFILE = "\x03", "\x1c", "\x04"
CLOSING = r"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$"


class Inspecting(Terminal):
    """A terminal that has left the first prompt behind."""

    def __init__(self, *arguments):
        super().__init__(BINARY, *arguments)
        self.untilprompt()

    def inspect(self, line):
        """Types a line and reads up to the next Inspect prompt."""
        self.type(line + "\n")
        return self.until(r"\nInspect \[\d+\]: $")


class Inspect(unittest.TestCase):
    def test_an_empty_line_leads_on(self):
        with Inspecting() as terminal:
            self.assertEqual(terminal.inspect("STEP 1 2 + ."), "STEP 1 2 + .\n\nTrace ( 0:  2) 1\nInspect [1]: ")
            self.assertEqual(terminal.inspect(""), "\n\nTrace ( 0:  3) 2\nInspect [2]: ")
            self.assertEqual(terminal.inspect(""), "\n\nTrace ( 0:  4) . OPERATOR:\t\t+\nInspect [3]: ")
            self.assertEqual(terminal.say(""), "\n\n\n 3\n\nMorvik [1]> ")

    def test_a_line_runs_on_the_stack_inspected(self):
        with Inspecting() as terminal:
            terminal.inspect("7 STEP 1 + .")
            self.assertEqual(terminal.inspect("DUP *"), "DUP *\n\n\n 49\nInspect [2]: ")
            self.assertEqual(terminal.say("RUN"), "RUN\n\n\n 50\n\nMorvik [1]> ")

    def test_an_error_comes_back_to_the_prompt(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 1 .")
            text = terminal.inspect("'a' 1 +")
            self.assertIn("\n17 - dyadic function arguments are not conformable.\n", text)
            self.assertTrue(text.endswith("\nException processing:...\nInspect [3]: "), text)
            self.assertIn("\n23 - this name has no meaning yet.", terminal.inspect("nowhere"))
            terminal.inspect("CLEAR")
            self.assertEqual(terminal.say("RUN"), "RUN\n\n\n 1\n\nMorvik [1]> ")

    def test_keys_that_send_signals_are_ignored_while_a_line_is_read(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 1 2 + .")
            terminal.type(INTERRUPT)
            terminal.type(QUIT)
            self.assertNotIn("Morvik", terminal.quiet(0.3))
            self.assertTrue(terminal.inspect("").endswith("Trace ( 0:  3) 2\nInspect [2]: "))

    def test_an_interrupt_of_a_line_comes_back_to_the_prompt(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 1 2 + .")
            terminal.type("60 SLEEP\n")
            terminal.quiet(0.3)
            terminal.type(INTERRUPT)
            text = terminal.until(r"\nInspect \[\d+\]: $")
            self.assertIn("\n** User interrupt. **\n\nException processing:...", text)
            self.assertTrue(terminal.inspect("").endswith("Trace ( 0:  3) 2\nInspect [3]: "), text)

    def test_an_interrupt_of_the_run_inspected_ends_it(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 60 SLEEP 1 .")
            terminal.inspect("")
            terminal.type("\n")
            terminal.quiet(0.3)
            terminal.type(INTERRUPT)
            self.assertRegex(terminal.untilprompt(), r"\*\* User interrupt\. \*\*\n\nException processing:\.\.\.(?s:.*)"
                             r"\n\nMorvik \[1\]> $")
            self.assertEqual(terminal.say("CLEAR 5 ."), "CLEAR 5 .\n\n\n 5\n\nMorvik [1]> ", "the switches were its own")

    def test_the_end_of_input_ends_the_process(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 1 2 + .")
            terminal.inspect("")
            terminal.type(ENDOFFILE)
            text, status = terminal.ending()
            self.assertRegex(text, r"^\n--- Good bye\. \(999\) ---\n\n" + CLOSING)
            self.assertEqual(status, 0)

    def test_off_at_the_prompt_ends_the_process(self):
        with Inspecting() as terminal:
            terminal.inspect(": STEP 1 2 + ; ! .")
            terminal.type("OFF\n")
            text, status = terminal.ending()
            self.assertRegex(text, r"^OFF\n\n--- Good bye\. \(999\) ---\n\n" + CLOSING)
            self.assertEqual(status, 0)

    def test_break_leaves_the_prompt(self):
        with Inspecting() as terminal:
            terminal.inspect("STEP 1 2 + .")
            self.assertEqual(terminal.say("4 5 BREAK 6"), "4 5 BREAK 6\n\n\n 3\n\nMorvik [1]> ")

    def seconds(self, text):
        """The one time that a text reports."""
        found = re.findall(r"t = (\d\d)\.(\d\d) (\d{3})mS (\d{3})uS\n", text)
        self.assertEqual(len(found), 1, text)
        minutes, whole, milli, micro = map(int, found[0])
        return minutes * 60 + whole + milli / 1e3 + micro / 1e6

    def test_reports_of_lines(self):
        with Inspecting("-t") as terminal:
            terminal.inspect("STEP 1 2 + .")
            self.assertGreaterEqual(self.seconds(terminal.inspect("0.4 SLEEP")), 0.4)
            self.assertIn("Trace", terminal.inspect(""))
            self.assertLess(self.seconds(terminal.inspect("3")), 0.3)
            # The text took as long as everything that was done at its prompts, and the person's time there.
            self.assertGreaterEqual(self.seconds(terminal.say("RUN")), 0.4)

    def test_the_time_of_a_person_is_charged_to_nothing(self):
        with Inspecting("-i") as terminal:
            terminal.inspect("STEP 1 2 + .")
            terminal.inspect("")
            terminal.inspect("")
            terminal.quiet(0.5)
            terminal.say("")
            terminal.type("OFF .\n")
            text, _ = terminal.ending()
            average = re.search(r"\nADD \t\t.* ([\d.]+) +([num]?)S, 100\.000 %t\n", text)
            scale = {"n": 1e-9, "u": 1e-6, "m": 1e-3, "": 1}
            self.assertLess(float(average.group(1)) * scale[average.group(2)], 0.4, text)


if __name__ == "__main__":
    unittest.main()
