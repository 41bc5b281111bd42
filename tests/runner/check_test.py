#!/usr/bin/env python3
"""morvik-run --check and morvik-check: every warning, and what draws none:  check_test.py BINARY"""
import os
import re
import subprocess
import unittest

from scripts import BINARY, LIMIT, Scripts, version


class Check(Scripts):
    def warnings(self, text, options=(), **more):
        """The warnings as (line, text); the script is not run."""
        status, output, errors = self.script("'run' PRINT .\n" + text, options=["--check", *options], **more)
        self.assertEqual(output, "")
        found = [(int(line) - 1, said) for line, said in re.findall(r"^s\.morvik:(\d+): (.*)$", errors, re.M)]
        self.assertEqual(status, 1 if found else 0)
        return found

    def test_a_word_that_is_not_implemented_or_does_nothing(self):
        self.assertEqual(self.warnings("1 2 EXPAND .\n3 TAKE .\n"),
                         [(1, "EXPAND is reserved and not implemented"), (2, "TAKE does nothing")])

    def test_a_decided_word_is_looked_at_too(self):
        self.assertEqual(self.warnings("1 CHECK TAKE ?Y ."), [(1, "TAKE ?Y does nothing")])

    def test_a_name_that_begins_with_a_symbol(self):
        self.assertEqual(self.warnings("@value SET value .\n")[:1],
                         [(1, "value reads as v alue: it begins with a word that needs nothing behind it")])

    def test_a_symbol_that_stands_alone(self):
        self.assertEqual(self.warnings("1 0 v 2 v."), [])

    def test_a_name_that_nothing_sets(self):
        self.assertEqual(self.warnings("1 @known SET known .\n nowhere nowhere .\n: _global $lost ; POP ."),
                         [(2, "nothing here sets nowhere"), (3, "nothing here sets global"), (3, "nothing here sets lost")])

    def test_each_name_is_told_once_where_it_is_read_first(self):
        self.assertEqual(self.warnings("1 @b SET z a\nz b a\nc ."),
                         [(1, "nothing here sets z"), (1, "nothing here sets a"), (3, "nothing here sets c")])

    def test_each_of_many_names_is_found(self):
        text = "".join("%d @n%d SET n%d POP .\n" % (i, i, i) for i in range(4000))
        self.assertEqual(self.warnings(text + "n4000 .\n"), [(4001, "nothing here sets n4000")])

    @unittest.skipIf(os.environ.get("MORVIK_SANITIZED") == "1", "the sanitizer's library comes first")
    def test_a_name_that_there_is_no_storage_for(self):
        """Nothing is said of any name then: one that is not known to be set may be set."""
        self.write("none.c", "char *strdup(const char *text) { return (char *)0; }\n")
        subprocess.run(["cc", "-w", "-shared", "-fPIC", "-o", self.folder / "none.so", self.folder / "none.c"], check=True)
        text = "1 @known SET known lost .\n"
        self.assertEqual(self.warnings(text), [(1, "nothing here sets lost")])
        self.assertEqual(self.warnings(text, environment={"LD_PRELOAD": str(self.folder / "none.so")}), [])

    def test_a_name_may_be_set_later_or_elsewhere(self):
        self.assertEqual(self.warnings(": later ! ; @f SET : 1 ; @later SET ARGUMENTS #IO f ! ."), [])
        self.assertEqual(self.warnings("'names.ws' READ nowhere ."), [])
        self.write("lib/l.morvik", "1 @known SET elsewhere .\n")
        self.assertEqual(self.warnings("known .", options=["-l", "l"], environment={"MORVIK_PATH": "lib"}), [])

    def test_bytes_outside_of_quotes(self):
        self.assertEqual(self.warnings("1 \xfe ."), [(1, "a byte FE stands outside of a quote: it is a word or part of a name here"),
                                                     (1, "nothing here sets \xfe")])
        # Of a character of several bytes the first tells, and a name once.
        for text in ("\xc3\xa9", "\xe2\x8c\x8a", "\xe2\x8c\x8a\xe2\x8c\x8a"):
            told = [(line, said[:9]) for line, said in self.warnings("1 %s ." % text) if said.startswith("a byte")]
            self.assertEqual(told, [(1, "a byte %02X" % ord(text[0]))], text)
        self.assertEqual(self.warnings("'\xe9\xbc' POP \"\xe9\" 1 ."), [])

    def test_the_comment_byte(self):
        self.assertIn((1, "a byte BC ends this comment"), self.warnings("\"\xc3\xbc\" 1 .\n\" ."))
        self.assertIn((1, "a byte BC begins a comment"), self.warnings("1 \xbc 2 \" ."))

    def test_what_is_open_at_the_end(self):
        self.assertEqual(self.warnings("1 PRINT .\n: 2 'abc\n"), [(2, "the file ends inside a quote opened at line 3"),
                                                                 (2, "the file ends inside a function opened at line 3")])

    def test_marks(self):
        self.assertEqual(self.warnings("1 CHECK ?Y 'yes' ."), [(1, "the mark decides CHECK itself: a mark follows what it decides")])
        self.assertEqual(self.warnings("1 CHECK 'yes' PRINT ?Y ."),
                         [(1, "the mark decides PRINT ?Y alone: what stands between it and CHECK runs in any case")])
        for text, what in ((": 1 ;", "the function"), ("3", "the value"), ("(1 2)", "the value"), ("x", "x")):
            self.assertEqual(self.warnings("1 @x SET 1 CHECK 'yes' PRINT %s ?Y ." % text),
                             [(1, "the mark decides %s alone: what stands between it and CHECK runs in any case" % what)])
        self.assertEqual(self.warnings("1 CHECK 'yes' ?Y PRINT ?Y 'no' ?N PRINT ?N .\n1 CHECK : 1 PRINT ; ?Y ."), [])

    def test_arguments(self):
        self.assertEqual(self.warnings("MONADIC @a SET @b SET a b + ; @f SET ."), [(1, "the function names 2 arguments and takes 1")])
        self.assertEqual(self.warnings("DYADIC @a SET @b SET a b + ; @f SET : @c SET @d SET c d ; @g SET ."), [])

        # Only names that are set at once are those of arguments.
        for body in ("@a 5", "@a", "", "@a GET"):
            self.assertEqual(self.warnings("NILADIC %s ; @f SET ." % body), [])

    def test_of_a_library_only_the_names_count(self):
        self.write("lib/l.morvik", "3 TAKE nowhere \xe9 1 CHECK ?Y MONADIC @a SET @b SET ; POP @known SET .\n")
        self.assertEqual(self.warnings("known .", options=["-l", "l"], environment={"MORVIK_PATH": "lib"}), [])

    def test_messages_of_the_compiler_are_told_with_their_place(self):
        found = self.warnings("1 // .\n&1 .")
        self.assertEqual([line for line, _ in found], [1, 2])
        self.assertTrue(found[0][1].startswith("79 - "), found)

    def test_a_good_script_draws_nothing(self):
        self.assertEqual(self.warnings("(1 2 3) + // PRINT .\n: 1 + ; @inc SET 4 inc ! PRINT .\n\"fine\" 'it''s' PRINT"), [])

    def test_the_program_of_its_own(self):
        program = os.path.join(os.path.dirname(BINARY), "morvik-check")
        self.write("a", "1 PRINT .")
        self.write("b", "nowhere .\n")
        for files, status, errors in ((["a"], 0, ""), (["a", "b"], 1, "b:1: nothing here sets nowhere\n    nowhere .\n    ^\n"),
                                      (["none"], 2, "morvik-check: none: No such file or directory\n")):
            done = subprocess.run([program, *files], cwd=self.folder, capture_output=True, text=True, timeout=LIMIT)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (status, "", errors))

    def test_its_command_line(self):
        program = os.path.join(os.path.dirname(BINARY), "morvik-check")
        self.write("a", "known .")
        self.write("l.morvik", "1 @known SET")

        def check(*words):
            done = subprocess.run([program, *words], cwd=self.folder, capture_output=True, text=True, timeout=LIMIT,
                                  env=dict(os.environ, MORVIK_PATH="."))
            return done.returncode, done.stdout, done.stderr

        self.assertEqual(check(), (2, "", "morvik-check: no file\nusage: morvik-check [options] FILE...\n"))
        status, output, errors = check("--none", "a")
        self.assertEqual((status, output), (2, ""))
        self.assertRegex(errors, "unrecognized option '--none'\nusage: morvik-check")
        for words in (["-h"], ["--he"], ["a", "--help"]):
            status, output, errors = check(*words)
            self.assertEqual((status, errors), (0, ""))
            self.assertRegex(output, "^usage: morvik-check(?s:.)*--library")
        self.assertEqual(check("--version"), (0, "morvik-check " + version(), ""))
        for words in (["-l", "l", "a"], ["-ll", "a", "a"], ["--lib=l", "a"], ["a", "-l", "l"]):
            self.assertEqual(check(*words), (0, "", ""))
        self.assertEqual(check("--", "a")[0], 1)


if __name__ == "__main__":
    unittest.main()
