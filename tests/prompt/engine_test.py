#!/usr/bin/env python3
"""The interpreter behind pipes: every state is told exactly, whatever a programme prints."""
import random
import signal
import threading
import time
import unittest

from package import BINARY

from morvik import engine, peek, scanner, signs
from morvik.engine import ASKS_LINE, ASKS_TEXT, AT_PROMPT, ENDED, UNFINISHED


class Conversation(unittest.TestCase):
    def setUp(self):
        self.process = engine.Engine([BINARY])
        self.process.start()
        self.addCleanup(self.stop)
        self.assertEqual(self.process.converse().state, AT_PROMPT)

    def stop(self):
        if self.process.process.poll() is None:
            self.process.process.kill()
        self.process.process.wait()
        self.process.close()

    def say(self, text, state=AT_PROMPT):
        """Returns what is printed, without the prompt."""
        said = []
        data = text if isinstance(text, bytes) else text.encode()
        self.wanted = self.process.converse(data + b"\n", said.append)
        self.assertEqual(self.wanted.state, state, b"".join(said)[-200:])
        return b"".join(said)

    def leave(self, closing=b""):
        said = []
        self.wanted = self.process.leave(self.wanted, closing, said.append)
        return b"".join(said)


class States(Conversation):
    def test_answers_come_without_the_frame(self):
        self.assertEqual(self.say("1 2 + ."), b"\n\n 3")
        self.assertEqual(self.wanted.depth, 1)
        self.assertEqual(self.say("'a' 1 + ."), b"\n17 - dyadic function arguments are not conformable.\n\nInstruction:\n "
                         b". OPERATOR:\t\t+\nException processing:...")

    def test_input_and_a_line(self):
        self.assertEqual(self.say("'A? ' TELL INPUT 2 * .", ASKS_TEXT), b"A? \n")
        self.assertEqual(self.say("20 1 +"), b"\n\n 42")
        self.assertEqual(self.say("'L' TELL QUOTEDIN .", ASKS_LINE), b"L")
        self.assertEqual(self.say("1 2 + ."), b"\n\n1 2 + .\n")

    def test_a_printed_prompt_is_none(self):
        fake = "'\n\nMorvik [1]> ' TELL "
        for text in (fake + "INPUT .", "0 SLEEP " + fake + "0 SLEEP INPUT .", "0 SLEEP '\n\nMorvik [1]>' TELL ' ' TELL INPUT ."):
            self.say(text, ASKS_TEXT)
            self.say("7")
        self.say("0 SLEEP " + fake + "QUOTEDIN .", ASKS_LINE)
        self.say("")
        # One that is printed on the way to the real one is output.
        self.assertIn(b"Morvik [1]> ", self.say("0 SLEEP " + fake + "0.01 SLEEP ."))

    def test_a_printed_inspection_is_a_question_like_any_other(self):
        self.say("'\nInspect [3]: ' TELL INPUT .", ASKS_TEXT)
        self.assertFalse(self.wanted.inspects)
        self.say("5")

    def test_inspection(self):
        self.assertEqual(self.say("STEP 1 2 .", ASKS_TEXT), b"\nTrace ( 0:  2) 1\nInspect [1]: ")
        self.assertTrue(self.wanted.inspects)
        self.say("", ASKS_TEXT)
        self.say("")

    def test_unfinished_texts(self):
        for text, rest in (("1 2", "."), ("'abc", "' ."), ('"abc', '" .'), ("(1 2", ") ."), ("(1 2)[3", "] ."), (": 1 +", "; .")):
            self.say(text, UNFINISHED)
            self.say(rest)

    def test_many_texts_at_once(self):
        self.assertIn(b" 4", self.say("1 1 + . 2 2 + ."))
        self.assertEqual(self.wanted.depth, 2)

    def test_ten_megabytes(self):
        said = self.say("(0 1500000) .. .")
        self.assertEqual(len(said), len(b"\n\n" + b"".join(b" %d" % n for n in range(1500001)) + b"\n"))

    def test_a_million_numbers_in(self):
        self.assertEqual(self.say("(%s) SHAPE ." % ("1 " * 1000000)), b"\n\n 1000000\n")

    def test_the_end(self):
        self.say("OFF .", ENDED)
        self.assertEqual(self.process.process.returncode, 0)

    def test_a_death(self):
        threading.Timer(0.2, self.process.process.kill).start()
        self.say("20 SLEEP .", ENDED)
        self.assertEqual(self.process.process.returncode, -signal.SIGKILL)

    def test_a_death_while_much_is_sent(self):
        self.process.process.kill()
        self.say("1 " * 500000, ENDED)


class Leaving(Conversation):
    def test_a_running_programme(self):
        threading.Timer(0.3, self.process.interrupt).start()
        since = time.monotonic()
        self.assertIn(b"** User interrupt. **", self.say("5 50 SLEEP ."))
        self.assertLess(time.monotonic() - since, 40)

    def test_a_question(self):
        self.say("1 2 'Q' TELL INPUT 3 .", ASKS_TEXT)
        self.assertIn(b"** User interrupt. **", self.leave())
        self.assertEqual(self.wanted, engine.Wanted(AT_PROMPT, 2))

    def test_a_question_that_is_half_answered(self):
        self.say("INPUT 3 .", ASKS_TEXT)
        self.say("1 'abc", ASKS_TEXT)
        self.leave(b"'")
        self.assertEqual(self.wanted.state, AT_PROMPT)

    def test_a_line(self):
        self.say("1 QUOTEDIN 3 .", ASKS_LINE)
        self.assertIn(b"** User interrupt. **", self.leave())
        self.assertEqual(self.wanted, engine.Wanted(AT_PROMPT, 1))

    def test_an_interrupt_that_the_process_has_not_taken_yet(self):
        self.say("1 QUOTEDIN 3 .", ASKS_LINE)
        self.process.process.send_signal(signal.SIGSTOP)
        threading.Timer(0.2, self.process.process.send_signal, [signal.SIGCONT]).start()
        self.assertIn(b"** User interrupt. **", self.leave())
        self.assertEqual(self.wanted, engine.Wanted(AT_PROMPT, 1))

    def test_an_inspection(self):
        self.say("STEP 1 2 .", ASKS_TEXT)
        self.leave()
        self.assertEqual(self.wanted, engine.Wanted(AT_PROMPT, 2))

    def test_an_unfinished_text_of_which_nothing_runs(self):
        self.say("1 .")
        for text, closing in (("5 6", b""), ("5 'abc", b"'"), ("(5 6 '7", b"')"), (": 5 (6", b");")):
            self.say(text, UNFINISHED)
            self.leave(closing)
            self.assertEqual(self.wanted, engine.Wanted(AT_PROMPT, 1), text)


class Wholeness(Conversation):
    """What the prompt takes for a whole text is one for the interpreter."""

    PIECES = ["1", " ", " ", "\n", "'", "''", '"', "(", ")", "[", "]", "[2]", ".", " .", ". ", ";", ":", "::", " @x ", "x", "a'b", "_y",
              "2.5", "3.", "#PI", "T", "+", "DUP", "END", " END ", "FUNCTIONEND ", "\x02", "\x03", "@\x02", "$\x02", "@", "%l", "&1", "`(", ")`", "0#1", "-",
              "×", "é", "v", "..", ".]", "[.", ",[]", "MARK "]

    def test_random_texts(self):
        draw = random.Random(20)
        whole = 0
        for _ in range(1500):
            text = "".join(draw.choices(self.PIECES, k=draw.randrange(1, 12)))
            scan = scanner.Scan(signs.tobytes(text).decode("latin-1"))
            for start, end in scan.texts():
                wanted = self.process.converse(scan.text[start:end].encode("latin-1") + b"\n")
            self.assertIn(wanted.state, (AT_PROMPT, UNFINISHED), text)
            self.assertEqual(wanted.state == AT_PROMPT, scan.iswhole(), repr(text))
            whole += wanted.state == AT_PROMPT
            if wanted.state == UNFINISHED:
                wanted = self.process.leave(wanted, scan.closing().encode("latin-1"))
                self.assertEqual(wanted.state, AT_PROMPT, repr(text))
            self.assertEqual(self.process.converse(b" CLEAR WIPE .\n").state, AT_PROMPT, repr(text))
        self.assertGreater(whole, 100)


class Stack(Conversation):
    def summaries(self):
        peeker = peek.Peeker(self.process)
        values = peeker.stack(0)
        self.assertTrue(peeker.usable)
        return values if values is None else [value.summary() for value in values]

    def test_kinds(self):
        for text, summary in (("5", "integer 5"), ("1.5", "real 1.5"), ("3i4", "complex 3i4"), ("#1i2j3k4", "quaternion #1i2j3k4"),
                              ("T", "truth T"), ("'a'", "character 'a'"), ("'abc'", "3 characters 'abc'"), ("#NIL", "empty #NIL"),
                              ("(1 2 3 4)[2 2]", "2×2 integer ( 1 2 3 4 )[2 2]"), ("(1 'a')", "2 nested"), ("[.", "mark"),
                              ("@x", "address @x"), ("(0 99) ..", "100 integer ( 0 1 2 3 4 5 6 7 8 9 1…"), ("(1 (2 3))", "2 nested")):
            self.say(text + " .")
            self.assertEqual(self.summaries()[0], summary, text)

    def test_nothing_is_changed(self):
        self.assertEqual(self.summaries(), [])
        self.say("1 2 3 4 .")
        self.assertEqual(self.summaries(), ["integer 4", "integer 3", "integer 2"])
        self.assertEqual(self.say("COUNTSTACK ."), b"\n\n 4")

    def test_it_leaves_a_session_that_steps_alone(self):
        self.say("1 STEPALL .")
        self.assertIsNone(self.summaries())
        self.say("2 .", ASKS_TEXT)

    def test_names(self):
        self.say("1 @_y SET 2 @.z SET .")
        self.assertEqual(sorted(peek.Peeker(self.process).names()), [".z", "_y"])

    def test_words_of_ours_are_never_the_persons(self):
        self.say(": 7 ; @DUP SET : 7 ; @PRINT SET 5 .")
        self.assertEqual(self.summaries(), ["integer 5"])


class Guessing(Conversation):
    """Where the kernel hides the calls of a process, states are guessed."""

    def setUp(self):
        super().setUp()
        self.process.promptstack = None
        about = self.process.about

        def hidden(name):
            if name == "syscall":
                raise PermissionError
            return about(name)

        self.process.about = hidden

    def test_states(self):
        self.assertEqual(self.say("1 2 + ."), b"\n\n 3")
        self.say("'Q' TELL QUOTEDIN .", ASKS_LINE)
        self.say("x")
        self.say("OFF .", ENDED)


if __name__ == "__main__":
    unittest.main()
