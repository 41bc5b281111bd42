#!/usr/bin/env python3
"""The parts of the prompt that need no terminal: colours, pairs, completions, help, settings, the screen."""
import io
import os
import pathlib
import tempfile
import unittest

from package import BINARY

from prompt_toolkit.completion import CompleteEvent
from prompt_toolkit.document import Document

from morvik import colours, completing, examples, options, screen, vocabulary, words
from morvik.scanner import Scan
from morvik.signs import onecharacter


def kinds(text):
    return [(token.kind, text[token.start:token.end]) for token in Scan(onecharacter(text)).tokens if token.kind != "space"]


class Tokens(unittest.TestCase):
    def test_words_end_at_boundaries(self):
        self.assertEqual(kinds("SIN SINX a+b +x vector"), [("word", "SIN"), ("name", "SINX"), ("name", "a+b"), ("word", "+"),
                                                           ("name", "x"), ("word", "v"), ("name", "ector")])

    def test_numbers_and_ends(self):
        self.assertEqual(kinds("3. .5 .x 1i2 ¯4 0#101 d1p90 Foo F ."),
                         [("number", "3"), ("end", "."), ("number", ".5"), ("name", ".x"), ("number", "1i2"), ("number", "¯4"),
                          ("number", "0#101"), ("number", "d1p90"), ("name", "Foo"), ("constant", "F"), ("end", ".")])

    def test_literals(self):
        self.assertEqual(kinds("(1 'it''s')[2] '[3' \"note\" ,[] 1"),
                         [("vector", "("), ("number", "1 "), ("string", "'it''s'"), ("vector", ")"), ("shape", "[2]"),
                          ("string", "'[3'"), ("comment", '"note"'), ("word", ",[]"), ("number", "1")])

    def test_every_spelling_is_a_token(self):
        for spelling, _ in vocabulary.KEYWORDS:
            signed = words.withsigns(spelling)
            self.assertEqual(kinds("1 %s " % signed)[1:], [("word", signed)])

    def test_each_text_by_itself(self):
        scan = Scan("1 . 'a.b' . \"c\" ")
        self.assertEqual([scan.text[start:end] for start, end in scan.texts()], ["1 .", " 'a.b' . \"c\" "])
        self.assertTrue(scan.iswhole())
        self.assertFalse(Scan("1 . 2").iswhole())

    def test_the_lexer_loses_nothing(self):
        for text in ("1 2 × 'é' é .\n", "(1 2 x 3) \"open", ": 1 + ; @inc SET\n", "`(1 2)` 'a'[1"):
            self.assertEqual("".join(part for _, _, part in colours.MorvikLexer().get_tokens_unprocessed(text)), text)


class Pairs(unittest.TestCase):
    def matching(self, text, cursor):
        found = colours.matching(text, cursor)
        return found and sorted(text[start:end] for start, end in found)

    def test_brackets_functions_and_marks(self):
        text = ": (1 (2)) [. 3 .] DUP ; 5"
        self.assertEqual(self.matching(text, 0), [":", ";"])
        self.assertEqual(self.matching(text, 2), ["(", ")"])
        self.assertEqual(colours.matching(text, 2)[1], (8, 9))
        self.assertEqual(self.matching(text, text.index("[.")), [".]", "[."])
        self.assertEqual(self.matching(text, text.index(";") + 1), [":", ";"])
        self.assertIsNone(self.matching(text, len(text)))
        self.assertIsNone(self.matching("'(' )", 1))


class Completions(unittest.TestCase):
    def completions(self, before, after="", asked=True):
        completer = completing.MorvikCompleter(lambda: ["speed", "_rate"])
        document = Document(before + after, len(before))
        return list(completer.get_completions(document, CompleteEvent(completion_requested=asked)))

    def texts(self, *arguments, **named):
        return [completion.text for completion in self.completions(*arguments, **named)]

    def test_words_with_effect_and_meaning(self):
        found, = self.completions("1 INTERV")
        self.assertEqual((found.text, found.start_position), ("INTERVAL", -6))
        self.assertRegex(found.display_meta_text, "^v -- v|^x -- v|^.* -- .*")
        self.assertEqual(self.texts("1 interv"), ["INTERVAL"])

    def test_names_signs_and_nothing(self):
        self.assertEqual(self.texts("_r"), ["_rate"])
        self.assertEqual(self.texts("@sp"), ["@speed"])
        self.assertEqual(self.texts("\\tim"), ["×"])
        self.assertEqual(self.texts('"INTERV'), [])
        self.assertEqual(self.texts("I", asked=False), [])

    def test_files(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "a b.txt").touch()
            (pathlib.Path(folder) / "sub").mkdir()
            self.assertEqual(self.texts("'%s/" % folder), ["a b.txt", "sub/"])
            self.assertEqual(self.texts("'%s/a" % folder, "' READ .", asked=False), ["a b.txt"])
            self.assertEqual(self.texts("'%s/a" % folder, "' PRINT .", asked=False), [])

    def test_file_words_are_words(self):
        self.assertLessEqual(completing.FILEWORDS, {spelling for spelling, _ in vocabulary.KEYWORDS})

    def test_typed_signs(self):
        self.assertEqual(completing.typedsign("2 3 \\times"), (6, "×"))
        self.assertIsNone(completing.typedsign("2 3 \\time"))


class Help(unittest.TestCase):
    def test_every_word_has_a_page(self):
        for spelling, _ in vocabulary.KEYWORDS:
            signed = words.withsigns(spelling)
            self.assertIn(signed, words.answer("?" + signed).split())

    def test_every_message_is_told(self):
        for number, text, when, _, cure, _ in vocabulary.MESSAGES:
            said = words.answer("?%d" % number)
            self.assertTrue(said.startswith(text))
            for part in (when, cure):
                self.assertIn(" ".join(part.replace("`", "").split()), " ".join(said.split()))

    def test_a_message_is_shown_by_a_session(self):
        said = words.answer("?17", lambda text: examples.session(BINARY, text))
        self.assertRegex(said, r"(?s)\n\n  Morvik \[0\]> .* \.\n.*17 - dyadic function arguments")

    def test_searching(self):
        self.assertIn("ASIN", words.answer("?inverse of the sine"))
        self.assertIn("Is it", words.answer("?INTERVALL"))

    def test_examples_are_those_of_the_page(self):
        shown = {word.spellings[-1]: examples.session(BINARY, word) for word in words.WORDS if word.spellings[-1] in
                 ("ADD", "SET", "READ", "ENDPROCESS", "STEP", "SCAN")}
        self.assertEqual(shown["ADD"], "Morvik [0]> (1 2 3) 10 + .\n 11 12 13")
        self.assertEqual(shown["SET"], "Morvik [0]> 5 @width SET . width .\n-\n\n 5")
        self.assertTrue(shown["READ"].endswith(" 42"))
        self.assertEqual([shown[name] for name in ("ENDPROCESS", "STEP", "SCAN")], [None] * 3)

    def test_every_example_ends(self):
        for word in words.WORDS:
            if word.session:
                self.assertIsNotNone(examples.session(BINARY, word), word.session)


class Options(unittest.TestCase):
    def read(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "prompt.ini"
            path.write_text(text)
            return options.Options(path)

    def test_values(self):
        found = self.read("[prompt]\nediting = vi\nlimit = 7\ndot = on\n")
        self.assertEqual((found.editing, found.limit, found.dot, found.toolbar), ("vi", 7, True, True))
        self.assertEqual(found.complaints, [])

    def test_faults(self):
        found = self.read("editing = ed\nlimit = many\nnothing = 1\n")
        self.assertEqual((found.editing, found.limit, len(found.complaints)), ("emacs", 50000, 3))
        self.assertEqual(len(self.read("[[[").complaints), 1)

    def test_folders(self):
        for value, start in (("/somewhere", "/somewhere"), ("relative", os.path.expanduser("~/.config"))):
            os.environ["XDG_CONFIG_HOME"] = value
            self.addCleanup(os.environ.pop, "XDG_CONFIG_HOME", None)
            self.assertTrue(str(options.optionfile()).startswith(start))


class Screens(unittest.TestCase):
    def made(self, *pieces, **settings):
        stream = io.StringIO()
        made = screen.Screen(stream, **settings)
        for piece in pieces:
            made.write(piece)
        made.finish()
        return stream.getvalue()

    def test_the_frame_goes_and_the_line_ends(self):
        self.assertEqual(self.made(b"\n\n 3"), " 3\n")
        self.assertEqual(self.made(b"\n\nabc\n"), "abc\n")
        self.assertEqual(self.made(b"a\n", b"\n\n 3"), "a\n\n\n 3\n")

    def test_characters_in_pieces(self):
        self.assertEqual(self.made(b"\n\n\xc3", b"\x97 \xb9\xff"), "× ×‹FF›\n")

    def test_large_outputs(self):
        self.assertEqual(self.made(b"12345", b"67890", limit=7), "1234567\n-- 7 of 10 bytes shown; F3 shows all\n")
        self.assertEqual(self.made(b"12345", b"67890", limit=7, large="all"), "1234567890\n")

    def test_questions(self):
        for said, asked, back in ((b"\n\nName? \n", "Name? ", "\x1b[A\r\x1b[K"), (b"x\nName", "Name", "\r\x1b[K"), (b"", "", "")):
            stream = io.StringIO()
            made = screen.Screen(stream)
            made.write(said)
            self.assertEqual(made.question(), asked)
            self.assertTrue(stream.getvalue().endswith(back))


if __name__ == "__main__":
    unittest.main()
