#!/usr/bin/env python3
"""The prompt at a real terminal: what a person types, and what stands on the screen."""
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

import pexpect

from package import BINARY, ROOT
from person import Person

CTRL = {letter: chr(ord(letter) - 64) for letter in "ABCDEFGHIJKLMNOPQRSTUVWXYZ"}
UP, LEFT, ESC = "\x1b[A", "\x1b[D", "\x1b"
F2, F3, F4, F5 = "\x1bOQ", "\x1bOR", "\x1bOS", "\x1b[15~"


class Session(unittest.TestCase):
    """A session with a home of its own for each test."""

    arguments, environment = (), {}

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="morvik-")
        self.addCleanup(folder.cleanup)
        self.home = pathlib.Path(folder.name)
        self.configure()
        self.person = self.come()

    def configure(self):
        """Writes what is to be there before the start."""

    def come(self, *arguments, **environment):
        person = Person(BINARY, *self.arguments, *arguments, home=self.home, **{**self.environment, **environment})
        self.addCleanup(person.__exit__)
        person.untilprompt("0")
        return person

    def say(self, text, depth=r"\d+"):
        return self.person.say(text, depth)

    def shows(self, pattern):
        return self.person.until(pattern)

    def history(self):
        path = self.home / ".local" / "state" / "morvik" / "history"
        return path.read_text(encoding="utf-8") if path.exists() else ""


class Editing(Session):
    def test_a_line_is_edited_and_answered(self):
        self.person.type("1 3 + ." + LEFT * 5 + "\x7f" + "2")  # 1 2 + .
        self.shows(r"^Morvik \[0\]> 1 2 \+ \.|> 12")
        self.person.type(CTRL["A"] + CTRL["K"] + "20 22 + .\r")
        self.person.untilprompt("1")
        self.assertIn("\n 42\n", self.person.text())

    def test_many_lines_say_what_is_open(self):
        self.person.type(": 1 +\r")
        self.shows(r"^ *:\.\.\. $|^ *:\.\.\.")
        self.person.type("(1 'a\r")
        self.shows(r": \( '\.\.\.")
        self.person.type("') ; DROP\r")
        self.shows(r"^ *\.\.\.$")
        self.person.type(".\r")
        self.person.untilprompt()

    def test_history_is_kept_over_two_runs(self):
        self.say("11 31 + .")
        self.person.type(CTRL["D"])
        self.assertEqual(self.person.ending(), 0)
        self.assertIn("11 31 + .", self.history())
        self.person = self.come()
        self.person.type(UP)
        self.shows(r"> 11 31 \+ \.")
        self.person.type(CTRL["C"] + CTRL["R"] + "31")
        self.shows(r"(?s)> 11 31 \+ \..*I-search backward: 31")
        self.person.type("\r")
        self.shows(r"^Morvik \[0\]> 11 31 \+ \.")
        self.person.type("\r")
        self.person.untilprompt("1")

    def test_history_is_suggested(self):
        self.say("123456 7 + .")
        self.person.type("1234")
        self.shows(r"\[1\]> 123456 7 \+ \.")
        self.person.type(CTRL["E"] + "\r")
        self.person.untilprompt("2")

    def test_control_c_drops_a_text(self):
        self.person.type("1 2 3" + CTRL["C"])
        self.shows(r"\[0\]> 1 2 3\nMorvik \[0\]>$")
        self.assertIn("\n 5", self.say("2 3 + .", "1"))

    def test_a_sign_is_spelled_out(self):
        self.person.type("6 7 \\times\t .")
        self.shows(r"> 6 7 × \.")
        self.person.type("\r")
        self.person.untilprompt("1")
        self.assertIn("\n 42", self.person.text())

    def test_what_means_nothing_is_refused(self):
        self.person.type("1 é .\r")
        self.shows("é is no sign, and means nothing")
        self.person.type(CTRL["C"])
        self.assertIn("\né×", self.say("'é×' .", "1"))

    def test_words_are_completed_with_their_meaning(self):
        self.person.type("INTERV\t")
        self.shows(r"> INTERVAL")
        self.person.type(CTRL["C"])
        self.person.untilprompt()
        self.person.type("MAXI")
        self.shows(r"MAXIMUM .* x y -- z .*the larger")

    def test_names_are_completed(self):
        self.say("5 @speed SET 6 @_rate SET .")
        self.person.type("spe\t")
        self.shows(r"> speed")
        self.person.type(" _ra\t")
        self.shows(r"> speed _rate")

    def test_file_names_are_completed_inside_quotes(self):
        (self.home / "notes.txt").write_text("'hello' .")
        self.person.type("'not\t")
        self.shows(r"> 'notes\.txt")

    def test_vi_keys(self):
        self.person.type(F4)
        self.person.type("1 2 + x" + ESC)
        time.sleep(0.7)  # an escape is one by itself when nothing follows
        self.person.type("xa.\r")
        self.person.untilprompt("1")
        self.assertIn("\n 3", self.person.text())

    def test_full_stops_by_themselves(self):
        self.person.type(F5)
        self.assertIn("\n 3", self.say("1 2 +", "1"))

    def test_resize(self):
        self.say("1 2 + .")
        self.person.type("12345 " * 10)
        self.person.resize(20, 40)
        self.person.type(". \r")
        self.person.untilprompt("11")
        self.assertIn(" 12345", self.say("."))


class Pasting(Session):
    def test_a_hundred_thousand_numbers(self):
        text = "(" + " ".join(map(str, range(100000))) + ") SUM ."
        self.person.paste(text)
        self.shows(r"⟦1: %d pasted characters⟧" % len(text))
        self.person.type("\r")
        self.person.untilprompt("1")
        self.assertIn("\n 4999950000", self.person.text())

    def test_lines(self):
        self.person.paste("1 2 + .\n3 4 + .\n: 1 +\n; DUP .")
        self.shows(r"; DUP \.")
        self.person.type("\r")
        self.person.untilprompt()
        self.assertRegex(self.person.text(), r"\n 3\n 7\n")


class Running(Session):
    def test_ten_megabytes_are_cut(self):
        self.person.type("(0 1500000) .. .\r")
        count = sum(len(" %d" % number) for number in range(1500001)) + len("\n\n\n")
        self.shows(r"-- 50000 of %d bytes shown; F3 shows all" % count)
        self.person.untilprompt("1")

    def test_control_c_interrupts(self):
        self.person.type("7 100 SLEEP .\r")
        self.shows(r"[|/\\-]$")
        self.person.type(CTRL["C"])
        self.shows(r"\*\* User interrupt\. \*\*")
        self.person.untilprompt("2")
        self.say("CLEAR .", "0")

    def test_control_c_stops_a_loop_and_the_texts_behind_it(self):
        self.person.paste("2000000000 : 1 DISCARD ; REPEAT . 5 .")
        self.person.type("\r")
        time.sleep(0.5)
        self.person.type(CTRL["C"])
        self.shows(r"\*\* User interrupt\. \*\*")
        self.person.untilprompt()
        self.assertNotRegex(self.person.text(), r"^ 5$")

    def test_time_of_a_long_text(self):
        self.assertRegex(self.say("1.2 SLEEP 5 .", "1"), r"-- 1\.[2-9]\d s")

    def test_questions(self):
        self.person.type("'Your name? ' TELL QUOTEDIN 'How many? ' TELL INPUT .\r")
        self.shows(r"^Your name\? $|^Your name\?")
        self.person.type("Ann\r")
        self.shows(r"^How many\?")
        self.person.type("20 1 +\r")
        self.person.untilprompt("2")
        self.assertRegex(self.person.text(), r"Your name\? Ann\nHow many\? 20 1 \+\n 21\n")

    def test_control_c_at_questions(self):
        for text, question in (("1 'N? ' TELL QUOTEDIN 9 .", "N"), ("1 'Q? ' TELL INPUT 9 .", "Q")):
            self.person.type(text + "\r")
            self.shows(r"^%s\?" % question)
            self.person.type("half" + CTRL["C"])
            self.person.untilprompt(r"\d")
            self.assertIn("** User interrupt. **", self.person.text())
            self.assertNotRegex(self.person.text(), r"^ 9$")
            self.say("CLEAR .", "0")

    def test_inspection(self):
        self.person.type("STEP 1 2 .\r")
        self.shows(r"Inspect \[1\]:")
        self.person.type("\r")
        self.shows(r"Inspect \[2\]:")
        self.person.type("DUP\r")
        self.shows(r"Inspect \[3\]:")
        self.person.type(CTRL["C"])
        self.person.untilprompt("3")

    def test_a_killed_interpreter(self):
        self.say("1 2 .")
        self.person.kill()
        self.person.type("5 .\r")
        self.shows(r"-- the interpreter is killed by signal 9, and is started again: its stack and names are empty")
        self.person.untilprompt("0")
        self.person.type(UP + UP)
        self.shows(r"> 1 2 \.")
        self.person.type("\r")
        self.person.untilprompt("2")

    def test_a_running_one_is_killed(self):
        self.person.type("100 SLEEP .\r")
        self.shows(r"[|/\\-]$")
        self.person.kill()
        self.shows(r"-- the interpreter is killed by signal 9")
        self.person.untilprompt("0")

    def test_the_end(self):
        self.person.type("OFF .\r")
        self.assertEqual(self.person.ending(), 0)
        self.assertIn("Good bye", self.person.text())

    def test_an_editor_has_the_terminal(self):
        editor = self.home / "editor"
        editor.write_text("#!/bin/sh\n[ -t 0 ] && [ -t 1 ] && echo \"'edited'\" >$1\n")
        editor.chmod(0o755)
        self.person.type(CTRL["D"])
        self.person.ending()
        self.person = self.come(EDITOR=str(editor))
        self.assertIn("\nedited", self.say("5 EDIT ."))


class Help(Session):
    def test_words_messages_and_how_to_find_things(self):
        self.assertRegex(self.say("?SIN"), r"SIN  SINUS\n +x -- y .*\n +the sine\n\n +Morvik \[0\]> \(0 1\) SIN \.\n +0 0\.8414")
        self.assertIn("x times y", self.say("?×"))
        self.assertIn("23 - this name has no meaning yet", self.say("?23"))
        self.assertIn("what a word means", self.say("?"))
        self.assertRegex(self.say("?hyperbolic"), "SINH .*hyperbolic")
        self.assertIn("There is no message 22222", self.say("?22222"))

    def test_words_that_begin_with_the_mark_still_run(self):
        self.assertRegex(self.say("?? ."), "800 - not enough")


class Toolbar(Session):
    def test_it_shows_the_stack_and_goes(self):
        self.say("(1 2 3) 'ab' .")
        self.shows(r"top: 2 characters 'ab'  │  3 integer \( 1 2 3 \)")
        self.person.type(F2)
        end = time.monotonic() + 20
        while "top:" in self.person.text() and time.monotonic() < end:
            self.person.read(0.1)
        self.assertNotIn("top:", self.person.text())


class Settings(Session):
    def configure(self):
        folder = self.home / ".config" / "morvik"
        folder.mkdir(parents=True)
        (folder / "prompt.ini").write_text("dot = yes\ntoolbar = no\nlog = session.morvik\nlarge = all\ncolour = red\n")

    def test_the_file_counts_and_its_faults_are_told(self):
        self.assertIn("prompt.ini: there is no option colour", self.person.text())
        self.assertIn("\n 3", self.say("1 2 +", "1"))
        self.assertNotIn("top:", self.person.text())

    def test_the_log_runs_again(self):
        self.say("2 3 ×")
        self.person.type("'Q? ' TELL INPUT 1 +\r")
        self.shows(r"^Q\?")
        self.person.type("41\r")
        self.person.untilprompt("2")
        log = (self.home / "session.morvik").read_bytes()
        self.assertEqual(log, b"2 3 \xb9 .\n'Q? ' TELL INPUT 1 + .\n41\n")
        run = subprocess.run([BINARY, "-q"], input=log, capture_output=True, check=False)
        self.assertTrue(run.stdout.startswith(b"\n\n 6Q? \n\n\n 42"), run.stdout)


class Confined(Session):
    arguments = ("--confine",)

    def configure(self):
        (self.home / "in").write_text("within")
        (self.home / "away").symlink_to("/etc/hostname")

    def test_files_stay_where_it_started(self):
        self.say("'in' TEXTREAD .")
        self.shows("^within$")
        for text in ("'away' TEXTREAD .", "'/etc/hostname' TEXTREAD .", "'x' EDIT ."):
            self.say("CLEAR " + text)
            self.shows("^720 - the access to files in this directory is not allowed")
            self.person.type(CTRL["L"])

    def test_without_a_terminal_too(self):
        script = pathlib.Path(__file__).resolve().parents[2] / "python" / "morvik-prompt"
        run = subprocess.run([os.sys.executable, script, "--interpreter", BINARY, "--confine", "--", "-q"], capture_output=True,
                             input=b"'away' TEXTREAD .", check=False, cwd=self.home)
        self.assertEqual(run.returncode, 0)
        self.assertIn(b"\n720 - ", run.stderr)

    def test_what_it_needs_and_is_not_there_is_told(self):
        script = pathlib.Path(__file__).resolve().parents[2] / "python" / "morvik-prompt"
        run = subprocess.run([os.sys.executable, script, "--interpreter", "/bin/sh", "--confine"], capture_output=True, check=False)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b"morvik-prompt: --confine needs ", run.stderr)


class Interpreters(unittest.TestCase):
    def test_what_is_no_interpreter_is_told(self):
        with Person("/bin/true") as person:
            self.assertEqual(person.ending(), 1)
            self.assertIn("morvik-prompt: /bin/true ended before its first prompt: gone with status 0", person.text())
        with Person("/nowhere/morvik") as person:
            self.assertEqual(person.ending(), 1)
            self.assertIn("morvik-prompt: /nowhere/morvik is no program that can be run", person.text())


class Suspending(unittest.TestCase):
    def test_control_z_gives_the_shell_back_and_keeps_the_text(self):
        """Under a shell that has jobs, while a text is typed and while one runs."""
        folder = tempfile.TemporaryDirectory(prefix="morvik-")
        self.addCleanup(folder.cleanup)
        settings = dict(os.environ, TERM="xterm", HOME=folder.name, PS1="SHELL> ", NO_COLOR="1")
        shell = pexpect.spawn("bash", ["--norc", "-i"], env=settings, timeout=60, dimensions=(30, 100))
        self.addCleanup(shell.close, True)
        shell.expect("SHELL> ")
        shell.sendline("%s %s --interpreter %s --no-toolbar" % (os.sys.executable, ROOT / "python" / "morvik-prompt", BINARY))
        shell.expect(r"\[0\]")
        shell.send("\x1b[1;1R1 2")  # where the cursor is, as the prompt asks
        shell.expect("2")
        shell.send(CTRL["Z"])
        shell.expect("Stopped")
        shell.expect("SHELL> ")
        shell.sendline("fg")
        shell.expect(r"\[0\]")
        shell.send("\x1b[1;1R + .\r")
        shell.expect(r"[^\d]3\r\n")
        shell.send("3 SLEEP 8 .\r")
        time.sleep(1)
        shell.send(CTRL["Z"])
        shell.expect("Stopped")
        shell.sendline("fg")
        shell.expect(r"[^\d]8\r\n")


class Plain(Session):
    def test_no_colour(self):
        self.person.type(CTRL["D"])
        self.person.ending()
        self.person = self.come(NO_COLOR="1")
        self.say("1 2 + . 1 + .")
        self.assertNotRegex(self.person.raw, rb"\x1b\[[0-9;]*[34][81][;m]")
        self.person.type(CTRL["D"])
        self.person.ending()
        self.person = self.come()
        self.say("1 2 + .")
        self.assertRegex(self.person.raw, rb"\x1b\[[0-9;]*38;")

    def test_messages_have_a_colour(self):
        self.say("CLEAR 1 + .")
        self.assertIn(b"\x1b[31m800 - not enough arguments on stack for the reqested operation.\x1b[39m", self.person.raw)
        self.say("2 ; .")
        self.assertRegex(self.person.raw, rb"\x1b\[31m\[Trelk\] error: [^\x1b]*\x1b\[39m")
        self.say("'80 - not a message' PRINT .")
        self.assertIn("80 - not a message", self.person.text())
        self.assertNotIn(b"\x1b[31m80 ", self.person.raw)

    def test_a_dumb_terminal(self):
        self.person.type(CTRL["D"])
        self.person.ending()
        self.person = Person(BINARY, home=self.home, TERM="dumb")
        self.addCleanup(self.person.__exit__)
        self.shows(r"Morvik \[0\]> ?$")
        self.person.type("1 2 + .\r")
        self.shows(r"^ 3\nMorvik \[1\]>")
        self.assertNotIn(b"\x1b", self.person.raw)

    def test_without_a_terminal_it_is_the_interpreter(self):
        script = pathlib.Path(__file__).resolve().parents[2] / "python" / "morvik-prompt"
        run = subprocess.run([os.sys.executable, script, "--interpreter", BINARY, "--", "-c2"], input=b"1 2 + .", capture_output=True,
                             check=False)
        self.assertEqual(run.returncode, 0)
        self.assertRegex(run.stdout, rb"(?s)Processors: 2.*\n\n 3")


if __name__ == "__main__":
    unittest.main()
