#!/usr/bin/env python3
"""What the main thread may reach while the pool is at work: nothing is reported, moved, read or dropped that a serial run
would not come to. The same session with and without coprocessors."""
import os
import re
import subprocess
import sys
import tempfile
import unittest

BINARY = os.path.abspath(sys.argv.pop(1))

# Over four slots, and more than the threshold: the last slice fails, by 36 and by 17.
GATE = "4 SERIAL .\n"
FACTORIAL = "(1 2 3 4 5 6 7 -1) FACTORIAL "
AND = "(1 2 3 4 5 6 7 (1 2 3)) (1 2 3 4 5 6 7 (1 2)) AND "
# And one that does not.
SOUND = "(1 2 3 4 5 6 7 8) NEGATIVE "
# Text in the first slices, numbers in the others: only the whole flag word says that it is no text to run.
MIXED = "'11111111' (1 1 1 1 1 1 1 1) , DUP MAXIMUM "
FRESH = "CLEAR (1 2 3 4 5 6 7 8) 1 + .\n"

# Each ends a text by a message of its own, or leads to one, without a look at what is in flight.
ENDS = [
    "'a' 1 +", "nosuch", "(1 2) (1 2 3) *", "1 2 ?Y", "1 2 ?N", "7 : nosuch ; !", "7 : 'a' 1 + ; !", "7 : (1 2) (1 2 3) * ; !",
    "'5 nosuch' !", "'5 SCAN' !", "'''open' !", "'2 3 4' ! nosuch", "'none' READ", "'none' LOAD", "'../none' READ",
    "8 : nosuch ; DIP", "3 : nosuch ; REPEAT", "3 DYADIC nosuch ; LOOP", "5 MONADIC nosuch ; RESULT", "5 RESULT",
    "-1 SLEEP", "'x' GET DO", "(0 1) MONADIC nosuch ; EACH", "1 2 DIP", "'a' RANDOM", "0 ROLL", "5 2 DEAL nosuch", "'a' SEED",
    "'none' REWIND", "1 1 OPEN", "SIN", "(1 2) 'a' MATCH nosuch", "-1 JUMP", "1 2 IF nosuch", "5 @x SET x !",
    "7 NILADIC nosuch FUNCTIONEND !", "3 MONADIC @.t SET .t nosuch FUNCTIONEND !", "'a' ASSEMBLE nosuch", "1 YIELDTO",
    ": nosuch ; OPERATOR", "'1 nosuch' '1 nosuch' ! !", "5 CLEAR nosuch", "1 : : nosuch ; ! ; !", "1 0 /",
    "(2 3) (4 5)[2 2] +", "-5 INTERVAL nosuch", "5 'a' RESHAPE", "ENDPROCESS",
]
# A sanitizer makes a process slow to start.
if os.environ.get("MORVIK_SANITIZED") == "1":
    ENDS = ENDS[::3]


def run(text, *options, folder=None):
    done = subprocess.run([BINARY, "-q", *options], input=text.encode("latin-1"), capture_output=True, timeout=300,
                          check=False, cwd=folder)
    spent = re.compile(rb"--- Spent: [0-9:.]+ ---")
    return done.returncode, spent.sub(b"", done.stdout).decode("latin-1"), done.stderr.decode("latin-1")


class Ahead(unittest.TestCase):
    maxDiff = None

    def agree(self, text, files=(), options="-c3", left=()):
        """Runs a session both ways, and returns what it printed and reported. Of the files `left`, either way leaves the
        same, and so of what they are called."""
        results = []
        for option in ((), (options,)):
            with tempfile.TemporaryDirectory() as folder:
                for name, content in files:
                    with open(os.path.join(folder, name), "w", encoding="latin-1") as stream:
                        stream.write(content)
                results.append(run(text, *option, folder=folder) + (sorted(os.listdir(folder)),))
        self.assertEqual(results[0], results[1])
        self.assertEqual(results[0][3], sorted([name for name, _ in files] + list(left)))
        return results[0][1], results[0][2]

    def fails_first(self, ahead, more="", **others):
        """What was in flight is what is reported, alone, and the texts behind it run."""
        for work, number in ((FACTORIAL, 36), (AND, 17)):
            with self.subTest(ahead=ahead, work=work):
                out, err = self.agree(GATE + work + ahead + " .\n" + FRESH + more, **others)
                self.assertEqual(re.findall(r"(?m)^(\d+) - ", err), [str(number)], err)
                self.assertEqual(out.count("Exception processing:..."), 1)
                if not more:
                    self.assertTrue(out.rstrip().endswith(" 2 3 4 5 6 7 8 9"), out)


    def whole(self, text, work):
        """After a failure, what the main thread did meanwhile may stay on the stack; otherwise all is the same."""
        return self.agree(GATE + text % work + " .\n" + ("" if work == FACTORIAL else "'' DUMPSTACK .\n") + FRESH)


class Messages(Ahead):
    def test_none_comes_before_that_of_the_work(self):
        for end in ENDS:
            self.fails_first(end)

    def test_none_is_lost_where_the_work_is_sound(self):
        for end in ENDS:
            with self.subTest(end=end):
                out, err = self.agree(GATE + SOUND + end + " .\n'' DUMPSTACK .\n" + FRESH)
                self.assertEqual(end == "ENDPROCESS", not out.rstrip().endswith(" 2 3 4 5 6 7 8 9"), out + err)

    def test_inside_of_calls(self):
        for i, call in enumerate((": %s ; !", "5 : %s ; DIP", "1 : %s ; REPEAT", "'%s' !", "5 DYADIC %s FUNCTIONEND !",
                                  "1 MONADIC %s FUNCTIONEND LOOP", "(5 6) MONADIC %s FUNCTIONEND EACH",
                                  "5 MONADIC %s FUNCTIONEND RESULT")):
            for end in ENDS[i % 4::4]:
                body = FACTORIAL + end
                text = call % (body.replace("'", "''") if "'%s'" in call else body)
                with self.subTest(text=text):
                    _, err = self.agree(GATE + "1 " + text + " .\n" + FRESH)
                    self.assertEqual(re.findall(r"(?m)^(\d+) - ", err), ["36"], err)

    def test_the_name_of_the_instruction_outlives_its_text(self):
        for text in ("'%s' !", "'%s' ! 1 2 3", "1 CHECK '%s' !", "7 : '%s' ! ; !"):
            for work in (FACTORIAL, AND):
                _, err = self.agree(GATE + text % work + " .\n" + FRESH)
                self.assertIn("OPERATOR:\t\t" + work.split()[-1] + "\n", err + "\n")

    def test_texts_of_many_points_behind_it(self):
        for count in (10, 199, 800):
            many = " ".join(map(str, range(1, count)))
            text = "1 9000 RESHAPE -1 , FACTORIAL 'a' 1 + .\n%s CLEAR .\n" % many
            _, err = self.agree(text * 3, options="-c2")
            self.assertEqual(re.findall(r"(?m)^(\d+) - ", err), ["36"] * 3, err)
            self.assertEqual(err.count("OPERATOR:\t\tFACTORIAL"), 3, err)

    def test_the_dump_of_the_top_finds_no_result_in_flight(self):
        # Message 27 leaves its mark, and the top is shown from then on.
        self.agree(GATE + "999999999999 .. .\n" + SOUND + "nosuch .\n" + FRESH)

    def test_a_text_that_a_stream_holds(self):
        self.fails_first("'f' READ", files=[("f", "1 2 + . nosuch . 3 4 + .")])
        self.fails_first("'f' LOAD", files=[("f", "1 2 + . 'loaded' PRINT .")])
        self.fails_first("INPUT 1 2 +", more=FRESH)


class Slots(Ahead):
    def test_load_clears_what_is_in_flight(self):
        self.agree("1 SERIAL .\n(3 1 9 7) ARCSIN 'f' LOAD .\n'' DUMPSTACK .\n", files=[("f", "1 2 + .")], options="-c2")
        self.agree("1000000 .. 1l1 * EXPONENTIAL 'f' LOAD .\n" * 3, files=[("f", "1 2 + .")], options="-c2")

    def test_nothing_is_written_that_comes_after_a_failure(self):
        for word in ("WRITE", "APPEND", "TEXTWRITE", "TEXTAPPEND", "SAVE", "DUMPSTACK", "REMEMBER"):
            self.fails_first("5 'f' " + word)

    def test_writing_lowers_what_it_writes(self):
        # A whole real beside another kind becomes an integer when it is printed, and ROLL tells the two apart.
        for word in ("WRITE", "TEXTWRITE"):
            self.agree(GATE + "(600.0 1i2) @y SET " + SOUND + "y 'f' %s FIRST 7 SEED ROLL .\n" % word, left=["f"])

    def test_result_reads_whole_arguments(self):
        # The body looks at nothing in flight, so that what it did would stay.
        self.fails_first("MONADIC 1 @_seen SET 5 FUNCTIONEND RESULT", "CLEAR '_seen' GET .\n")
        self.fails_first("5 MONADIC 1 @_seen SET 5 FUNCTIONEND RESULT", "CLEAR '_seen' GET .\n")
        kept = "MONADIC runs 1 + @runs SET SUM FUNCTIONEND @f SET 0 @runs SET "
        big = "200000 .. 1l1 * "
        for first, second in (("EXPONENTIAL NATURALLOG NEGATIVE", "EXPONENTIAL NATURALLOG"),
                              ("EXPONENTIAL NATURALLOG", "NATURALLOG EXPONENTIAL NEGATIVE")):
            self.agree(kept + "".join(big + word + " f RESULT PRINT " for word in (first, second, first, second)) +
                       "runs .\n", options="-c4")

    def test_result_keeps_whole_results(self):
        for word in ("RESULT", "REEVALUATE"):
            self.whole("MONADIC DISCARD %s FUNCTIONEND @f SET 5 f " + word + " DISCARD 5 f RESULT !", MIXED)
            self.whole("MONADIC DISCARD %s FUNCTIONEND @f SET 5 f " + word + " 5 f RESULT", SOUND)

    def test_a_decision_runs_whole_values(self):
        # Only a jump leads to a bare decision with anything but a function on top.
        for value, points in ((MIXED, 5), (FACTORIAL, 2), (SOUND, 2)):
            for decision, word in ("1Y", "0Y", "1N", "0N"):
                self.whole("%s CHECK %%s %d JUMP : 5 ; ?%s" % (decision, points + 6, word), value)

    def test_loops_drop_whole_values(self):
        for work in (SOUND, FACTORIAL):
            for text in ("2 NILADIC %s FUNCTIONEND LOOP", "5 2 DYADIC DISCARD %s 1 FUNCTIONEND LOOP",
                         "5 2 DYADIC DISCARD %s FUNCTIONEND LOOP", "2 MONADIC %s FUNCTIONEND LOOP"):
                self.whole(text, work)

    def test_gathered_values_are_whole(self):
        for work in (SOUND, MIXED, SOUND + "5", FACTORIAL):
            for text in ("(1 2 3) MONADIC %s ; EACH", "(1 2 3) VARS 2 MONADIC %s FUNCTIONEND EACH",
                         "(1 2 3) MONADIC DISCARD %s ; EACH", "(1 2 3) (1 1 1) MONADIC %s ; MASK"):
                self.whole(text, work)
        self.whole("(1 2 3) MONADIC DISCARD %s FUNCTIONEND EACH MONADIC ! ; EACH", MIXED)

    def test_frames_that_move(self):
        for text in ("VARS 2 MONADIC FUNCTIONEND !", "VARS 2 MONADIC 5 FUNCTIONEND !", "5 VARS 1 DYADIC FUNCTIONEND !",
                     "5 VARS 3 DYADIC 6 FUNCTIONEND !", "VARS 1 MONADIC NEGATIVE FUNCTIONEND !"):
            self.fails_first(text)
            for work in (SOUND, MIXED):
                self.whole("%s " + text, work)
                self.whole("%s " + text + " !", work)
        for body in ("%s", "%s 3", "1 %s"):
            for work in (SOUND, MIXED, FACTORIAL):
                for ahead in ("", "6 7", "!"):
                    self.whole("9 VARS 2 MONADIC DISCARD " + body + " FUNCTIONEND ! " + ahead, work)

    def test_locals_that_do_not_fit(self):
        for work, number in ((SOUND, 806), (FACTORIAL, 36), (AND, 17)):
            for call in ("VARS 20 MONADIC 1 FUNCTIONEND !", "12 VARS 20 DYADIC 1 FUNCTIONEND !",
                         "12 13 VARS 20 TRIADIC 1 FUNCTIONEND !", "VARS 20 MONADIC 1 FUNCTIONEND RESULT"):
                with self.subTest(work=work, call=call):
                    _, err = self.agree(GATE + "16570 : 1 ; REPEAT " + work + call + " .\n" + FRESH)
                    self.assertEqual(re.findall(r"(?m)^(\d+) - ", err), [str(number)], err)

    def test_input_keeps_the_last_of_its_values(self):
        for work in (SOUND, FACTORIAL):
            self.whole("INPUT .\n5 %s", work)
            self.whole("INPUT .\n%s 5", work)

    def test_the_other_instructions_of_the_pool(self):
        for work in (SOUND, FACTORIAL):
            for words in ("7 SEED", "RANDOMISE", "2 SERIAL", "1 PARALLEL", "20 ..", "(20 29) ..", "(1 2 3 4 5 6 7 8) 1 +",
                          "(1 2 3 4 5 6 7 8) NEGATIVE", "100 SERIAL (1 2 3 4 5 6 7 8) NEGATIVE"):
                self.whole("%s " + words, work)

    def test_the_threshold_stays_for_what_is_in_flight(self):
        # A higher one would leave more to the main thread.
        once = "CLEAR 4 SERIAL x NEGATIVE 100 SERIAL DUP SUM .\nCLEAR 100 SERIAL x NEGATIVE 4 SERIAL DUP SUM .\n"
        self.agree("400 .. @x SET .\n" + once * 20)

    def test_trace_shows_nothing_behind_a_failure(self):
        for words in (FACTORIAL + "1 2 3", "7 : TRACE " + FACTORIAL + "4 5 ; !", SOUND + "1 2 3"):
            self.agree(GATE + "TRACE " + words + " .\n" + FRESH)
        self.agree(GATE + "STEP " + FACTORIAL + "1 2 3 .\n" + "\n" * 12 + FRESH)


class Draws(Ahead):
    MODULUS = 2147483647

    def streams(self, seed, counts):
        """What the slots of the pool draw, one after the other."""
        for slot, count in enumerate(counts):
            state = slot * 22925 + seed
            for _ in range(count):
                state = state * 48271 % self.MODULUS
                yield state / self.MODULUS

    def test_each_part_draws_for_itself(self):
        expected = "".join(" %.10gi%.10gj%.10gk%.10g" % tuple(parts) for parts in
                           zip(*[iter(x * 1000 for x in self.streams(7, [16] * 4))] * 4))
        value = "(" + "1000i1000j1000k1000 " * 16 + ")"
        out = run("5 SERIAL . 7 SEED %s RANDOM .\n" % value, "-c3")[1]
        self.assertEqual(out.split()[1:], expected.split())

    def test_an_instruction_that_fails_draws_nothing(self):
        expected = [str(int(x * 1000) + 1) for x in self.streams(7, [4] * 4)]
        sound = "1000 " * 16
        for slot in range(4):
            for bad in ("0", "(5 0)", "(5 (5 'a'))"):
                failing = "(%s %s %s)" % ("1000 " * (4 * slot + 3), bad, "1000 " * (12 - 4 * slot))
                for held in ("", "@x ASSIGN "):
                    with self.subTest(slot=slot, bad=bad, held=held):
                        text = "5 SERIAL . 7 SEED %s %s ROLL .\nCLEAR (%s) ROLL .\n" % (failing, held, sound)
                        _, out, err = run(text, "-c3")
                        self.assertEqual(re.findall(r"(?m)^(\d+) - ", err), ["994"])
                        self.assertEqual([line for line in out.splitlines() if line.strip()][-1].split(), expected)


if __name__ == "__main__":
    unittest.main()
