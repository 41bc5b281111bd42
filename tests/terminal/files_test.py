#!/usr/bin/env python3
"""Files and the terminal where the host is unkind: interrupts, full disks, endless and missing files, no handles left."""
import os
import pathlib
import random
import resource
import signal
import subprocess
import time
import unittest

from folder import BINARY, PATIENCE, Folder, asleep
from terminal import Terminal

SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
INTERRUPT = "\x03"
MEBIBYTE = 1 << 20


class Interrupts(Folder):
    """What an interrupt breaks leaves its operand, which the recovery of the top level turns into the empty vector."""

    def test_sleep(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("1 2 1000 SLEEP 'not run' .\n")
            terminal.quiet(0.3)
            before = time.monotonic()
            terminal.type(INTERRUPT)
            text = terminal.untilprompt()
            self.assertLess(time.monotonic() - before, 5)
            self.assertIn("\n** User interrupt. **\n", text)
            self.assertIn("\n-- - Discarding the bad TOS value...\n", text)
            self.assertTrue(text.endswith("\n\nMorvik [3]> "), text)
            self.assertEqual(terminal.say("TELL ."), "TELL .\n .\n\n 2\n\nMorvik [2]> ")

    def test_sleep_for_ever(self):
        for time_text in ("Inf", "9223372036854775807", "1E300"):
            with Terminal(BINARY) as terminal:
                terminal.untilprompt()
                terminal.type(time_text + " SLEEP .\n")
                terminal.quiet(0.2)
                terminal.type(INTERRUPT)
                self.assertIn("** User interrupt. **", terminal.untilprompt())

    def test_line(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("7 QUOTEDIN .\n")
            terminal.quiet(0.3)
            terminal.type("half a line" + INTERRUPT)
            text = terminal.untilprompt()
            self.assertIn("\n** User interrupt. **\n", text)
            self.assertTrue(text.endswith("Morvik [1]> "), text)
            # No beat is left that would break the reading of the next text.
            terminal.type("8 ")
            terminal.quiet(0.3)
            self.assertTrue(terminal.say("9 .").endswith("\n\n 9\n\nMorvik [3]> "))
            terminal.type("QUOTEDIN .\n")
            terminal.quiet(0.3)
            self.assertTrue(terminal.say("whole").endswith("\n\nwhole\n\n\nMorvik [4]> "))

    def test_input_reads_on(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            terminal.type("INPUT 1 + .\n")
            terminal.quiet(0.3)
            terminal.type(INTERRUPT)
            terminal.quiet(0.2)
            self.assertTrue(terminal.say("41").endswith("\n\n 42\n\nMorvik [1]> "))

    def test_time(self):
        with Terminal(BINARY) as terminal:
            terminal.untilprompt()
            shown = terminal.say("TIME 2440587.5 - 86400 * '' WRITE .").split("WRITE .\n ")[1].split("\n")[0]
            self.assertLess(abs(float(shown) - time.time()), 10)

    def test_sleep_takes_its_time(self):
        before = time.monotonic()
        self.run_text("1 SLEEP 0.5 SLEEP .")
        self.assertGreaterEqual(time.monotonic() - before, 1.5)

    def test_a_pipe_that_says_nothing(self):
        os.mkfifo(self.folder / "pipe")
        for text in ("'pipe' TEXTREAD 'not run' .\n", "'pipe' READ 'not run' .\n", "1 'pipe' WRITE 'not run' .\n",
                     "1 'pipe' APPEND 'not run' .\n"):
            with self.subTest(text):
                process = self.start(text)
                self.wait_until(lambda process=process: asleep(process))
                time.sleep(0.1)
                process.send_signal(signal.SIGINT)
                out, _ = process.communicate(b"COUNTSTACK .\n", timeout=60)
                self.assertIn(b"\n** User interrupt. **\n", out)
                self.assertIn(b"\n\n %d\n--- Spent" % (2 if text[0] == "1" else 1), out)
                self.assertNotIn(b"not run", out)

    def test_a_pipe_that_is_open_and_says_nothing(self):
        os.mkfifo(self.folder / "pipe")
        process = self.start("5 'pipe' TEXTREAD 'not run' .\n")
        with open(self.folder / "pipe", "wb") as pipe:
            pipe.write(b"some")
            pipe.flush()
            time.sleep(0.3)
            process.send_signal(signal.SIGINT)
            self.wait_until(lambda: str(self.folder / "pipe") not in self.handles(process))
        out, _ = process.communicate(b"COUNTSTACK .\n", timeout=60)
        self.assertIn(b"\n** User interrupt. **\n", out)
        self.assertIn(b"\n\n 2\n", out)

    def test_a_text_of_a_file(self):
        """The stream is closed when the jump leaves its text."""
        self.give("loop", "1 .\n: 1 JUMP ; @f SET 1000000000 : 1 DISCARD ; LOOP .\n2 .\n")
        self.give("sleeping", "1 .\n1000 SLEEP .\n2 .\n")
        self.give("outer", "'sleeping' READ .")
        for command in ("'sleeping' READ", "'sleeping' LOAD", "'outer' READ"):
            with self.subTest(command):
                process = self.start(command + " 'not run' .\n")
                self.wait_until(lambda process=process: str(self.folder / "sleeping") in self.handles(process))
                time.sleep(0.2)
                process.send_signal(signal.SIGINT)
                self.wait_until(lambda process=process: str(self.folder / "sleeping") not in self.handles(process))
                self.assertNotIn(str(self.folder / "outer"), self.handles(process))
                out, _ = process.communicate(b"'still here' .\n", timeout=60)
                self.assertIn(b"\n** User interrupt. **\n", out)
                self.assertIn(b"still here", out)
                self.assertNotIn(b"not run", out)


class Editors(Folder):
    def setUp(self):
        super().setUp()
        self.bin = self.folder / "bin"
        self.bin.mkdir()

    def edit(self, script, text, *limits):
        vi = self.bin / "vi"
        vi.write_text('#!/bin/sh\necho "$1" >> drafts\n' + script)
        vi.chmod(0o755)
        result = self.run_text(text, limits=limits, PATH="%s:%s" % (self.bin, os.environ["PATH"]))
        drafts = self.folder / "drafts"
        for draft in drafts.read_text().split() if drafts.exists() else ():
            self.assertFalse(os.path.lexists(draft), "a temporary file is left")
        return result

    def test_nothing_is_left_behind(self):
        self.assertEqual(self.edit("", "5 EDIT 6 TEXTEDIT .")[0], "\n\n 6\n")
        self.assertIn("710", self.edit('rm "$1"', "5 EDIT .")[1])
        self.assertIn("800", self.edit("echo + > $1", "5 EDIT .")[1])
        self.assertIn("\n17 - ", self.edit("echo \"1 'a' +\" > $1", "5 EDIT .")[1])
        self.assertIn("\n17 - ", self.edit("echo \"1 'a' + .\" > $1", ": EDIT ; @f SET 5 f ! .")[1])

    def test_the_file_is_private_and_new(self):
        self.edit('stat -c "%a %U %F" "$1" > told; readlink -f "$1" >> told', "5 EDIT .")
        mode, name = self.contents("told").splitlines()
        self.assertTrue(mode.startswith("600 "), mode)
        self.assertTrue(mode.endswith(" regular file"), mode)
        self.assertRegex(name, r"^/tmp/morvik\w{6}$")

    def test_the_editor_inherits_no_files(self):
        self.give("data", "x")
        self.edit("ls -l /proc/self/fd | grep -c data > told", "'data' 1 OPEN 'data' 2 OPEN 5 EDIT .")
        self.assertEqual(self.contents("told"), "0\n")

    def test_an_editor_that_puts_a_new_file_in_place(self):
        self.assertEqual(self.edit('echo 7 > "$1.new"; mv "$1.new" "$1"', "5 EDIT .")[0], "\n\n 7")

    def test_an_editor_that_puts_a_folder_in_place(self):
        out, err = self.edit('rm "$1"; mkdir "$1"', "5 EDIT 'not run' .\n.")
        self.assertIn("\n710 - ", err)
        self.assertEqual(out, "\n\n 5")

    def test_the_editor_gets_the_signals(self):
        """An interrupt while the editor runs is the editor's own."""
        out, _ = self.edit("kill -INT $PPID $$", "5 EDIT .\n6 .")
        self.assertEqual(out, "\n\n 5\n\n 6")

    def test_no_handle_is_left(self):
        text = "".join("'data' %d OPEN " % n for n in range(100)) + "5 EDIT 'not run' .\nCOUNTSTACK TELL ."
        self.give("data", "")
        _, err = self.edit("", text, (resource.RLIMIT_NOFILE, 20))
        self.assertIn("\n712 - ", err)


class Unkind(Folder):
    def test_unreadable(self):
        if os.geteuid() == 0:
            self.skipTest("root reads everything")
        self.give("secret", "5")
        (self.folder / "secret").chmod(0)
        _, err = self.run_text("'secret' READ .\n'secret' TEXTREAD .\n1 'secret' WRITE .\n'secret' SAVE .\n'secret' 1 OPEN .")
        for number in (710, 711, 713, 712):
            self.assertIn("\n%d - " % number, err)

    def test_a_name_of_a_megabyte(self):
        name = "'" + "a" * MEBIBYTE + "'"
        text = "".join("%s %s .\n" % (name, word) for word in ("READ", "TEXTREAD", "LOAD", "SAVE", "DUMP", "REMEMBER"))
        text += "".join("1 %s %s .\n" % (name, word) for word in ("WRITE", "APPEND", "TEXTWRITE", "TEXTAPPEND"))
        text += "%s 1 OPEN .\n" % name
        _, err = self.run_text(text)
        found = [line[:3] for line in err.split("\n") if line[:1] == "7"]
        self.assertEqual(found, "710 710 710 713 723 726 711 712 712 712 712".split())

    def test_a_file_that_reads_itself(self):
        """It ends where the handles end, and each level goes on with its next text."""
        self.give("self", "'self' READ .\n1 .\n")
        out, err = self.run_text("'self' READ COUNTSTACK TELL .", limits=[(resource.RLIMIT_NOFILE, 64)])
        self.assertEqual(err.count("710 - cannot open the file to READ."), 1)
        depth = int(out.split()[0])
        self.assertTrue(50 < depth < 64, out[:200])
        # One name was left by the reading that failed.
        self.assertEqual(out.count("\n"), 2)

    def test_a_file_that_reads_itself_till_the_handles_of_the_host_end(self):
        self.give("self", "'self' READ .\n")
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        out, err = self.run_text("'self' READ .\n'still here' .", limits=[(resource.RLIMIT_NOFILE, min(hard, 4000))])
        self.assertIn("still here", out)
        self.assertTrue("710 - " in err or "SEGMENTATION" in err, err[:500])

    def test_ten_thousand_opens(self):
        self.give("data", "0123456789")
        text = "10000 : 'data' 1 OPEN ; REPEAT .\nCOUNTSTACK TELL .\nCLEAR 'data' TEXTREAD .\n"
        out, err = self.run_text(text, limits=[(resource.RLIMIT_NOFILE, 9000)])
        self.assertEqual(err.count("712 - cannot open the file requested."), 1)
        # The three streams count too.
        self.assertIn(" 8997\n", out)
        self.assertTrue(out.endswith("\n\n0123456789\n"), out[-100:])

    def test_a_jump_closes_what_is_read(self):
        self.give("jumping", "1 'a' + .\n")
        self.give("sound", "5 .\n")
        text = "".join("CLEAR 'jumping' %s .\n" % word for _ in range(100) for word in ("READ", "LOAD"))
        out, err = self.run_text(text + "CLEAR 'sound' READ .\n", limits=[(resource.RLIMIT_NOFILE, 32)])
        self.assertEqual(err.count("17 - "), 200)
        self.assertNotIn("710 - ", err)
        self.assertTrue(out.endswith("\n\n 5"), out[-100:])

    def test_a_file_that_is_too_large(self):
        with open(self.folder / "sparse", "wb") as file:
            file.truncate(1 << 40)
        out, err = self.run_text("1 'sparse' TEXTREAD 'not run' .\n'still here' .")
        self.assertIn("27 - out of main storage.", err)
        self.assertTrue(out.endswith("\n\nstill here\n"), out)

    @unittest.skipIf(SANITIZED, "a sanitizer needs more data than the limit leaves")
    def test_a_file_without_end(self):
        out, err = self.run_text("1 '/dev/urandom' TEXTREAD 'not run' .\n'still here' .", "-u",
                                 limits=[(resource.RLIMIT_DATA, 256 * MEBIBYTE)])
        self.assertIn("27 - out of main storage.", err)
        self.assertTrue(out.endswith("\n\nstill here\n"), out)

    def test_noise(self):
        """Whatever a file holds, reading and loading it ends, and the process goes on."""
        noise = random.Random(11)
        for n in range(20):
            self.give("noise", bytes(noise.randrange(256) for _ in range(noise.randrange(4000))))
            for command in ("READ", "LOAD"):
                run = subprocess.run([BINARY, "-q"], input=b"'noise' %s .\n" % command.encode(), capture_output=True,
                                     cwd=self.folder, timeout=PATIENCE, check=False)
                self.assertEqual(run.returncode, 0, (n, command, run.stderr[-500:]))

    def test_a_megabyte_in_one_text(self):
        self.give("long", "1 " * 500000 + ".\n2 .\n")
        out, err = self.run_text("'long' READ COUNTSTACK TELL .")
        self.assertEqual(err.count("807 - programme storage full."), 1)
        self.assertEqual(out, " 1\n\n 2")

    def test_every_text_of_a_load_fails(self):
        self.give("failing", "".join("%d nothing%d .\n" % (n, n) for n in range(2000)))
        out, err = self.run_text("'failing' LOAD COUNTSTACK TELL .")
        self.assertEqual(err.count("23 - this name has no meaning yet."), 2000)
        self.assertEqual(out, " 2000\n\n 1999")


class Workspaces(Folder):
    """Saved, loaded and saved again, the bytes are the same; and what is loaded is what was saved."""

    def rounds(self, definitions):
        self.give("source", definitions)
        out, err = self.run_text("'source' READ 'first' SAVE .")
        self.assertEqual(err, "")
        out, err = self.run_text("'first' LOAD 'second' SAVE .")
        self.assertEqual(err, "")
        first = self.contents("first")
        self.assertEqual(first, self.contents("second"))
        return first

    def test_thousands_of_names(self):
        names = ["n%d" % n for n in range(3000)] + ["_u%d" % n for n in range(300)] + ["$d%d" % n for n in range(300)]
        names += [".p%d" % n for n in range(300)]
        text = "".join("%d @%s SET%s" % (n, name, "\n.\n" if n % 200 == 199 else "\n") for n, name in enumerate(names))
        first = self.rounds(text + ".\n")
        for n, name in enumerate(names):
            clause = "@\x02%s\x03" % name if name[0] == "n" else "@" + name
            self.assertIn(" %d %s SET\n" % (n, clause), first)
        texts = first.split(".\n")
        self.assertEqual(texts[-1], "")
        self.assertEqual([text.count(" SET\n") for text in texts[:-2]], [257] * (len(names) // 257) + [len(names) % 257])

    def test_names_of_any_bytes(self):
        letters = [chr(byte) for byte in range(1, 256) if byte != 3]
        chooser = random.Random(5)
        names = sorted({"".join(chooser.choice(letters) for _ in range(chooser.randrange(1, 12))) for _ in range(400)} |
                       set(letters))
        text = "".join("%d @\x02%s\x03 SET%s" % (n, name, "\n.\n" if n % 100 == 99 else "\n")
                       for n, name in enumerate(names))
        first = self.rounds(text + ".\n")
        self.assertEqual(first.count(" SET\n"), len(names))

    def value(self, chooser, depth=0):
        def number():
            return "%d" % chooser.randrange(-10**6, 10**6)

        def part():
            return repr(chooser.uniform(-1000, 1000)) if chooser.random() < 0.8 else number()

        kinds = [
            number,
            lambda: repr(chooser.uniform(-1e9, 1e9)),
            lambda: "%si%s" % (part(), repr(chooser.uniform(1, 9))),
            lambda: "%si%sj%sk%s" % (part(), part(), part(), repr(chooser.uniform(1, 9))),
            lambda: "%si%sj%sk%sl%sm%sn%so%s" % (*(part() for _ in range(7)), repr(chooser.uniform(1, 9))),
            lambda: "'%s'" % "".join(chooser.choice("abc xyz.;:(){}[]@#%&+-*/\n\t") for _ in range(chooser.randrange(2, 30))),
            lambda: chooser.choice(["T", "F", "#PI", "-#E", "0#10110111011", "`0#01100001`", "Inf", "-Inf", "NaN", "'a'"]),
        ]
        if depth > 4 or chooser.random() < 0.6:
            return chooser.choice(kinds)()
        # A member must not be read as the end of what is before it.
        members = [self.value(chooser, depth + 1) for _ in range(chooser.randrange(2, 7))]
        return "( %s )" % " ".join(members)

    def test_values(self):
        chooser = random.Random(3)
        text = "".join("%s @v%d SET%s" % (self.value(chooser), n, "\n.\n" if n % 20 == 19 else "\n") for n in range(1000))
        text += ".\n" + "".join(self.value(chooser) + "\n.\n" for _ in range(200))
        first = self.rounds(text)
        self.assertEqual(first.count(" SET\n"), 1000)

    def body(self, chooser, depth=0):
        words = ["1", "2.5", "'text'", "(1 2 3)", "+", "-", "*", "DUPLICATE", "SWAP", "DISCARD", "+ //", "@name", "name",
                 "_under", "$dollar", "\"a comment\"", "PRINT ?Y", "5 ?N", "NOOP", "@a+b", "a+b", "CHECK", "0 JUMP",
                 "MARK", "COLLECT", "SIN", "SQRT", "IF", "!", "EACH", ".local", "@.local SET", "%here", "@%here JUMP"]
        text = [chooser.choice(words) for _ in range(chooser.randrange(1, 25))]
        if depth < 3 and chooser.random() < 0.4:
            text.insert(chooser.randrange(len(text) + 1), self.body(chooser, depth + 1))
        head, local = chooser.choice([(":", 0), ("NILADIC", 0), ("MONADIC", 0), ("DYADIC", 0), ("TRIADIC", 0),
                                      ("ARGS 5 FUNCTION", 0), ("VARS 2 MONADIC", 2), ("VARS 3 ARGS 7 FUNCTION", 3)])
        if local:
            text += ["&1", "@&2 DISCARD"]
        return "%s %s %s" % (head, " ".join(text), chooser.choice([";", "FUNCTIONEND"]))

    def test_functions(self):
        chooser = random.Random(7)
        text = "".join("%s @f%d SET%s" % (self.body(chooser), n, "\n.\n" if n % 5 == 4 else "\n") for n in range(400))
        text += ".\n: 1 + ; OPERATOR @increment SET .\n"
        first = self.rounds(text)
        self.assertEqual(first.count("\x03 SET\n"), 401)

    def test_functions_that_fill_a_text(self):
        """A text holds so many references to names and so many Points: a workspace is cut where they end."""
        text = "".join(": _a _b $c @d DISCARD ; @f%d SET%s" % (n, "\n.\n" if n % 100 == 99 else "\n") for n in range(500))
        text += ".\n" + "".join(": %d ; OPERATOR @g%d SET%s" % (n, n, "\n.\n" if n % 100 == 99 else "\n")
                                for n in range(600))
        first = self.rounds(text + ".\n")
        self.assertEqual(first.count(" SET\n"), 1100)
        for part in first.split("\n.\n"):
            self.assertLessEqual(sum(part.count(name) for name in (" _a", " $c", " _b", " @d")), 512)

    def test_deep_structures(self):
        depth = 150
        text = "(" * depth + "1 2" + ") 0" * (depth - 1) + ") @deep SET .\n"
        self.assertEqual(self.rounds(text).count("("), depth)
        text = ": " * 100 + "1 " + "; " * 100 + "@deep SET .\n"
        self.assertEqual(self.rounds(text).count(" :"), 100)

    def test_the_stack_comes_back_in_order(self):
        self.run_text("'bottom' 1 (2 3) 'top' 'ws' SAVE .")
        out, _ = self.run_text("'ws' LOAD '' DUMP DISCARD COUNTSTACK .")
        self.assertEqual(out, " 'bottom'\n 1\n ( 2 3 )\n 'top'\n #NIL\n.\n\n\n 4")

    def test_the_example(self):
        """The gauge of the examples: a mean over all runs, each of which notes 7.5 or what is typed instead."""
        examples = pathlib.Path(__file__).resolve().parents[2] / "examples"
        self.run_text((examples / "workspace_begin.morvik").read_text())
        following = (examples / "workspace_next.morvik").read_text()
        self.assertTrue(following.endswith("\n7.5\n"))
        for rain, mean in ((7.5, "7.5"), (1, "4.25"), (0.5, "3")):
            out, err = self.run_text(following[: -len("7.5\n")] + "%s\n" % rain)
            self.assertEqual((out, err), ("\n-Millimetres of rain today?\n\n %s\n\n-" % mean, ""))

    def test_from_run_to_run(self):
        """A saved programme goes on where it was left."""
        self.run_text("MONADIC 1 + FUNCTIONEND @next SET 0 'ws' SAVE .")
        for n in range(1, 5):
            out, err = self.run_text("'ws' LOAD .\nnext ! 'ws' SAVE .")
            self.assertEqual((out, err), ("\n\n %d\n\n %d" % (n - 1, n), ""))


if __name__ == "__main__":
    unittest.main()
