#!/usr/bin/env python3
"""morvik-run: what a script writes, reads and leaves, and its status:  running_test.py BINARY"""
import os
import re
import resource
import signal
import subprocess
import time
import unittest

from scripts import BINARY, LIMIT, Scripts, version

SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"


class Running(Scripts):
    def test_there_is_no_echo_no_prompt_and_no_closing_time(self):
        self.passes("1 2 + .\n3 PRINT .\n", " 3\n")

    def test_a_first_line_for_the_system_is_passed_over(self):
        self.passes("#!/usr/bin/env morvik-run\n3 PRINT .\n", " 3\n")
        self.passes("#! 'it holds an open quote\n3 PRINT .", " 3\n")

    def test_a_script_runs_by_its_first_line(self):
        self.write("s", "#!%s\nARGUMENTS PRINT .\n" % BINARY)
        (self.folder / "s").chmod(0o755)
        done = subprocess.run([self.folder / "s", "one"], capture_output=True, timeout=LIMIT)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"one\n\n\n", b""))

    def test_the_last_text_needs_no_end(self):
        self.passes("1 PRINT .\n2 PRINT", " 1\n 2\n")

    def test_carriage_returns_ahead_of_line_feeds_mean_nothing(self):
        self.passes("1 PRINT .\r\n'a\r\nb' SHAPE PRINT .\r\n", " 1\n 3\n\n")

    def test_a_carriage_return_elsewhere_is_a_byte_of_its_own(self):
        self.passes("'a\rb' SHAPE PRINT .\r", " 3\n\n")

    def test_what_is_no_regular_file_is_read_too(self):
        self.assertEqual(self.run_words("/dev/null"), (0, "", ""))

    def test_a_byte_order_mark_means_nothing(self):
        self.passes("\xef\xbb\xbf#!run\n1 PRINT .", " 1\n")

    def test_an_empty_script_does_nothing(self):
        for text in ("", "\n", "#!x", " \n\t\r\n"):
            self.passes(text, "")

    def test_off_leaves_the_script(self):
        self.passes("1 PRINT OFF . 2 PRINT .", " 1\n")

    def test_the_input_is_the_programmes_own(self):
        self.passes("QUOTEDIN PRINT INPUT 1 + PRINT .", "a line\n\n 6\n", typed="a line\n5\n")

    def test_the_script_may_come_from_the_input(self):
        self.write("unused", "")
        self.assertEqual(self.run_words("-", "word", typed="ARGUMENTS PRINT ."), (0, "word\n\n\n", ""))
        status, output, errors = self.run_words("-", typed="1 'a' + .")
        self.assertEqual((status, output, errors.split("\n")[0]),
                         (1, "", "standard input:1: 17 - dyadic function arguments are not conformable."))

    def test_letters_of_the_name_mean_nothing(self):
        status, output, errors = self.script("1 PRINT '/etc/hostname' READ .", name="unvi.morvik")
        self.assertEqual((status, output), (1, " 1\n"))
        self.assertIn("720 - the access to files in this directory is not allowed. (/etc/hostname)", errors)


class Arguments(Scripts):
    def test_the_words_are_a_vector_of_texts(self):
        self.passes("ARGUMENTS SHAPE PRINT ARGUMENTS FIRSTONE SHAPE PRINT .", " 3\n\n 2\n\n", "ab", "c", "")

    def test_each_word_is_a_vector(self):
        self.passes("ARGUMENTS MONADIC DISCLOSE SHAPE ; EACH PRINT .", " 1\n 0\n 3\n\n\n", "c", "", "'a\"")

    def test_there_may_be_none(self):
        self.passes("ARGUMENTS SHAPE PRINT .", " 0\n\n")

    def test_what_follows_the_file_is_the_scripts(self):
        self.passes("ARGUMENTS PRINT .", "--help\n-x\n\n\n", "--help", "-x")


class Echo(Scripts):
    def test_the_top_is_shown_as_at_the_prompt(self):
        text = "1 2 + .\n(1 2 3) .\nPOP POP .\n"
        _, output, _ = self.script(text, options=["--echo"])
        prompt = subprocess.run([os.path.join(os.path.dirname(BINARY), "morvik"), "-q"], input=text.encode(),
                                stdout=subprocess.PIPE, timeout=LIMIT).stdout.decode()
        self.assertEqual(output, "\n\n 3\n\n 1 2 3\n\n-")
        self.assertTrue(prompt.startswith(output))


class Messages(Scripts):
    def test_place_line_and_functions(self):
        self.fails(": 1 +\n  'abc' + ; @inc SET .\n: inc ! ;\n  @outer SET .\n3\n outer ! .\n", 1,
                   "s.morvik:2: 17 - dyadic function arguments are not conformable.\n"
                   "      'abc' + ; @inc SET .\n"
                   "            ^\n"
                   "  in inc, line 2\n"
                   "  in outer, line 3\n"
                   "  in s.morvik, line 6\n")

    def test_a_text_that_is_run_has_the_place_of_its_run(self):
        self.fails("1\n'nowhere' EXECUTE .\n", 1,
                   "s.morvik:2: 23 - this name has no meaning yet. Please ASSIGN or SET it first.\n"
                   "    'nowhere' EXECUTE .\n"
                   "              ^\n")

    def test_what_is_read_has_its_own_place(self):
        status, output, errors = self.script("1 PRINT .\n2\n  // .")
        self.assertEqual((status, output), (1, " 1\n"))
        self.assertRegex(errors, r"^s\.morvik:3: 79 - .*\n      // \.\n      \^\n$")

    def test_a_complaint_without_a_number_is_a_message(self):
        self.fails("1 PRINT .\n2 ; .", 1, "s.morvik:2: [Trelk] error: No FUNCTION pending!\n    2 ; .\n      ^\n", " 1\n")

    def test_a_tab_ahead_of_the_place_stays_a_tab(self):
        self.fails("\t1 'a' 1 + .", 1,
                   "s.morvik:1: 17 - dyadic function arguments are not conformable.\n"
                   "    \t1 'a' 1 + .\n"
                   "    \t        ^\n")

    def test_the_line_of_a_long_line_is_cut(self):
        status, _, errors = self.script("'%s' POP 'a' 1 + '%s' ." % ("x" * 5000, "y" * 5000))
        lines = errors.split("\n")
        self.assertEqual(status, 1)
        self.assertLess(len(lines[1]), 200)
        self.assertEqual(lines[1][len(lines[2]) - 1], "+")

    def test_bytes_that_do_not_show_are_not_sent_to_the_terminal(self):
        _, _, errors = self.script("'\x1b[31m' POP 'a' 1 + .")
        self.assertNotIn("\x1b", errors)

        _, _, errors = self.script("'\x7f' POP 'a' 1 + .\r\r\n2 PRINT .")
        self.assertEqual(errors.split("\n")[1:3], ["    '?' POP 'a' 1 + .", "    " + " " * len("'?' POP 'a' 1 ") + "^"])
        _, _, errors = self.script("'no\x1b/\x7f' READ .")
        self.assertTrue(errors.split("\n")[0].endswith(" (no?/?)"), errors)

    def test_the_place_is_counted_in_characters(self):
        _, _, errors = self.script("'\xc3\xa9\xe2\x8c\x8a' POP 'a' 1 + .")
        self.assertEqual(errors.split("\n")[2], "    " + " " * len("'__' POP 'a' 1 ") + "^")

    def test_a_function_without_a_name(self):
        for text in (": 'a' 1 + ; ! .", "'''a'' 1 +' ASSEMBLE ! .", ": NEWCONTEXT 'a' 1 + ; ! ."):
            _, _, errors = self.script(text)
            self.assertTrue(errors.endswith("^\n  in a function without a name, line 1\n  in s.morvik, line 1\n"), errors)

    def test_a_function_is_named_beyond_a_context_that_it_opened(self):
        _, _, errors = self.script(": NEWCONTEXT 'a' 1 + ; @f SET . f ! .")
        self.assertTrue(errors.endswith("^\n  in f, line 1\n  in s.morvik, line 1\n"), errors)

    def test_a_function_that_was_assembled_has_its_name_and_the_place_where_it_runs(self):
        _, _, errors = self.script("'nowhere' ASSEMBLE @f SET\n: f ! ; @g SET . g ! .")
        self.assertTrue(errors.startswith("s.morvik:2: 23 - "), errors)
        self.assertTrue(errors.endswith("^\n  in f, line 2\n  in g, line 2\n  in s.morvik, line 2\n"), errors)

    def test_a_caller_in_another_file_is_named_with_it(self):
        self.write("lib/l.morvik", ": ! ;\n@apply SET .")
        _, _, errors = self.script("\n: 'a' 1 + ; apply ! .", options=["-l", "l"], environment={"MORVIK_PATH": "lib"})
        self.assertTrue(errors.endswith("^\n  in a function without a name, line 2\n  in apply, lib/l.morvik:1\n"
                                        "  in s.morvik, line 2\n"), errors)

    def test_of_a_deep_recursion_the_ends_are_shown(self):
        status, output, errors = self.script(": r ! 1 + ; @r SET . r ! .")
        self.assertEqual((status, output), (1, ""))
        self.assertRegex(errors, r"(?m)^s\.morvik:1: 27 - out of main storage\.$")  # a sanitizer may warn ahead of it
        self.assertRegex(errors, r"(?:  in r, line 1\n){6}  \.\.\. \d+ more\n(?:  in r, line 1\n){6}"
                                 r"  in s\.morvik, line 1\n$")

    def test_messages_about_files_name_the_file(self):
        for text, number in (("'none.txt' READ .", 710), ("'none.txt' TEXTREAD .", 710),
                             ("1 'no/such.txt' SAVE .", 713), ("1 'no/such.txt' WRITE .", 711),
                             ("1 'no/such.txt' DUMPSTACK .", 723), ("'no/such.txt' REMEMBER .", 726),
                             ("1 'no/such.txt' TEXTWRITE .", 712), ("1 'no/such.txt' APPEND .", 712),
                             ("'none.txt' 0 OPEN .", 712), ("'../such.txt' READ .", 720)):
            name = re.search("'(.*)'", text).group(1)
            status, _, errors = self.script(text)
            self.assertEqual(status, 1)
            self.assertRegex(errors, r"^s\.morvik:1: %d - .*\(%s\)\n" % (number, re.escape(name)))

    def test_the_name_of_a_file_is_cut_where_it_is_long(self):
        _, _, errors = self.script("'%s' READ ." % ("0" * 200))
        self.assertTrue(errors.split("\n")[0].endswith(" (%s)" % ("0" * 160)), errors)

    def test_the_first_message_ends_the_script(self):
        status, output, errors = self.script(": 'a' 1 + ; @f SET . f ! 1 PRINT . 2 PRINT .")
        self.assertEqual((status, output, errors.count("s.morvik:1:")), (1, "", 1))
        status, output, _ = self.script(": nowhere ; @f SET . f ! 1 PRINT . 2 PRINT .")
        self.assertEqual((status, output), (1, ""))

    def test_with_keep_going_the_texts_that_follow_run(self):
        status, output, errors = self.script("'a' 1 + 1 PRINT . 2 PRINT . : nowhere ; @f SET f ! 3 PRINT .",
                                             options=["--keep-going"])
        self.assertEqual((status, output, errors.count("s.morvik:1:")), (1, " 2\n 3\n", 2))

    def test_what_a_message_interrupts_does_not_go_on(self):
        status, output, _ = self.script("'nowhere . 1 PRINT' EXECUTE 2 PRINT .")
        self.assertEqual((status, output), (1, ""))


class Open(Scripts):
    OPEN = {"quote": "1 PRINT .\n2 'abc\n\n", "bracket": "1 PRINT .\n2 (3\n(4)\n", "comment": "1 PRINT .\n2 \"abc\n\n",
            "function": "1 PRINT .\n2 : 3\n\n"}

    def test_what_is_open_at_the_end_of_the_file_is_told(self):
        for what, text in self.OPEN.items():
            line = text.split("\n")[1]
            self.fails(text, 1, "s.morvik:2: the file ends inside a %s opened at line 2\n    %s\n      ^\n"
                       % (what, line), " 1\n")

    def test_what_wants_a_name_or_a_word_behind_it_is_open(self):
        for text, what in (("1 @", "an address"), ("1 WRAP", "a mask")):
            _, _, errors = self.script(text)
            self.assertEqual(errors.split("\n")[0], "s.morvik:1: the file ends inside %s opened at line 1" % what)

    def test_each_thing_that_is_open_is_told_the_innermost_first(self):
        _, _, errors = self.script(": 1\nDYADIC\n(2\n'abc\n")
        self.assertEqual(re.findall(r"inside a (\w+) opened at line (\d)", errors),
                         [("quote", "4"), ("bracket", "3"), ("function", "2"), ("function", "1")])

    def test_what_closes_is_not_open(self):
        self.passes("'a' POP (1 (2)) POP \"c\" : 1 ; POP 3 PRINT", " 3\n")


class Unusable(Scripts):
    def refuses(self, why, *words):
        self.assertEqual(self.run_words(*words), (2, "", why))

    def test_a_folder_on_the_input(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        done = subprocess.run([BINARY, "-"], stdin=folder, capture_output=True, timeout=LIMIT)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (2, b"", b"morvik-run: -: Is a directory\n"))

    def test_a_folder_that_is_gone_confines_nothing(self):
        self.write("s", "1 PRINT .")
        command = 'mkdir gone && cd gone && rmdir ../gone && exec "$0" --confine "$1"'
        done = subprocess.run(["sh", "-c", command, BINARY, self.folder / "s"], cwd=self.folder, capture_output=True,
                              timeout=LIMIT)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (2, b"", b"morvik-run: .: No such file or directory\n"))

    def test_a_missing_file(self):
        self.refuses("morvik-run: none.morvik: No such file or directory\n", "none.morvik")

    def test_a_folder(self):
        self.refuses("morvik-run: .: is a folder\n", ".")

    def test_a_file_that_nobody_may_read(self):
        self.write("s", "1 PRINT .")
        (self.folder / "s").chmod(0)
        if os.getuid() != 0:
            self.refuses("morvik-run: s: Permission denied\n", "s")

    def test_a_byte_0(self):
        self.write("s", "1 PRINT .\n2 PRINT\0 .\n")
        self.refuses("s:2: a byte 0 stands here: this is no text\n", "s")

    def test_a_byte_0_is_found_before_all_is_read(self):
        child = subprocess.Popen([BINARY, "-"], stdin=subprocess.PIPE, stderr=subprocess.PIPE)
        child.stdin.write(b"1 PRINT .\n\0")
        child.stdin.flush()  # and more may come
        self.assertEqual(child.wait(LIMIT), 2)
        self.assertEqual(child.communicate()[1], b"standard input:2: a byte 0 stands here: this is no text\n")

    def test_a_gigabyte(self):
        with open(self.folder / "s", "wb") as file:
            file.truncate(1 << 30)
        begun = time.monotonic()
        self.refuses("morvik-run: s: larger than a script may be (256 MiB)\n", "s")
        self.assertLess(time.monotonic() - begun, 20)

    def test_no_file(self):
        self.refuses("morvik-run: no file\nusage: morvik-run [options] FILE [words...]\n")

    def test_an_unknown_option(self):
        status, output, errors = self.run_words("--none", "s")
        self.assertEqual((status, output), (2, ""))
        self.assertRegex(errors, r"unrecognized option '--none'\nusage: morvik-run \[options\] FILE \[words\.\.\.\]\n$")

    def test_no_number_of_processors(self):
        for value in ("x", "", "-1", "4x", "99999999999999999999", "65537"):
            self.refuses("morvik-run: this is no number of processors: %s\nusage: morvik-run [options] FILE [words...]\n"
                         % value, "--processors=" + value, "s")

    def test_no_such_profile(self):
        self.refuses("morvik-run: there is no such profile: x\nusage: morvik-run [options] FILE [words...]\n",
                     "--profile=x", "s")


class Surroundings(Scripts):
    def test_a_script_may_remove_itself(self):
        self.write("s.morvik", "QUOTEDIN POP 1 PRINT . 2 PRINT . 'x' nowhere .\n")
        child = subprocess.Popen([BINARY, "s.morvik"], cwd=self.folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE)
        time.sleep(0.3)
        (self.folder / "s.morvik").unlink()
        output, errors = child.communicate(b"\n", timeout=LIMIT)
        self.assertEqual((child.returncode, output), (1, b" 1\n 2\n"))
        self.assertIn(b"s.morvik:1: 23 -", errors)

    def test_a_full_output_is_told(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.script("1 PRINT .", stdout=full),
                             (2, "", "morvik-run: standard output: No space left on device\n"))

    def test_a_closed_output_is_told_where_something_was_written(self):
        command = '"$0" s.morvik >&-'
        for text, answer in (("1 PRINT .", (2, b"morvik-run: standard output: closed\n")), ("1 POP .", (0, b""))):
            self.write("s.morvik", text)
            done = subprocess.run(["sh", "-c", command, BINARY], cwd=self.folder, stderr=subprocess.PIPE, timeout=LIMIT)
            self.assertEqual((done.returncode, done.stderr), answer)

    def test_a_closed_input_is_no_file_that_the_script_opens(self):
        self.write("data", "kept\n")
        self.write("s.morvik", "'data' 0 OPEN QUOTEDIN SHAPE PRINT .")
        for closing, answer in (("<&-", (0, b" 0\n\n", b"")), ("<&- 2>&-", (0, b" 0\n\n", b"")),
                                ("<&- >&-", (2, b"", b"morvik-run: standard output: closed\n"))):
            done = subprocess.run(["sh", "-c", 'exec "$0" s.morvik ' + closing, BINARY], cwd=self.folder, capture_output=True,
                                  timeout=LIMIT)
            self.assertEqual((done.returncode, done.stdout, done.stderr), answer, closing)

    def test_a_reader_who_leaves_ends_the_script(self):
        self.write("s.morvik", "".join("(1 TO 100) PRINT .\n" for _ in range(20000)))
        done = subprocess.run(["sh", "-c", '{ "$0" s.morvik; echo "status $?" >&2; } | head -1', BINARY],
                              cwd=self.folder, capture_output=True, timeout=LIMIT)
        self.assertIn(b"morvik-run: standard output: Broken pipe\nstatus 2\n", done.stderr)

    def test_an_interrupt_gives_130(self):
        for text, typed in (("1 PRINT 100 SLEEP 2 PRINT .", False), ("1 PRINT INPUT 2 PRINT .", True),
                            ("1 PRINT QUOTEDIN 2 PRINT .", True), ("1 PRINT : 1 POP ; @f SET 1000000000 f REPEAT .", False)):
            self.write("s.morvik", text)
            child = subprocess.Popen([BINARY, "-k", "s.morvik"], cwd=self.folder, stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            time.sleep(0.5)
            child.send_signal(signal.SIGINT)
            output, errors = child.communicate(timeout=LIMIT)
            self.assertEqual((child.returncode, b" 2" in output), (130, False), text)
            if not typed:
                self.assertTrue(errors.startswith(b"s.morvik:1: interrupted\n"), errors)

    def test_a_quit_is_an_interrupt(self):
        self.write("s.morvik", "1 PRINT 100 SLEEP 2 PRINT .")
        child = subprocess.Popen([BINARY, "s.morvik"], cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.5)
        child.send_signal(signal.SIGQUIT)
        output, errors = child.communicate(timeout=LIMIT)
        self.assertEqual((child.returncode, output, errors.split(b"\n")[0]), (130, b" 1\n", b"s.morvik:1: interrupted"))


class Files(Scripts):
    REFUSED = r"^s\.morvik:1: 720 - the access to files in this directory is not allowed\. \(%s\)\n"

    def refuses(self, name, text, *options):
        status, output, errors = self.script(text, options=options)
        self.assertEqual((status, output), (1, ""), name)
        self.assertRegex(errors, self.REFUSED % re.escape(name))

    def test_unconstrained_files_may_be_anywhere(self):
        self.refuses("/dev/null", "'/dev/null' TEXTREAD SHAPE PRINT .")
        self.passes("'/dev/null' TEXTREAD SHAPE PRINT .", " 0\n\n", options=["-u"])

    def test_confined_files_stay_wherever_links_lead(self):
        other = self.folder / "other"
        other.mkdir()
        (other / "f").write_text("out")
        inside = self.folder / "in"
        inside.mkdir()
        (inside / "deep").mkdir()
        (inside / "f").write_text("in")
        (inside / "deep" / "up").symlink_to("..")
        (inside / "away").symlink_to(other)
        (inside / "link").symlink_to(other / "f")
        (inside / "nowhere").symlink_to(other / "new")
        outer, self.folder = self.folder, inside
        for options in (["--confine"], ["--confine", "-u"]):
            for name in ("f", "./f", "deep/up/f"):
                self.passes("'%s' TEXTREAD PRINT ." % name, "in\n\n", options=options)
            for name in ("away/f", "link", "none/f"):
                self.refuses(name, "'%s' TEXTREAD PRINT ." % name, *options)
            for name in ("away/g", "nowhere"):
                self.refuses(name, "'x1' '%s' TEXTWRITE ." % name, *options)
            self.passes("'x1' 'deep/new' TEXTWRITE .", "", options=options)
        self.refuses(str(outer / "other" / "f"), "'%s' TEXTREAD PRINT ." % (outer / "other" / "f"), "--confine", "-u")
        self.refuses("../other/f", "'../other/f' TEXTREAD PRINT .", "--confine", "-u")
        self.passes("'%s' TEXTREAD PRINT ." % (inside / "f"), "in\n\n", options=["--confine", "-u"])
        self.assertFalse((outer / "other" / "g").exists() or (outer / "other" / "new").exists())

    def test_confined_scripts_start_no_editor(self):
        status, _, errors = self.script("'text' EDIT .", options=["--confine"])
        self.assertEqual(status, 1)
        self.assertTrue(errors.startswith("s.morvik:1: 720 - "), errors)


class Coprocessors(Scripts):
    def test_they_change_no_result(self):
        text = "(1 100000) INTERVAL DUP + + // PRINT .\n: 'a' (1 100000) INTERVAL + ; @f SET f ! ."
        plain, parallel = self.script(text), self.script(text, options=["--processors", "3"])
        self.assertEqual(plain, parallel)
        self.assertEqual((plain[0], plain[1]), (1, " 10000100000\n"))


class Help(Scripts):
    def test_help_and_version(self):
        status, output, errors = self.run_words("--help")
        self.assertEqual((status, errors), (0, ""))
        for option in ("--library", "--keep-going", "--echo", "--check", "--processors", "--unconstrained", "--confine",
                       "--profile", "--help", "--version", "MORVIK_PATH", "ARGUMENTS", "130"):
            self.assertIn(option, output)
        for option in ("--version", "-v"):
            self.assertEqual(self.run_words(option), (0, "morvik-run " + version(), ""))


class Libraries(Scripts):
    def test_a_library_is_loaded_first_and_once(self):
        self.write("lib/greet.morvik", "'loaded' PRINT : 'hi' ; @greet SET .\n")
        self.passes("greet ! PRINT .", "loaded\n\nhi\n\n", options=["-l", "greet", "--library=greet"],
                    environment={"MORVIK_PATH": "none:lib"})

    def test_a_message_in_a_library_names_its_file(self):
        self.write("lib/l.morvik", ": \n'a' 1 + ; @f SET .\n")
        status, _, errors = self.script("\nf ! .", options=["-l", "l"], environment={"MORVIK_PATH": "lib"})
        self.assertEqual((status, errors),
                         (1, "lib/l.morvik:2: 17 - dyadic function arguments are not conformable.\n    'a' 1 + ; @f SET .\n"
                             "          ^\n  in f, line 2\n  in s.morvik, line 2\n"))

    def test_the_beginning_of_a_name_is_another_library(self):
        self.write("lib/ab.morvik", "1 PRINT .")
        self.write("lib/a.morvik", "2 PRINT .")
        self.passes("3 PRINT .", " 1\n 2\n 3\n", options=["-l", "ab", "-l", "a"], environment={"MORVIK_PATH": "lib"})

    def test_an_empty_folder_in_the_path_is_the_present_one(self):
        self.write("l.morvik", "1 PRINT .")
        (self.folder / "lib" / "l.morvik").mkdir(parents=True)  # a folder is no library
        for path in (":none", "none:", "lib::none"):
            self.passes("2 PRINT .", " 1\n 2\n", options=["-l", "l"], environment={"MORVIK_PATH": path})

    def test_an_empty_path_is_none(self):
        self.write("l.morvik", "1 PRINT .")
        self.assertEqual(self.script("2 PRINT .", options=["-l", "l"], environment={"MORVIK_PATH": ""})[0], 2)

    def test_comments_that_say_no_need(self):
        self.passes("\"HELLO none\" \"NEED none\" \"\" 's' PRINT .", "s\n")
        _, _, errors = self.script('"It is open')
        self.assertEqual(errors.split("\n")[0], "s.morvik:1: the file ends inside a comment opened at line 1")

    def test_an_end_of_a_library_is_not_the_scripts(self):
        self.write("lib/l.morvik", "1 PRINT")
        self.passes("2 PRINT .", " 1\n 2\n", options=["-l", "l"], environment={"MORVIK_PATH": "lib"})

    def test_what_a_library_needs_is_loaded_ahead_of_it_and_once(self):
        for name, text in (("a", "'a' PRINT"), ("b", "\"It says b.\" \"NEEDS a\" 'b' PRINT"),
                           ("c", "\n\"\n NEEDS b\n a \"\n'c' PRINT")):
            self.write("lib/%s.morvik" % name, text + " .\n")
        environment = {"MORVIK_PATH": "lib"}
        self.passes("'s' PRINT .", "a\nb\nc\ns\n", options=["-l", "c", "-l", "a"], environment=environment)
        self.passes("#!run\n\"NEEDS c\" 's' PRINT .", "a\nb\nc\ns\n", environment=environment)
        self.passes("'s' PRINT \"NEEDS c\" .", "s\n", environment=environment)
        self.passes("\"NEEDSc\" \"NEEDS\" 's' PRINT .", "s\n", environment=environment)

    def test_libraries_may_need_each_other(self):
        self.write("lib/a.morvik", '"NEEDS b a" \'a\' PRINT .\n')
        self.write("lib/b.morvik", '"NEEDS a" \'b\' PRINT .\n')
        self.passes("'s' PRINT .", "b\na\ns\n", options=["-l", "a"], environment={"MORVIK_PATH": "lib"})

    def test_a_need_that_is_not_there(self):
        self.assertEqual(self.script('"NEEDS none" 1 PRINT .'),
                         (2, "", "morvik-run: none: there is no such library in MORVIK_PATH, ../share/morvik/lib or ../lib\n"
                          "morvik-run: s.morvik: it needs a library that is not there\n"))
        self.assertEqual(self.script('"NEEDS \'a"')[0], 2)

    def test_the_libraries_that_come_with_it_need_nothing_said(self):
        for name, text, output in (("csv", "'a,b' csv:parse ENLIST PRINT .", "ab\n\n"),
                                   ("dates", "(2000 1 1) dates:weekday PRINT .", " 6\n"),
                                   ("matrix", "(1 2 3 4)[2 2] matrix:determinant PRINT .", " -2\n"),
                                   ("text", "'a b' text:words SHAPE PRINT .", " 2\n\n"),
                                   ("quaternion", "(0 0 1) #PI quaternion:rotation quaternion:axis PRINT .", " 0 0 1\n\n")):
            self.passes(text, output, options=["-l", name])

    def test_a_library_that_is_not_there(self):
        self.assertEqual(self.script("1 PRINT .", options=["-l", "none"]),
                         (2, "", "morvik-run: none: there is no such library in MORVIK_PATH, ../share/morvik/lib or ../lib\n"))
        for name in ("../s", "", "a b"):
            self.assertEqual(self.script("1 PRINT .", options=["-l", name]),
                             (2, "", "morvik-run: %s: this is no name of a library: letters, digits, - and _\n" % name))

    @unittest.skipIf(SANITIZED, "a sanitizer needs more storage than the limit leaves")
    def test_without_storage_it_says_so(self):
        """The limit on storage goes up page by page from where the system starts the process at all."""
        self.write("s.morvik", "1 PRINT .\n")

        def runs(pages, words):
            limit = pages * resource.getpagesize()
            return self.run_words(*words, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_DATA, (limit, limit)))

        for words in (("s.morvik",), ("-l", "arrays", "s.morvik")):
            few, enough = 0, 1 << 16
            while enough - few > 1:
                pages = (few + enough) // 2
                if runs(pages, words)[0] in (0, 1, 2):
                    enough = pages
                else:
                    few = pages
            refused = [runs(pages, words) for pages in range(enough, enough + 130)]
            refused = [(status, errors) for status, _, errors in refused if status == 2]
            self.assertGreater(len(refused), 50)
            for _, errors in refused:
                self.assertRegex(errors, r"(?m)^morvik-run: (.*: )?(out of storage|27 - out of main storage\.)$")
                self.assertNotIn("there is no such library", errors)


if __name__ == "__main__":
    unittest.main()
