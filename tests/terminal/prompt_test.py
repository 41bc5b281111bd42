#!/usr/bin/env python3
"""The prompt at a terminal: banner, depth, empty lines, keys that send signals, the end of input."""
import re
import sys
import unittest

from terminal import Terminal

BINARY = sys.argv.pop(1)
INTERRUPT, QUIT, ENDOFFILE = "\x03", "\x1c", "\x04"
INTERRUPTED = ("\n** User interrupt. **\n\nException processing:..."
               "\n-- - Discarding the bad TOS value...\n")
CLOSING = r"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$"


class Prompt(unittest.TestCase):
    def test_banner_and_greeting(self):
        with Terminal(BINARY) as terminal:
            text = terminal.untilprompt()
            self.assertRegex(text, r"^\n\n-- Morvik 0\.8 version n0\.0 smp0\.7 \[build 6\] 64-bit --\n\n[^\n]+\n\n")
            self.assertRegex(text, r"Single processor\n\nAvailable memory: [0-9.e+]+ MiB\n\n")
            self.assertTrue(text.endswith("\n--- Hello. (0) ---\n\nMorvik [0]> "), text)

    def test_depth_grows(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            self.assertEqual(terminal.say("1 2 ."), "1 2 .\n\n\n 2\n\nMorvik [2]> ")
            self.assertEqual(terminal.say("+ ."), "+ .\n\n\n 3\n\nMorvik [1]> ")

    def test_empty_line_prompts_again(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            self.assertEqual(terminal.say("7 ."), "7 .\n\n\n 7\n\nMorvik [1]> ")
            self.assertEqual(terminal.say(""), "\n\n\nMorvik [1]> ")
            self.assertEqual(terminal.say(""), "\n\n\nMorvik [1]> ")

    def test_line_feed_inside_a_text_is_white_space(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("1\n\n2\n")
            self.assertNotIn("Morvik", terminal.quiet(0.3))
            self.assertEqual(terminal.say("."), ".\n\n\n 2\n\nMorvik [2]> ")

    def test_blanks_after_a_text_make_no_second_prompt(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            self.assertEqual(terminal.say("1 .  "), "1 .  \n\n\n 1\n\nMorvik [1]> ")
            self.assertEqual(terminal.quiet(0.3), "")

    def test_keys_that_send_signals_are_ignored_at_the_prompt(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type(INTERRUPT)
            terminal.type(QUIT)
            terminal.quiet(0.3)
            self.assertIn("\n\n\n 5\n\nMorvik [1]> ", terminal.say("5 ."))

    def test_interrupt_of_a_sleep(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("1 2 60 SLEEP .\n")
            self.assertEqual(terminal.quiet(0.3), "1 2 60 SLEEP .\n")
            terminal.type(INTERRUPT)
            # What is on top is lost with the run, here what the sleep left; what is below it stays.
            self.assertEqual(terminal.untilprompt(), "^C" + INTERRUPTED + "\n\nMorvik [3]> ")
            self.assertEqual(terminal.say("DISCARD ."), "DISCARD .\n\n\n 2\n\nMorvik [2]> ")

    def test_interrupt_of_a_loop(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.say("1 2 .")
            terminal.type("%again @%again JUMP .\n")
            self.assertEqual(terminal.quiet(0.3), "%again @%again JUMP .\n")
            terminal.type(INTERRUPT)
            # The address may be on the stack or be consumed at that moment.
            self.assertRegex(terminal.untilprompt(), r"^\^C" + re.escape(INTERRUPTED) + r"\n\nMorvik \[[23]\]> $")

    def test_end_of_file(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type(ENDOFFILE)
            text, status = terminal.ending()
            self.assertRegex(text, r"^\n--- Good bye\. \(999\) ---\n\n" + CLOSING)
            self.assertEqual(status, 0)

    def test_off(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("OFF .\n")
            text, status = terminal.ending()
            self.assertRegex(text, r"^OFF \.\n\n--- Good bye\. \(999\) ---\n\n" + CLOSING)
            self.assertEqual(status, 0)

    def test_quiet(self):
        with Terminal(BINARY, "-q") as terminal:
            terminal.type("2 .\n")
            self.assertEqual(terminal.until(r" 2$"), "2 .\n\n\n 2")
            terminal.type(ENDOFFILE)
            text, status = terminal.ending()
            self.assertRegex(text, r"^\n" + CLOSING)
            self.assertEqual(status, 0)


if __name__ == "__main__":
    unittest.main()
